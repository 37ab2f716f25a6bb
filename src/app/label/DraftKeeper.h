#pragma once

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "core/Task.h"
#include "records/DraftStore.h"

#include <QObject>

#include <chrono>
#include <optional>

namespace parcelory {

/// Keeps the New Label screen's draft on the disk, so that it comes back after a crash, a quit or an update. A draft
/// whose label is being bought is not stored any more, and PurchaseFlow removes it before it closes the purchase: a
/// draft that comes back has no label.
class DraftKeeper : public QObject {
public:
    /// From the first change to the write; later keys of that time are part of it.
    static constexpr auto pause = std::chrono::milliseconds(400);

    DraftKeeper(AppState &app, LabelScreen &label);
    ~DraftKeeper() override;

    /// Puts the draft that the last program left back into the screen, and stores every change from then on. Call once,
    /// at the start.
    Task<> takeStored();
    /// Completes once the disk has the draft as it is now.
    Task<> storeNow();

private:
    struct Found;
    static Found readBooks(AppState &app);
    void bringBack(const StoredDraft &stored);
    void takeResolved(const ResolvedPurchase &purchase);
    bool mayStore() const;
    bool isStored() const;
    bool isInPurchase() const;
    void notePurchase();
    QDateTime storedAt() const;
    void schedule();
    void store();

    AppState &m_app;
    LabelScreen &m_label;
    std::optional<StoredDraft> m_held; ///< not brought back, because its label may have been bought
    /// The recipient on the screen while its label was or may have been bought, and when that began.
    struct Doubtful {
        ShippoAddress recipient;
        QDateTime since;
    };
    std::optional<Doubtful> m_doubtful;
    bool m_isTaken = false; ///< until then, the file holds the last program's draft
    quint64 m_timer = 0;
};

} // namespace parcelory
