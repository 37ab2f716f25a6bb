#pragma once

#include "records/OpenItems.h"

#include <QDateTime>
#include <QList>

#include <chrono>
#include <optional>
#include <vector>

namespace parcelory {

/// Which labels the carrier is asked about, and when. A label counts for 30 days, unless it is delivered, refunded or a
/// TEST label; the newest label that is due is asked next. 100 labels a day make 3,000 labels on their way and, with a
/// question every six hours, 12,000 questions a day at most: four hours of asking at 50 a minute.
class TrackingPlan {
public:
    static constexpr std::chrono::milliseconds spacing{1200}; ///< at most one question a second, and 50 a minute
    static constexpr std::chrono::hours again{6};             ///< until the next question about the same label
    static constexpr std::chrono::hours first{24};            ///< a new label is no open item before
    static constexpr std::chrono::hours returning{24};        ///< between questions about a returned parcel
    static constexpr int days = OpenItems::refundEndsAfter;

    /// When the carrier is to be asked about a label, by the time of day; nothing if it is not. A time after `now` was
    /// noted before someone set the clock back, and counts as now.
    static std::optional<QDateTime> dueAt(const OpenFacts &facts, const QDateTime &now);

    /// Replaces the labels, without those that are too old. `now` is the time of day, for their ages; all other times
    /// are the clock's steady time, because someone may set the time of day between two questions.
    void setLabels(const QList<OpenFacts> &labels, const QDateTime &now, const QDateTime &steady);
    /// How many labels are followed, and how many of them are due.
    qsizetype size() const { return qsizetype(m_labels.size()); }
    qsizetype dueCount(const QDateTime &steady) const;
    /// The label to ask about now, after which it counts as asked; nothing if no label is due or the carrier was asked
    /// just before.
    std::optional<OpenFacts> next(const QDateTime &steady);
    /// The carrier did not answer about this label: it is due again, at once or not before `due`. The delay outlives
    /// setLabels(), so that a label without an answer does not keep older labels waiting.
    void putBack(const OpenFacts &facts, const std::optional<QDateTime> &due = {});
    /// When next() returns a label again, at the earliest; nothing if no label is followed.
    std::optional<QDateTime> nextAt() const;
    /// The carrier wants no question before.
    void pauseUntil(const QDateTime &time) { m_notBefore = time.toMSecsSinceEpoch(); }

private:
    struct Followed {
        OpenFacts facts;
        qint64 due;           ///< milliseconds since 1970
        qint64 notBefore = 0; ///< likewise
    };
    std::vector<Followed> m_labels; ///< newest first
    qint64 m_notBefore = 0;         ///< likewise
};

} // namespace parcelory
