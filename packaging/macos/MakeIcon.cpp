// Draws an SVG as an Apple icon file: MakeIcon icon.svg Parcelory.icns
// The format is a list of PNG files, each behind a four-letter type and its length with this head, big-endian.
#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QtEndian>

#include <cstdio>

namespace {

struct Entry {
    const char *type;
    int pixels;
};
// The sizes that the system shows, each also for screens with twice the density.
constexpr Entry entries[] = {{"icp4", 16},  {"icp5", 32},  {"ic11", 32},  {"ic12", 64},  {"ic07", 128},
                             {"ic08", 256}, {"ic13", 256}, {"ic09", 512}, {"ic14", 512}, {"ic10", 1024}};

void append(QByteArray &file, const char *type, const QByteArray &content)
{
    const quint32 length = qToBigEndian(quint32(content.size()) + 8);
    file.append(type, 4).append(reinterpret_cast<const char *>(&length), sizeof length).append(content);
}

QByteArray draw(QSvgRenderer &svg, int pixels)
{
    // Apple's icons leave a tenth of the square free.
    QImage image(pixels, pixels, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    const double margin = pixels * 0.1;
    svg.render(&painter, QRectF(margin, margin, pixels - 2 * margin, pixels - 2 * margin));
    painter.end();
    QBuffer buffer;
    image.save(&buffer, "PNG");
    return buffer.data();
}

} // namespace

int main(int count, char **arguments)
{
    if (count != 3)
        return 2;
    QSvgRenderer svg(QString::fromLocal8Bit(arguments[1]));
    QByteArray images;
    for (const auto &[type, pixels] : entries)
        append(images, type, draw(svg, pixels));
    QByteArray file;
    append(file, "icns", images);
    QFile target(QString::fromLocal8Bit(arguments[2]));
    if (svg.isValid() && target.open(QFile::WriteOnly) && target.write(file) == file.size() && target.flush())
        return 0;
    std::fprintf(stderr, "MakeIcon: cannot draw %s into %s\n", arguments[1], arguments[2]);
    return 1;
}
