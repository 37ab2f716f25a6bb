#pragma once

#include "app/AppState.h"
#include "core/Task.h"

#include <QDate>
#include <QProperty>

#include <optional>
#include <vector>

namespace parcelory {

/// The Master Log screen: the carrier account's labels of some days, whichever desk bought them. Nothing is kept on
/// disk. Lives as long as AppState.
class MasterLogScreen {
public:
    static constexpr int usualDays = 15;

    explicit MasterLogScreen(AppState &app);

    QProperty<QDate> from, to; ///< both included
    QProperty<QList<MasterEntry>> entries;
    QProperty<std::optional<QString>> selected; ///< the id of an entry
    QProperty<bool> busy{false};
    QProperty<int> pages{0}; ///< read so far by the listing under way
    QProperty<QString> message;
    QProperty<bool> loaded{false}; ///< entries are those of the days that are set

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
