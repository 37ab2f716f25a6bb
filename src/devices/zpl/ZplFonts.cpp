#include "devices/zpl/ZplFonts.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace parcelory {

namespace {

struct Bitmap {
    char name;
    int height, width, gap;
    bool isFixed;
};

constexpr Bitmap bitmaps[] = {{'A', 9, 5, 1, true},    {'B', 11, 7, 2, true},   {'C', 18, 10, 2, true},
                              {'D', 18, 10, 2, true},  {'E', 28, 15, 5, true},  {'F', 26, 13, 3, true},
                              {'G', 60, 40, 8, true},  {'H', 21, 13, 6, true},  {'P', 20, 18, 0, false},
                              {'Q', 28, 24, 0, false}, {'R', 35, 31, 0, false}, {'S', 40, 35, 0, false},
                              {'T', 48, 42, 0, false}, {'U', 59, 53, 0, false}, {'V', 80, 71, 0, false}};
constexpr double baselineShare = 0.77;

int magnification(int asked, int base)
{
    return std::clamp(int(std::lround(double(asked) / base)), 1, 10);
}

} // namespace

ZplCell cellOf(const ZplFont &font)
{
    const auto *bitmap = std::ranges::find(bitmaps, font.name, &Bitmap::name);
    if (bitmap == std::end(bitmaps)) {
        constexpr int otherwise = 15;
        const double height = font.height > 0 ? font.height : font.width > 0 ? font.width : otherwise;
        return {height, (font.width > 0 ? font.width : height) / 2, height * baselineShare, false};
    }
    int high = font.height > 0 ? magnification(font.height, bitmap->height) : 0;
    int wide = font.width > 0 ? magnification(font.width, bitmap->width) : 0;
    high = high > 0 ? high : std::max(wide, 1);
    wide = wide > 0 ? wide : high;
    const double height = double(bitmap->height) * high;
    const double cell = double(bitmap->width + bitmap->gap) * wide;
    return {height, bitmap->isFixed ? cell : cell / 2, height * baselineShare, bitmap->isFixed};
}

} // namespace parcelory
