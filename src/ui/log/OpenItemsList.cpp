#include "ui/log/OpenItemsList.h"

#include "core/Task.h"
#include "core/Text.h"
#include "ui/log/OpenItemsTable.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RowTable.h"
#include "ui/parts/TextLabel.h"

#include <QVBoxLayout>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

OpenItemsList::OpenItemsList(OpenItemsScreen &items, MailingLogScreen &log, QWidget *parent)
    : QStackedWidget(parent), m_items(items), m_log(log), m_table(new OpenItemsTable),
      m_empty(new EmptyState(u"ui_success"_s, u"Nothing is open."_s))
{
    auto *sheet = new PanelFrame(&Tokens::sheet);
    auto *centered = new QVBoxLayout(sheet);
    centered->addWidget(m_empty);
    addWidget(m_table);
    addWidget(sheet);
    connect(&items, &OpenItemsScreen::itemsChanged, this, &OpenItemsList::refreshItems);
    connect(m_table, &RowTable::chosenChanged, this, [this] {
        if (m_items.isShown)
            m_items.choose(chosen());
    });
    connect(m_table, &RowTable::copyRequested, this, [this] {
        if (const auto item = chosen())
            m_log.copyTracking(item->label);
    });
    connect(m_table, &OpenItemsTable::stepRequested, this, [this] { run(&OpenItemsScreen::act); });
    connect(m_table, &OpenItemsTable::takeOffRequested, this, [this] { run(&OpenItemsScreen::takeOff); });
    connect(m_table, &OpenItemsTable::showRequested, this, [this] {
        if (const auto item = chosen())
            m_items.showInLog(*item);
    });
    refreshItems();
}

std::optional<OpenItem> OpenItemsList::chosen() const
{
    const QVariant id = m_table->chosen();
    return id.isValid() ? m_items.find(id.toLongLong()) : std::nullopt;
}

void OpenItemsList::run(Task<> (OpenItemsScreen::*operation)(OpenItem item))
{
    if (const auto item = chosen(); item && !m_log.busy)
        spawn([&items = m_items, operation, item] { return (items.*operation)(*item); });
}

void OpenItemsList::refreshItems()
{
    m_table->setItems(m_items.items());
    if (const auto item = chosen(); item && m_items.isShown)
        m_items.choose(item); // its row may have changed
    refresh();
}

void OpenItemsList::refresh()
{
    const auto item = chosen();
    if (item && m_items.isShown && m_log.selected.value() != item->label.id)
        m_items.choose(item); // the buttons act on the label that stands out here
    const QString search = m_items.search.value().trimmed();
    setCurrentIndex(m_items.items().isEmpty() ? 1 : 0);
    m_empty->set(search.isEmpty() ? u"ui_success"_s : u"ui_search"_s,
                 search.isEmpty()
                     ? u"Nothing is open."_s
                     : u"No open item matches “%1”."_s.arg(breakable(firstCharacters(search.left(400), 60))));
    m_table->setBusy(m_log.busy);
}

} // namespace parcelory
