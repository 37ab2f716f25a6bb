#include "devices/zpl/ZplFormat.h"

#include "devices/zpl/ZplCharacters.h"

#include <algorithm>
#include <utility>

namespace parcelory {

namespace {

constexpr int longest = 32000;

struct CodeName {
    const char *command;
    ZplCode code;
};

constexpr CodeName codeNames[] = {
    {"BC", ZplCode::code128},    {"B3", ZplCode::code39}, {"B2", ZplCode::interleaved2of5},
    {"BX", ZplCode::dataMatrix}, {"B7", ZplCode::pdf417}, {"BQ", ZplCode::qr},
    {"BO", ZplCode::aztec},      {"B0", ZplCode::aztec},  {"BD", ZplCode::maxicode}};

bool isYes(const ZplParameters &given, qsizetype at, bool otherwise)
{
    return given.letter(at, otherwise ? 'Y' : 'N') == 'Y';
}

ZplAlign alignOf(char letter)
{
    switch (letter) {
    case 'C':
        return ZplAlign::center;
    case 'R':
        return ZplAlign::right;
    case 'J':
        return ZplAlign::justified;
    default:
        return ZplAlign::left;
    }
}

} // namespace

bool ZplFormat::take(const ZplCommand &command, const ZplParameters &given, ZplField &field)
{
    if (takeSetting(command, given) || takeText(command, given, field) || takeField(command, given, field))
        return true;
    if (const auto code = barcodeOf(command, given)) {
        field.barcode = code;
        return code->code != ZplCode::other;
    }
    return false;
}

bool ZplFormat::takeSetting(const ZplCommand &command, const ZplParameters &given)
{
    const QByteArray &name = command.name;
    if (name == "BY") {
        m_module = given.number(0, m_module, 1, 10);
        m_ratio = std::clamp(given.decimal(1, m_ratio), 2.0, 3.0);
        m_barHeight = given.number(2, m_barHeight, 1);
    } else if (name == "CF") {
        m_font = {given.letter(0, m_font.name), given.number(1, 0), given.number(2, 0)};
    } else if (name == "CI") {
        m_characterSet = given.number(0, m_characterSet);
    } else if (name == "FW") {
        m_turn = turnOf(given.letter(0, 'N'));
        m_isRightAligned = given.number(1, 0) == 1;
    } else if (name == "LH") {
        m_homeX = given.number(0, m_homeX);
        m_homeY = given.number(1, m_homeY);
    } else if (name == "LT") {
        m_top = given.number(0, 0, -120, 120);
    } else if (name == "LS") {
        m_shift = given.number(0, 0, -9999, 9999);
    } else if (name == "LR") {
        m_isReversed = isYes(given, 0, false);
    } else if (name == "PW") {
        m_width = given.number(0, m_width);
    } else if (name == "LL") {
        m_length = given.number(0, m_length);
    } else if (name == "PO") {
        m_isTurned = given.letter(0, 'N') == 'I';
    } else if (name == "PM") {
        m_isMirrored = isYes(given, 0, false);
    } else if (name == "MU") {
        return given.letter(0, 'D') == 'D';
    } else if (name == "JM") {
        return given.letter(0, 'A') == 'A';
    } else {
        return false;
    }
    return true;
}

bool ZplFormat::takeText(const ZplCommand &command, const ZplParameters &given, ZplField &field)
{
    const QByteArray &name = command.name;
    if (name == "A") { // the font's name and the turn are one parameter: ^A0N,30,20
        const QByteArray first = given.text(0);
        field.font = {.name = first.isEmpty() ? m_font.name : first.toUpper()[0],
                      .height = given.number(1, 0),
                      .width = given.number(2, 0)};
        if (field.font->height == 0 && field.font->width == 0)
            field.font = ZplFont{field.font->name, m_font.height, m_font.width};
        if (first.size() > 1)
            field.turn = turnOf(first.toUpper()[1]);
    } else if (name == "A@") {
        field.font = {.name = '@', .height = given.number(1, 0), .width = given.number(2, 0)};
        field.turn = turnOf(given.letter(0, '-'));
    } else if (name == "GS") {
        field.isSymbol = true;
        field.font = {.name = '0', .height = given.number(1, m_font.height), .width = given.number(2, m_font.width)};
        field.turn = turnOf(given.letter(0, '-'));
    } else if (name == "FB") {
        field.block = {.width = given.number(0, 0),
                       .lines = given.number(1, 1, 1, 9999),
                       .spacing = given.number(2, 0, -9999, 9999),
                       .align = alignOf(given.letter(3, 'L')),
                       .indent = given.number(4, 0, 0, 9999)};
    } else if (name == "TB") {
        field.turn = turnOf(given.letter(0, '-'));
        field.block = {.width = given.number(1, 0), .lines = 9999, .height = given.number(2, 0)};
    } else {
        return false;
    }
    return true;
}

bool ZplFormat::takeField(const ZplCommand &command, const ZplParameters &given, ZplField &field)
{
    const QByteArray &name = command.name;
    if (name == "FH")
        field.hexSign = command.rest.trimmed().isEmpty() ? '_' : command.rest.trimmed()[0];
    else if (name == "FR")
        field.isReversed = true;
    else if (name == "FP") // characters below one another are not known
        return given.letter(0, 'H') == 'H';
    else
        return false;
    return true;
}

std::optional<decltype(ZplElement::shape)> ZplFormat::shapeOf(const ZplCommand &command,
                                                              const ZplParameters &given) const
{
    const QByteArray &name = command.name;
    if (name == "GB") {
        const int thickness = given.number(2, 1, 1);
        return ZplBox{.width = std::max(given.number(0, thickness), thickness),
                      .height = std::max(given.number(1, thickness), thickness),
                      .thickness = thickness,
                      .isWhite = given.letter(3, 'B') == 'W',
                      .rounding = given.number(4, 0, 0, 8)};
    }
    if (name == "GC") {
        const int diameter = given.number(0, 3, 3, 4095);
        return ZplEllipse{diameter, diameter, given.number(1, 1, 1), given.letter(2, 'B') == 'W'};
    }
    if (name == "GE")
        return ZplEllipse{given.number(0, 3, 3, 4095), given.number(1, 3, 3, 4095), given.number(2, 1, 1),
                          given.letter(3, 'B') == 'W'};
    if (name == "GD")
        return ZplDiagonal{given.number(0, 3, 3), given.number(1, 3, 3), given.number(2, 1, 1),
                           given.letter(3, 'B') == 'W', given.letter(4, 'R') != 'L'};
    return std::nullopt;
}

std::optional<ZplBarcode> ZplFormat::barcodeOf(const ZplCommand &command, const ZplParameters &given) const
{
    if (!command.name.startsWith('B') || command.name.size() < 2)
        return std::nullopt;
    const auto *known =
        std::ranges::find_if(codeNames, [&](const CodeName &row) { return command.name == row.command; });
    ZplBarcode code{.code = known == std::end(codeNames) ? ZplCode::other : known->code,
                    .command = QLatin1StringView("^") + QString::fromLatin1(command.name),
                    .turn = turnOf(given.letter(0, '-')),
                    .module = m_module,
                    .ratio = m_ratio,
                    .height = m_barHeight,
                    .areaHeight = m_barHeight};
    switch (code.code) {
    case ZplCode::code128: // turn, height, line, line above, check digit, mode
        code.height = given.number(1, m_barHeight, 1);
        code.hasLineBelow = isYes(given, 2, true) && !isYes(given, 3, false);
        code.hasLineAbove = isYes(given, 2, true) && isYes(given, 3, false);
        code.hasCheck = isYes(given, 4, false);
        code.mode = given.letter(5, 'N');
        break;
    case ZplCode::code39: // turn, check digit, height, line, line above
        code.hasCheck = isYes(given, 1, false);
        code.height = given.number(2, m_barHeight, 1);
        code.hasLineBelow = isYes(given, 3, true) && !isYes(given, 4, false);
        code.hasLineAbove = isYes(given, 3, true) && isYes(given, 4, false);
        break;
    case ZplCode::interleaved2of5: // turn, height, line, line above, check digit
        code.height = given.number(1, m_barHeight, 1);
        code.hasLineBelow = isYes(given, 2, true) && !isYes(given, 3, false);
        code.hasLineAbove = isYes(given, 2, true) && isYes(given, 3, false);
        code.hasCheck = isYes(given, 4, false);
        break;
    case ZplCode::pdf417: // turn, height of a row, security, columns, rows, truncated
        code.height = given.number(1, 0);
        code.security = given.number(2, 0, 0, 8);
        code.columns = given.number(3, 0, 0, 30);
        code.rows = given.number(4, 0, 0, 90);
        code.isTruncated = isYes(given, 5, false);
        break;
    default:
        readSquareCode(code, given);
        break;
    }
    return code;
}

void ZplFormat::readSquareCode(ZplBarcode &code, const ZplParameters &given) const
{
    switch (code.code) {
    case ZplCode::dataMatrix: // turn, cell, quality, columns, rows, format, escape, aspect
        code.module = given.number(1, 0, 0, 100);
        code.security = given.number(2, 0, 0, 200);
        code.columns = given.number(3, 0, 0, 144);
        code.rows = given.number(4, 0, 0, 144);
        code.escape = given.letter(6, '_');
        code.mode = given.letter(7, '1') == '2' ? 'R' : 'S';
        break;
    case ZplCode::qr: // turn, model, magnification
        code.module = given.number(2, 2, 1, 100);
        break;
    case ZplCode::aztec: // turn, magnification, escapes, error correction or size
        code.module = given.number(1, 2, 1, 10);
        code.security = given.number(3, 0, 0, 300);
        break;
    case ZplCode::maxicode: // mode
        code.turn = ZplTurn::none;
        code.mode = given.letter(0, '2');
        break;
    default:
        break;
    }
}

ZplTurn ZplFormat::turnOf(char letter) const
{
    switch (letter) {
    case 'N':
        return ZplTurn::none;
    case 'R':
        return ZplTurn::quarter;
    case 'I':
        return ZplTurn::half;
    case 'B':
        return ZplTurn::threeQuarters;
    default:
        return m_turn;
    }
}

void ZplFormat::place(ZplField &field, const ZplParameters &given, bool isOnBaseline) const
{
    field.x = given.number(0, 0);
    field.y = given.number(1, 0);
    field.isOnBaseline = isOnBaseline;
    field.isRightAligned = given.number(2, m_isRightAligned ? 1 : 0) == 1;
    field.hasPlace = true;
}

ZplElement ZplFormat::placed(const ZplField &field, decltype(ZplElement::shape) shape) const
{
    return {.x = field.x + m_homeX - m_shift,
            .y = field.y + m_homeY + m_top,
            .isOnBaseline = field.isOnBaseline,
            .isRightAligned = field.isRightAligned,
            .isReversed = field.isReversed || m_isReversed,
            .shape = std::move(shape)};
}

decltype(ZplElement::shape) ZplFormat::contentOf(const ZplField &field) const
{
    if (field.barcode) {
        ZplBarcode code = *field.barcode;
        code.data = field.data;
        return code;
    }
    const QString text = fieldText(field.data, m_characterSet);
    return ZplText{.text = field.block ? blockText(text) : text,
                   .font = field.font.value_or(m_font),
                   .turn = field.turn.value_or(m_turn),
                   .block = field.block,
                   .isSymbol = field.isSymbol};
}

ZplElement ZplFormat::filled(ZplElement element, const QByteArray &value) const
{
    if (auto *code = std::get_if<ZplBarcode>(&element.shape)) {
        code->data = value;
    } else if (auto *text = std::get_if<ZplText>(&element.shape)) {
        text->text = fieldText(value, m_characterSet);
        if (text->block)
            text->text = blockText(text->text);
    }
    return element;
}

ZplLabel ZplFormat::label() const
{
    return {.width = std::min(m_width, longest),
            .length = std::min(m_length, longest),
            .isTurned = m_isTurned,
            .isMirrored = m_isMirrored};
}

} // namespace parcelory
