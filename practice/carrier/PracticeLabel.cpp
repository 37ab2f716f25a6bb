#include "practice/carrier/PracticeLabel.h"

#include "core/Text.h"
#include "practice/carrier/PracticePdf.h"

#include <QtEndian>

#include <cstdlib>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString marking = u"PRACTICE — NO POSTAGE"_s;
constexpr int dotsWide = 812, dotsHigh = 1218; // 4 by 6 inches at 203 dots per inch

quint32 crc32(const QByteArray &bytes)
{
    quint32 crc = 0xffffffff;
    for (const char byte : bytes) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (crc & 1 ? 0xedb88320 : 0);
    }
    return ~crc;
}

QByteArray bigEndian(quint32 value)
{
    QByteArray bytes(4, Qt::Uninitialized);
    qToBigEndian(value, bytes.data());
    return bytes;
}

QByteArray pngChunk(const QByteArray &type, const QByteArray &data)
{
    return bigEndian(quint32(data.size())) + type + data + bigEndian(crc32(type + data));
}

/// Rows with one bit per dot, each after its filter byte: a frame and a cross.
QByteArray crossedOutDots()
{
    constexpr int rowBytes = (dotsWide + 7) / 8, pen = 5, margin = 20;
    QByteArray rows;
    rows.reserve((rowBytes + 1) * dotsHigh);
    for (int y = 0; y < dotsHigh; ++y) {
        QByteArray row(rowBytes, '\xff');
        const int diagonal = y * dotsWide / dotsHigh;
        for (int x = margin; x < dotsWide - margin; ++x) {
            const bool isInside = y >= margin && y < dotsHigh - margin;
            const bool isFrame =
                x < margin + pen || x >= dotsWide - margin - pen || y < margin + pen || y >= dotsHigh - margin - pen;
            const bool isCross = std::abs(x - diagonal) < pen || std::abs(dotsWide - 1 - x - diagonal) < pen;
            if (isInside && (isFrame || isCross))
                row[x / 8] = char(row[x / 8] & ~(0x80 >> (x % 8)));
        }
        rows += '\0' + row;
    }
    return rows;
}

} // namespace

QStringList addressLines(const ShippoAddress &address)
{
    const QString place = joinPresent({address.city, address.state, address.zip}, u" "_s);
    QStringList lines = {address.name, address.company, address.street1, address.street2, place, address.country};
    lines.removeAll(QString());
    return lines;
}

QByteArray pdfLabel(const LabelContent &content)
{
    PdfPage page(288, 432);
    page.write(20, 400, 18, marking);
    page.write(20, 372, 16, content.title());
    page.write(200, 350, 8, content.shipDate);
    page.writeLines(20, 350, 9, addressLines(content.from));
    page.write(20, 270, 9, u"SHIP TO:"_s);
    page.writeLines(34, 252, 12, addressLines(content.to));
    page.write(20, 70, 12, content.tracking);
    if (!content.reference.isEmpty())
        page.write(20, 30, 8, u"Ref: "_s + content.reference);
    return page.document();
}

QByteArray pngLabel()
{
    static const QByteArray png = [] {
        constexpr auto oneBitGray = "\x01\x00\x00\x00\x00";
        const QByteArray header = bigEndian(dotsWide) + bigEndian(dotsHigh) + QByteArray(oneBitGray, 5);
        constexpr double inchesPerMetre = 1 / 0.0254;
        const QByteArray dotsPerMetre = bigEndian(quint32(203 * inchesPerMetre));
        // qCompress puts a length before the zlib stream.
        return "\x89PNG\r\n\x1a\n" + pngChunk("IHDR", header) + pngChunk("pHYs", dotsPerMetre + dotsPerMetre + '\x01') +
               pngChunk("IDAT", qCompress(crossedOutDots()).mid(4)) + pngChunk("IEND", {});
    }();
    return png;
}

QByteArray pdfPaper(const QString &title, const QStringList &lines)
{
    PdfPage page(612, 792);
    page.write(54, 720, 20, title);
    page.write(54, 698, 10, marking);
    page.writeLines(54, 664, 11, lines);
    return page.document();
}

} // namespace parcelory
