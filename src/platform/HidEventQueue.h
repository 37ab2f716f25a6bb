#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <mutex>
#include <vector>

namespace parcelory {

/// Scale events that the main thread has not fetched yet; another thread adds them. The queue stays small: it drops
/// repeated reports, and beyond mostReports the oldest report. It keeps more than the last report, because a briefly
/// empty plate separates two parcels.
class HidEventQueue {
public:
    struct Event {
        enum class Kind { attached, removed, report };
        Kind kind;
        int device = 0;
        QString product;
        QByteArray bytes;
    };

    static constexpr int mostReports = 64;

    void attached(int device, const QString &product);
    void removed(int device);
    void report(int device, const QByteArray &bytes);

    /// True if there are events and no fetch is pending; the caller must then fetch.
    bool needsFetching();
    std::vector<Event> fetch();

private:
    std::mutex m_access;
    std::vector<Event> m_events;
    QHash<int, QByteArray> m_last; ///< the last report of every device
    int m_reports = 0;             ///< among the events
    bool m_fetching = false;
};

} // namespace parcelory
