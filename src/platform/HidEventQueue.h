#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <mutex>
#include <vector>

namespace parcelory {

/// What happened to the scales and the main thread has not fetched yet; filled by another thread. However much a scale
/// chatters, it is little: repetitions are left out, and of too many reports the oldest ones. Not only the last one is
/// kept, because a plate that was empty for a moment tells one parcel from the next.
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

    /// True when there is something to fetch and nobody is under way for it; whoever is told so must fetch.
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
