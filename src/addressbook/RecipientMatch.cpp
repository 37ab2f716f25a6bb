#include "addressbook/RecipientMatch.h"

#include "core/CompanySanitizer.h"
#include "core/PostalContact.h"

#include <QRegularExpression>
#include <QSet>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

QString folded(const QString &text)
{
    return text.simplified().toLower();
}

QString zipOf(const PostalContact &contact)
{
    return folded(contact.zip.section(u'-', 0, 0));
}

/// The five-digit ZIP; without it, the city and the country.
QString areaOf(const PostalContact &contact)
{
    const QString zip = zipOf(contact);
    return zip.isEmpty() ? folded(contact.city) + u'\n' + folded(contact.country) : zip;
}

/// The carrier rewrites the rest of the street line when it adds the ZIP+4.
QString placeOf(const PostalContact &contact)
{
    const QString street = folded(contact.street1);
    const bool hasNumber = !street.isEmpty() && street.front().isDigit();
    return hasNumber && !zipOf(contact).isEmpty() ? street.section(u' ', 0, 1) : street;
}

/// The number of the apartment or suite. The carrier writes it at the end of the street line.
QString unitOf(const PostalContact &contact)
{
    static const QSet<QString> designators = {u"apt"_s,  u"apartment"_s, u"suite"_s, u"ste"_s, u"unit"_s,
                                              u"room"_s, u"rm"_s,        u"floor"_s, u"fl"_s,  u"building"_s,
                                              u"bldg"_s, u"space"_s,     u"spc"_s,   u"lot"_s, u"department"_s,
                                              u"dept"_s, u"trailer"_s,   u"trlr"_s};
    static const QRegularExpression notInWords(u"[^\\p{L}\\p{N}]+"_s);
    QString text = folded(contact.street2);
    if (text.isEmpty()) {
        static const QRegularExpression atEnd(u"(?: "
                                              u"(?:apt|apartment|suite|ste|unit|room|rm|floor|fl|building|bldg|space|"
                                              u"spc|lot|department|dept|trailer|trlr)"
                                              "\\b|#)[^#]{0,20}$"_s);
        text = atEnd.match(folded(contact.street1)).captured();
    }
    QStringList words = text.split(notInWords, Qt::SkipEmptyParts);
    words.removeIf([](const QString &word) { return designators.contains(word); });
    return words.join(u' ');
}

/// A contact without a name is a company.
const QString &nameOf(const PostalContact &contact)
{
    return contact.name.trimmed().isEmpty() ? contact.company : contact.name;
}

} // namespace

bool isNamedAfterCompany(const PostalContact &contact)
{
    return folded(contact.name) == folded(contact.company);
}

RecipientMatch::RecipientMatch(const PostalContact &recipient, const CompanySanitizer &sanitizer)
    : m_sanitizer(sanitizer), m_address(recipient.asShippoAddress()), m_name(folded(nameOf(recipient))),
      m_company(folded(sanitizer.sanitize(recipient.company))), m_place(placeOf(recipient)), m_unit(unitOf(recipient)),
      m_area(areaOf(recipient))
{
}

/// The cheap comparisons come first: a book has many entries. Labels have the sanitized company, also as a name.
bool RecipientMatch::matches(const PostalContact &entry) const
{
    if (areaOf(entry) != m_area || placeOf(entry) != m_place)
        return false;
    if (m_name.isEmpty() || entry.asShippoAddress() == m_address)
        return entry.asShippoAddress() == m_address;
    const QString &name = nameOf(entry);
    const bool isCompany = folded(name) == folded(entry.company);
    if (folded(name) != m_name && !(isCompany && folded(m_sanitizer.sanitize(name)) == m_name))
        return false;
    return unitOf(entry) == m_unit && folded(m_sanitizer.sanitize(entry.company)) == m_company;
}

} // namespace parcelory
