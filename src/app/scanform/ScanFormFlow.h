#pragma once

#include "app/AppState.h"
#include "carrier/ArrivalWatch.h"
#include "core/AppError.h"

#include <QDate>
#include <QProperty>

namespace parcelory {

/// Makes the SCAN form of the day's labels, and recovers forms whose response was lost. The outcome is AppState's
/// scanFormStatus and scanFormPDF.
class ScanFormFlow {
public:
    explicit ScanFormFlow(AppState &app);
    ~ScanFormFlow();
    ScanFormFlow(const ScanFormFlow &) = delete;
    ScanFormFlow &operator=(const ScanFormFlow &) = delete;

    /// AppState::createScanForm().
    Task<> create(ShippoAddress from, ScanFormScope scope);
    /// Fetches forms whose response was lost; silent while the carrier cannot be asked.
    Task<> recoverLostForms();
    /// AppState::scanFormNews(); AppState changes when the day of the news ends.
    QString news() const;

private:
    struct Documents {
        QByteArray first;
        QString note;          ///< names the documents that could not be downloaded
        qsizetype leftOff = 0; ///< requested labels that the carrier did not put on the form
    };
    /// What the carrier tells about a form whose response was lost.
    struct Recovery {
        std::optional<ShippoManifest> manifest = {}; ///< empty: the form was not made
        bool isUnknown = false;                      ///< the carrier cannot tell
    };

    static AppError notStored(const ShipmentLog &log);
    void fail(const AppError &error);
    Task<LogRead<QList<ShipmentRecord>>> todaysLabels(ScanFormScope scope);
    Task<> showNoLabelsToManifest(bool testKey);
    Task<bool> confirmOddLabels(QList<ShipmentRecord> labels, bool testKey);
    Task<Documents> requestForm(QList<ShipmentRecord> labels, bool testKey, ShippoAddress from);
    Task<Documents> fetchDocuments(ScanForm form, ShippoManifest manifest);
    Task<QByteArray> fetchDocument(QString link);
    Task<std::optional<ShippoManifest>> findListed(ScanForm form);
    Task<Recovery> findManifest(ScanForm form);
    Task<std::optional<Documents>> recoverForm(ScanForm form);
    Task<bool> recoverForms(QList<ScanForm> forms);
    void showForm(const Documents &documents, qsizetype labels);
    void awaitMidnight();

    AppState &m_app;
    ArrivalWatch m_arrivals;
    QDate m_day;            ///< of AppState::scanFormStatus
    quint64 m_midnight = 0; ///< timer until the end of that day
    QPropertyNotifier m_statusWatch;
};

} // namespace parcelory
