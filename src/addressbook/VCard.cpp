#include "addressbook/VCard.h"

#include "addressbook/ImportProgress.h"
#include "addressbook/PostalContacts.h"
#include "addressbook/VCardLine.h"
#include "core/AppError.h"
#include "core/CountryCode.h"
#include "core/PostalContact.h"
#include "core/Text.h"
#include "core/ports/ContactsSource.h"

#include <QHash>

#include <algorithm>
#include <optional>
#include <utility>

namespace parcelory::VCard {
using namespace Qt::StringLiterals;

namespace {

/// Adds "PO Box" to a bare number, because a box number alone would be taken for a house number.
QString postOfficeBox(const QString &box)
{
    const bool isNumber = !box.isEmpty() && std::ranges::all_of(box, [](QChar c) { return c.isDigit(); });
    return isNumber ? u"PO Box "_s + box : box;
}

/// The address book of macOS wraps its built-in labels, which it translates: "_$!<Home>!$_".
QString plainLabel(const QString &label)
{
    const bool isWrapped = label.startsWith(u"_$!<") && label.endsWith(u">!$_") && label.size() >= 8;
    return isWrapped ? label.sliced(4, label.size() - 8).toLower() : label;
}

/// Only the first text is used, and a hostile card may have millions.
void addFirst(QStringList &texts, const QString &text)
{
    if (texts.isEmpty() && !text.isEmpty())
        texts.append(text);
}

/// A card that is being read. Later properties of an address's group may set its country and label.
class Card {
public:
    void take(const VCardProperty &property);
    qsizetype addressCount() const { return m_person.addresses.size(); }
    QList<PostalContact> contacts() const;

private:
    void takeAddress(const VCardProperty &property);

    PlatformContact m_person;
    QList<QByteArray> m_addressGroups; ///< one group for every address
    QHash<QByteArray, QString> m_countries, m_labels;
};

void Card::take(const VCardProperty &property)
{
    if (property.name == "N") {
        const QStringList parts = property.parts(2);
        m_person.family = parts.value(0).trimmed();
        m_person.given = parts.value(1).trimmed();
    } else if (property.name == "FN") {
        m_person.fullName = property.text().trimmed();
    } else if (property.name == "ORG") {
        m_person.organization = property.parts(1).value(0).trimmed();
    } else if (property.name == "TEL") {
        const QString number = property.text().trimmed();
        addFirst(m_person.phones, number.startsWith(u"tel:", Qt::CaseInsensitive) ? number.sliced(4) : number);
    } else if (property.name == "EMAIL") {
        addFirst(m_person.emails, property.text().trimmed());
    } else if (property.name == "ADR") {
        takeAddress(property);
    } else if (property.name == "X-ABADR") {
        m_countries[property.group] = property.text().trimmed();
    } else if (property.name == "X-ABLABEL") {
        m_labels[property.group] = plainLabel(property.text().trimmed());
    }
}

void Card::takeAddress(const VCardProperty &property)
{
    enum Part { box, extension, street, city, state, zip, country, count };
    QStringList parts = property.parts(count);
    for (QString &part : parts)
        part = part.trimmed();
    const bool isEmpty = std::ranges::all_of(parts, &QString::isEmpty);
    if (isEmpty)
        return;
    const QString lines =
        joinPresent({parts.value(street), parts.value(extension), postOfficeBox(parts.value(box))}, u"\n"_s);
    const QByteArray code = property.parameter("CC");
    PlatformAddress address{.street = lines,
                            .city = parts.value(city),
                            .state = parts.value(state),
                            .zip = parts.value(zip),
                            .isoCountry =
                                code.isEmpty() ? CountryCode::alpha2(parts.value(country)) : QString::fromLatin1(code)};
    for (const QByteArray &type : property.types()) {
        if (address.label.isEmpty() && (type == "home" || type == "work"))
            address.label = QString::fromLatin1(type);
    }
    m_person.addresses.append(address);
    m_addressGroups.append(property.group);
}

QList<PostalContact> Card::contacts() const
{
    PlatformContact person = m_person;
    for (qsizetype index = 0; index < person.addresses.size(); ++index) {
        const QByteArray group = m_addressGroups[index];
        if (group.isEmpty())
            continue;
        PlatformAddress &address = person.addresses[index];
        address.isoCountry = m_countries.value(group, address.isoCountry);
        address.label = m_labels.value(group, address.label);
    }
    return postalContacts(person);
}

/// Reads the properties of a file and collects the complete cards.
class Reader {
public:
    explicit Reader(ImportProgress &progress) : m_progress(progress) {}

    void take(const VCardProperty &property);
    QList<PostalContact> finish();

private:
    void begin();
    void end();

    ImportProgress &m_progress;
    QList<PostalContact> m_contacts;
    std::optional<Card> m_card;
    qsizetype m_cardsWithin = 0; ///< a card of version 2.1 may hold the card of an agent, which may hold another
    bool m_agentFollows = false;
    bool m_hasCards = false;
};

void Reader::take(const VCardProperty &property)
{
    const bool isOfAgent = std::exchange(m_agentFollows, false);
    const bool isMark = property.value.trimmed().compare("VCARD", Qt::CaseInsensitive) == 0;
    if (property.name == "BEGIN" && isMark) {
        if (m_card && isOfAgent)
            ++m_cardsWithin;
        else
            begin();
    } else if (property.name == "END" && isMark) {
        end();
    } else if (property.name == "AGENT") {
        m_agentFollows = property.value.trimmed().isEmpty();
    } else if (m_card && !m_cardsWithin) {
        m_card->take(property);
        m_progress.reached(m_contacts.size() + m_card->addressCount());
    }
}

/// Discards a card without an end: half an address is worse than no address.
void Reader::begin()
{
    m_hasCards = true;
    m_card.emplace();
    m_cardsWithin = 0;
}

void Reader::end()
{
    if (m_cardsWithin) {
        --m_cardsWithin;
    } else if (m_card) {
        m_contacts += m_card->contacts();
        m_card.reset();
    }
}

QList<PostalContact> Reader::finish()
{
    if (!m_hasCards)
        throw AppError(u"That file isn't a vCard file."_s);
    if (m_card)
        throw AppError(u"The vCard file ends in the middle of a card, so nothing was imported. Export it again."_s);
    return m_contacts;
}

} // namespace

QList<PostalContact> contacts(const QByteArray &file, ImportProgress &progress)
{
    const QList<QByteArray> names = {"BEGIN", "END", "AGENT", "N",       "FN",       "ORG",
                                     "TEL",   "ADR", "EMAIL", "X-ABADR", "X-ABLABEL"};
    const QByteArray bytes = vCardBytes(file);
    VCardLines lines(bytes);
    Reader reader(progress);
    while (const std::optional<VCardProperty> property = lines.next(names))
        reader.take(*property);
    return reader.finish();
}

} // namespace parcelory::VCard
