#pragma once

#include "app/AppState.h"
#include "core/Observable.h"
#include "core/Task.h"

namespace parcelory {

/// The SCAN Form window: the forms made on this computer, and the selected form with its documents and labels. Lives as
/// long as AppState.
class ScanFormScreen : public Observable {
    Q_OBJECT
public:
    /// How many forms the history shows.
    static constexpr int listLimit = 100;

    explicit ScanFormScreen(AppState &app) : m_app(app) {}

    Observed<QList<ScanForm>> forms{this}; ///< newest first
    Observed<std::optional<ScanForm>> shown{this};
    Observed<QList<QByteArray>> documents{this}; ///< PDFs of the shown form
    /// The labels on the shown form; one that this computer did not buy has only its transaction's id.
    Observed<QList<ShipmentRecord>> labels{this};
    Observed<QString> message{this};
    Observed<bool> busy{this, false};

    /// "11/20/26, 2:41 PM — 12 labels"
    static QString title(const ScanForm &form);
    /// "12 labels on this form, 3 from other desks. The carrier did not put 2 of them on the form."
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
