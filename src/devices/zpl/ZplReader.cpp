#include "devices/zpl/ZplReader.h"

#include "devices/zpl/ZplCharacters.h"
#include "devices/zpl/ZplFormat.h"
#include "devices/zpl/ZplGraphics.h"
#include "devices/zpl/ZplScanner.h"

#include <QMap>

#include <algorithm>
#include <string_view>
#include <utility>

namespace parcelory {

namespace {

constexpr qsizetype mostLabels = 50, mostElements = 20000;

/// Commands that do not change the picture: about the printer, the paper, the copies and the counting of labels.
bool isSilent(const ZplCommand &command)
{
    static constexpr std::string_view carets[] = {
        "CV", "EF", "EG", "HF", "HG", "HH", "HV", "HW", "HZ", "ID", "IS", "JB", "JI", "JJ", "JT", "JU", "JW", "JZ",
        "KD", "KL", "KN", "KP", "KV", "LF", "MA", "MD", "MF", "ML", "MM", "MN", "MP", "MT", "MW", "NB", "NC", "ND",
        "NI", "NS", "NT", "PA", "PF", "PH", "PN", "PP", "PR", "RF", "RS", "RW", "SC", "SE", "SI", "SL", "SO", "SP",
        "SQ", "SR", "SS", "ST", "SX", "SZ", "TO", "WD", "WF", "XB", "XS", "ZZ", "JH", "RU", "RQ", "RR", "RZ"};
    const std::string_view name(command.name.constData(), size_t(command.name.size()));
    // A command with a tilde acts on the printer; pictures and fonts are read before this question.
    return command.prefix == '~'
               ? name != "DG" && name != "DY" && name != "DS" && name != "DT" && name != "DU" && name != "DB"
               : std::ranges::find(carets, name) != std::end(carets);
}

/// The name of a stored format or picture, without the storage and the ending that printers add themselves.
QByteArray storedName(const QByteArray &text)
{
    QByteArray name = text.toUpper();
    name = name.sliced(name.indexOf(':') + 1);
    const qsizetype point = name.indexOf('.');
    return point < 0 ? name : name.first(point);
}

/// What follows the parameters, as it is; empty if there are fewer.
QByteArray behind(const ZplCommand &command, int parameters)
{
    qsizetype begin = 0;
    for (; parameters > 0; --parameters) {
        const qsizetype delimiter = command.rest.indexOf(command.delimiter, begin);
        if (delimiter < 0)
            return {};
        begin = delimiter + 1;
    }
    return command.rest.sliced(begin);
}

/// An element of a format that a later label fills in.
struct Placed {
    ZplElement element;
    int number = -1; ///< of the ^FN command; -1 without this command
};

class Reader {
public:
    ZplDocument read(const QByteArray &bytes)
    {
        ZplScanner scanner(bytes);
        while (const auto command = scanner.next()) {
            if (!take(*command) && !isSilent(*command) && m_document.unknown.size() < mostElements)
                m_document.unknown += QString::fromLatin1(command->prefix + command->name);
        }
        end();
        return std::move(m_document);
    }

private:
    bool take(const ZplCommand &command);
    bool takeLabel(const ZplCommand &command, const ZplParameters &given);
    bool takeStored(const ZplCommand &command, const ZplParameters &given);
    bool takeData(const ZplCommand &command, const ZplParameters &given);
    void end();
    void endField();
    void add(decltype(ZplElement::shape) shape);
    void drawStored(const ZplParameters &given, bool scales);
    bool isFull() const { return m_elements + m_current.size() >= mostElements; }

    ZplDocument m_document;
    ZplFormat m_format;
    ZplField m_field;
    QList<Placed> m_current;
    QMap<int, QByteArray> m_values; ///< of the numbered fields
    QMap<QByteArray, QList<Placed>> m_formats;
    QMap<QByteArray, ZplGraphic> m_graphics;
    QByteArray m_storesAs; ///< the name under which this label is stored instead of printed
    qsizetype m_elements = 0;
    int m_copies = 1;
    bool m_keeps = false;
    bool m_isNew = false; ///< something was added since the last label: a picture that is kept is no label by itself
};

bool Reader::take(const ZplCommand &command)
{
    const ZplParameters given(command);
    if (command.prefix == '~') {
        if (command.name != "DG")
            return false;
        const auto graphic = graphicFromText(behind(command, 3), given.number(1, 0, 0, 1 << 22), given.number(2, 1));
        if (graphic && m_graphics.size() < mostLabels)
            m_graphics[storedName(given.text(0))] = *graphic;
        return graphic.has_value();
    }
    if (takeLabel(command, given) || takeData(command, given) || takeStored(command, given))
        return true;
    if (const auto shape = m_format.shapeOf(command, given)) {
        add(*shape);
        return true;
    }
    return m_format.take(command, given, m_field);
}

bool Reader::takeLabel(const ZplCommand &command, const ZplParameters &given)
{
    if (command.name == "XA" || command.name == "XZ")
        end();
    else if (command.name == "PQ")
        m_copies = given.number(0, 1, 1);
    else if (command.name == "MC")
        m_keeps = given.letter(0, 'Y') == 'N';
    else if (command.name == "FX" || command.name == "CC" || command.name == "CD" || command.name == "CT")
        return true;
    else
        return false;
    return true;
}

bool Reader::takeData(const ZplCommand &command, const ZplParameters &given)
{
    const QByteArray &name = command.name;
    if (name == "FO" || name == "FT") {
        endField();
        m_format.place(m_field, given, name == "FT");
    } else if (name == "FD" || name == "FV" || name == "SN") {
        m_field.data = name == "SN" ? given.text(0) : command.rest;
        m_field.data.replace('\r', "").replace('\n', "");
        m_field.hasData = true;
    } else if (name == "FN") {
        m_field.number = given.number(0, 0);
    } else if (name == "FS") {
        endField();
        m_field = {};
    } else {
        return false;
    }
    return true;
}

bool Reader::takeStored(const ZplCommand &command, const ZplParameters &given)
{
    if (command.name == "DF") {
        m_storesAs = storedName(given.text(0));
    } else if (command.name == "XF") {
        for (const Placed &placed : m_formats.value(storedName(given.text(0)))) {
            if (!isFull())
                m_current += placed;
        }
        m_isNew = true;
    } else if (command.name == "XG" || command.name == "IM" || command.name == "IL") {
        drawStored(given, command.name == "XG");
    } else if (command.name == "GF") {
        const char kind = given.letter(0, 'A');
        const QByteArray rest = behind(command, 4);
        const int total = given.number(2, 0, 0, 1 << 22), perRow = given.number(3, 1);
        const auto graphic = kind == 'A'   ? graphicFromText(rest, total, perRow)
                             : kind == 'B' ? graphicFromBytes(rest, total, perRow)
                                           : std::nullopt;
        if (graphic)
            add(*graphic);
        return graphic.has_value();
    } else {
        return false;
    }
    return true;
}

void Reader::drawStored(const ZplParameters &given, bool scales)
{
    const auto found = m_graphics.constFind(storedName(given.text(0)));
    if (found == m_graphics.constEnd()) {
        m_document.unknown += QStringLiteral("^XG");
        return;
    }
    ZplGraphic graphic = *found;
    if (scales) {
        graphic.scaleX = given.number(1, 1, 1, 10);
        graphic.scaleY = given.number(2, 1, 1, 10);
    }
    add(graphic);
}

void Reader::add(decltype(ZplElement::shape) shape)
{
    if (isFull())
        return;
    m_current.append({m_format.placed(m_field, std::move(shape)), -1});
    m_isNew = true;
}

void Reader::endField()
{
    if (!m_field.hasData && m_field.number < 0)
        return;
    if (m_field.hexSign)
        m_field.data = withoutHexEscapes(m_field.data, *m_field.hexSign);
    if (m_field.number >= 0 && m_field.hasData)
        m_values[m_field.number] = m_field.data;
    m_isNew = true;
    const bool isOnlyValue = m_field.number >= 0 && !m_field.hasPlace;
    if (!isOnlyValue && !isFull() && (m_field.number >= 0 || !m_field.data.isEmpty()))
        m_current.append({m_format.placed(m_field, m_format.contentOf(m_field)), m_field.number});
    m_field = {};
}

/// Ends the label, which is stored, or printed if anything is on it.
void Reader::end()
{
    endField();
    m_field = {};
    const QMap<int, QByteArray> values = std::exchange(m_values, {});
    const QByteArray name = std::exchange(m_storesAs, {});
    QList<Placed> placed = m_keeps ? m_current : std::exchange(m_current, {});
    const int copies = std::exchange(m_copies, 1);
    const bool isNew = std::exchange(m_isNew, false);
    if (!name.isEmpty()) {
        if (m_formats.size() < mostLabels)
            m_formats[name] = placed;
        m_elements += placed.size();
        return;
    }
    ZplLabel label = m_format.label();
    label.copies = copies;
    for (Placed &one : placed) {
        if (one.number < 0 || values.contains(one.number))
            label.elements += one.number < 0 ? one.element : m_format.filled(one.element, values.value(one.number));
    }
    m_elements += label.elements.size();
    if (isNew && !label.elements.isEmpty() && m_document.labels.size() < mostLabels)
        m_document.labels += label;
}

} // namespace

ZplDocument readZpl(const QByteArray &bytes)
{
    return Reader().read(bytes);
}

} // namespace parcelory
