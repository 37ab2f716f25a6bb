#include "devices/zpl/BarcodeModules.h"
#include "devices/zpl/Code128.h"
#include "devices/zpl/ZplPainter.h"
#include "devices/zpl/ZplReader.h"
#include "devices/zpl/ZplTypesetter.h"
#include "support/Table.h"

#include <ZXing/ReadBarcode.h>

namespace parcelory::test {
namespace {

/// An element in one line: "10,20 text AB 0:30x20 r90".
QString described(const ZplElement &element)
{
    QString line = u"%1,%2"_s.arg(element.x).arg(element.y);
    line += element.isOnBaseline ? u" base"_s : QString();
    line += element.isRightAligned ? u" right"_s : QString();
    line += element.isReversed ? u" reversed"_s : QString();
    const auto turned = [](ZplTurn turn) { return turn == ZplTurn::none ? QString() : u" r%1"_s.arg(int(turn) * 90); };
    if (const auto *text = std::get_if<ZplText>(&element.shape)) {
        line += u" text %1 %2:%3x%4"_s.arg(text->text, QChar::fromLatin1(text->font.name))
                    .arg(text->font.height)
                    .arg(text->font.width) +
                turned(text->turn);
        if (text->block)
            line += u" block %1x%2 %3"_s.arg(text->block->width).arg(text->block->lines).arg(int(text->block->align));
    } else if (const auto *box = std::get_if<ZplBox>(&element.shape)) {
        line += u" box %1x%2 %3%4"_s.arg(box->width)
                    .arg(box->height)
                    .arg(box->thickness)
                    .arg(box->isWhite ? u" white" : u"");
    } else if (const auto *ellipse = std::get_if<ZplEllipse>(&element.shape)) {
        line += u" ellipse %1x%2 %3"_s.arg(ellipse->width).arg(ellipse->height).arg(ellipse->thickness);
    } else if (const auto *diagonal = std::get_if<ZplDiagonal>(&element.shape)) {
        line += u" diagonal %1x%2 %3"_s.arg(diagonal->width).arg(diagonal->height).arg(diagonal->rises ? u"/" : u"\\");
    } else if (const auto *graphic = std::get_if<ZplGraphic>(&element.shape)) {
        line += u" graphic %1 in %2 x%3"_s.arg(QString::fromLatin1(graphic->bits.toHex()))
                    .arg(graphic->bytesPerRow)
                    .arg(graphic->scaleX);
    } else if (const auto *code = std::get_if<ZplBarcode>(&element.shape)) {
        line += u" %1 %2 m%3 h%4"_s.arg(code->command, QString::fromLatin1(code->data))
                    .arg(code->module)
                    .arg(code->height) +
                turned(code->turn);
    }
    return line;
}

/// The elements of all labels, a line each; "---" between two labels; unknown commands at the end.
QString read(const QByteArray &zpl)
{
    const ZplDocument document = readZpl(zpl);
    QStringList lines;
    for (const ZplLabel &label : document.labels) {
        if (!lines.isEmpty())
            lines += u"---"_s;
        for (const ZplElement &element : label.elements)
            lines += described(element);
    }
    if (!document.unknown.isEmpty())
        lines += u"unknown "_s + document.unknown.join(u' ');
    return lines.join(u'\n');
}

QImage painted(const QByteArray &zpl)
{
    const ZplDocument document = readZpl(zpl);
    return document.labels.isEmpty() ? QImage() : paintZpl(document.labels[0]).image;
}

/// What an independent reader reads from a picture; FNC1 as "<GS>".
QString scanned(const QImage &picture)
{
    const ZXing::ImageView view(picture.constBits(), picture.width(), picture.height(), ZXing::ImageFormat::Lum,
                                int(picture.bytesPerLine()));
    const auto result = ZXing::ReadBarcode(view);
    const auto &bytes = result.bytes(); // the library's versions differ in how they write these as a text
    QString text = QString::fromUtf8(reinterpret_cast<const char *>(bytes.data()), qsizetype(bytes.size()));
    if (!result.isValid())
        text = u"(unread)"_s;
    return text.replace(QChar(0x1d), u"<GS>"_s);
}

/// The box around all black dots.
QRect ink(const QImage &picture)
{
    QRect area;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            area |= picture.constScanLine(y)[x] < 128 ? QRect(x, y, 1, 1) : QRect();
    }
    return area;
}

} // namespace

TEST(ZplReader, ReadsFieldsAsPrintersDo)
{
    for (const Json &row : table(u"zpl-elements"_s, "read"))
        EXPECT_EQ(read(bytes(row[0])), text(row[1])) << row;
    const ZplLabel label = readZpl("^XA^POI^PMY^PW600^LL900^PQ3^FDx^FS^XZ").labels.value(0);
    EXPECT_TRUE(label.isTurned && label.isMirrored && label.width == 600 && label.length == 900 && label.copies == 3);
}

TEST(ZplReader, SurvivesSizesThatNoLabelHas)
{
    for (const Json &zpl : table(u"zpl-elements"_s, "odd sizes"))
        EXPECT_LE(readZpl(bytes(zpl)).labels.size(), 1) << zpl;
    const ZplDocument many = readZpl("^XA" + QByteArray("^FO1,1^GB1,1^FS").repeated(30000) + "^XZ");
    EXPECT_EQ(many.labels.value(0).elements.size(), 20000);
}

TEST(ZplPainter, DrawsBarCodesThatAnIndependentReaderReads)
{
    for (const Json &row : table(u"zpl-elements"_s, "bar codes")) {
        const QByteArray zpl = "^XA^FO60,60" + bytes(row[0]) + "^FD" + bytes(row[1]) + "^FS^XZ";
        // The reader looks for some codes in the middle of the picture only.
        const QImage picture = painted(zpl);
        constexpr int margin = 40;
        const QRect around = ink(picture).adjusted(-margin, -margin, margin, margin) & picture.rect();
        EXPECT_EQ(scanned(picture.copy(around)), text(row[2])) << zpl.toStdString();
    }
    for (const char *zpl :
         {"^XA^FO60,60^BDN^FD002840100450000^FS^XZ", "^XA^FO60,60^BKN^FD123^FS^XZ", "^XA^FO60,60^B2N^FDletters^FS^XZ"})
        EXPECT_EQ(paintZpl(readZpl(zpl).labels.value(0)).notDrawn.size(), 1) << zpl;
}

TEST(ZplPainter, DrawsTextsAsWideAsTheyAreAskedFor)
{
    const ZplTypesetter type;
    for (const Json &row : table(u"zpl-elements"_s, "widths")) { // font, height, width, width of a digit
        const ZplFont font{bytes(row[0])[0], row[1], row[2]};
        const double digit = row[3];
        EXPECT_NEAR(type.widthOf(u"0123456789"_s, font), digit * 10, digit * 0.5) << row;
    }
    // The digit's own ink is a little narrower than its cell.
    EXPECT_NEAR(ink(painted("^XA^FO100,100^A0N,60,60^FD00000000^FS^XZ")).width(), 8 * 30, 12);
}

TEST(ZplPainter, PutsEveryElementInItsPlace)
{
    for (const Json &row : table(u"zpl-elements"_s, "places")) {
        const QRect place(row[1][0], row[1][1], row[1][2], row[1][3]);
        EXPECT_EQ(ink(painted("^XA" + bytes(row[0]) + "^XZ")), place) << row;
    }
    // A text lies inside its place, whichever way it is turned.
    for (const char *turn : {"N", "R", "I", "B"}) {
        for (const char *command : {"^FO400,400", "^FT400,400"}) {
            const QByteArray zpl = QByteArray("^XA") + command + "^A0" + turn + ",50,50^FDEXAMPLE^FS^XZ";
            const ZplPicture picture = paintZpl(readZpl(zpl).labels.value(0));
            EXPECT_TRUE(picture.places.value(0).adjusted(-1, -1, 1, 1).contains(ink(picture.image)))
                << zpl.toStdString();
            const QRect near(400 - 260, 400 - 260, 520, 520);
            EXPECT_TRUE(near.contains(picture.places.value(0))) << zpl.toStdString();
        }
    }
}

TEST(ZplPainter, DrawsReverseTurnedAndOnBothDensities)
{
    const QImage reverse = painted("^XA^FO100,100^GB200,80,80^FS^FO120,110^FR^A0N,60,60^FDHHH^FS^XZ");
    EXPECT_EQ(qGray(reverse.pixel(105, 105)), 0);
    int white = 0;
    for (int x = 100; x < 300; ++x)
        white += qGray(reverse.pixel(x, 140)) > 128 ? 1 : 0;
    EXPECT_GT(white, 20) << "the text is white on the box";

    const ZplLabel label = readZpl("^XA^POI^FO10,20^GB30,40,30^FS^XZ").labels.value(0);
    EXPECT_EQ(paintZpl(label).places.value(0), QRect(10, 20, 30, 40));
    const ZplPicture turned = paintZpl(label, ZplDensity::dots12, ZplView::asPrinted);
    EXPECT_EQ(turned.image.size(), QSize(1200, 1800));
    EXPECT_EQ(turned.places.value(0), QRect(1200 - 10 - 30, 1800 - 20 - 40, 30, 40));
    EXPECT_EQ(ink(turned.image), turned.places.value(0));
    EXPECT_EQ(paintZpl(label).image.size(), QSize(812, 1218));
}

TEST(ZplPainter, WrapsAndAlignsBlocks)
{
    const auto area = [](const char *align) {
        return ink(painted("^XA^FO100,100^A0N,40,40^FB400,3,0," + QByteArray(align) + "^FDHELLO^FS^XZ"));
    };
    const QRect left = area("L"), center = area("C"), right = area("R");
    EXPECT_NEAR(left.left(), 103, 4);
    EXPECT_NEAR(center.center().x(), 300, 3);
    EXPECT_NEAR(right.right(), 497, 4);
    const QRect wrapped = ink(painted("^XA^FO100,100^A0N,40,40^FB400,3^FDMANY WORDS THAT NEED MORE THAN A LINE^FS^XZ"));
    EXPECT_TRUE(wrapped.height() > 60 && wrapped.width() <= 400) << wrapped.height() << ' ' << wrapped.width();
}

TEST(ZplPainter, WorksOnAnyThread)
{
    QImage elsewhere;
    const QByteArray zpl = "^XA^FO100,100^A0N,40,40^FDHELLO^FS^XZ";
    std::thread([&] { elsewhere = painted(zpl); }).join();
    EXPECT_EQ(elsewhere, painted(zpl));
}

} // namespace parcelory::test
