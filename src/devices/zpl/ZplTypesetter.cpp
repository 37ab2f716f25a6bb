#include "devices/zpl/ZplTypesetter.h"

#include "devices/zpl/ZplFonts.h"

#include <QFont>
#include <QFontMetricsF>
#include <QTransform>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr double emPixels = 200; ///< outlines are taken at one size and scaled, so that widths are exact at all sizes
constexpr int mostLines = 200;
constexpr qsizetype longestText = 4000;

struct Face {
    Face(const QStringList &families, bool isBold) : font(families)
    {
        font.setPixelSize(int(emPixels));
        font.setBold(isBold);
        font.setHintingPreference(QFont::PreferNoHinting);
        font.setKerning(false); // printers do not kern
        digit = QFontMetricsF(font).horizontalAdvance(u'0');
    }

    QFont font;
    double digit; ///< width of a digit in pixels
};

} // namespace

struct ZplTypesetter::Faces {
    Face scalable{{u"Liberation Sans Narrow"_s, u"Arial Narrow"_s, u"Liberation Sans"_s}, true};
    Face proportional{{u"Liberation Sans"_s, u"Arial"_s}, false};
    Face fixed{{u"Liberation Mono"_s, u"Courier New"_s}, true};

    const Face &of(const ZplFont &font) const
    {
        if (cellOf(font).isFixed)
            return fixed;
        return font.name >= 'P' && font.name <= 'V' ? proportional : scalable;
    }
};

struct ZplTypesetter::Line {
    QString text;
    bool endsParagraph = false;
};

ZplTypesetter::ZplTypesetter() : m_faces(std::make_unique<Faces>()) {}

ZplTypesetter::~ZplTypesetter() = default;

double ZplTypesetter::widthOf(const QString &text, const ZplFont &font) const
{
    const Face &face = m_faces->of(font);
    return QFontMetricsF(face.font).horizontalAdvance(text) * cellOf(font).advance / face.digit;
}

/// The outline of one line, whose cell's top left corner is the origin.
QPainterPath ZplTypesetter::lineOutline(const QString &text, const ZplFont &font) const
{
    const Face &face = m_faces->of(font);
    const ZplCell cell = cellOf(font);
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    path.addText(QPointF(), face.font, text);
    return QTransform(cell.advance / face.digit, 0, 0, cell.height / emPixels, 0, cell.baseline).map(path);
}

QList<ZplTypesetter::Line> ZplTypesetter::wrapped(const ZplText &text, double indent) const
{
    QList<Line> lines;
    const double width = text.block->width;
    for (const QString &paragraph : text.text.split(u'\n')) {
        QString line;
        for (const QString &word : paragraph.split(u' ')) {
            const double room = width - (lines.isEmpty() ? 0 : indent);
            const QString longer = line.isEmpty() ? word : line + u' ' + word;
            if (line.isEmpty() || widthOf(longer, text.font) <= room) {
                line = longer;
                continue;
            }
            lines.append({line, false});
            line = word;
        }
        lines.append({line, true});
        if (lines.size() >= mostLines)
            break;
    }
    return lines;
}

ZplOutline ZplTypesetter::outline(const ZplText &asked) const
{
    ZplText text = asked;
    text.text = text.text.first(std::min(text.text.size(), longestText));
    if (text.isSymbol) {
        constexpr QStringView signs = u"®©™ULCSA";
        const int sign = text.text.isEmpty() ? -1 : text.text[0].unicode() - 'A';
        text.text = sign < 0 || sign > 4 ? QString() : sign < 3 ? QString(signs[sign]) : sign == 3 ? u"UL"_s : u"CSA"_s;
    }
    const ZplCell cell = cellOf(text.font);
    if (!text.block || text.block->width <= 0)
        return {lineOutline(text.text, text.font), QSizeF(widthOf(text.text, text.font), cell.height), cell.baseline};

    const ZplBlock &block = *text.block;
    const double step = std::max(cell.height + block.spacing, 1.0);
    const QList<Line> lines = wrapped(text, block.indent);
    ZplOutline result;
    result.path.setFillRule(Qt::WindingFill);
    for (qsizetype at = 0; at < lines.size(); ++at) {
        const double y = double(std::min<qsizetype>(at, block.lines - 1)) * step; // the last line is printed over
        if (block.height > 0 && y + cell.height > block.height)
            break;
        const double indent = at == 0 ? 0 : block.indent;
        const double spare = block.width - indent - widthOf(lines[at].text, text.font);
        double x = indent;
        if (block.align == ZplAlign::center)
            x += spare / 2;
        else if (block.align == ZplAlign::right)
            x += spare;
        QPainterPath line = lineOutline(lines[at].text, text.font);
        if (block.align == ZplAlign::justified && !lines[at].endsParagraph && spare > 0)
            line = QTransform::fromScale(block.width / (block.width - spare), 1).map(line);
        result.path.addPath(line.translated(x, y));
    }
    // A block that a ^FT command places stands on its last possible line.
    const double shown = double(std::min<qsizetype>(lines.size(), block.lines));
    const double blockLines = block.height > 0 ? shown : block.lines;
    result.size = QSizeF(block.width, (shown - 1) * step + cell.height);
    result.baseline = (blockLines - 1) * step + cell.baseline;
    return result;
}

} // namespace parcelory
