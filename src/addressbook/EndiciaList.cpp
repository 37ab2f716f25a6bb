#include "addressbook/EndiciaList.h"

#include "addressbook/ImportProgress.h"
#include "addressbook/PropertyList.h"
#include "core/AppError.h"
#include "core/PostalContact.h"

#include <optional>
#include <utility>

namespace parcelory::EndiciaList {
using namespace Qt::StringLiterals;

namespace {

std::optional<PostalContact> contactOf(const PropertyList::Texts &entry)
{
    const QString name = entry.value(u"SFAddressNameKey"_s), suite = entry.value(u"SFAddressSuiteAptKey"_s);
    if (name.isEmpty() && suite.isEmpty())
        return std::nullopt;
    const QString country = entry.value(u"SFAddressCountryKey"_s);
    const bool isDomestic = country.isEmpty() || country.toLower().contains(u"united states");
    return PostalContact{.name = name,
                         .company = entry.value(u"SFAddressCompanyKey"_s),
                         .street1 = entry.value(u"SFAddressStreetKey"_s),
                         .street2 = suite,
                         .city = entry.value(u"SFAddressCityKey"_s),
                         .state = entry.value(u"SFAddressStateKey"_s),
                         .zip = entry.value(u"SFAddressZIP5Key"_s),
                         .country = isDomestic ? u"US"_s : country,
                         .label = u"endicia"_s,
                         .phone = entry.value(u"SFAddressPhoneKey"_s),
                         .email = entry.value(u"SFAddressEmailKey"_s)};
}

} // namespace

QList<PostalContact> contacts(const QByteArray &file, ImportProgress &progress)
{
    QList<PostalContact> contacts;
    const bool isList = PropertyList::readDictionaries(file, [&](const PropertyList::Texts &entry) {
        if (std::optional<PostalContact> contact = contactOf(entry))
            contacts.append(*std::move(contact));
        progress.reached(contacts.size());
    });
    if (!isList)
        throw AppError(u"That file isn't an Endicia address plist."_s);
    return contacts;
}

} // namespace parcelory::EndiciaList
