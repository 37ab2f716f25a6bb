#include "devices/zpl/ZplContents.h"

#include "devices/zpl/BarcodeModules.h"
#include "devices/zpl/ZplFonts.h"

#include <algorithm>
#include <utility>

namespace parcelory {

namespace {

/// Capitals of a narrow face are wider than its digits.
constexpr double capitalShare = 1.15;
/// Puts the labels of a file below one another.
constexpr double labelStep = 100000;

bool isLinear(ZplCode code)
{
    return code == ZplCode::code128 || code == ZplCode::code39 || code == ZplCode::interleaved2of5 ||
           code == ZplCode::other;
}

/// A position on the label as if the turned text were upright.
std::pair<double, double> upright(double x, double y, ZplTurn turn)
{
    switch (turn) {
    case ZplTurn::none:
        return {x, y};
    case ZplTurn::quarter:
        return {y, -x};
    case ZplTurn::half:
        return {-x, -y};
    case ZplTurn::threeQuarters:
        return {-y, x};
    }
    return {x, y};
}

/// Adds the lines of a text.
void add(QList<LabelText> &texts, const ZplElement &element, const ZplText &text, double below, qsizetype number)
{
    const ZplCell cell = cellOf(text.font);
    const QStringList lines = text.text.split(u'\n');
    double longest = 0;
    for (const QString &line : lines)
        longest = std::max(longest, double(line.size()) * cell.advance * (cell.isFixed ? 1 : capitalShare));
    const double area = text.block && text.block->width > 0 ? text.block->width : longest;
    const double step = cell.height + (text.block ? text.block->spacing : 0);
    const double all = step * double(lines.size() - 1) + cell.height;

    auto [x, y] = upright(element.x, element.y, text.turn);
    if (element.isOnBaseline) {
        y -= cell.baseline + step * double(lines.size() - 1);
    } else { // the place is the upper left corner on the label, which turned texts have elsewhere
        x -= text.turn == ZplTurn::half || text.turn == ZplTurn::threeQuarters ? area : 0;
        y -= text.turn == ZplTurn::half || text.turn == ZplTurn::quarter ? all : 0;
    }
    if (element.isRightAligned)
        x -= area;
    for (qsizetype at = 0; at < lines.size(); ++at) {
        const QString line = lines[at].simplified();
        if (line.isEmpty())
            continue;
        const double width = double(line.size()) * cell.advance * (cell.isFixed ? 1 : capitalShare);
        texts.append({.text = line,
                      .x = x,
                      .y = y + step * double(at) + below,
                      .width = width,
                      .height = cell.height,
                      .turn = int(text.turn),
                      .element = number});
    }
}

} // namespace

LabelContents contentsOf(const ZplDocument &document)
{
    LabelContents contents;
    qsizetype number = 0;
    double below = 0;
    for (const ZplLabel &label : document.labels) {
        for (const ZplElement &element : label.elements) {
            if (const auto *text = std::get_if<ZplText>(&element.shape); text && !text->isSymbol)
                add(contents.texts, element, *text, below, number);
            else if (const auto *code = std::get_if<ZplBarcode>(&element.shape))
                contents.codes.append({QString::fromLatin1(barcodeText(*code)), isLinear(code->code), number});
            else if (std::holds_alternative<ZplGraphic>(element.shape))
                contents.hasPictures = true;
            ++number;
        }
        below += labelStep;
    }
    return contents;
}

} // namespace parcelory
