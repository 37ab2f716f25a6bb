#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "carrier/ShippoRecords.h"
#include "compose/AddressGuard.h"
#include "core/AppError.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "core/Text.h"
#include "core/ports/Prompts.h"

#include <QScopeGuard>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString typedTitle = u"What you typed:"_s;

/// An address as the review dialogs show it: the street lines, then the place on one line.
template <class Street, class Text>
QString reviewLines(const Street &street1, const Street &street2, const Text &city, const Text &state, const Text &zip)
{
    const QString place = trimBlanks(city + u' ' + state + u' ' + zip);
    return joinPresent({street1, street2, place}, u"\n"_s);
}

Question standardizedQuestion(const QStringList &lost, const QString &typed, const QString &uspsVersion)
{
    const QString dropped = u"USPS standardization DROPPED: "_s + lost.join(u", "_s), which = u"Which should ship?"_s;
    return {.title = u"USPS Rewrote This Address"_s,
            .text = dropped + u"\n\nUSPS version:\n"_s + uspsVersion + u"\n\n"_s + which,
            .choices = {u"Keep What I Typed"_s, u"Use USPS Version"_s},
            .safeChoice = 0,
            .comparison = Comparison{dropped, typedTitle, typed, u"USPS version:"_s, uspsVersion, lost, which}};
}

Question printedQuestion(const QStringList &lost, const QString &typed, const QString &printed)
{
    const QString risk = u"Buying this label risks a package without its full address. Go back and reword the street "
                         "(e.g. \"Box 239\", \"Unit 4\"), or continue anyway."_s;
    return {.title = u"The Label Will Drop: "_s + lost.join(u", "_s),
            .text = typed + u"\n\nThe carrier will print:\n"_s + printed + u"\n\n"_s + risk,
            .choices = {u"Go Back & Fix Address"_s, u"Continue Anyway"_s},
            .safeChoice = 0,
            .comparison = Comparison{{}, typedTitle, typed, u"The carrier will print:"_s, printed, lost, risk}};
}

} // namespace

Task<> LabelScreen::validate()
{
    if (busy)
        co_return;
    banner = std::nullopt;
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
        validationStatus = reasons.isEmpty() ? u"Address could not be validated."_s : reasons;
        co_return;
    }
    const QString street1 = answer.street1.value_or(typed.street1), street2 = answer.street2.value_or(QString());
    const QStringList lost = AddressGuard::lostTokens(typed.street1, typed.street2, street1, street2);
    bool adopt = true;
    if (!lost.isEmpty()) {
        const QString uspsVersion = reviewLines(street1, street2, answer.city.value_or(typed.city),
                                                answer.state.value_or(typed.state), answer.zip.value_or(typed.zip));
        const QString typedLines = reviewLines(typed.street1, typed.street2, typed.city, typed.state, typed.zip);
        m_app.tab = MainTab::newLabel; // show the address that the question is about
        const int choice = co_await m_app.platform.prompts.choose(standardizedQuestion(lost, typedLines, uspsVersion));
        adopt = choice == 1;
        if (!(m_app.draftTo.value() == typed)) { // a scan may have filled in another recipient meanwhile
            warn(draftChanged);
            co_return;
        }
    }
    if (adopt)
        adoptStandardized(answer);
    validationStatus = adopt ? u"Valid ✓ (USPS version)"_s : u"Valid ✓ (kept as typed)"_s;
    validationOK = true;
}

void LabelScreen::adoptStandardized(const ShippoValidatedAddress &standardized)
{
    ShippoAddress to = m_app.draftTo;
    to.street1 = standardized.street1.value_or(to.street1);
    to.street2 = standardized.street2.value_or(QString());
    to.city = standardized.city.value_or(to.city);
    to.state = standardized.state.value_or(to.state);
    to.zip = standardized.zip.value_or(to.zip);
    m_app.draftTo = to;
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
        warn(u"Add a weight (put the package on the scale and press Weigh) and international rates will load."_s);
    else if (!isInternational() && weightMissing)
        warn(u"Address valid — add a weight (put the package on the scale and press Weigh) and rates will load."_s);
    else if (!isInternational())
        warn(u"Address valid — complete the package details to get rates."_s);
}

/// False if the carrier would print the address without one of its numbers and the clerk goes back to correct it.
Task<bool> LabelScreen::reviewPrintedAddress(ShippoShipment shipment)
{
    if (!shipment.addressTo)
        co_return true;
    const ShippoShipmentListed::Address &printed = *shipment.addressTo;
    const ShippoAddress typed = m_app.draftTo;
    const QString street1 = printed.street1.value_or(QString()), street2 = printed.street2.value_or(QString());
    const QStringList lost = AddressGuard::lostTokens(typed.street1, typed.street2, street1, street2);
    if (lost.isEmpty())
        co_return true;
    const QString printedLines = reviewLines(street1, street2, printed.city.value_or(QString()),
                                             printed.state.value_or(QString()), printed.zip.value_or(QString()));
    const QString typedLines = reviewLines(typed.street1, typed.street2, typed.city, typed.state, typed.zip);
    m_app.tab = MainTab::newLabel;
    const int choice = co_await m_app.platform.prompts.choose(printedQuestion(lost, typedLines, printedLines));
    co_return choice == 1;
}

} // namespace parcelory
