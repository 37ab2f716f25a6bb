#pragma once

#include "app/AppState.h"
#include "core/Task.h"

namespace parcelory {

/// The SCAN Form window: the forms made on this computer, and the selected form with its documents and labels. Lives as
/// long as AppState.
class ScanFormScreen : public QObject {
    Q_OBJECT
public:
    /// How many forms the history shows.
    static constexpr int listLimit = 100;

    explicit ScanFormScreen(AppState &app) : m_app(app) {}

    QProperty<QList<ScanForm>> forms; ///< newest first
    QProperty<std::optional<ScanForm>> shown;
    QProperty<QList<QByteArray>> documents; ///< PDFs of the shown form
    QProperty<QList<ShipmentRecord>> labels;
    QProperty<QString> message;
    QProperty<bool> busy{false};

    /// "11/20/26, 2:41 PM — 12 labels"
    static QString title(const ScanForm &form);
    /// "12 labels on this form, 3 of them of other desks"
    QString labelsText() const;

    /// Reads the history and shows the last form.
    Task<> load();
    Task<> show(ScanForm form);
    /// Prints or saves every document of the shown form.
    Task<> print();
    Task<> save();

private:
    Task<> run(Task<QString> (ScanFormScreen::*operation)());
    Task<QString> printAll();
    Task<QString> saveAll();

    AppState &m_app;
};

} // namespace parcelory
