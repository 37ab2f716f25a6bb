#include "app/AppState.h"
#include "app/label/AddressReview.h"
#include "app/label/LabelScreen.h"
#include "carrier/ShippoError.h"
#include "carrier/ShippoRecords.h"
#include "compose/SecondLabel.h"
#include "core/AppError.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "core/Text.h"
#include "core/ports/Prompts.h"
#include "shell/ErrorLog.h"

#include <QScopeGuard>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The field that the carrier's reasons against an address are about, as far as their words tell.
DraftField fieldOf(const QString &reasons)
{
    const auto names = [&reasons](QStringView word) { return reasons.contains(word, Qt::CaseInsensitive); };
    if (names(u"street") || names(u"address line"))
        return DraftField::street;
    if (names(u"zip") || names(u"postal code"))
        return DraftField::zip;
    return names(u"city") ? DraftField::city : DraftField::street;
}

/// What a field of the recipient is called in a sentence.
QString nameOf(DraftField field)
{
    switch (field) {
    case DraftField::name:
        return u"name"_s;
    case DraftField::city:
        return u"city"_s;
    case DraftField::zip:
        return u"ZIP"_s;
    default:
        return u"street"_s;
    }
}

} // namespace

Task<> LabelScreen::validate()
{
    if (busy)
        co_return;
    settleCountry(); // a shortcut leaves the focus in the field
    dropBanner();
    faultyField = std::nullopt;
    forgetValidation();
    if (isInternational()) {
        validationStatus = u"International — address not validated"_s;
        validationOK = true;
        co_await continueTowardRating();
        co_return;
    }
    {
        busy = true;
        validating = true;
        const auto done = qScopeGuard([this] {
            validating = false;
            busy = false;
        });
        try {
            const ShippoAddress typed = m_app.draftTo;
            const ShippoValidatedAddress answer = co_await m_app.shippo.validateAddress(typed);
            co_await applyValidation(typed, answer);
        } catch (const AppError &error) {
            fail(u"Validate Address"_s, error);
        }
    }
    if (validationOK)
        co_await continueTowardRating();
}

/// Applies the carrier's validation result to the draft.
Task<> LabelScreen::applyValidation(ShippoAddress typed, ShippoValidatedAddress answer)
{
    if (!(m_app.draftTo.value() == typed)) {
        if (!m_app.draftTo.value().isEmpty()) // otherwise the form was cleared, and the result is no longer needed
            warn(draftChanged);
        co_return;
    }
    const ShippoValidationResults results = answer.validationResults.value_or(ShippoValidationResults{});
    if (!results.isValid.value_or(false)) { // a missing result counts as not valid
        const QString reasons = joinedTexts(results.messages);
        validationOK = false;
        const auto refusal =
            ShippoError::validation(reasons.isEmpty() ? u"Address could not be validated."_s : reasons);
        validationStatus = m_app.recorded(u"Validate Address"_s, refusal, Popup::no);
        faultyField = fieldOf(reasons);
        co_return;
    }
    bool adopt = true;
    if (const std::optional<Question> question = AddressReview::standardized(typed, answer)) {
        const int choice = co_await ask(*question);
        adopt = choice == 1;
        if (!(m_app.draftTo.value() == typed)) { // a scan may have filled in another recipient meanwhile
            warn(draftChanged);
            co_return;
        }
    }
    if (adopt) {
        const ShippoAddress adopted = AddressReview::adopted(typed, answer);
        m_filled = m_filled == typed ? adopted : m_filled; // the same recipient
        m_app.draftTo = adopted;
    }
    validationStatus = adopt ? u"Valid ✓ (USPS version)"_s : u"Valid ✓ (kept as typed)"_s;
    validationOK = true;
}

void LabelScreen::askForMissing()
{
    const std::optional<Obstacle> found = obstacle();
    if (found && !recipientFilled() && found->field != DraftField::profile)
        warnUntilEdit((reference.value().isEmpty() ? u"The address has no %1 — type it, then validate."_s
                                                   : u"The invoice has no %1 — type it, then validate."_s)
                          .arg(nameOf(found->field)),
                      found->field);
}

void LabelScreen::takePastedAddress(const ShippoAddress &pasted)
{
    const ShippoAddress before = m_app.draftTo;
    ShippoAddress to = pasted;
    if (to.name.isEmpty()) { // only the place of the same person
        to.name = before.name;
        to.company = before.company;
        to.phone = to.phone.isEmpty() ? before.phone : to.phone;
        to.email = to.email.isEmpty() ? before.email : to.email;
    }
    m_app.draftTo = to;
    m_beforePaste = before;
    m_pasted = to;
    banner = Banner{u"The pasted address is now in the fields."_s, true, Banner::Offer::undoPaste};
    m_bannerAboutDraft = true;
}

bool LabelScreen::isPasteShown() const
{
    return !m_pasted.isEmpty() && m_app.draftTo.value() == m_pasted;
}

bool LabelScreen::isClearShown() const
{
    return banner.value().value_or(Banner{}).offer == Banner::Offer::undoClear;
}

bool LabelScreen::isFillDue() const
{
    const ShippoAddress &to = m_app.draftTo.value();
    return !busy && !isClosing() && !to.isEmpty() && to == m_filled && validationStatus.value().isEmpty();
}

bool LabelScreen::isFillShown() const
{
    return m_app.lastChange.isOffered(m_fillChange) && m_app.draftTo.value() == m_filled;
}

bool LabelScreen::canUndo() const
{
    return isPasteShown() || isClearShown() || isFillShown();
}

bool LabelScreen::undo()
{
    if (isClearShown()) {
        banner = std::nullopt;
        restore(m_cleared);
    } else if (isPasteShown()) {
        banner = std::nullopt;
        m_pasted = {};
        m_app.draftTo = m_beforePaste;
    } else if (isFillShown()) {
        m_app.lastChange.undo();
    } else {
        return false;
    }
    return true;
}

/// Offers to take back that another recipient replaced a draft, unless that draft's label is being bought.
void LabelScreen::noteFill()
{
    const ShippoAddress &before = m_beforeFill.recipient;
    m_app.lastChange.forget(m_fillChange);
    m_filled = m_app.draftTo;
    if (before.isEmpty() || m_beforeFill == saved() || isBuyingFor(before) || purchases.unresolvedFor(before))
        return;
    const QString who = joinPresent({before.name, trimBlanks(before.city + u' ' + before.state)}, u", "_s);
    m_fillChange = m_app.lastChange.note(u"The form now holds another recipient. It held "_s + who, [this] {
        banner = std::nullopt;
        restore(m_beforeFill);
        m_app.tab = MainTab::newLabel;
    });
}

/// A draft that has its label must not come back by Undo.
void LabelScreen::forgetSoldUndo(const ShippoAddress &sold)
{
    if (isSameRecipient(sold, m_beforeFill.recipient))
        m_app.lastChange.forget(m_fillChange);
    if (isClearShown() && isSameRecipient(sold, m_cleared.recipient))
        banner = std::nullopt;
}

Banner::Offer LabelScreen::offer() const
{
    const Banner::Offer own = banner.value().value_or(Banner{}).offer;
    return own == Banner::Offer::none && needsSignIn ? Banner::Offer::signInAgain : own;
}

void LabelScreen::takeOffer()
{
    const bool signsIn = offer() == Banner::Offer::signInAgain;
    if (signsIn && busy)
        return; // the operation may still ask the clerk a question
    if (!signsIn)
        undo();
    banner = std::nullopt;
    if (signsIn)
        m_app.signInAgain();
}

Task<> LabelScreen::continueTowardRating()
{
    if (totalPounds() <= 0)
        takeWeight();
    if (formComplete()) {
        co_await fetchRates();
        co_return;
    }
    const bool weightMissing = totalPounds() <= 0;
    if (isInternational() && weightMissing)
        warnUntilEdit(
            u"Add a weight (put the package on the scale and press Weigh) and international rates will load."_s);
    else if (!isInternational() && weightMissing)
        warnUntilEdit(
            u"Address valid — add a weight (put the package on the scale and press Weigh) and rates will load."_s);
    else if (!isInternational())
        warnUntilEdit(u"Address valid — complete the package details to get rates."_s);
}

/// False if the carrier would print the address without one of its numbers and the clerk goes back to correct it.
Task<bool> LabelScreen::reviewPrintedAddress(ShippoShipment shipment)
{
    const std::optional<Question> question =
        shipment.addressTo ? AddressReview::printed(m_app.draftTo, *shipment.addressTo) : std::nullopt;
    if (!question)
        co_return true;
    const int choice = co_await ask(*question);
    co_return choice == 1;
}

/// Shows the address that the question is about.
Task<int> LabelScreen::ask(Question question)
{
    m_app.tab = MainTab::newLabel;
    m_app.openChoices = m_app.openChoices + 1;
    const auto answered = qScopeGuard([this] { m_app.openChoices = m_app.openChoices - 1; });
    co_return co_await m_app.platform.prompts.choose(question);
}

} // namespace parcelory
