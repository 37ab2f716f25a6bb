#pragma once

#include "app/AppState.h"
#include "core/Task.h"

#include <QDate>
#include <QProperty>

#include <optional>
#include <vector>

namespace parcelory {

/// The Master Log screen: the carrier account's labels of a date range, from every desk. Nothing is stored on disk.
/// Lives as long as AppState.
class MasterLogScreen {
public:
    static constexpr int usualDays = 15;

    explicit MasterLogScreen(AppState &app);

    QProperty<QDate> from, to; ///< both included
    QProperty<QList<MasterEntry>> entries;
    QProperty<std::optional<QString>> selected; ///< the id of an entry
    QProperty<bool> busy{false};
    QProperty<int> pages{0}; ///< pages read so far by the running listing
    QProperty<QString> message;
    QProperty<bool> loaded{false}; ///< entries match the selected days

    /// Fetches the range. On failure the entries stay as they are.
    Task<> load();
    void lastFifteenDays();
    /// "12 shipments • $143.20 postage"
    QString summaryLine() const;
    Task<> exportCSV();
    void copyTracking(const MasterEntry &entry);
    Task<> trackOnline(MasterEntry entry);
    std::optional<MasterEntry> selectedEntry() const;

private:
    AppState &m_app;
    std::vector<QPropertyNotifier> m_notifiers;
};

/// The entries as a comma-separated text with a header line; every field quoted.
QString masterLogCSV(const QList<MasterEntry> &entries);

} // namespace parcelory
