#pragma once

#include "app/AppState.h"
#include "app/settings/KeysScreen.h"
#include "core/Observable.h"
#include "core/Task.h"

#include <QDate>
#include <QProperty>

#include <optional>
#include <vector>

namespace parcelory {

/// The Master Log screen: the carrier account's labels of a date range, from every desk. Nothing is stored on disk.
/// Lives as long as AppState.
class MasterLogScreen : public Observable {
public:
    static constexpr int usualDays = 15;

    MasterLogScreen(AppState &app, const KeysScreen &keys);

    Observed<QDate> from{this}, to{this}; ///< both included
    Observed<QList<MasterEntry>> entries{this};
    Observed<QString> search{this};                  ///< as typed; narrows found(), and neither the sum nor the export
    Observed<std::optional<QString>> selected{this}; ///< the id of an entry
    Observed<bool> busy{this, false};
    Observed<int> pages{this, 0}; ///< pages read so far by the running listing
    Observed<QString> message{this};
    Observed<bool> isFailure{this, false}; ///< the message tells a failure
    Observed<bool> loaded{this, false};    ///< entries match the selected days

    /// The entries with a text that contains the search, without regard to case, accents and the blanks of a number.
    QList<MasterEntry> found() const;
    /// "3 of 120 shipments"; empty without a search.
    QString foundText() const;
    bool hasNoKey() const { return m_keys.mode == PostageMode::none; }
    bool canLoad() const;
    bool canExport() const { return !busy && !entries.value().isEmpty(); }
    /// Call while the screen is shown: loads the usual range at the first call, and again after a key change, because
    /// another key can mean another account.
    void loadForKey();
    /// Fetches the range. On failure the entries stay as they are.
    Task<> load();
    /// Shows one day, and chooses an entry of it.
    Task<> showEntry(QDate day, QString id);
    void lastFifteenDays();
    /// Tells that a typed date was not taken.
    void refuseDate(const QString &reason) { say(reason, true); }
    /// "12 shipments • $143.20 postage"
    QString summaryLine() const;
    Task<> exportCSV();
    void copyTracking(const MasterEntry &entry);
    Task<> trackOnline(MasterEntry entry);
    /// The selected entry, unless the search hides it.
    std::optional<MasterEntry> selectedEntry() const;

private:
    void say(const QString &text, bool failure = false);

    AppState &m_app;
    const KeysScreen &m_keys;
    std::optional<int> m_loadedKeys; ///< AppState::keyChanges at the last load by loadForKey()
    std::vector<QPropertyNotifier> m_notifiers;
};

/// The entries as a comma-separated text with a header line; every field quoted.
QString masterLogCSV(const QList<MasterEntry> &entries);

} // namespace parcelory
