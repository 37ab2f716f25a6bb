#include "addressbook/PropertyList.h"

#include "core/AppError.h"

#include <QStringDecoder>
#include <QXmlStreamReader>

#include <algorithm>
#include <functional>

namespace parcelory::PropertyList {
using namespace Qt::StringLiterals;

namespace {

using Take = std::function<void(const Texts &)>;

[[noreturn]] void failDamaged()
{
    throw AppError(u"The property list is damaged or incomplete, so nothing was imported. Copy or export it again."_s);
}

/// In both forms, a small file can refer to the same text many times, so the output is limited, not only the input.
class Allowance {
public:
    void spend(qsizetype characters)
    {
        m_characters -= characters;
        if (m_characters < 0 || --m_entries < 0)
            failDamaged();
    }

private:
    qint64 m_characters = 150'000'000;
    qint64 m_entries = 8'000'000;
};

// The XML form. Nothing here is recursive, so deeply nested files do no harm.

Texts readDictionary(QXmlStreamReader &xml, Allowance &allowance)
{
    Texts texts;
    QString key;
    while (xml.readNextStartElement()) {
        allowance.spend(0);
        if (xml.name() == u"key") {
            key = xml.readElementText(QXmlStreamReader::SkipChildElements);
        } else if (xml.name() == u"string") {
            const QString text = xml.readElementText(QXmlStreamReader::SkipChildElements);
            allowance.spend(key.size() + text.size());
            texts.insert(key, text);
        } else {
            xml.skipCurrentElement();
        }
    }
    return texts;
}

/// Without any byte that a wrong encoding may have damaged: the reader stops at such a byte before the first element.
bool beginsAsList(const QByteArray &file)
{
    constexpr qsizetype farEnough = 1000;
    return file.first(std::min(farEnough, file.size())).replace('\0', "").contains("<plist");
}

bool readXml(const QByteArray &file, const Take &take)
{
    QXmlStreamReader xml(file);
    const bool hasStart = xml.readNextStartElement();
    if (!hasStart && xml.hasError() && beginsAsList(file))
        failDamaged();
    if (!hasStart || xml.name() != u"plist")
        return false;
    const bool hasRoot = xml.readNextStartElement();
    if (hasRoot && xml.name() != u"array")
        return false;
    Allowance allowance;
    while (hasRoot && xml.readNextStartElement()) {
        if (xml.name() != u"dict")
            return false;
        const Texts texts = readDictionary(xml, allowance);
        if (!xml.hasError())
            take(texts);
    }
    while (!xml.atEnd())
        xml.readNext();
    if (xml.hasError())
        failDamaged();
    return hasRoot;
}

// The binary form: a header, the objects, a table with the place of each object, and a trailer that tells where that
// table is. All numbers are big-endian.

class BinaryList {
public:
    explicit BinaryList(const QByteArray &file);

    bool read(const Take &take);

private:
    enum Kind { ascii = 5, utf16 = 6, array = 10, dictionary = 13 };
    struct Object {
        int kind = 0;
        quint64 length = 0; ///< characters, elements or pairs
        quint64 at = 0;     ///< where its contents begin
    };

    quint64 number(quint64 at, quint64 size) const;
    Object object(quint64 reference) const;
    Object element(const Object &list, quint64 index) const;
    void requireRoom(const Object &object, quint64 unit, quint64 units) const;
    QString text(const Object &object) const;
    Texts texts(const Object &pairs);

    static constexpr quint64 trailerSize = 32, headerSize = 8;

    const unsigned char *m_bytes;
    quint64 m_offsetSize = 0, m_referenceSize = 0, m_count = 0, m_root = 0, m_table = 0;
    Allowance m_allowance;
};

BinaryList::BinaryList(const QByteArray &file) : m_bytes(reinterpret_cast<const unsigned char *>(file.constData()))
{
    const auto size = quint64(file.size());
    if (size < headerSize + trailerSize)
        failDamaged();
    const quint64 trailer = size - trailerSize;
    m_offsetSize = m_bytes[trailer + 6];
    m_referenceSize = m_bytes[trailer + 7];
    m_count = number(trailer + 8, 8);
    m_root = number(trailer + 16, 8);
    m_table = number(trailer + 24, 8);
    const auto isSize = [](quint64 bytes) { return bytes >= 1 && bytes <= 8; };
    if (!isSize(m_offsetSize) || !isSize(m_referenceSize) || m_table < headerSize || m_table > trailer ||
        m_count > (trailer - m_table) / m_offsetSize)
        failDamaged();
}

quint64 BinaryList::number(quint64 at, quint64 size) const
{
    quint64 value = 0;
    for (quint64 byte = 0; byte < size; ++byte)
        value = value << 8 | m_bytes[at + byte];
    return value;
}

BinaryList::Object BinaryList::object(quint64 reference) const
{
    if (reference >= m_count)
        failDamaged();
    const quint64 place = number(m_table + reference * m_offsetSize, m_offsetSize);
    if (place < headerSize || place >= m_table)
        failDamaged();
    Object found{.kind = m_bytes[place] >> 4, .length = m_bytes[place] & 15u, .at = place + 1};
    constexpr unsigned lengthFollows = 15, integer = 1;
    if (found.length == lengthFollows && found.kind >= ascii) {
        if (found.at >= m_table || m_bytes[found.at] >> 4 != integer)
            failDamaged();
        const quint64 size = quint64(1) << (m_bytes[found.at] & 15);
        if (size > 8 || m_table - found.at - 1 < size)
            failDamaged();
        found.length = number(found.at + 1, size);
        found.at += 1 + size;
    }
    return found;
}

/// `units` runs of the object's length, each element `unit` bytes wide, must end before the table. Divides instead of
/// multiplying, because a hostile length would overflow.
void BinaryList::requireRoom(const Object &object, quint64 unit, quint64 units) const
{
    if (object.length > (m_table - object.at) / unit / units)
        failDamaged();
}

BinaryList::Object BinaryList::element(const Object &list, quint64 index) const
{
    return object(number(list.at + index * m_referenceSize, m_referenceSize));
}

QString BinaryList::text(const Object &object) const
{
    const auto *start = reinterpret_cast<const char *>(m_bytes + object.at);
    if (object.kind == ascii) {
        requireRoom(object, 1, 1);
        return QString::fromLatin1(start, qsizetype(object.length));
    }
    requireRoom(object, 2, 1);
    QStringDecoder decode(QStringConverter::Utf16BE, QStringConverter::Flag::ConvertInitialBom);
    return decode(QByteArrayView(start, qsizetype(object.length) * 2));
}

/// The references of the keys come first, then the references of the values.
Texts BinaryList::texts(const Object &pairs)
{
    requireRoom(pairs, m_referenceSize, 2);
    const auto isText = [](const Object &object) { return object.kind == ascii || object.kind == utf16; };
    Texts texts;
    for (quint64 pair = 0; pair < pairs.length; ++pair) {
        m_allowance.spend(0);
        const Object key = element(pairs, pair), value = element(pairs, pairs.length + pair);
        if (!isText(key) || !isText(value))
            continue;
        const QString keyText = text(key), valueText = text(value);
        m_allowance.spend(keyText.size() + valueText.size());
        texts.insert(keyText, valueText);
    }
    return texts;
}

bool BinaryList::read(const Take &take)
{
    const Object root = object(m_root);
    if (root.kind != array)
        return false;
    requireRoom(root, m_referenceSize, 1);
    for (quint64 index = 0; index < root.length; ++index) {
        m_allowance.spend(0);
        const Object found = element(root, index);
        if (found.kind != dictionary)
            return false;
        take(texts(found));
    }
    return true;
}

} // namespace

bool readDictionaries(const QByteArray &file, const std::function<void(const Texts &)> &take)
{
    return file.startsWith("bplist") ? BinaryList(file).read(take) : readXml(file, take);
}

} // namespace parcelory::PropertyList
