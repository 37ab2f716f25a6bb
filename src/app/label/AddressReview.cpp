#include "app/label/AddressReview.h"

#include "carrier/ShippoRecords.h"
#include "compose/AddressGuard.h"
#include "core/ShippoAddress.h"
#include "core/Text.h"
#include "core/ports/Prompts.h"
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

QString addressLines(const ShippoAddress &address)
{
    return reviewLines(address.street1, address.street2, address.city, address.state, address.zip);
}

/// The address with its person and country, for comparing.
QString whole(const QString &name, const QString &lines, const QString &country)
{
    return joinPresent({name, lines, country.isEmpty() ? u"US"_s : country}, u"\n"_s);
}

QString whole(const ShippoAddress &address)
{
    return whole(address.name, addressLines(address), address.country);
}

Question standardizedQuestion(const QStringList &lost, const ShippoAddress &typed, const ShippoAddress &version)
{
    const QString uspsVersion = addressLines(version);
    const QString dropped = u"USPS standardization DROPPED: "_s + lost.join(u", "_s), which = u"Which should ship?"_s;
    return {.title = u"USPS Rewrote This Address"_s,
            .text = dropped + u"\n\nUSPS version:\n"_s + uspsVersion + u"\n\n"_s + which,
            .choices = {u"Keep What I Typed"_s, u"Use USPS Version"_s},
            .safeChoice = 0,
            .comparison =
                Comparison{dropped, typedTitle, whole(typed), u"USPS version:"_s, whole(version), lost, which}};
}

Question printedQuestion(const QStringList &lost, const ShippoAddress &typed, const QString &printed)
{
    const QString risk = u"Buying this label risks a package without its full address. Go back and reword the street "
                         "(e.g. \"Box 239\", \"Unit 4\"), or continue anyway."_s;
    return {.title = u"The Label Will Drop: "_s + lost.join(u", "_s),
            .text = addressLines(typed) + u"\n\nThe carrier will print:\n"_s + printed + u"\n\n"_s + risk,
            .choices = {u"Go Back & Fix Address"_s, u"Continue Anyway"_s},
            .safeChoice = 0,
            .comparison = Comparison{{},
                                     typedTitle,
                                     whole(typed),
                                     u"The carrier will print:"_s,
                                     whole(typed.name, printed, typed.country),
                                     lost,
                                     risk}};
}

} // namespace

std::optional<Question> AddressReview::standardized(const ShippoAddress &typed, const ShippoValidatedAddress &answer)
{
    const ShippoAddress version = adopted(typed, answer);
    const QStringList lost = AddressGuard::lostTokens(typed.street1, typed.street2, version.street1, version.street2);
    if (lost.isEmpty())
        return std::nullopt;
    return standardizedQuestion(lost, typed, version);
}

std::optional<Question> AddressReview::printed(const ShippoAddress &typed, const ShippoShipmentListed::Address &printed)
{
    const QString street1 = printed.street1.value_or(QString()), street2 = printed.street2.value_or(QString());
    const QStringList lost = AddressGuard::lostTokens(typed.street1, typed.street2, street1, street2);
    if (lost.isEmpty())
        return std::nullopt;
    const QString lines = reviewLines(street1, street2, printed.city.value_or(QString()),
                                      printed.state.value_or(QString()), printed.zip.value_or(QString()));
    return printedQuestion(lost, typed, lines);
}

ShippoAddress AddressReview::adopted(const ShippoAddress &typed, const ShippoValidatedAddress &standardized)
{
    ShippoAddress to = typed;
    to.street1 = standardized.street1.value_or(to.street1);
    to.street2 = standardized.street2.value_or(QString());
    to.city = standardized.city.value_or(to.city);
    to.state = standardized.state.value_or(to.state);
    to.zip = standardized.zip.value_or(to.zip);
    return to;
}

} // namespace parcelory
