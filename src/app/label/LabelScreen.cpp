#include "app/label/LabelScreen.h"

#include "app/AppState.h"
#include "app/label/LabelDraft.h"
#include "app/purchase/Purchases.h"
#include "carrier/ShippoRecords.h"
#include "core/AppError.h"
#include "core/Task.h"
#include "core/Text.h"
#include "shell/ErrorLog.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

LabelScreen::LabelScreen(AppState &app)
    : LabelDraft(app), purchases(app), last(app, busy), m_papers(app), m_lastRecipient(app.draftTo)
{
    const auto watch = [this](auto action, auto &...property) {
        (m_notifiers.push_back(property.addNotifier(action)), ...);
    };
    buildOn(app, purchases, last);
    watch([this] { draftEdited(); }, edits);
    watch([this] { recipientEdited(); }, m_app.draftTo);
    watch([this] { invalidateIntlRates(); }, customs);
    watch([this] { selectRateOfClass(); }, svcClass);
    watch([this] { takeFilledDraft(); }, m_app.draftFillCount);
    watch([this] { spendQuestion = QString(); }, selectedRateID, reference);
    watch( // the reference that the spend guard missed
        [this] {
            if (faultyField.value() == DraftField::reference)
                forgetFault();
        },
        reference);
    watch([this] { watchForSecondLabel(); }, selectedRateID, reference, purchases.unresolved, buying);
    // An unresolved purchase may need this key.
    watch([this] { spawn([this] { return purchases.checkAgain(); }); }, m_app.keyChanges);
    QObject::connect(&purchases, &Purchases::purchaseResolved, &m_lifetime,
                     [this](const ResolvedPurchase &purchase) { takeResolved(purchase); });
    QObject::connect(&purchases, &Purchases::resolvedPrinted, &m_lifetime,
                     [this](const QString &transaction, const QString &printed) {
                         last.takeReprint(transaction, printed);
                         banner = Banner{.text = printed, .transaction = transaction};
                     });
    QObject::connect(&last, &LastLabelCard::reprinted, &purchases, &Purchases::takeReprint);
    QObject::connect(&last, &LastLabelCard::told, &m_lifetime,
                     [this](const QString &transaction, const QString &text, bool ok) {
                         banner = Banner{text, ok, Banner::Offer::none, transaction};
                     });
    QObject::connect(&last, &LastLabelCard::settled, &m_lifetime, [this](const QString &transaction) {
        const auto isOver = [&transaction](const std::optional<Banner> &news) {
            return news && news->transaction == transaction;
        };
        if (isOver(m_otherNews))
            m_otherNews = std::nullopt;
        if (isOver(banner))
            dropBanner();
    });
    // The press may be meant for the scanned parcel, whose invoice was not read.
    watch(
        [this] {
            if (std::exchange(m_isReading, m_app.isReadingInvoice()) && !m_isReading)
                pauseBuy();
        },
        m_app.scanBusy, m_app.scanStatusKind);
    QObject::connect(&app, &AppState::fillBegins, &m_lifetime, [this] { m_beforeFill = saved(); });
    QObject::connect(&app, &AppState::scanFailed, &m_lifetime, [this](const QString &text, bool isSessionOver) {
        banner = Banner{text, false};
        m_bannerAboutDraft = false;
        if (m_isTakingInvoice) // another invoice was ignored
            m_otherNews = banner;
        needsSignIn = needsSignIn || isSessionOver;
    });
    watch([this] { m_isTakingInvoice = m_isTakingInvoice && m_app.scanBusy; }, m_app.scanBusy);
    watch([this] { needsSignIn = false; }, m_app.flow,
          m_app.scannedInvoice); // an invoice can be read only in a session
}

LabelScreen::~LabelScreen()
{
    endBuyPause();
}

void LabelScreen::draftEdited()
{
    forgetFault();
    clearRates();
}

void LabelScreen::forgetFault()
{
    faultyField = std::nullopt;
    if (std::exchange(m_bannerAboutDraft, false))
        dropBanner();
}

void LabelScreen::dropBanner()
{
    banner = m_otherNews;
}

void LabelScreen::recipientEdited()
{
    const ShippoAddress previous = std::exchange(m_lastRecipient, m_app.draftTo);
    ShippoAddress sameWhereabouts = previous;
    sameWhereabouts.name = m_lastRecipient.name;
    sameWhereabouts.company = m_lastRecipient.company;
    sameWhereabouts.phone = m_lastRecipient.phone;
    sameWhereabouts.email = m_lastRecipient.email;
    if (!(sameWhereabouts == m_lastRecipient)) { // the validated address is no longer in the form
        forgetValidation();
        showIntlPaperwork = false; // the open sheet is about another parcel
    }
}

void LabelScreen::invalidateIntlRates()
{
    faultyField = std::nullopt;
    if (!isInternational())
        return;
    const bool hadRates = !rates.value().isEmpty();
    countEdit();
    if (hadRates)
        warn(u"Customs details changed — get rates again so the label matches."_s);
}

void LabelScreen::takeFilledDraft()
{
    forgetValidation();
    showIntlPaperwork = false;
    m_otherNews = std::nullopt;
    banner = std::nullopt;
    m_isTakingInvoice = m_app.scanBusy && !m_app.draftReference.value().isEmpty();
    noteFill();
}

void LabelScreen::forgetValidation()
{
    validationStatus = QString();
    validationOK = false;
}

void LabelScreen::clearDraft()
{
    if (isClearShown()) // a second press must not take away the offer to undo the first
        return;
    const bool wasClear = isClear();
    m_cleared = saved();
    m_app.lastChange.forget(m_fillChange);
    m_otherNews = std::nullopt;
    banner = std::nullopt;
    forgetValidation();
    m_app.draftTo = ShippoAddress{};
    clearParcel();
    countEdit();
    showIntlPaperwork = false;
    if (!wasClear) {
        banner = Banner{u"The form is cleared."_s, true, Banner::Offer::undoClear};
        m_bannerAboutDraft = true;
    }
}

void LabelScreen::clearRates()
{
    rates = QList<ShippoRate>();
    selectedRateID = std::nullopt;
    secondLabel = QString();
    secondLabelAgreed = false;
    spendQuestion = QString();
    endBuyPause(); // of a button that is gone; the next parcel's first press counts
}

void LabelScreen::warn(const QString &text, std::optional<DraftField> field)
{
    banner = Banner{text, false};
    m_bannerAboutDraft = false;
    faultyField = field;
}

void LabelScreen::warnUntilEdit(const QString &text, std::optional<DraftField> field)
{
    warn(text, field);
    m_bannerAboutDraft = true;
}

void LabelScreen::fail(const QString &context, const AppError &error)
{
    warn(m_app.recorded(context, error, Popup::yes));
}

NextStep LabelScreen::nextStep() const
{
    if (busy)
        return NextStep::none;
    if (!rates.value().isEmpty())
        return selectedRate() && !isBuyClosed() && !awaitsFill() ? NextStep::buy : NextStep::none;
    if (recipientFilled() && !validationOK)
        return NextStep::validate;
    return formComplete() ? NextStep::getRates : NextStep::none;
}

bool LabelScreen::isBuyClosed() const
{
    const std::optional<UnresolvedPurchase> pending = purchases.unresolvedFor(m_app.draftTo);
    return pending && !pending->isInconclusive;
}

std::optional<Banner> LabelScreen::news() const
{
    std::optional<Banner> shown = banner;
    const QString waiting = last.waiting();
    if (shown && shown->ok && shown->offer == Banner::Offer::none && !waiting.isEmpty())
        shown = Banner{joinPresent({shown->text, waiting}, u" "_s), false};
    return shown;
}

std::optional<ShippoRate> LabelScreen::selectedRate() const
{
    const QList<ShippoRate> &offered = rates.value();
    const auto found = std::ranges::find(offered, selectedRateID.value(), &ShippoRate::objectId);
    return found == offered.end() ? std::nullopt : std::optional(*found);
}

} // namespace parcelory
