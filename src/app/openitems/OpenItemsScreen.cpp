#include "app/openitems/OpenItemsScreen.h"

#include "app/openitems/OpenItemTexts.h"
#include "compose/LabelReadBack.h"
#include "core/AppError.h"
#include "core/Task.h"
#include "records/OpenItems.h"

#include <QRegularExpression>

#include <QPointer>

#include <algorithm>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qint64 secondsOfDay = 24 * 3600;
constexpr std::chrono::milliseconds learnPause = 10s; ///< between two lists while the carrier tells about many labels
constexpr auto agePause = 1h;                         ///< a label becomes an open item because time passes

/// The recipient of a label. The log does not tell where the company ends and the street begins: a street that does not
/// begin like a street stays empty, so that the clerk enters it.
ShippoAddress recipientOf(const ShipmentRecord &label)
{
    static const QRegularExpression streetBegin(u"^(\\d|P\\.?\\s*O\\.?\\s*Box\\b)"_s,
                                                QRegularExpression::CaseInsensitiveOption);
    const QList<ShippoAddress> candidates = addressesOf(label.recipient, label.zip11, label.isIntl);
    for (const ShippoAddress &candidate : candidates) {
        if (streetBegin.match(candidate.street1).hasMatch())
            return candidate;
    }
    ShippoAddress place = candidates.value(0);
    place.company.clear();
    place.street1.clear();
    return place;
}

bool matches(const OpenItem &item, const QString &search)
{
    const ShipmentRecord &label = item.label;
    for (const QString &text :
         {label.recipient, label.tracking, label.descriptionText, label.reference, OpenItemTexts::title(item)}) {
        if (text.contains(search, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

QList<OpenItem> matching(const QList<OpenItem> &items, const QString &search)
{
    QList<OpenItem> shown = items;
    if (!search.trimmed().isEmpty())
        shown.removeIf([text = search.trimmed()](const OpenItem &item) { return !matches(item, text); });
    return shown;
}

} // namespace

OpenItemsScreen::OpenItemsScreen(AppState &app, MailingLogScreen &log, RecordsScreen &records, TrackingWatch &tracking)
    : m_app(app), m_log(log), m_records(records), m_tracking(tracking), m_shownWatch(isShown.addNotifier([this] {
          if (!m_log.busy && m_log.readFailure.value().isEmpty())
              m_log.message = QString(); // of the other list
      })),
      m_searchWatch(search.addNotifier([this] { touch(); })),
      m_copiesWatch(records.copies.addNotifier([this] { touch(); }))
{
    buildOn(tracking);
    connect(&app.log, &ShipmentLog::recordsChanged, this, &OpenItemsScreen::touch);
    connect(&app, &AppState::labelsNoted, this, &OpenItemsScreen::touch);
    connect(&tracking, &TrackingWatch::learned, this, &OpenItemsScreen::touchSoon);
    connect(this, &OpenItemsScreen::itemsChanged, this, &OpenItemsScreen::changed);
}

OpenItemsScreen::~OpenItemsScreen()
{
    stop();
}

Task<> OpenItemsScreen::start()
{
    m_isStarted = true;
    co_await rebuild();
}

void OpenItemsScreen::stop()
{
    m_isStarted = false;
    m_app.platform.clock.cancel(m_timer);
    m_app.platform.clock.cancel(std::exchange(m_soon, 0));
}

/// For changes that come by the second: each list reads the log, and others wait meanwhile.
void OpenItemsScreen::touchSoon()
{
    if (!m_isStarted || m_soon)
        return;
    Clock &clock = m_app.platform.clock;
    const QDateTime now = clock.steadyNow(), last = m_isBuilding ? now : m_builtAt;
    const std::chrono::milliseconds past(last.isValid() ? last.msecsTo(now) : learnPause.count());
    if (past >= learnPause)
        touch();
    else
        m_soon = clock.after(learnPause - past, [this] { touch(); });
}

void OpenItemsScreen::touch()
{
    if (m_isStarted)
        spawn([this] { return rebuild(); });
}

void OpenItemsScreen::wake(bool hasLabels)
{
    m_app.platform.clock.cancel(m_timer);
    if (m_isStarted && hasLabels)
        m_timer = m_app.platform.clock.after(agePause, [this] { touch(); });
}

/// Not older than the last good copy allows.
std::optional<OpenItem> OpenItemsScreen::lateCopy() const
{
    if (!m_records.isLate())
        return std::nullopt;
    const QDateTime safe = *m_records.safeUntil();
    OpenItem item{.reason = OpenReason::lateCopy, .label = {.createdAt = safe, .carrier = {}, .status = {}}};
    item.isNever = !m_records.lastGood();
    item.days = int(safe.secsTo(m_app.platform.clock.now()) / secondsOfDay);
    return item;
}

/// Builds the list once more if something changes meanwhile.
Task<> OpenItemsScreen::rebuild()
{
    m_isStale = true;
    m_app.platform.clock.cancel(std::exchange(m_soon, 0));
    if (std::exchange(m_isBuilding, true))
        co_return;
    bool hasLabels = false;
    struct Built {
        QString failure;
        bool hasLabels;
        QList<OpenItem> items, shown;
    };
    const QPointer alive(this);
    while (std::exchange(m_isStale, false)) {
        const Built built = co_await onPool([&log = m_app.log, now = m_app.platform.clock.now(), text = search.value(),
                                             copy = lateCopy()] {
            const auto facts = OpenItems::read(log, now);
            Built built{.failure = facts.failure(),
                        .hasLabels = !facts.valueOr({}).isEmpty(),
                        .items = OpenItems::itemsOf(facts.valueOr({}), now),
                        .shown = {}};
            if (copy) {
                const auto place = std::ranges::upper_bound(built.items, copy->label.createdAt, {},
                                                            [](const OpenItem &item) { return item.label.createdAt; });
                built.items.insert(place, *copy);
            }
            built.shown = matching(built.items, text);
            return built;
        });
        if (!alive)
            co_return;
        readFailure = built.failure;
        hasLabels = built.hasLabels || !built.failure.isEmpty();
        if (!built.failure.isEmpty())
            continue; // the list stays as it was; the next change of the log tries again
        m_items = built.items;
        m_shown = built.shown;
        count = int(m_items.size());
        emit itemsChanged();
    }
    m_isBuilding = false;
    m_builtAt = m_app.platform.clock.steadyNow();
    wake(hasLabels);
}

std::optional<OpenItem> OpenItemsScreen::find(qint64 id) const
{
    const auto found = std::ranges::find(m_shown, id, &OpenItem::id);
    return found == m_shown.end() ? std::nullopt : std::optional(*found);
}

QString OpenItemsScreen::countText() const
{
    const QString number = QString::number(m_shown.size());
    const QString items = m_shown.size() == 1 ? u" open item"_s : u" open items"_s;
    return search.value().trimmed().isEmpty() ? number + items + u", oldest first"_s : number + items + u" found"_s;
}

QString OpenItemsScreen::statusText() const
{
    return readFailure.value().isEmpty() ? m_tracking.text() : readFailure.value();
}

Task<> OpenItemsScreen::act(OpenItem item)
{
    note = QString();
    canUndo = false;
    const ShipmentRecord label = item.label;
    switch (stepOf(item.reason)) {
    case OpenStep::track:
        co_await m_log.trackOnline(label);
        break;
    case OpenStep::refund:
    case OpenStep::checkStatus: // of a pending refund, which this asks the carrier about
        co_await m_log.refund(label);
        break;
    case OpenStep::fillLabel:
        m_app.fillDraft(recipientOf(label), label.reference);
        break;
    case OpenStep::customsDocs:
        co_await m_log.reprintCustoms(label);
        break;
    case OpenStep::reprint:
        co_await m_log.reprint(label);
        break;
    case OpenStep::copyNow:
        co_await m_records.copyNow();
        break;
    }
    touch();
}

void OpenItemsScreen::choose(const std::optional<OpenItem> &item)
{
    if (item && item->reason != OpenReason::lateCopy)
        m_log.lookAt(item->label);
    else
        m_log.selected = std::nullopt;
}

void OpenItemsScreen::showInLog(const OpenItem &item)
{
    if (item.reason == OpenReason::lateCopy)
        return;
    isShown = false;
    const auto isListed = [&item](const ShipmentRecord &row) { return row.id == item.id(); };
    if (std::ranges::none_of(m_log.records(), isListed))
        m_log.search = item.label.tracking;
    m_log.selected = item.id();
}

Task<> OpenItemsScreen::takeOff(OpenItem item)
{
    if (item.reason == OpenReason::lateCopy) // only a copy ends it
        co_return;
    const bool isStored =
        co_await onPool([&log = m_app.log, item] { return OpenItems::setDone(log, item.label, item.reason, true); });
    m_takenOff = item;
    canUndo = isStored;
    note = isStored
               ? u"“%1” of %2 was taken off the list."_s.arg(OpenItemTexts::title(item), item.label.recipientName())
               : u"The mailing log could not be written — %1."_s.arg(m_app.log.lastError());
    touch();
}

Task<> OpenItemsScreen::undo()
{
    if (!canUndo)
        co_return;
    const std::optional<OpenItem> item = std::exchange(m_takenOff, std::nullopt);
    canUndo = false;
    note = QString();
    const bool isStored =
        co_await onPool([&log = m_app.log, item] { return OpenItems::setDone(log, item->label, item->reason, false); });
    if (!isStored)
        note = u"The mailing log could not be written — %1."_s.arg(m_app.log.lastError());
    touch();
}

} // namespace parcelory
