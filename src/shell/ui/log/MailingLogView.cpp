#include "shell/ui/log/MailingLogView.h"

#include "shell/SettingsKeys.h"
#include "shell/ui/log/ShipmentDetails.h"
#include "shell/ui/log/ShipmentTable.h"
#include "shell/ui/parts/Binding.h"
#include "shell/ui/parts/Toolbar.h"

#include <QAccessible>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int detailsHeight = 174, messageHeight = 40;

} // namespace

MailingLogView::MailingLogView(AppState &app, MailingLogScreen &screen, QWidget *parent)
    : QWidget(parent), m_app(app), m_screen(screen), m_search(new SearchField(u"Search the mailing log"_s, 320)),
      m_count(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_table(new ShipmentTable),
      m_empty(new EmptyState(u"ui_invoice"_s, {})), m_list(new QStackedWidget), m_details(new ShipmentDetails(screen)),
      m_splitter(new QSplitter(Qt::Vertical)), m_bar(new BusyBar),
      m_message(new Notice(u"ui_info"_s, &Tokens::muted, FontRole::body)), m_follower([this] { refresh(); })
{
    auto *sheet = new Surface(&Tokens::sheet);
    auto *centred = new QVBoxLayout(sheet);
    centred->addWidget(m_empty);
    m_list->addWidget(m_table);
    m_list->addWidget(sheet);
    m_splitter->addWidget(m_list);
    m_splitter->addWidget(m_details);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setChildrenCollapsible(false);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget((new Toolbar)->add(m_search)->add(m_count)->fill());
    rows->addWidget(m_splitter, 1);
    rows->addWidget(makeMessageLine());
    bindText(m_search, screen.search);
    connectList();
    restoreLayout();
    m_follower.follow(screen.selected, screen.message, screen.busy);
    refreshList();
}

QWidget *MailingLogView::makeMessageLine()
{
    auto *line = new Surface(&Tokens::sheet);
    // The room is kept while there is nothing to say, so that nothing jumps.
    line->setMinimumHeight(Theme::current().scaled(messageHeight));
    line->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    auto *rows = new QVBoxLayout(line);
    rows->setContentsMargins(16, 0, 16, 4);
    rows->setSpacing(4);
    rows->addWidget(new Rule);
    rows->addWidget(m_bar);
    rows->addWidget(m_message, 1, Qt::AlignVCenter);
    m_message->setTextInk(&Tokens::text);
    return line;
}

void MailingLogView::connectList()
{
    connect(&m_screen, &MailingLogScreen::recordsChanged, this, &MailingLogView::refreshList);
    connect(m_table, &RowTable::chosenChanged, this, [this] {
        const QVariant id = m_table->chosen();
        m_screen.selected = id.isValid() ? std::optional(id.toLongLong()) : std::nullopt;
    });
    connect(m_table, &RowTable::copyRequested, this, [this] {
        if (const auto record = selectedRecord())
            m_screen.copyTracking(*record);
    });
    connect(m_search, &SearchField::listRequested, m_table, [this] { m_table->setFocus(Qt::TabFocusReason); });
}

void MailingLogView::restoreLayout()
{
    const Preferences &preferences = m_app.platform.preferences;
    m_table->restoreColumns(read(preferences, settings::mailingLogColumns));
    const int details = Theme::current().scaled(detailsHeight);
    m_splitter->setSizes({4 * details, details}); // the list takes what the window has more or less than that
    m_splitter->restoreState(read(preferences, settings::mailingLogSplitter));
}

void MailingLogView::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    write(m_app.platform.preferences, settings::mailingLogColumns, m_table->columnState());
    write(m_app.platform.preferences, settings::mailingLogSplitter, m_splitter->saveState());
}

void MailingLogView::refreshList()
{
    const QString search = m_screen.search;
    m_table->setRecords(m_screen.records());
    if (std::exchange(m_listed, search) != search)
        m_table->showStart();
    const bool empty = m_screen.records().isEmpty();
    m_list->setCurrentIndex(empty ? 1 : 0);
    m_empty->set(search.isEmpty() ? u"ui_invoice"_s : u"ui_search"_s,
                 search.isEmpty() ? u"Every label that is bought at this desk will be listed here."_s
                                  : u"No shipment matches “%1”."_s.arg(search));
    m_count->setText(m_screen.countText());
    refresh();
}

void MailingLogView::refresh()
{
    const std::optional<qint64> selected = m_screen.selected;
    m_table->choose(selected ? QVariant(*selected) : QVariant());
    m_details->refresh();
    m_bar->setBusy(m_screen.busy);
    const QString message = m_screen.message;
    if (message == m_message->text())
        return;
    m_message->setText(message);
    if (message.isEmpty())
        return;
    QAccessibleEvent alert(m_message, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

} // namespace parcelory
