#include "ui/log/MailingLogView.h"

#include "app/AppState.h"
#include "app/logs/MailingLogScreen.h"
#include "app/openitems/OpenItemsScreen.h"
#include "core/SettingsKeys.h"
#include "core/Task.h"
#include "core/Text.h"
#include "core/ports/Preferences.h"
#include "ui/log/LogFoot.h"
#include "ui/log/OpenItemsList.h"
#include "ui/log/OpenItemsTable.h"
#include "ui/log/ShipmentDetails.h"
#include "ui/log/ShipmentTable.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Binding.h"
#include "ui/parts/Button.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/ProgressBar.h"
#include "ui/parts/RowTable.h"
#include "ui/parts/SearchField.h"
#include "ui/parts/SegmentedControl.h"
#include "ui/parts/TabOrder.h"
#include "ui/parts/TextLabel.h"
#include "ui/parts/Toolbar.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int detailsHeight = 222;

} // namespace

MailingLogView::MailingLogView(AppState &app, MailingLogScreen &screen, OpenItemsScreen &items, QWidget *parent)
    : QWidget(parent), m_app(app), m_screen(screen), m_items(items), m_segments(new SegmentedControl(u"Labels"_s)),
      m_search(new SearchField(u"Search the mailing log"_s, 280)),
      m_itemSearch(new SearchField(u"Search the open items"_s, 280)),
      m_count(new ElidedLabel({}, FontRole::caption, &Tokens::muted)),
      m_import(new Button(u"Import Endicia Mail Log"_s, Button::Kind::standard, u"ui_import"_s)),
      m_export(new Button(u"Export Mail Log"_s, Button::Kind::standard, u"ui_export"_s)), m_table(new ShipmentTable),
      m_empty(new EmptyState(u"ui_invoice"_s, {})), m_openItems(new OpenItemsList(items, screen)),
      m_list(new QStackedWidget), m_details(new ShipmentDetails(screen, m_table)),
      m_splitter(new QSplitter(Qt::Vertical)), m_foot(new LogFoot),
      m_message(new Notice(u"ui_info"_s, &Tokens::muted, FontRole::body)),
      m_undo(new Button(u"Undo"_s, Button::Kind::link)), m_progress(new ProgressBar(u"Progress"_s, 160)),
      m_cancel(new Button(u"Cancel"_s)), m_refresh([this] { refresh(); })
{
    auto *sheet = new PanelFrame(&Tokens::sheet);
    auto *centered = new QVBoxLayout(sheet);
    centered->addWidget(m_empty);
    m_list->addWidget(m_table);
    m_list->addWidget(sheet);
    m_list->addWidget(m_openItems);
    m_splitter->addWidget(m_list);
    m_splitter->addWidget(m_details);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setChildrenCollapsible(false);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(makeToolbar());
    rows->addWidget(m_splitter, 1);
    rows->addWidget(makeFoot());
    orderTabsByLayout(this);
    bindText(m_search, screen.search);
    bindText(m_itemSearch, items.search);
    connectList();
    restoreLayout();
    m_refresh.follow(screen, items);
    refreshList();
}

RowTable *MailingLogView::table() const
{
    return m_items.isShown ? static_cast<RowTable *>(m_openItems->table()) : m_table;
}

QWidget *MailingLogView::makeToolbar()
{
    connect(m_import, &QPushButton::clicked, this, [this] { spawn([this] { return m_screen.importCSV(); }); });
    connect(m_export, &QPushButton::clicked, this, [this] { spawn([this] { return m_screen.exportCSV(); }); });
    m_segments->add(0, u"All labels"_s);
    m_segments->add(1, u"Open items"_s);
    connect(m_segments, &SegmentedControl::chosenByUser, this, [this](int id) { m_items.isShown = id == 1; });
    return (new Toolbar)
        ->add(m_segments)
        ->add(m_search)
        ->add(m_itemSearch)
        ->add(m_count)
        ->fill()
        ->add(m_import)
        ->add(m_export);
}

QWidget *MailingLogView::makeFoot()
{
    m_message->setTextInk(&Tokens::text);
    m_foot->row()->addWidget(m_message, 1, Qt::AlignVCenter);
    m_foot->row()->addWidget(m_undo);
    m_foot->row()->addStretch();
    connect(m_undo, &QPushButton::clicked, this, [this] { spawn([&items = m_items] { return items.undo(); }); });
    m_foot->row()->addWidget(m_progress);
    m_foot->row()->addWidget(m_cancel);
    connect(m_cancel, &QPushButton::clicked, this, [this] { m_screen.cancel(); });
    return m_foot;
}

void MailingLogView::connectList()
{
    connect(&m_screen, &MailingLogScreen::recordsChanged, this, &MailingLogView::refreshList);
    connect(m_table, &RowTable::chosenChanged, this, [this] {
        if (m_items.isShown)
            return; // the pane shows an open item
        const QVariant id = m_table->chosen();
        m_screen.selected = id.isValid() ? std::optional(id.toLongLong()) : std::nullopt;
    });
    connect(m_table, &RowTable::copyRequested, this, [this] {
        if (const auto record = selectedRecord())
            m_screen.copyTracking(*record);
    });
    connect(m_table, &RowTable::viewRequested, &m_screen.preview, &LabelPreview::open);
    connect(m_itemSearch, &SearchField::listRequested, this,
            [this] { m_openItems->table()->setFocus(Qt::TabFocusReason); });
    connect(m_search, &SearchField::listRequested, m_table, [this] { m_table->setFocus(Qt::TabFocusReason); });
}

void MailingLogView::restoreLayout()
{
    const Preferences &preferences = m_app.platform.preferences;
    m_table->restoreColumns(read(preferences, settings::mailingLogColumns));
    const int details = Theme::current().scaled(detailsHeight);
    m_splitter->setSizes({4 * details, details}); // the list takes the rest of the window's height
    m_splitter->restoreState(read(preferences, settings::mailingLogSplitter));
}

void MailingLogView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    spawn([this] { return m_app.syncRefundStatuses(); });
}

void MailingLogView::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    const QByteArray columns = m_table->columnState();
    if (columns.isEmpty())
        return; // the log was never shown
    write(m_app.platform.preferences, settings::mailingLogColumns, columns);
    write(m_app.platform.preferences, settings::mailingLogSplitter, m_splitter->saveState());
}

void MailingLogView::refreshList()
{
    const QString search = m_screen.search;
    m_table->setRecords(m_screen.records());
    if (std::exchange(m_listed, search) != search)
        m_table->showStart();
    refresh();
}

void MailingLogView::refreshTexts()
{
    const QString search = m_screen.search;
    const bool isUnread = !m_screen.readFailure.value().isEmpty();
    m_empty->set(search.isEmpty() ? u"ui_invoice"_s : u"ui_search"_s,
                 isUnread ? u"The mailing log can't be read now."_s
                 : search.isEmpty()
                     ? u"Labels bought at this desk are listed here."_s
                     : u"No shipment matches “%1”."_s.arg(breakable(firstCharacters(search.left(400), 60))));
    m_count->setFullText(m_items.isShown ? m_items.countText() : m_screen.countText());
}

void MailingLogView::refreshMode()
{
    const bool isOpenItems = m_items.isShown;
    const bool hadFocus = m_search->hasFocus() || m_itemSearch->hasFocus();
    m_segments->choose(isOpenItems ? 1 : 0);
    m_segments->setCount(1, m_items.count);
    m_search->setVisible(!isOpenItems);
    m_itemSearch->setVisible(isOpenItems);
    if (hadFocus)
        (isOpenItems ? m_itemSearch : m_search)->setFocus();
    m_list->setCurrentIndex(isOpenItems ? 2 : m_screen.records().isEmpty() ? 1 : 0);
    m_openItems->refresh();
}

void MailingLogView::refresh()
{
    refreshMode();
    const std::optional<qint64> selected = m_screen.selected;
    m_table->choose(selected ? QVariant(*selected) : QVariant());
    m_details->refresh(m_items.isShown && selected ? m_items.find(*selected) : std::nullopt);
    refreshTexts();
    enable(m_import, !m_screen.busy, m_search);
    enable(m_export, !m_screen.busy, m_search);
    refreshFoot();
}

void MailingLogView::refreshFoot()
{
    const std::optional<double> progress = m_screen.progress;
    m_foot->setBusy(m_screen.busy && !progress);
    m_progress->setVisible(progress.has_value());
    m_progress->setProgress(progress.value_or(0));
    if (!progress && m_cancel->hasFocus())
        m_table->setFocus();
    m_cancel->setVisible(progress.has_value());
    refreshMessage();
}

/// The open items have news of their own, which are not announced: they change with every question to the carrier.
void MailingLogView::refreshMessage()
{
    const bool isOpenItems = m_items.isShown;
    const QString note = isOpenItems ? m_items.note.value() : QString();
    const QString news = note.isEmpty() ? m_screen.message.value() : note;
    const QString message = news.isEmpty() && isOpenItems ? m_items.statusText() : news;
    m_undo->setVisible(isOpenItems && m_items.canUndo);
    const bool isFailure = m_screen.isFailure && message == m_screen.message.value();
    if (message == m_message->text() && isFailure == m_showsFailure)
        return;
    m_showsFailure = isFailure;
    m_message->setLook(isFailure ? u"ui_warning"_s : u"ui_info"_s, isFailure ? &Tokens::warn : &Tokens::muted);
    m_message->setTextInk(&Tokens::text);
    m_message->setText(message);
    if (!news.isEmpty())
        announce(m_message);
}

} // namespace parcelory
