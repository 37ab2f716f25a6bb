#pragma once

#include "core/AppState.h"
#include "core/Task.h"

#include <QObject>
#include <QProperty>

#include <optional>

namespace parcelory {

/// The My Mailing Log screen: what the desk shipped is searched, looked at and printed again. Lives as long as
/// AppState.
class MailingLogScreen : public QObject {
    Q_OBJECT
public:
    explicit MailingLogScreen(AppState &app);

    QProperty<QString> search;                 ///< as typed; setting it reloads the list
    QProperty<std::optional<qint64>> selected; ///< the id of one of records()
    QProperty<QString> message;                ///< what the last operation came to
    QProperty<bool> busy{false};

    /// The newest shipments that match the search, newest first.
    const QList<ShipmentRecord> &records() const { return m_app.log.records(); }
    std::optional<ShipmentRecord> selectedRecord() const;
    /// "1000 newest shipments", "3 shipments found"
    QString countText() const;

    Task<> reprint(ShipmentRecord record);
    /// The customs papers of a parcel that went abroad.
    Task<> reprintCustoms(ShipmentRecord record);
    void copyTracking(ShipmentRecord record);

signals:
    /// records() holds what the search asks for. Silent while an answer to another search goes by.
    void recordsChanged();

private:
    bool isUpToDate() const { return m_app.log.shownSearch() == search.value(); }
    void takeRecords();
    Task<> catchUp();

    AppState &m_app;
    bool m_reloading = false;
    QPropertyNotifier m_searchWatch;
};

} // namespace parcelory
