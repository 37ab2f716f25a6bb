#include "ui/theme/Tokens.h"

#include <algorithm>
#include <cmath>

namespace parcelory {

const Tokens &lightTokens()
{
    static const Tokens tokens = {.window = 0xF3F4F6,
                                  .sheet = 0xFFFFFF,
                                  .panel = 0xF8F9FA,
                                  .header = 0xECEEF2,
                                  .line = 0xE0E3E8,
                                  .button = 0xC2C8D1,
                                  .control = 0x828A97,
                                  .text = 0x1A1E25,
                                  .muted = 0x596170,
                                  .accent = 0x2257BF,
                                  .accentHover = 0x1B489F,
                                  .onAccent = 0xFFFFFF,
                                  .accentText = 0x1F4FAE,
                                  .accentTint = 0xE8EFFC,
                                  .rowSel = 0xDCE7FB,
                                  .ok = 0x14703C,
                                  .okTint = 0xE6F4EB,
                                  .warn = 0x7F4600,
                                  .warnTint = 0xFFF3D9,
                                  .warnEdge = 0xB57408,
                                  .bad = 0xB3261E,
                                  .badTint = 0xFCEBEA,
                                  .test = 0xF2B01E,
                                  .onTest = 0x2A1D00,
                                  .practice = 0x6B3FC2,
                                  .onPractice = 0xFFFFFF,
                                  .practiceTint = 0xF1EBFC,
                                  .disabledText = 0x606875,
                                  .disabledFill = 0xECEEF1,
                                  .segBg = 0xE6E9EE,
                                  .segOn = 0xFFFFFF,
                                  .shade = QColor(16, 20, 28, 110)};
    return tokens;
}

const Tokens &darkTokens()
{
    static const Tokens tokens = {.window = 0x17191D,
                                  .sheet = 0x1F2226,
                                  .panel = 0x1B1E22,
                                  .header = 0x23272C,
                                  .line = 0x33383F,
                                  .button = 0x4A515C,
                                  .control = 0x757E8C,
                                  .text = 0xE9EBEF,
                                  .muted = 0xA5ADBA,
                                  .accent = 0x3568D4,
                                  .accentHover = 0x2D5CC0,
                                  .onAccent = 0xFFFFFF,
                                  .accentText = 0x8DB4FF,
                                  .accentTint = 0x22314F,
                                  .rowSel = 0x2A3F69,
                                  .ok = 0x6FCF97,
                                  .okTint = 0x1B3326,
                                  .warn = 0xF3C266,
                                  .warnTint = 0x3A2D12,
                                  .warnEdge = 0xB97F1D,
                                  .bad = 0xFF9B93,
                                  .badTint = 0x43211F,
                                  .test = 0xF2B01E,
                                  .onTest = 0x2A1D00,
                                  .practice = 0x9E7BEA,
                                  .onPractice = 0x140A2B,
                                  .practiceTint = 0x2C2342,
                                  .disabledText = 0x98A0AD,
                                  .disabledFill = 0x2A2E34,
                                  .segBg = 0x262A30,
                                  .segOn = 0x3D4550,
                                  .shade = QColor(0, 0, 0, 140)};
    return tokens;
}

double contrast(const QColor &one, const QColor &other)
{
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    const auto luminance = [&](const QColor &color) {
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
    };
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace parcelory
