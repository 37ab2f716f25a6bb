// compare_pictures ONE OTHER PIXELS: succeeds if two pictures have the same size and at most PIXELS clearly different
// pixels. A stored picture has fewer colors than a drawn one.
#include <QImage>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    if (argc != 4)
        return 2;
    const QImage one = QImage(QString::fromLocal8Bit(argv[1])).convertToFormat(QImage::Format_RGB32);
    const QImage other = QImage(QString::fromLocal8Bit(argv[2])).convertToFormat(QImage::Format_RGB32);
    if (one.isNull() || one.size() != other.size()) {
        std::printf("%s: another size, or no picture\n", argv[2]);
        return 1;
    }
    const int mostPixels = std::atoi(argv[3]);
    constexpr int visible = 40; // of 255; the change of a color
    int changed = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y), b = other.pixel(x, y);
            changed += std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                                 std::abs(qBlue(a) - qBlue(b))}) > visible;
        }
    }
    if (changed > mostPixels)
        std::printf("%s: %d pixels differ\n", argv[2], changed);
    return changed > mostPixels ? 1 : 0;
}
