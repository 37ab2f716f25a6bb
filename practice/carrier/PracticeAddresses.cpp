#include "practice/carrier/PracticeAddresses.h"

#include "core/Json.h"
#include "practice/carrier/PracticeAnswers.h"
#include "practice/carrier/PracticeLedger.h"

#include <QRegularExpression>

#include <numeric>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr const char *addressKeys[] = {"name",  "company", "street1", "street2", "city",
                                       "state", "zip",     "country", "phone",   "email"};

Json message(const char *code, const char *type, const char *text)
{
    return {{"source", "USPS"}, {"code", code}, {"type", type}, {"text", text}};
}

bool isUs(const Json &address)
{
    return textOf(address, "country").compare(u"US"_s, Qt::CaseInsensitive) == 0;
}

bool namesAPlace(const Json &address)
{
    return !textOf(address, "street1").isEmpty() && !textOf(address, "city").isEmpty() &&
           (!isUs(address) || !textOf(address, "zip").isEmpty());
}

bool isComplete(const Json &address)
{
    return namesAPlace(address) && !textOf(address, "name").isEmpty();
}

/// "+1 555 341 9393" becomes "0015553419393".
QString plainPhone(QString phone)
{
    static const QRegularExpression noise(u"[^0-9]"_s);
    if (phone.startsWith(u'+'))
        phone.replace(0, 1, u"00"_s);
    return phone.remove(noise);
}

/// Rewrites the street lines in the postal service's style.
void standardizeStreet(QString &street1, QString &street2)
{
    static const QRegularExpression box(u"\\bBOX \\w+"_s);
    static const QRegularExpression unit(u"\\s*#(?!\\s*BOX\\b)\\s*"_s);
    static const QRegularExpression signToEnd(u"\\s*#.*$"_s);
    static const QRegularExpression noise(u"[.,]"_s);
    street1 = street1.toUpper().remove(noise).simplified();
    street2 = street2.toUpper().remove(noise).simplified();
    const bool dropsUnit = box.match(street1.section(u'#', 0, 0)).hasMatch();
    for (QString *street : {&street1, &street2}) {
        if (!dropsUnit)
            street->replace(unit, u" APT "_s);
        *street = street->remove(signToEnd).trimmed();
    }
}

/// ZIP+4; the same street always gets the same four digits.
QString fullZip(const QString &zip, const QString &street)
{
    static const QRegularExpression extended(u"^\\d{5}-\\d{4}$"_s);
    if (extended.match(zip).hasMatch())
        return zip;
    QString five = zip.left(5);
    if (five.endsWith(u"0000"))
        five[4] = u'1';
    const int sum = std::accumulate(street.cbegin(), street.cend(), 0,
                                    [](int total, QChar c) { return (total * 31 + c.unicode()) % 9000; });
    return u"%1-%2"_s.arg(five).arg(1000 + sum);
}

void standardize(Json &address)
{
    QString street1 = textOf(address, "street1");
    QString street2 = textOf(address, "street2");
    standardizeStreet(street1, street2);
    address["street1"] = street1.toStdString();
    address["street2"] = street2.toStdString();
    address["city"] = textOf(address, "city").toUpper().toStdString();
    address["state"] = textOf(address, "state").toUpper().toStdString();
}

/// The validation result of an address; an empty object if the service does not validate it.
Json verdict(const Json &address, bool test)
{
    const QString street = textOf(address, "street1") + u' ' + textOf(address, "street2");
    const auto says = [&](const char *word) { return street.contains(QLatin1StringView(word), Qt::CaseInsensitive); };
    Json messages = Json::array();
    // With a test key, the service validates US addresses only.
    if (says("Unchecked") || (!isUs(address) && test))
        return Json::object();
    if (!namesAPlace(address)) {
        messages.push_back(message("Address Not Found", "address_error",
                                   "The address as submitted is incomplete: street, city and ZIP code are needed."));
    } else if (says("Nowhere")) {
        messages.push_back(message("Address Not Found", "address_error",
                                   "The address as submitted could not be found. Please check for excessive "
                                   "abbreviations in the street address line or in the City name."));
    } else if (!says("Silent")) {
        if (says("Warning")) {
            messages.push_back(message("Default Match", "address_warning",
                                       "The address you entered was found but more information is needed (such as an "
                                       "apartment, suite, or box number) to match to a specific address."));
        }
        return {{"is_valid", true}, {"messages", messages}};
    }
    return {{"is_valid", false}, {"messages", messages}};
}

Json withServiceKeys(const PracticeLedger &ledger, const Json &typed)
{
    Json address = newObject(ledger.test);
    address["is_complete"] = isComplete(typed);
    for (const char *key : addressKeys)
        address[key] = textOf(typed, key).toStdString();
    address["country"] = textOf(typed, "country").toUpper().toStdString();
    address["street_no"] = "";
    address["street3"] = textOf(typed, "street3").toStdString();
    address["phone"] = plainPhone(textOf(typed, "phone")).toStdString();
    address["is_residential"] = nullptr;
    address["validation_results"] = Json::object();
    address["longitude"] = nullptr;
    address["latitude"] = nullptr;
    address["metadata"] = textOf(typed, "metadata").toStdString();
    return address;
}

} // namespace

CarrierAnswer createAddress(PracticeLedger &ledger, const Json &body)
{
    Json errors = addressErrors(body);
    isUsableFlag(errors, body, "validate");
    if (!errors.empty())
        return jsonAnswer(400, errors);
    Json address = withServiceKeys(ledger, body);
    if (flagOf(body, "validate", false)) {
        address["validation_results"] = verdict(body, ledger.test);
        const Json results = address["validation_results"];
        if (!results.empty())
            standardize(address);
        if (results.value("is_valid", false)) {
            if (isUs(body))
                address["zip"] = fullZip(textOf(body, "zip"), textOf(address, "street1")).toStdString();
            address["is_residential"] = textOf(body, "company").isEmpty();
        } else if (!results.empty()) {
            address["is_complete"] = false;
        }
    }
    return jsonAnswer(201, ledger.addresses.add(std::move(address)));
}

Json addressErrors(const Json &address)
{
    static const QRegularExpression twoLetters(u"^[A-Za-z]{2}$"_s);
    static const QRegularExpression usZip(u"^(\\d{5}(-?\\d{4})?)?$"_s);
    Json errors = Json::object();
    requireText(errors, address, "country");
    for (const char *key : addressKeys)
        if (!errors.contains(key))
            isUsableText(errors, address, key);
    const QString country = textOf(address, "country");
    if (!country.isEmpty() && !twoLetters.match(country).hasMatch())
        complain(errors, "country", "Invalid value specified for country '" + country.toStdString() + "'");
    if (isUs(address) && !usZip.match(textOf(address, "zip")).hasMatch())
        complain(errors, "zip", "Invalid zip '" + textOf(address, "zip").toStdString() + "'");
    return errors;
}

Json shipmentAddress(PracticeLedger &ledger, const Json &address)
{
    if (!address.is_string())
        return ledger.addresses.add(withServiceKeys(ledger, address));
    return ledger.addresses.find(QString::fromStdString(address.get<std::string>()))->shown;
}

Json rewrittenAddress(const Json &address)
{
    static const QRegularExpression unit(u"\\s*(#.*|\\b(APT|UNIT|STE|SUITE|RM|FL)\\b.*|(?<=\\bBOX)\\s.*)$"_s);
    Json rewritten = address;
    standardize(rewritten);
    for (const char *key : {"street1", "street2"})
        rewritten[key] = textOf(rewritten, key).remove(unit).toStdString();
    if (isUs(address) && namesAPlace(address))
        rewritten["zip"] = fullZip(textOf(address, "zip"), textOf(rewritten, "street1")).toStdString();
    rewritten["validation_results"] = {
        {"is_valid", true},
        {"messages", Json::array({message("address_correction", "address_correction",
                                          "The address was corrected to the postal service's records.")})}};
    return rewritten;
}

} // namespace parcelory
