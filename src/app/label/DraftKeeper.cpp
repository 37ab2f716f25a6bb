#include "app/label/DraftKeeper.h"

#include "app/AppState.h"
#include "app/purchase/Purchases.h"
#include "compose/SecondLabel.h"
#include "core/AppError.h"
#include "core/Task.h"
#include "records/PurchaseJournal.h"
#include "records/ShipmentLog.h"

#include <QCoreApplication>

#include <algorithm>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

/// The stored draft, and what the books know of its recipient.
struct DraftKeeper::Found {
    std::optional<StoredDraft> stored;
    QString failure; ///< why the books could not be read
    bool isOpen = false, isBought = false;
};

DraftKeeper::DraftKeeper(AppState &app, LabelScreen &label) : m_app(app), m_label(label)
{
    connect(&label, &LabelScreen::changed, this, &DraftKeeper::schedule);
    connect(&label.purchases, &Purchases::purchaseResolved, this, &DraftKeeper::takeResolved);
}

DraftKeeper::~DraftKeeper()
{
    m_app.platform.clock.cancel(m_timer);
    store();
}

DraftKeeper::Found DraftKeeper::readBooks(AppState &app)
{
    Found found{.stored = app.drafts.read(), .failure = {}};
    if (!found.stored)
        return found;
    const ShippoAddress &to = found.stored->draft.recipient;
    try {
        app.journal.open(); // a journal that cannot be read may hold its purchase
        found.isOpen = std::ranges::any_of(app.journal.openPurchases(), [&to](const OpenPurchase &purchase) {
            return purchase.isUnreadable || isSameRecipient(purchase.recipient, to);
        });
        for (const bool testMode : {false, true})
            found.isBought =
                found.isBought || !app.log
                                       .labelsLike({}, found.stored->storedAt, testMode,
                                                   [&to](const ShipmentRecord &label) { return isLabelFor(to, label); })
                                       .orThrow()
                                       .isEmpty();
    } catch (const AppError &error) {
        found.failure = error.description();
    }
    return found;
}

Task<> DraftKeeper::takeStored()
{
    const Found found = co_await onPool([&app = m_app] { return readBooks(app); });
    m_isTaken = true;
    if (found.stored && found.isBought)
        m_app.drafts.clear();
    else if (found.stored && found.isOpen)
        m_held = found.stored;
    else if (found.stored && !found.failure.isEmpty()) {
        m_held = found.stored;
        m_label.banner = Banner{u"The last draft was not brought back, because Parcelory can't check if its label was "
                                "bought: %1"_s.arg(found.failure),
                                false};
    } else if (found.stored) {
        bringBack(*found.stored);
    }
    schedule();
}

void DraftKeeper::bringBack(const StoredDraft &stored)
{
    if (!m_label.isClear()) // the clerk has begun another parcel
        return;
    m_label.restore(stored.draft);
    const bool isUpdated = stored.version != QCoreApplication::applicationVersion();
    if (!stored.draft.recipient.isEmpty())
        m_label.banner = Banner{isUpdated ? u"The draft is back after the update — validate the address again."_s
                                          : u"The draft is back — validate the address again."_s};
    else if (!m_label.isClear())
        m_label.banner = Banner{u"The draft is back."_s};
}

void DraftKeeper::takeResolved(const ResolvedPurchase &purchase)
{
    const bool isUnknown = purchase.recipient.isEmpty(); // the journal's entry could not be read
    if (!m_held || purchase.isSecond || !(isUnknown || isSameRecipient(purchase.recipient, m_held->draft.recipient)))
        return;
    if (!purchase.isBought && m_label.purchases.unresolvedFor(m_held->draft.recipient))
        return; // another purchase for the recipient is still open
    const StoredDraft held = *std::exchange(m_held, std::nullopt);
    if (!purchase.isBought)
        bringBack(held);
    schedule();
}

/// False while a label for this recipient is being bought, or may have been bought. The stored draft is then as old as
/// the press of Buy, so that a later start finds the label in the mailing log as the newer of the two.
bool DraftKeeper::mayStore() const
{
    const bool isHeld = m_held && m_label.isClear();
    return m_isTaken && !isHeld && !isInPurchase();
}

bool DraftKeeper::isInPurchase() const
{
    return m_label.isBuyingFor(m_label.recipient()) || m_label.purchases.unresolvedFor(m_label.recipient());
}

/// What is typed for a recipient while its label is bought may be the same parcel. Such a draft counts as being as old
/// as the press of Buy until the form has another recipient: a later start finds its label in the mailing log.
void DraftKeeper::notePurchase()
{
    const ShippoAddress &recipient = m_label.recipient();
    if (m_doubtful && !isSameRecipient(m_doubtful->recipient, recipient))
        m_doubtful = std::nullopt;
    if (m_doubtful || recipient.isEmpty() || !isInPurchase())
        return;
    const std::optional<StoredDraft> stored = m_app.drafts.stored();
    const bool isStored = stored && isSameRecipient(stored->draft.recipient, recipient);
    m_doubtful = Doubtful{recipient, isStored ? stored->storedAt : m_app.platform.clock.now()};
}

QDateTime DraftKeeper::storedAt() const
{
    return m_doubtful ? m_doubtful->since : m_app.platform.clock.now();
}

bool DraftKeeper::isStored() const
{
    const std::optional<StoredDraft> stored = m_app.drafts.stored();
    return m_label.isClear() ? !stored : stored && stored->draft == m_label.saved();
}

void DraftKeeper::schedule()
{
    notePurchase();
    if (m_timer == 0 && mayStore() && !isStored())
        m_timer = m_app.platform.clock.after(pause, [this] {
            m_timer = 0;
            store();
        });
}

void DraftKeeper::store()
{
    if (!mayStore() || isStored())
        return;
    if (m_label.isClear())
        m_app.drafts.clear();
    else
        m_app.drafts.save(m_label.saved(), storedAt(), QCoreApplication::applicationVersion());
}

Task<> DraftKeeper::storeNow()
{
    store();
    co_await onPool([&drafts = m_app.drafts] { drafts.flush(); });
}

} // namespace parcelory
