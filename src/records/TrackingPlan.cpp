#include "records/TrackingPlan.h"

#include "records/ShipmentStatus.h"

#include <QHash>

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

namespace parcelory {

std::optional<QDateTime> TrackingPlan::dueAt(const OpenFacts &facts, const QDateTime &now)
{
    const ShipmentRecord &label = facts.label;
    const bool isSettled = logStatusFrom(label.status) == LogStatus::delivered ||
                           refundState(label) == RefundState::granted ||
                           (facts.journey && facts.journey->status == TrackingStatus::delivered);
    if (label.testMode || label.tracking.isEmpty() || isSettled)
        return std::nullopt;
    const QDateTime begin = std::min(label.createdAt, now).addSecs(std::chrono::seconds(first).count());
    if (!facts.journey)
        return begin;
    const auto pause = facts.journey->status == TrackingStatus::returned ? returning : again;
    const QDateTime asked = std::min(facts.journey->askedAt, now);
    const QDateTime due = std::max(begin, asked.addSecs(std::chrono::seconds(pause).count()));
    return due < label.createdAt.addDays(days) ? std::optional(due) : std::nullopt;
}

void TrackingPlan::setLabels(const QList<OpenFacts> &labels, const QDateTime &now, const QDateTime &steady)
{
    QHash<qint64, qint64> delays;
    for (const Followed &label : m_labels)
        delays.insert(label.facts.label.id, label.notBefore);
    m_labels.clear();
    for (const OpenFacts &facts : labels) {
        const std::optional<QDateTime> due = dueAt(facts, now);
        if (due && now < facts.label.createdAt.addDays(days)) {
            const qint64 notBefore = delays.value(facts.label.id);
            const qint64 moment = steady.toMSecsSinceEpoch() + now.msecsTo(*due);
            m_labels.push_back({facts, std::max(moment, notBefore), notBefore});
        }
    }
    std::ranges::sort(m_labels, std::greater(), [](const Followed &label) {
        return std::pair(label.facts.label.createdAt, label.facts.label.id);
    });
}

qsizetype TrackingPlan::dueCount(const QDateTime &steady) const
{
    const qint64 moment = steady.toMSecsSinceEpoch();
    return std::ranges::count_if(m_labels, [moment](const Followed &label) { return label.due <= moment; });
}

std::optional<OpenFacts> TrackingPlan::next(const QDateTime &steady)
{
    const qint64 moment = steady.toMSecsSinceEpoch();
    if (moment < m_notBefore)
        return std::nullopt;
    const auto found = std::ranges::find_if(m_labels, [moment](const Followed &label) { return label.due <= moment; });
    if (found == m_labels.end())
        return std::nullopt;
    m_notBefore = moment + spacing.count();
    found->due = moment + std::chrono::milliseconds(again).count();
    return found->facts;
}

void TrackingPlan::putBack(const OpenFacts &facts, const std::optional<QDateTime> &due)
{
    for (Followed &label : m_labels) {
        if (label.facts.label.id == facts.label.id)
            label.due = label.notBefore = due ? due->toMSecsSinceEpoch() : 0;
    }
}

std::optional<QDateTime> TrackingPlan::nextAt() const
{
    const auto first = std::ranges::min_element(m_labels, {}, &Followed::due);
    if (first == m_labels.end())
        return std::nullopt;
    return QDateTime::fromMSecsSinceEpoch(std::max(first->due, m_notBefore));
}

} // namespace parcelory
