#pragma once

#include "app/AppState.h"
#include "carrier/ArrivalWatch.h"
#include "core/AppError.h"

namespace parcelory {

/// Makes the SCAN form of the day's labels, and recovers forms whose response was lost. The outcome is AppState's
/// scanFormStatus and scanFormPDF.
class ScanFormFlow {
public:
    explicit ScanFormFlow(AppState &app) : m_app(app), m_arrivals(app.platform.clock) {}

    /// AppState::createScanForm().
    Task<> create(ShippoAddress from);
    /// Fetches forms whose response was lost; silent while the carrier cannot be asked.
    Task<> recoverLostForms();

private:
    void fail(const AppError &error);
    Task<> showNoLabelsToManifest(bool testKey);
    Task<bool> confirmOddLabels(QList<ShipmentRecord> labels, bool testKey);
    Task<QByteArray> requestForm(QList<ShipmentRecord> labels, bool testKey, ShippoAddress from);
    Task<QByteArray> fetchDocuments(ScanForm form, ShippoManifest manifest);
    Task<std::optional<ShippoManifest>> findManifest(ScanForm form);
    Task<std::optional<QByteArray>> recoverForm(ScanForm form);
    Task<bool> recoverForms(QList<ScanForm> forms);

    AppState &m_app;
    ArrivalWatch m_arrivals;
};

} // namespace parcelory
