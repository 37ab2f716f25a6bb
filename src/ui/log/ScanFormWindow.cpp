#include "ui/log/ScanFormWindow.h"

#include "app/AppState.h"
#include "app/scanform/ScanFormScreen.h"
#include "core/Task.h"
#include "core/Text.h"
#include "records/ShipmentRecord.h"
#include "ui/log/DocumentPages.h"
#include "ui/log/LogModel.h"
#include "ui/log/LogTable.h"
#include "ui/log/ShipmentTexts.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Button.h"
#include "ui/parts/ComboBox.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/TabOrder.h"
#include "ui/parts/TextLabel.h"
#include "ui/parts/Toolbar.h"
#include "ui/parts/WindowSize.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QShortcut>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int pagesWidth = 600, labelsWidth = 470;

const QKeySequence printKeys(Qt::CTRL | Qt::Key_P), saveKeys(Qt::CTRL | Qt::Key_S);

const RecordModel<ShipmentRecord>::Columns &columns()
{
    using enum ColumnKind;
    static const RecordModel<ShipmentRecord>::Columns table = {
        {{u"Time"_s, 80, 0, date},
         [](const ShipmentRecord &record) { return timeText(record).section(u',', 1).trimmed(); },
         [](const ShipmentRecord &record) { return double(record.createdAt.toMSecsSinceEpoch()); }},
        {{u"Recipient"_s, 0, 90}, recipientName},
        {{u"Tracking ID"_s, 214, 0, tracking},
         [](const ShipmentRecord &record) {
             return record.tracking.isEmpty() ? record.transactionID : groupsOfFour(record.tracking);
         }},
    };
    return table;
}

} // namespace

ScanFormWindow::ScanFormWindow(AppState &app, ScanFormScreen &screen, QWidget *parent)
    : QWidget(parent, Qt::Window), m_app(app), m_screen(screen), m_history(new ComboBox(u"SCAN forms created here"_s)),
      m_outcome(new ElidedLabel({}, FontRole::body, &Tokens::muted)),
      m_save(new Button(u"Save…"_s, Button::Kind::standard, u"ui_export"_s)),
      m_print(new Button(u"Print"_s, Button::Kind::solid, u"ui_printer"_s)),
      m_pages(new DocumentPages(u"The SCAN form"_s)), m_sheets(new QStackedWidget),
      m_count(new TextLabel({}, FontRole::strong)), m_model(new RecordModel<ShipmentRecord>(columns(), this)),
      m_labels(new LogTable(u"Labels on this form"_s, m_model)), m_refresh([this] { refresh(); })
{
    const Theme &theme = Theme::current();
    setWindowTitle(u"SCAN Form"_s);
    setAccessibleRole(m_outcome, QAccessible::Notification);
    sizeWindow(*this, {theme.scaled(720), 320}, {theme.scaled(pagesWidth + labelsWidth), 880});
    auto *split = new QSplitter(Qt::Horizontal);
    split->addWidget(m_pages);
    split->addWidget(makeLabels());
    split->setStretchFactor(0, 1);
    split->setChildrenCollapsible(false);
    split->setSizes({theme.scaled(pagesWidth), theme.scaled(labelsWidth)});
    m_sheets->addWidget(split);
    m_sheets->addWidget(new EmptyState(u"ui_scanform"_s, u"SCAN forms created on this computer appear here."_s));
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(makeToolbar());
    rows->addWidget(m_sheets, 1);
    addShortcuts();
    orderTabsByLayout(this);
    m_refresh.follow(app, screen);
    load();
    refresh();
}

void ScanFormWindow::load()
{
    m_last = m_app.scanFormPDF;
    spawn([&screen = m_screen] { return screen.load(); });
}

QWidget *ScanFormWindow::makeToolbar()
{
    m_print->setToolTip(printKeys.toString(QKeySequence::NativeText));
    m_save->setToolTip(saveKeys.toString(QKeySequence::NativeText));
    m_history->setMinimumWidth(Theme::current().scaled(270));
    m_outcome->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // the buttons keep their places
    connect(m_history, &QComboBox::activated, this,
            [this](int at) { spawn([&screen = m_screen, form = m_listed.value(at)] { return screen.show(form); }); });
    connect(m_print, &QPushButton::clicked, this, [this] { spawn([&screen = m_screen] { return screen.print(); }); });
    connect(m_save, &QPushButton::clicked, this, [this] { spawn([&screen = m_screen] { return screen.save(); }); });
    return (new Toolbar)->add(m_history)->add(m_outcome)->add(m_save)->add(m_print);
}

QWidget *ScanFormWindow::makeLabels()
{
    auto *side = new PanelFrame(&Tokens::sheet);
    auto *rows = new QVBoxLayout(side);
    rows->setContentsMargins(0, 10, 0, 0);
    rows->setSpacing(8);
    m_count->setContentsMargins(12, 0, 12, 0);
    m_count->setWordWrap(true);
    rows->addWidget(m_count);
    rows->addWidget(m_labels, 1);
    return side;
}

void ScanFormWindow::addShortcuts()
{
    for (const QKeySequence &keys : {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_W)})
        connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
    connect(new QShortcut(printKeys, this), &QShortcut::activated, m_print, &QPushButton::click);
    connect(new QShortcut(saveKeys, this), &QShortcut::activated, m_save, &QPushButton::click);
}

void ScanFormWindow::refresh()
{
    if (m_last != m_app.scanFormPDF.value())
        load();
    refreshHistory();
    refreshContents();
    const bool hasForm = !m_screen.documents.value().isEmpty();
    m_sheets->setCurrentIndex(hasForm ? 0 : 1);
    enable(m_save, hasForm && !m_screen.busy, m_pages);
    enable(m_print, hasForm && !m_screen.busy, m_pages);
    if (hasForm && !std::exchange(m_hasBegun, true))
        m_print->setFocus();
    const QString message = hasForm && !m_pages->areReadable() && !m_screen.busy
                                ? u"The form cannot be shown here, but it can be printed and saved."_s
                                : m_screen.message.value();
    if (message == m_outcome->fullText())
        return;
    m_outcome->setFullText(message);
    if (!message.isEmpty())
        announce(m_outcome);
}

void ScanFormWindow::refreshHistory()
{
    const QList<ScanForm> forms = m_screen.forms;
    if (forms != m_listed) {
        m_listed = forms;
        m_history->clear();
        for (const ScanForm &form : forms)
            m_history->addItem(ScanFormScreen::title(form));
    }
    m_history->setVisible(!forms.isEmpty());
    const std::optional<ScanForm> shown = m_screen.shown;
    m_history->setCurrentIndex(shown ? int(forms.indexOf(*shown)) : -1);
}

void ScanFormWindow::refreshContents()
{
    m_count->setText(m_screen.labelsText());
    if (const QList<ShipmentRecord> labels = m_screen.labels; labels != m_shownLabels) {
        m_shownLabels = labels;
        m_labels->replaceRows([&] { m_model->setRecords(labels); });
    }
    if (m_drawn == m_screen.documents.value())
        return;
    m_drawn = m_screen.documents;
    m_pages->setDocuments(m_drawn);
}

} // namespace parcelory
