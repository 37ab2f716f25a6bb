#include "devices/zpl/BarcodeModules.h"
#include "devices/zpl/Code128.h"
#include "devices/zpl/ZplPainter.h"
#include "devices/zpl/ZplReader.h"
#include "devices/zpl/ZplTypesetter.h"
#include "support/Test.h"

#include <ZXing/ReadBarcode.h>
#include <ZXing/TextUtfEncoding.h>

#include <thread>

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
    const auto result = ZXing::ReadBarcode(view, ZXing::DecodeHints().setTryHarder(true));
    QString text = result.isValid() ? QString::fromStdWString(result.text()) : u"(unread)"_s;
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
    const std::pair<QByteArray, QString> table[] = {
        // Texts
        {"^XA^FO10,20^A0N,30,20^FDHi^FS^XZ", u"10,20 text Hi 0:30x20"_s},
        {"^xa^fo10,20^a0n,30,20^fdHi^fs^xz", u"10,20 text Hi 0:30x20"_s},
        {"^XA^FO 10 , 20 ^A0N, 30 ,20^FD Hi ^FS^XZ", u"10,20 text  Hi  0:30x20"_s},
        {"^XA\r\n^FO10,20\r\n^ADR,36^FDone\r\ntwo^FS", u"10,20 text onetwo D:36x0 r90"_s},
        {"^XA^CF0,40,35^FO1,2^FDa^FS^FO3,4^A0^FDb^FS^FO5,6^AD^FDc^FS^XZ",
         u"1,2 text a 0:40x35\n3,4 text b 0:40x35\n5,6 text c D:40x35"_s},
        {"^XA^LH5,6^LT3^LS2^FO10,20^AAN^FDx^FS^XZ", u"13,29 text x A:0x0"_s},
        {"^XA^FT10,20,1^AAI^FDx^FS^FWB^FO--,7^FDy^FS^XZ",
         u"10,20 base right text x A:0x0 r180\n0,7 text y A:0x0 r270"_s},
        {"^XA^CI28^FO0,0^FH^FD_C3_89 _zz_5E^FS^XZ", u"0,0 text É _zz^ A:0x0"_s},
        {"^XA^FO0,0^FH\\^FD\\90^FS^CI27^FO0,0^FH^FD_93_E9^FS^XZ", u"0,0 text É A:0x0\n0,0 text “é A:0x0"_s},
        {"^XA^FO0,0^FB200,3,0,C^FDa\\&b\\\\c^FS^FO0,0^FDa\\&b^FS^XZ",
         u"0,0 text a\nb\\c A:0x0 block 200x3 1\n0,0 text a\\&b A:0x0"_s},
        {"^XA^FO1,1^FR^FDa^FS^LRY^FO2,2^GB9,8,7^FS^XZ", u"1,1 reversed text a A:0x0\n2,2 reversed box 9x8 7"_s},
        {"^XA^FO0,0^FVa~b^FS^FXnot this^FO9,9^FDb", u"0,0 text a~b A:0x0\n9,9 text b A:0x0"_s},
        {"^XA^CC!!FO7,8!FDx!CC^^FS^CD;^FO1;2^FDy^FS^XZ", u"7,8 text x A:0x0\n1,2 text y A:0x0"_s},
        // Shapes
        {"^XA^FO1,2^GB30^FS^FO1,2^GB,40,3,W^FS^FO1,2^GC9,2^FS^FO1,2^GE9,8,2^FS^FO1,2^GD9,8,1,B,L^FS^XZ",
         u"1,2 box 30x1 1\n1,2 box 3x40 3 white\n1,2 ellipse 9x9 2\n1,2 ellipse 9x8 2\n1,2 diagonal 9x8 \\"_s},
        {"^XA^FO0,0^GFA,4,4,2,F0,:^FS^FO0,0^GFA,6,6,2,H8IF!JA^XZ",
         u"0,0 graphic f000f000 in 2 x1\n0,0 graphic 88ffffffaaaa in 2 x1"_s},
        {"^XA^FO0,0^GFB,3,3,1,^~,^FS^FO0,0^GFA,2,2,1,:B64:/wA=:0000^FS^XZ",
         u"0,0 graphic 5e7e2c in 1 x1\n0,0 graphic ff00 in 1 x1"_s},
        {"~DGR:LOGO.GRF,2,1,80FF^XA^FO5,5^XGR:LOGO.GRF,3,3^FS^FO6,6^IMlogo^FS^XGNONE^XZ",
         u"5,5 graphic 80ff in 1 x3\n6,6 graphic 80ff in 1 x1\nunknown ^XG"_s},
        // Bar codes
        {"^XA^BY3,2,60^FO1,1^BCN,,N^FD>;1234^FS^FO1,1^B3R^FDA^FS^FO1,1^BXN,5,200^FDx^FS^XZ",
         u"1,1 ^BC >;1234 m3 h60\n1,1 ^B3 A m3 h60 r90\n1,1 ^BX x m5 h60"_s},
        {"^XA^FO1,1^BKN^FDA1A^FS^FO1,1^ZQ^FS^JUS^PR4~SD20^XZ", u"1,1 ^BK A1A m2 h10\nunknown ^BK ^ZQ"_s},
        // Stored formats, kept images, several labels
        {"^XA^DFR:F.ZPL^FS^FO1,1^FN1^FDdefault^FS^FO2,2^BY2^BCN,50^FN2^FS^FO3,3^FDfixed^FS^XZ"
         "^XA^XFR:F.ZPL^FS^FN1^FDname^FS^FN2^FDcode^FS^XZ",
         u"1,1 text name A:0x0\n2,2 ^BC code m2 h50\n3,3 text fixed A:0x0"_s},
        {"^XA^MCN^FO1,1^FDa^FS^XZ^XA^MCY^FO2,2^FDb^FS^XZ^XA^CF0,9^XZ",
         u"1,1 text a A:0x0\n---\n1,1 text a A:0x0\n2,2 text b A:0x0"_s}};
    for (const auto &[zpl, expected] : table)
        EXPECT_EQ(read(zpl), expected) << zpl.toStdString();
    const ZplLabel label = readZpl("^XA^POI^PMY^PW600^LL900^PQ3^FDx^FS^XZ").labels.value(0);
    EXPECT_TRUE(label.isTurned && label.isMirrored && label.width == 600 && label.length == 900 && label.copies == 3);
}

TEST(ZplReader, SurvivesSizesThatNoLabelHas)
{
    for (const char *zpl : {"^XA^FO0,0^GFA,99999999,99999999,1,FF^FS^XZ", "^XA^FO0,0^GFA,9,9,0,FF^FS^XZ",
                            "^XA^FO0,0^GFB,-5,9,9,^FS^XZ", "^XA^FO99999999999999999999,1e99^A0N,nan,inf^FDx^FS^XZ", "^",
                            "^X", "^XA^GFA", "~DG", "^XA^FO0,0^GFA,8,8,2,:Z64:eJxjYA==:^FS"})
        EXPECT_LE(readZpl(zpl).labels.size(), 1) << zpl;
    const ZplDocument many = readZpl("^XA" + QByteArray("^FO1,1^GB1,1^FS").repeated(30000) + "^XZ");
    EXPECT_EQ(many.labels.value(0).elements.size(), 20000);
}

TEST(ZplPainter, DrawsBarCodesThatAnIndependentReaderReads)
{
    struct Row {
        const char *commands;
        const char *data;
        const char *read;
    };
    const Row table[] = {
        {"^BY2^BCN,120,N", "92108901755477000000000018", "92108901755477000000000018"},
        {"^BY2^BCN,120,Y,N", "Az 09~>0>=", "Az 09~>~"},
        {"^BY2^BCN,120,N", ">;>842028801>892108901755477000000000018", "42028801<GS>92108901755477000000000018"},
        {"^BY2^BCN,120,N,N,N,A", "AB1234567cd12", "AB1234567cd12"},
        {"^BY2^BCN,120,N,N,N,D", "(420)98028(92)0559012345", "42098028920559012345"},
        {"^BY2^BCN,120,N,N,N,U", "1234567890123456789", "12345678901234567890"},
        {"^BY2^BCN,120,N", ">9333435>6xY>5>81234", "ABCxY<GS>1234"},
        {"^BY3^BCR,120,N", ">;123456", "123456"},
        {"^BY3^BCI,120,N", ">;123456", "123456"},
        {"^BY3^BCB,120,Y,Y", ">;123456", "123456"},
        {"^BY2,3^B3N,N,100,Y", "CODE-39", "CODE-39"},
        {"^BY3,2^B2N,100,Y", "12345678", "12345678"},
        {"^BXN,6,200", "Parcel 7", "Parcel 7"},
        {"^BXN,6,200,24,24", "_1420980289205590_191123", "420980289205590<GS>91123"},
        {"^BXR,6,200,36,12", "_d065_x__", "A_x_"},
        {"^BY2,3^B7N,8,5,14^FH", "[)>_1E01_1D0298406_1D840", "[)>\x1E\x30\x31<GS>0298406<GS>840"},
        {"^BY3^B7R,9,3,4", "turned by a quarter", "turned by a quarter"},
        {"^BQN,2,6", "MA,HTTP://EXAMPLE.COM/1", "HTTP://EXAMPLE.COM/1"},
        {"^BON,6,N,23", "Aztec 123", "Aztec 123"}};
    for (const Row &row : table) {
        const QByteArray zpl = QByteArray("^XA^FO60,60") + row.commands + "^FD" + row.data + "^FS^XZ";
        // The reader looks for some codes in the middle of the picture only.
        const QImage picture = painted(zpl);
        constexpr int margin = 40;
        const QRect around = ink(picture).adjusted(-margin, -margin, margin, margin) & picture.rect();
        EXPECT_EQ(scanned(picture.copy(around)), QString::fromLatin1(row.read)) << zpl.toStdString();
    }
    for (const char *zpl :
         {"^XA^FO60,60^BDN^FD002840100450000^FS^XZ", "^XA^FO60,60^BKN^FD123^FS^XZ", "^XA^FO60,60^B2N^FDletters^FS^XZ"})
        EXPECT_EQ(paintZpl(readZpl(zpl).labels.value(0)).notDrawn.size(), 1) << zpl;
}

TEST(ZplPainter, DrawsTextsAsWideAsTheyAreAskedFor)
{
    const ZplTypesetter type;
    for (const auto &[font, digit] : {std::pair{ZplFont{'0', 30, 30}, 15.0},
                                      {ZplFont{'0', 60, 30}, 15.0},
                                      {ZplFont{'0', 40, 0}, 20.0},
                                      {ZplFont{'0', 0, 50}, 25.0},
                                      {ZplFont{'A', 18, 10}, 12.0},
                                      {ZplFont{'D', 36, 20}, 24.0}})
        EXPECT_NEAR(type.widthOf(u"0123456789"_s, font), digit * 10, digit * 0.5) << font.name << font.height;
    // The digit's own ink is a little narrower than its cell.
    EXPECT_NEAR(ink(painted("^XA^FO100,100^A0N,60,60^FD00000000^FS^XZ")).width(), 8 * 30, 12);
}

TEST(ZplPainter, PutsEveryElementInItsPlace)
{
    const std::pair<const char *, QRect> table[] = {
        {"^FO100,200^GB300,60,60^FS", {100, 200, 300, 60}},
        {"^FO100,200^GB300,60,3^FS", {100, 200, 300, 60}},
        {"^FT100,200^GB300,60,60^FS", {100, 140, 300, 60}},
        {"^FO400,200,1^GB300,60,60^FS", {100, 200, 300, 60}},
        {"^FO100,200^GC80,3^FS", {100, 200, 80, 80}},
        {"^FO100,200^GFA,4,4,2,FFFFFFFF^FS", {100, 200, 16, 2}},
        {"^BY2^FO100,200^BCN,90,N^FD>;12^FS", {100, 200, 2 * (3 * 11 + 13), 90}},
        {"^BY2^FO100,200^BCR,90,N^FD>;12^FS", {100, 200, 90, 2 * (3 * 11 + 13)}},
        {"^BY2^FT100,200^BCN,90,N^FD>;12^FS", {100, 110, 2 * (3 * 11 + 13), 90}},
        {"^BY2^FT100,200^BCR,90,N^FD>;12^FS", {100, 200, 90, 2 * (3 * 11 + 13)}}};
    for (const auto &[zpl, place] : table)
        EXPECT_EQ(ink(painted("^XA" + QByteArray(zpl) + "^XZ")), place) << zpl;
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
