#pragma once

#include "app/AppState.h"
#include "app/logs/MailingLogScreen.h"
#include "app/openitems/TrackingWatch.h"
#include "app/records/RecordsScreen.h"
#include "core/Observable.h"
#include "core/Task.h"
#include "records/OpenItems.h"

#include <QDateTime>
#include <QList>

#include <optional>

namespace parcelory {

/// The list of what needs a person, in the My Mailing Log tab. The operations are those of the mailing log. Lives as
/// long as AppState.
class OpenItemsScreen : public Observable {
    Q_OBJECT
public:
    OpenItemsScreen(AppState &app, MailingLogScreen &log, RecordsScreen &records, TrackingWatch &tracking);
    ~OpenItemsScreen() override;

    Observed<bool> isShown{this, false}; ///< instead of all labels
    Observed<QString> search{this};      ///< as typed
    Observed<int> count{this, 0};        ///< of all items, for the tab
    Observed<QString> note{this};        ///< of the last "Nothing to Do"; otherwise empty
    Observed<bool> canUndo{this, false}; ///< what was taken off last can be put back
    Observed<QString> readFailure{this}; ///< why the list is not up to date; otherwise empty

    /// The items that match the search, oldest first.
    const QList<OpenItem> &items() const { return m_shown; }
    std::optional<OpenItem> find(qint64 id) const;
    /// "7 open items, oldest first"
    QString countText() const;
    /// What the message line says while the mailing log has nothing to say.
    QString statusText() const;

    /// Reads the log and follows it from then on.
    Task<> start();
    /// Ends all work that waits.
    void stop();
    /// Does the item's next step.
    Task<> act(OpenItem item);
    /// Shows the item's label in the detail pane.
    void choose(const std::optional<OpenItem> &item);
    /// Shows the item's label in the list of all labels.
    void showInLog(const OpenItem &item);
    /// Takes the item off the list.
    Task<> takeOff(OpenItem item);
    /// Puts back what was taken off last.
    Task<> undo();

signals:
    /// items() has changed.
    void itemsChanged();

private:
    Task<> rebuild();
    void touch();
    void touchSoon();
    void wake(bool hasLabels);
    std::optional<OpenItem> lateCopy() const;

    AppState &m_app;
    MailingLogScreen &m_log;
    RecordsScreen &m_records;
    TrackingWatch &m_tracking;
    QList<OpenItem> m_items, m_shown;
    std::optional<OpenItem> m_takenOff; ///< last
    bool m_isStarted = false;
    bool m_isBuilding = false, m_isStale = false;
    quint64 m_timer = 0, m_soon = 0;
    QDateTime m_builtAt; ///< the steady time of the last list
    QPropertyNotifier m_shownWatch, m_searchWatch, m_copiesWatch;
};

} // namespace parcelory
