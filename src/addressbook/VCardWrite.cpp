#include "addressbook/VCard.h"

#include "core/Json.h"
#include "core/PostalContact.h"

#include <QStringList>

#include <algorithm>

namespace parcelory::VCard {
using namespace Qt::StringLiterals;

namespace {

/// A text as a value: escaped, and without control characters, which a card cannot hold.
QString escaped(const QString &text)
{
    QString value;
    value.reserve(text.size());
    for (qsizetype at = 0; at < text.size(); ++at) {
        const QChar c = text[at];
        const bool endsLine = c == u'\n' || (c == u'\r' && !QStringView(text).sliced(at + 1).startsWith(u'\n'));
        if (endsLine)
            value += u"\\n"_s;
        else if (c == u'\\' || c == u',' || c == u';')
            value += QString(u'\\') + c;
        else if (c >= u' ' || c == u'\t')
            value += c;
    }
    return value;
}

/// A property on lines of at most 75 bytes; no character is split.
QByteArray folded(const QString &property)
{
    constexpr qsizetype most = 75;
    const QByteArray bytes = property.toUtf8();
    QByteArray lines;
    qsizetype room = most;
    for (qsizetype at = 0; at < bytes.size();) {
        qsizetype next = at + 1;
        while (next < bytes.size() && (bytes[next] & 0xC0) == 0x80)
            ++next;
        if (next - at > room) {
            lines += "\r\n ";
            room = most - 1;
        }
        lines += bytes.sliced(at, next - at);
        room -= next - at;
        at = next;
    }
    return lines + "\r\n";
}

QString firstPresent(const QStringList &texts)
{
    for (const QString &text : texts) {
        if (!text.trimmed().isEmpty())
            return text;
    }
    return {};
}

/// The family name last, as most programs sort by it.
QString structuredName(const QString &name)
{
    const QString plain = name.simplified();
    const qsizetype space = plain.lastIndexOf(u' ');
    return escaped(plain.sliced(space + 1)) + u';' + escaped(plain.left(std::max(space, qsizetype(0)))) + u";;;"_s;
}

} // namespace

QByteArray card(const PostalContact &contact)
{
    const bool isCompany = !contact.company.isEmpty() && (contact.name.isEmpty() || contact.name == contact.company);
    const bool hasUsualLabel = contact.label == u"home" || contact.label == u"work";
    const bool hasOwnLabel = !contact.label.isEmpty() && !hasUsualLabel;
    const QString street = contact.street1 + (contact.street2.isEmpty() ? QString() : u'\n' + contact.street2);
    const QString address = u";;"_s + QStringList{escaped(street), escaped(contact.city), escaped(contact.state),
                                                  escaped(contact.zip), escaped(contact.country)}
                                          .join(u';');
    QByteArray lines = "BEGIN:VCARD\r\nVERSION:4.0\r\nPRODID:-//Parcelory//Address Book//EN\r\n";
    const auto append = [&lines](const QString &name, const QString &value) { lines += folded(name + u':' + value); };
    const auto appendText = [&append](const QString &name, const QString &text) {
        if (!text.isEmpty())
            append(name, escaped(text));
    };
    append(u"UID"_s, u"urn:uuid:"_s + contact.id.toString(QUuid::WithoutBraces));
    appendText(u"KIND"_s, isCompany ? u"org"_s : QString());
    append(u"FN"_s, escaped(firstPresent({contact.name, contact.company, contact.street1})));
    if (!isCompany && !contact.name.isEmpty())
        append(u"N"_s, structuredName(contact.name));
    appendText(u"ORG"_s, contact.company);
    append((hasOwnLabel ? u"item1.ADR"_s : u"ADR"_s) + (hasUsualLabel ? u";TYPE="_s + contact.label : QString()),
           address);
    if (hasOwnLabel)
        appendText(u"item1.X-ABLabel"_s, contact.label);
    appendText(u"TEL"_s, contact.phone);
    appendText(u"EMAIL"_s, contact.email);
    // Other programs' properties cannot hold every text; this one does. Control characters are escaped in JSON.
    appendText(u"X-PARCELORY-ENTRY"_s, QString::fromUtf8(encodeJson(contact, Keys::asIs)));
    return lines + "END:VCARD\r\n";
}

} // namespace parcelory::VCard
