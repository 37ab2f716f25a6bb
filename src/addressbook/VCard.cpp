#include "addressbook/VCard.h"

#include "addressbook/ImportProgress.h"
#include "addressbook/PostalContacts.h"
#include "addressbook/VCardLine.h"
#include "core/AppError.h"
#include "core/CountryCode.h"
#include "core/Json.h"
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

/// The properties that are read; all others are skipped without being decoded.
const QList<QByteArray> &names()
{
    static const QList<QByteArray> names = {"BEGIN", "END", "AGENT", "N",       "FN",        "ORG",
                                            "TEL",   "ADR", "EMAIL", "X-ABADR", "X-ABLABEL", "X-PARCELORY-ENTRY"};
    return names;
}

/// A card that is being read. Later properties of an address's group may set its country and label.
class Card {
public:
    void take(const VCardProperty &property);
    qsizetype addressCount() const { return m_person.addresses.size(); }
    QString name() const;
    QList<PostalContact> contacts() const { return postalContacts(person()); }
    /// The entry of which our own export wrote this card; nothing if the card was changed since.
    std::optional<PostalContact> exportedEntry() const;

private:
    void takeAddress(const VCardProperty &property);
    PlatformContact person() const;
    QList<PostalContact> comparable() const;

    PlatformContact m_person;
    std::optional<PostalContact> m_entry;
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
    } else if (property.name == "X-PARCELORY-ENTRY") {
        try {
            m_entry = decodeJson<PostalContact>(property.text().toUtf8(), Keys::asIs);
        } catch (const AppError &) {
            m_entry.reset(); // the other properties hold the address, too
        }
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

QString Card::name() const
{
    PlatformContact person = m_person;
    person.addresses = {PlatformAddress()};
    const QString name = postalContacts(person).first().name;
    return name.isEmpty() ? u"a card without a name"_s : name;
}

PlatformContact Card::person() const
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
    return person;
}

/// Everything that the card's usual properties say, also without an address.
QList<PostalContact> Card::comparable() const
{
    PlatformContact whole = person();
    if (whole.addresses.isEmpty())
        whole.addresses.append(PlatformAddress());
    QList<PostalContact> contacts = postalContacts(whole);
    for (PostalContact &contact : contacts)
        contact.id = QUuid();
    return contacts;
}

std::optional<PostalContact> Card::exportedEntry() const
{
    if (!m_entry)
        return std::nullopt;
    const QByteArray text = card(*m_entry);
    VCardLines lines(text);
    Card written;
    while (const std::optional<VCardProperty> property = lines.next(names()))
        written.take(*property);
    return written.comparable() == comparable() ? m_entry : std::nullopt;
}

/// Reads the properties of a file and collects the complete cards.
class Reader {
public:
    explicit Reader(ImportProgress &progress) : m_progress(progress) {}

    void take(const VCardProperty &property);
    ReadAddresses finish();

private:
    void begin();
    void end();

    ImportProgress &m_progress;
    ReadAddresses m_read;
    std::optional<Card> m_card;
    qsizetype m_cardsWithin = 0; ///< a card of version 2.1 may hold the card of an agent, which may hold another
    bool m_agentFollows = false;
    bool m_hasCards = false;
};

void Reader::take(const VCardProperty &property)
{
    const bool isOfAgent = std::exchange(m_agentFollows, false);
    const bool isEdge = property.name == "BEGIN" || property.name == "END";
    const QByteArray mark = isEdge ? property.value.trimmed().toUpper() : QByteArray();
    const bool isMark = mark == "VCARD";
    if (property.name == "END" && mark.startsWith("VCARD") && mark.endsWith("BEGIN:VCARD")) {
        take({.group = {}, .name = "END", .parameters = {}, .value = "VCARD"}); // files joined without a line end
        take({.group = {}, .name = "BEGIN", .parameters = {}, .value = "VCARD"});
    } else if (property.name == "BEGIN" && isMark) {
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
        m_progress.reached(m_read.count() + m_card->addressCount());
    }
}

/// Skips a card without an end: half an address is worse than no address.
void Reader::begin()
{
    if (m_card) {
        m_read.skipped.append(m_card->name());
        m_progress.reached(m_read.skipped.size());
    }
    m_hasCards = true;
    m_card.emplace();
    m_cardsWithin = 0;
}

void Reader::end()
{
    if (m_cardsWithin) {
        --m_cardsWithin;
    } else if (m_card) {
        if (const std::optional<PostalContact> entry = m_card->exportedEntry())
            m_read.exported.append(*entry);
        else
            m_read.contacts += m_card->contacts();
        m_card.reset();
    }
}

ReadAddresses Reader::finish()
{
    if (!m_hasCards)
        throw AppError(u"That file isn't a vCard file."_s);
    if (m_card && m_read.contacts.isEmpty() && m_read.exported.isEmpty())
        throw AppError(u"The vCard file ends in the middle of a card, so nothing was imported. Export it again."_s);
    if (m_card)
        m_read.skipped.append(m_card->name());
    return m_read;
}

} // namespace

ReadAddresses read(const QByteArray &file, ImportProgress &progress)
{
    const QByteArray bytes = vCardBytes(file);
    VCardLines lines(bytes);
    Reader reader(progress);
    while (const std::optional<VCardProperty> property = lines.next(names()))
        reader.take(*property);
    return reader.finish();
}

} // namespace parcelory::VCard
