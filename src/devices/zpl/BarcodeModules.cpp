#include "devices/zpl/BarcodeModules.h"

#include "devices/zpl/Code128.h"

#include <zint.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int longestSide = 8192;
constexpr char separator = '\x1D'; ///< FNC1 between two parts

struct SymbolDeleter {
    void operator()(zint_symbol *symbol) const { ZBarcode_Delete(symbol); }
};
using Symbol = std::unique_ptr<zint_symbol, SymbolDeleter>;

Symbol newSymbol(int symbology, int mode)
{
    Symbol symbol(ZBarcode_Create());
    symbol->symbology = symbology;
    symbol->input_mode = mode;
    symbol->show_hrt = 0;
    return symbol;
}

bool encode(zint_symbol *symbol, const QByteArray &data)
{
    constexpr qsizetype longest = 3000; // the largest of these codes holds less than 7100 digits
    if (data.isEmpty() || data.size() > longest)
        return false;
    return ZBarcode_Encode(symbol, reinterpret_cast<const unsigned char *>(data.constData()), int(data.size())) <
           ZINT_ERROR;
}

/// The runs of equal modules in a row, the first is a bar.
QList<int> runs(const zint_symbol &symbol, int row)
{
    QList<int> widths;
    bool isBar = true;
    int run = 0;
    for (int x = 0; x < symbol.width; ++x) {
        const bool isSet = (symbol.encoded_data[row][x / 8] >> (x % 8)) & 1;
        if (isSet != isBar) {
            widths += run;
            run = 0;
            isBar = isSet;
        }
        ++run;
    }
    widths += run;
    return widths;
}

std::optional<BarcodeDots> measured(BarcodeDots dots)
{
    for (const BarcodeDots::Row &row : dots.rows) {
        int width = 0;
        for (const int part : row.widths)
            width += part;
        dots.width = std::max(dots.width, width);
        dots.height += row.height;
        if (dots.width > longestSide || dots.height > longestSide)
            return std::nullopt;
    }
    return dots;
}

/// All modules of one size, in rows of the height `rowHeight`.
std::optional<BarcodeDots> squares(const zint_symbol &symbol, int module, int rowHeight)
{
    BarcodeDots dots;
    for (int row = 0; row < symbol.rows; ++row) {
        QList<int> widths = runs(symbol, row);
        for (int &width : widths)
            width *= module;
        dots.rows.append({rowHeight, widths});
    }
    return measured(dots);
}

Code128::Mode modeOf(const ZplBarcode &code)
{
    switch (code.mode) {
    case 'U':
        return Code128::Mode::shipping;
    case 'A':
        return Code128::Mode::automatic;
    case 'D':
        return Code128::Mode::gs1;
    default:
        return Code128::Mode::plain;
    }
}

std::optional<BarcodeDots> code128(const ZplBarcode &code)
{
    const auto values = code.hasCheck ? std::nullopt : Code128::values(code.data, modeOf(code));
    if (!values)
        return std::nullopt;
    QList<int> widths = Code128::widths(*values);
    for (int &width : widths)
        width *= code.module;
    BarcodeDots dots{.rows = {{code.height, widths}}};
    dots.line = QString::fromLatin1(Code128::text(*values).replace(separator, ""));
    return measured(dots);
}

/// Codes of wide and narrow bars.
std::optional<BarcodeDots> twoWidths(const ZplBarcode &code)
{
    const bool is39 = code.code == ZplCode::code39;
    const Symbol symbol = newSymbol(is39 ? BARCODE_CODE39 : BARCODE_C25INTER, DATA_MODE);
    symbol->option_2 = code.hasCheck ? 1 : 0;
    if (!encode(symbol.get(), is39 ? code.data.toUpper() : code.data))
        return std::nullopt;
    QList<int> widths = runs(*symbol, 0);
    for (int &width : widths)
        width = width <= 1 ? width * code.module : int(std::lround(code.module * code.ratio));
    BarcodeDots dots{.rows = {{code.height, widths}}};
    dots.line = QString::fromLatin1(is39 ? '*' + code.data.toUpper() + '*' : code.data);
    return measured(dots);
}

/// The data of a ^BX command: its escapes as the characters that they stand for, FNC1 as the separator.
QByteArray withoutDataMatrixEscapes(const ZplBarcode &code)
{
    QByteArray bytes;
    for (qsizetype at = 0; at < code.data.size(); ++at) {
        const char next = code.data[at] == code.escape && at + 1 < code.data.size() ? code.data[at + 1] : '\0';
        if (next == 'd' && at + 4 < code.data.size()) {
            bytes += char(code.data.sliced(at + 2, 3).toInt());
            at += 4;
        } else if (next >= '1' && next <= '3') {
            bytes += next == '1' ? QByteArray(1, separator) : QByteArray();
            ++at;
        } else if (next == code.escape && next != '\0') {
            bytes += next;
            ++at;
        } else if (next >= '@' && next <= '_') { // control characters by their letter
            bytes += char(next - '@');
            ++at;
        } else {
            bytes += code.data[at];
        }
    }
    return bytes;
}

int dataMatrixSize(int columns, int rows)
{
    constexpr int squareSizes[] = {10, 12, 14, 16, 18, 20, 22, 24, 26,  32,  36,  40,
                                   44, 48, 52, 64, 72, 80, 88, 96, 104, 120, 132, 144};
    constexpr int rectangles[][2] = {{18, 8}, {32, 8}, {26, 12}, {36, 12}, {36, 16}, {48, 16}};
    if (columns == rows || rows == 0 || columns == 0) {
        const auto *found = std::ranges::find(squareSizes, std::max(columns, rows));
        return found == std::end(squareSizes) ? 0 : int(found - squareSizes) + 1;
    }
    for (int at = 0; at < 6; ++at) {
        if (rectangles[at][0] == columns && rectangles[at][1] == rows)
            return 25 + at;
    }
    return 0;
}

/// GS1 data as the library takes it: identifiers in brackets, each part of the data with its own. The library joins
/// them with FNC1 again, except after identifiers whose data has a fixed length.
QByteArray bracketed(const QByteArray &data)
{
    QByteArray result;
    for (const QByteArray &part : data.split(separator)) {
        const qsizetype digits = part.startsWith('4') ? 3 : 2;
        if (part.size() > digits)
            result += '[' + part.first(digits) + ']' + part.sliced(digits);
    }
    return result;
}

std::optional<BarcodeDots> dataMatrix(const ZplBarcode &code)
{
    constexpr int onlyQuality = 200;
    if (code.security != onlyQuality && code.security != 0)
        return std::nullopt;
    const QByteArray data = withoutDataMatrixEscapes(code);
    const bool isGs1 = data.startsWith(separator);
    for (const int size : {dataMatrixSize(code.columns, code.rows), 0}) { // data that is too long takes its own size
        const Symbol symbol = newSymbol(BARCODE_DATAMATRIX, isGs1 ? GS1_MODE | GS1NOCHECK_MODE : DATA_MODE);
        symbol->option_2 = size;
        symbol->option_3 = code.mode == 'R' || size > 24 ? 0 : DM_SQUARE;
        if (!encode(symbol.get(), isGs1 ? bracketed(data) : data))
            continue;
        const int module = code.module > 0 ? code.module : std::max(code.areaHeight / symbol->rows, 1);
        return squares(*symbol, module, module);
    }
    return std::nullopt;
}

std::optional<BarcodeDots> pdf417(const ZplBarcode &code)
{
    for (const bool asAsked : {true, false}) { // data that is too long for the size takes its own
        const Symbol symbol = newSymbol(code.isTruncated ? BARCODE_PDF417COMP : BARCODE_PDF417, DATA_MODE);
        symbol->option_1 = code.security;
        symbol->option_2 = asAsked ? code.columns : 0;
        symbol->option_3 = asAsked ? code.rows : 0;
        if (!encode(symbol.get(), code.data))
            continue;
        const int fromArea = std::max(code.areaHeight / symbol->rows, code.module);
        return squares(*symbol, code.module, code.height > 0 ? code.height : fromArea);
    }
    return std::nullopt;
}

/// The data of a ^BQ command: its error correction, a letter for the way of input, a comma and the data.
struct QrData {
    int correction = 0; ///< as the library counts it, 0 for its own choice
    QByteArray data;
};

QrData qrData(const QByteArray &field)
{
    const qsizetype comma = field.indexOf(',');
    if (comma < 1 || comma > 3)
        return {0, field};
    QrData result{int(QByteArrayView("LMQH").indexOf(field[0])) + 1, field.sliced(comma + 1)};
    if (comma > 1 && field[1] == 'M' && !result.data.isEmpty()) {
        const qsizetype kind = result.data[0] == 'B' ? 5 : 1; // bytes are announced with their number
        result.data = result.data.sliced(std::min(kind, result.data.size()));
    }
    return result;
}

std::optional<BarcodeDots> qr(const ZplBarcode &code)
{
    const QrData field = qrData(code.data);
    const Symbol symbol = newSymbol(BARCODE_QRCODE, UNICODE_MODE);
    symbol->option_1 = field.correction;
    if (!encode(symbol.get(), field.data))
        return std::nullopt;
    return squares(*symbol, code.module, code.module);
}

std::optional<BarcodeDots> aztec(const ZplBarcode &code)
{
    constexpr int compact = 100, full = 200, rune = 300;
    const Symbol symbol = newSymbol(code.security == rune ? BARCODE_AZRUNE : BARCODE_AZTEC, DATA_MODE);
    if (code.security > 0 && code.security < compact)
        symbol->option_1 = code.security < 17 ? 1 : code.security < 30 ? 2 : code.security < 43 ? 3 : 4;
    else if (code.security > full && code.security <= full + 32)
        symbol->option_2 = code.security - full + 4;
    else if (code.security > compact && code.security <= compact + 4)
        symbol->option_2 = code.security - compact;
    if (!encode(symbol.get(), code.data))
        return std::nullopt;
    return squares(*symbol, code.module, code.module);
}

} // namespace

std::optional<BarcodeDots> barcodeDots(const ZplBarcode &code)
{
    switch (code.code) {
    case ZplCode::code128:
        return code128(code);
    case ZplCode::code39:
    case ZplCode::interleaved2of5:
        return twoWidths(code);
    case ZplCode::dataMatrix:
        return dataMatrix(code);
    case ZplCode::pdf417:
        return pdf417(code);
    case ZplCode::qr:
        return qr(code);
    case ZplCode::aztec:
        return aztec(code);
    case ZplCode::maxicode:
    case ZplCode::other:
        break;
    }
    return std::nullopt;
}

QByteArray barcodeText(const ZplBarcode &code)
{
    if (code.code == ZplCode::code128) {
        const auto values = Code128::values(code.data, modeOf(code));
        return values ? Code128::text(*values) : QByteArray();
    }
    if (code.code == ZplCode::dataMatrix) {
        const QByteArray data = withoutDataMatrixEscapes(code);
        return data.startsWith(separator) ? data.sliced(1) : data;
    }
    return code.code == ZplCode::qr ? qrData(code.data).data : code.data;
}

} // namespace parcelory
