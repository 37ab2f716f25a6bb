#pragma once

#include "devices/zpl/ZplLabel.h"
#include "devices/zpl/ZplScanner.h"

#include <optional>

namespace parcelory {

/// The field that a label is just describing.
struct ZplField {
    int x = 0, y = 0;
    bool hasPlace = false, isOnBaseline = false, isRightAligned = false, isReversed = false;
    std::optional<ZplFont> font;
    std::optional<ZplTurn> turn;
    std::optional<ZplBlock> block;
    std::optional<ZplBarcode> barcode;
    std::optional<char> hexSign;
    bool isSymbol = false;
    int number = -1; ///< of the ^FN command; -1 without this command
    QByteArray data;
    bool hasData = false;
};

/// The settings that hold until a label changes them, and what they make of a field.
class ZplFormat {
public:
    /// Takes a command about the settings or about the field; false if it is neither.
    bool take(const ZplCommand &command, const ZplParameters &given, ZplField &field);
    /// The box, line or circle that the command draws; nothing for another command.
    std::optional<decltype(ZplElement::shape)> shapeOf(const ZplCommand &command, const ZplParameters &given) const;

    void place(ZplField &field, const ZplParameters &given, bool isOnBaseline) const;
    ZplElement placed(const ZplField &field, decltype(ZplElement::shape) shape) const;
    /// The field's text or bar code.
    decltype(ZplElement::shape) contentOf(const ZplField &field) const;
    /// A numbered field with its value.
    ZplElement filled(ZplElement element, const QByteArray &value) const;
    /// A label without elements.
    ZplLabel label() const;

private:
    bool takeSetting(const ZplCommand &command, const ZplParameters &given);
    bool takeField(const ZplCommand &command, const ZplParameters &given, ZplField &field);
    bool takeText(const ZplCommand &command, const ZplParameters &given, ZplField &field);
    std::optional<ZplBarcode> barcodeOf(const ZplCommand &command, const ZplParameters &given) const;
    void readSquareCode(ZplBarcode &code, const ZplParameters &given) const;
    ZplTurn turnOf(char letter) const;

    ZplFont m_font;
    ZplTurn m_turn = ZplTurn::none;
    bool m_isRightAligned = false;
    int m_module = 2, m_barHeight = 10;
    double m_ratio = 3;
    int m_homeX = 0, m_homeY = 0, m_top = 0, m_shift = 0;
    bool m_isReversed = false, m_isTurned = false, m_isMirrored = false;
    int m_width = 0, m_length = 0;
    int m_characterSet = 0;
};

} // namespace parcelory
