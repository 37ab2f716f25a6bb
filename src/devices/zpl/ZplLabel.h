#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>
#include <variant>

namespace parcelory {

// A label in Zebra's printer language as a list of placed elements. All lengths are dots of the printer, 0 to 32000
// unless a comment says otherwise; positions count from the top left corner of the label, to the right and down.

/// How a field is turned on the label, clockwise.
enum class ZplTurn { none, quarter, half, threeQuarters };

/// A font as the label asks for it. 0 for a length that the label does not give.
struct ZplFont {
    char name = 'A'; ///< '0' is the scalable font, 'A' to 'H' and 'P' to 'V' are bitmaps, '@' is a font file
    int height = 0;
    int width = 0;
};

enum class ZplAlign { left, center, right, justified };

/// The area in which a text wraps.
struct ZplBlock {
    int width = 0;
    int lines = 1;   ///< further lines are printed over the last
    int spacing = 0; ///< added between two lines; may be negative
    ZplAlign align = ZplAlign::left;
    int indent = 0; ///< of all lines but the first
    int height = 0; ///< what is lower is not printed; 0 for no limit
};

struct ZplText {
    QString text; ///< in a block, a line feed starts a new line
    ZplFont font;
    ZplTurn turn = ZplTurn::none;
    std::optional<ZplBlock> block;
    bool isSymbol = false; ///< a trade mark sign of the symbol font, as its letter A to E
};

/// A box, a line or a filled area.
struct ZplBox {
    int width = 1, height = 1, thickness = 1;
    bool isWhite = false;
    int rounding = 0; ///< 0 to 8
};

struct ZplEllipse {
    int width = 3, height = 3, thickness = 1;
    bool isWhite = false;
};

struct ZplDiagonal {
    int width = 3, height = 3, thickness = 1;
    bool isWhite = false;
    bool rises = true; ///< from the lower left to the upper right
};

/// A picture: one bit for each dot, 1 is black.
struct ZplGraphic {
    QByteArray bits;
    int bytesPerRow = 1;
    int scaleX = 1, scaleY = 1; ///< 1 to 10
};

enum class ZplCode { code128, code39, interleaved2of5, dataMatrix, pdf417, qr, aztec, maxicode, other };

struct ZplBarcode {
    ZplCode code = ZplCode::other;
    QString command; ///< as the label names it, "^BC"
    QByteArray data; ///< with the escapes of the bar code (">8", "_1"), without those of the field
    ZplTurn turn = ZplTurn::none;
    int module = 2;     ///< the narrow bar of a linear code, a cell of a square code
    double ratio = 3;   ///< of a wide bar to a narrow bar, 2 to 3
    int height = 10;    ///< of the bars, or of a row of PDF417 (0: from `areaHeight`)
    int areaHeight = 0; ///< height of the whole code that the label asks for; 0 if it asks for no height
    bool hasLineBelow = false, hasLineAbove = false;
    char mode = 'N';       ///< of Code 128: N, U, A or D; of MaxiCode: 2 to 6
    bool hasCheck = false; ///< a check digit is added
    int security = 0;      ///< error correction; its meaning depends on the code
    int columns = 0, rows = 0;
    bool isTruncated = false;
    char escape = '_'; ///< of Data Matrix
};

/// An element where the label places it.
struct ZplElement {
    int x = 0, y = 0;            ///< top left corner; -32000 to 64000
    bool isOnBaseline = false;   ///< the place is the left end of the baseline instead
    bool isRightAligned = false; ///< the place is the right end instead
    bool isReversed = false;     ///< black on white, white on black
    std::variant<ZplText, ZplBox, ZplEllipse, ZplDiagonal, ZplGraphic, ZplBarcode> shape;
};

struct ZplLabel {
    QList<ZplElement> elements;
    int width = 0, length = 0; ///< 0 if the label declares no size
    bool isTurned = false;     ///< printed by 180°
    bool isMirrored = false;   ///< printed left to right
    int copies = 1;            ///< 1 to 32000
};

/// A file with labels.
struct ZplDocument {
    QList<ZplLabel> labels; ///< without those that print nothing
    /// Commands that change the picture in a way that the reader does not know, in the order of the file, each as often
    /// as it occurs: "^BK".
    QStringList unknown;
};

} // namespace parcelory
