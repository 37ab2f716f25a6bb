#include "ui/log/MasterLogView.h"

#include "app/AppState.h"
#include "app/logs/MasterLogScreen.h"
#include "core/SettingsKeys.h"
#include "core/Task.h"
#include "core/Text.h"
#include "core/ports/Preferences.h"
#include "ui/log/LogFoot.h"
#include "ui/log/MasterLogTable.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Binding.h"
#include "ui/parts/Button.h"
#include "ui/parts/DateField.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/IconView.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RowTable.h"
#include "ui/parts/SearchField.h"
#include "ui/parts/Separator.h"
#include "ui/parts/TabOrder.h"
#include "ui/parts/TextLabel.h"
#include "ui/parts/Toolbar.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

MasterLogView::MasterLogView(AppState &app, MasterLogScreen &screen, QWidget *parent)
    : QWidget(parent), m_app(app), m_screen(screen), m_search(new SearchField(u"Search the master log"_s, 320)),
      m_count(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_from(new DateField(u"From"_s)),
      m_to(new DateField(u"To"_s)), m_usual(new Button(u"Last 15 Days"_s)),
      m_refreshButton(new Button(u"Refresh"_s, Button::Kind::standard, u"ui_refresh"_s)),
      m_copy(new Button(u"Copy Tracking"_s, Button::Kind::standard, u"ui_copy"_s)),
      m_track(new Button(u"Track Online"_s, Button::Kind::standard, u"ui_external"_s)),
      m_export(new Button(u"Export CSV"_s, Button::Kind::standard, u"ui_export"_s)), m_rangeBar(new Toolbar),
      m_searchBar(new Toolbar), m_actions(new QWidget), m_table(new MasterLogTable),
      m_empty(new EmptyState(u"ui_document"_s, {})), m_pages(new QStackedWidget), m_foot(new LogFoot),
      m_summary(new TextLabel({}, FontRole::strong)),
      m_note(
          new TextLabel(u"Refunded and pending labels are listed, not counted."_s, FontRole::caption, &Tokens::muted)),
      m_messageIcon(new IconView(u"ui_info"_s, 16)), m_message(new ElidedLabel), m_refresh([this] { refresh(); })
{
    auto *sheet = new PanelFrame(&Tokens::sheet);
    auto *centered = new QVBoxLayout(sheet);
    centered->addWidget(m_empty);
    m_pages->addWidget(m_table);
    m_pages->addWidget(sheet);
    fillBars();
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(m_rangeBar);
    rows->addWidget(m_searchBar);
    rows->addWidget(m_pages, 1);
    rows->addWidget(makeFoot());
    orderTabsByLayout(this);
    connectList();
    m_table->restoreColumns(read(app.platform.preferences, settings::masterLogColumns));
    m_refresh.follow(screen);
    refresh();
}

void MasterLogView::fillBars()
{
    connect(m_from, &DateField::dateChosen, this, [this](QDate date) { m_screen.from = date; });
    connect(m_to, &DateField::dateChosen, this, [this](QDate date) { m_screen.to = date; });
    for (const DateField *field : {m_from, m_to})
        connect(field, &DateField::refused, this, [this](const QString &reason) { m_screen.refuseDate(reason); });
    connect(m_search, &SearchField::listRequested, m_table, [this] { m_table->setFocus(Qt::TabFocusReason); });
    bindText(m_search, m_screen.search);
    connect(m_usual, &QPushButton::clicked, this, [this] {
        m_screen.lastFifteenDays();
        load();
    });
    m_refreshButton->setToolTip(QKeySequence(Qt::CTRL | Qt::Key_R).toString(QKeySequence::NativeText));
    connect(m_refreshButton, &QPushButton::clicked, this, &MasterLogView::load);
    connect(m_copy, &QPushButton::clicked, this, [this] {
        if (const auto entry = m_screen.selectedEntry())
            m_screen.copyTracking(*entry);
    });
    connect(m_track, &QPushButton::clicked, this, [this] {
        if (const auto entry = m_screen.selectedEntry())
            spawn([this, entry] { return m_screen.trackOnline(*entry); });
    });
    connect(m_export, &QPushButton::clicked, this, [this] { spawn([this] { return m_screen.exportCSV(); }); });
    auto *from = new TextLabel(u"From:"_s, FontRole::body, &Tokens::muted);
    auto *to = new TextLabel(u"To:"_s, FontRole::body, &Tokens::muted);
    from->setBuddy(m_from);
    to->setBuddy(m_to);
    auto *rule = new Separator(Qt::Vertical);
    rule->setFixedHeight(Theme::current().scaled(16));
    auto *actions = new QHBoxLayout(m_actions);
    actions->setContentsMargins(0, 0, 0, 0);
    actions->setSpacing(8);
    for (QWidget *part : {static_cast<QWidget *>(m_copy), static_cast<QWidget *>(m_track), static_cast<QWidget *>(rule),
                          static_cast<QWidget *>(m_export)})
        actions->addWidget(part);
    m_rangeBar->add(from)->add(m_from)->add(to)->add(m_to)->add(m_usual)->add(m_refreshButton)->fill()->add(m_actions);
    m_widthOfOneBar = m_rangeBar->minimumSizeHint().width();
    m_searchBar->add(m_search)->add(m_count)->fill();
}

/// The actions are beside the search if the window is too narrow for the texts of the first bar.
void MasterLogView::placeActions()
{
    Toolbar *place = width() < m_widthOfOneBar ? m_searchBar : m_rangeBar;
    if (m_actions->parentWidget() == place)
        return;
    QWidget *focused = m_actions->isAncestorOf(window()->focusWidget()) ? window()->focusWidget() : nullptr;
    place->add(m_actions);
    m_actions->show();
    orderTabsByLayout(this);
    if (focused)
        focused->setFocus();
}

QWidget *MasterLogView::makeFoot()
{
    QHBoxLayout *row = m_foot->row();
    row->addWidget(m_summary);
    row->addWidget(m_note);
    row->addStretch(1);
    row->addWidget(m_messageIcon);
    setAccessibleRole(m_message, QAccessible::Notification);
    row->addWidget(m_message);
    return m_foot;
}

void MasterLogView::connectList()
{
    connect(m_table, &RowTable::chosenChanged, this, [this] {
        const QVariant id = m_table->chosen();
        m_screen.selected = id.isValid() ? std::optional(id.toString()) : std::nullopt;
    });
    connect(m_table, &RowTable::copyRequested, m_copy, &QPushButton::click);
}

RowTable *MasterLogView::table() const
{
    return m_table;
}

void MasterLogView::load()
{
    if (m_screen.canLoad())
        spawn([this] { return m_screen.load(); });
}

void MasterLogView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_refresh.touch();
}

void MasterLogView::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (const QByteArray state = m_table->columnState(); !state.isEmpty())
        write(m_app.platform.preferences, settings::masterLogColumns, state);
}

void MasterLogView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeActions();
}

void MasterLogView::keyPressEvent(QKeyEvent *event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && (m_from->hasFocus() || m_to->hasFocus()))
        load();
    else
        QWidget::keyPressEvent(event);
}

void MasterLogView::refresh()
{
    if (isVisible())
        m_screen.loadForKey();
    refreshRange();
    refreshList();
    refreshFoot();
}

void MasterLogView::refreshRange()
{
    m_from->showDate(m_screen.from);
    m_to->showDate(m_screen.to);
    for (DateField *field : {m_from, m_to})
        field->setReadOnly(m_screen.busy); // the fields show the range that is being loaded
    enable(m_usual, m_screen.canLoad(), m_from);
    enable(m_refreshButton, m_screen.canLoad(), m_from);
    m_refreshButton->setKind(m_screen.loaded ? Button::Kind::standard : Button::Kind::solid);
}

void MasterLogView::refreshList()
{
    if (const QList<MasterEntry> entries = m_screen.found(); entries != m_listed) {
        m_listed = entries;
        m_table->setEntries(entries);
        m_table->showStart();
    }
    const std::optional<QString> selected = m_screen.selected;
    m_table->choose(selected ? QVariant(*selected) : QVariant());
    const std::optional<MasterEntry> entry = m_screen.selectedEntry();
    enable(m_copy, entry && !entry->tracking.isEmpty(), m_table);
    enable(m_track, entry && !entry->trackingURL.isEmpty(), m_table);
    enable(m_export, m_screen.canExport(), m_table);
    const bool noKey = m_screen.hasNoKey();
    const bool isHidden = m_listed.isEmpty() && !m_screen.entries.value().isEmpty();
    const bool nothing = m_screen.loaded && m_listed.isEmpty();
    m_pages->setCurrentIndex(noKey || nothing || isHidden ? 1 : 0);
    m_count->setText(m_screen.foundText());
    const QString search = breakable(firstCharacters(m_screen.search.value().left(400), 60));
    m_empty->set(noKey      ? u"ui_key"_s
                 : isHidden ? u"ui_search"_s
                            : u"ui_document"_s,
                 noKey      ? u"Add a Shippo API key in Settings to load the account history."_s
                 : isHidden ? u"No shipment matches “%1”."_s.arg(search)
                            : u"No shipments found for this date range."_s);
}

void MasterLogView::refreshFoot()
{
    m_foot->setBusy(m_screen.busy);
    const bool summed = !m_screen.hasNoKey() && !m_screen.entries.value().isEmpty();
    m_summary->setText(summed ? m_screen.summaryLine() : QString());
    m_note->setVisible(summed);
    QString message = m_screen.message;
    if (m_screen.busy)
        message = m_screen.pages > 0 ? u"Loading… page %1"_s.arg(m_screen.pages.value()) : u"Loading…"_s;
    const bool isFailure = m_screen.isFailure && !m_screen.busy;
    m_messageIcon->setVisible(!message.isEmpty());
    m_messageIcon->set(isFailure ? u"ui_warning"_s : u"ui_info"_s, isFailure ? &Tokens::warn : &Tokens::muted);
    if (message == m_message->fullText())
        return;
    m_message->setFullText(message);
    if (!message.isEmpty() && !m_screen.busy)
        announce(m_message);
}

} // namespace parcelory
