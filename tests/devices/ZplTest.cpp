#include "devices/Zpl.h"
#include "devices/ZplCommands.h"
#include "support/Test.h"

namespace parcelory::test {

TEST(Zpl, RecognizesALabelByItsBytes)
{
    const struct {
        QByteArray bytes;
        LabelKind kind;
    } rows[] = {
        {"%PDF", LabelKind::pdf},
        {" %PDF-1.7", LabelKind::notALabel},
        {"%PD", LabelKind::notALabel},
        {"\x89PNG\r\n", LabelKind::png},
        {"^XA^FDCoin^FS^XZ", LabelKind::zpl},
        {"^xa^fdCoin^fs^xz", LabelKind::zpl},
        {"\xEF\xBB\xBF\r\nCT~~CD,~CC^~CT~\r\n^XA^XZ", LabelKind::zpl},
        {"^XA^FDM\xFCnze^FS^XZ", LabelKind::zpl}, // not UTF-8
        {"<?xml version=\"1.0\"?><Error><Code>AccessDenied</Code></Error>", LabelKind::notALabel},
        {"<!DOCTYPE html><html><body>502 Bad Gateway</body></html>", LabelKind::notALabel},
        {"\xEF\xBB\xBF\r\n <html><pre>^XA^FDquoted^XZ</pre></html>", LabelKind::notALabel},
        {"\t{\"detail\": \"^XA is missing\"}", LabelKind::notALabel},
        {"[\"^XA^XZ\"]", LabelKind::notALabel},
        {"\x1F\x8B\x08^XA", LabelKind::notALabel},
        {QByteArray("\0\0<^XA", 6), LabelKind::notALabel},
        {QByteArray("^\0X\0A\0", 6), LabelKind::notALabel}, // UTF-16
        {"\020CT~~CD,~CC^^XA^XZ", LabelKind::zpl},          // as print drivers start
        {"", LabelKind::notALabel},
    };
    for (const auto &row : rows)
        EXPECT_EQ(labelKind(row.bytes), row.kind) << row.bytes.toStdString();
}

TEST(Zpl, ParsesAFileOnceIntoKindAndCompleteness)
{
    const struct {
        QByteArray bytes;
        LabelKind kind;
        bool isWhole;
    } rows[] = {
        {"^XA^FDCoin^FS^XZ\n", LabelKind::zpl, true},
        {"^XA^XZ^XA^FD", LabelKind::zpl, false},
        {"^xa^xz", LabelKind::zpl, true},
        {"%PDF-1.4\n%%EOF\n", LabelKind::pdf, true},
        {"%PDF-1.4\n", LabelKind::pdf, false},
        {"%PDF-1.4\n%%EOF\n" + QByteArray(2000, 'x'), LabelKind::pdf, false},
        {"\x89PNG IEND", LabelKind::png, true},
        {"<html>^XA^XZ</html>", LabelKind::notALabel, false},
    };
    for (const auto &row : rows) {
        const LabelFile file = parseLabel(row.bytes);
        EXPECT_EQ(file.bytes, row.bytes);
        EXPECT_EQ(file.kind, row.kind) << row.bytes.toStdString();
        EXPECT_EQ(file.isWhole, row.isWhole) << row.bytes.toStdString();
        EXPECT_EQ(file.isWholePdf(), row.isWhole && row.kind == LabelKind::pdf);
    }
}

TEST(Zpl, ReadsTheDeclaredLengthFromTheFirstCommandOfThreeToFiveDigits)
{
    const std::pair<QByteArray, std::optional<int>> rows[] = {
        {"^XA^XZ", {}},         {"^LL99", {}},       {"^ll1300", {}},      {"^LL 1300", {}},          {"^LL100", 100},
        {"^LL99^LL1400", 1400}, {"^LL99999", 99999}, {"^LL123456", 12345}, {"^LL12^LL^LL300,Y", 300},
    };
    for (const auto &[zpl, length] : rows)
        EXPECT_EQ(Zpl::declaredLength(zpl), length) << zpl.toStdString();
}

TEST(Zpl, CutsLabelsThatAreLongerThanThePaper)
{
    const std::pair<QByteArray, QByteArray> rows[] = {
        {"^XA^LL1230^XZ", "^XA^LL1230^XZ"},
        {"^XA^LL1231^XZ", "^XA^LL1218^XZ"},
        {"^LL1400^LL0406^LL99^LL123456", "^LL1218^LL1218^LL99^LL12186"},
        {"^LL406^LL1400", "^LL406^LL1400"}, // the first command decides
        {QByteArray("^LL1400\0^LL1400,Y\r\n", 18), QByteArray("^LL1218\0^LL1218,Y\r\n", 18)},
        {"^LL1400^FDM\xFCnze", "^LL1400^FDM\xFCnze"}, // not UTF-8
        {"", ""},
    };
    for (const auto &[zpl, expected] : rows)
        EXPECT_EQ(Zpl::clamped(zpl), expected);
}

TEST(Zpl, RecognizesALabelFor300DpiThatWouldBeCut)
{
    for (const char *zpl : {"^XA^PW1200^LL1800", "^XA^LL1231^PW833", "^XA^LL1800"})
        EXPECT_TRUE(Zpl::isCutFrom300Dpi(zpl)) << zpl;
    for (const char *zpl :
         {"^LL1400", "^PW832^LL1800", "^PW1200^LL1230", "^PW1249^LL1800", "^PW1200^LL1851", "^LL1800\xFC"})
        EXPECT_FALSE(Zpl::isCutFrom300Dpi(zpl)) << zpl;
}

TEST(Zpl, RotatesALabelByItsPrintOrientation)
{
    const std::pair<QByteArray, QByteArray> rows[] = {
        {"^XA^FDMünze^XZ", "^XA^POI^FDMünze^XZ"},
        {"^XA^XZ\n^XA^XZ", "^XA^POI^XZ\n^XA^POI^XZ"},
        {"^XA^POI^XZ^XA^PON^XZ^XA^POI^XZ", "^XA^PON^XZ^XA^POI^XZ^XA^PON^XZ"},
        {"^XA^POI^XZ^XA^XZ", "^XA^PON^XZ^XA^XZ"},   // one orientation command means that the label sets its own
        {"^XA^FDM\xFCnze^XZ", "^XA^FDM\xFCnze^XZ"}, // not UTF-8
        {"^FDno start", "^FDno start"},
    };
    for (const auto &[zpl, expected] : rows)
        EXPECT_EQ(Zpl::rotated(zpl), expected);
}

TEST(Zpl, NamesTheCommandsThatOutliveALabel)
{
    const QByteArray binary = "^GFB,12,12,2,^JUS~JR^KNab"; // twelve bytes of a picture
    const std::pair<QByteArray, QStringList> rows[] = {
        // usual labels
        {"^XA^MMT^PW812^LL1218^LS0^FO20,20^A0N,30,30^FDJUS ~ 5^FS^PQ1,0,1,Y^XZ\n", {}},
        {"\020CT~~CD,~CC^~CT~\n^XA~TA000~JSN^LT0^MNW^MTT^PON^PMN^LH0,0^JMA^PR6,6~SD15^LRN^CI0^XZ^XA^XZ", {}},
        {"\xEF\xBB\xBF~DGR:LOGO.GRF,8,1,FFFF\n^XA^XGR:LOGO.GRF,1,1^FS^XZ\n^XA^IDR:LOGO.GRF^FS^XZ\r\n", {}},
        {"~DYR:A,P,G,3,1,FFFFFF^XA^IDA.GRF^FS^DFR:F.ZPL^CWX,E:TT.TTF^FS^XZ", {}},
        {"^XA" + binary + "^FS^XZ", {}},
        {"^XA^GFA,4,4,1,:Z64:eJw:ABCD^FS^XZ", {}},
        // held labels
        {"^XA^FDx^FS^JUS^XZ", {u"^JUS"_s}},
        {"~JR\n^XA^XZ^xa^jus^JUF^JUS^XZ", {u"~JR"_s, u"^jus"_s, u"^JUF"_s, u"^JUS"_s}},
        {"^XA^KNmine^KP1234^NS,10.0.0.7^XZ", {u"^KN"_s, u"^KP"_s, u"^NS"_s}},
        {"^XA^IDE:*.*^IDR:A.GRF^FS^XZ~DYE:A,A,T,2,,00", {u"^IDE:"_s, u"~DYE:"_s}},
        {"~DGB:L.GRF,1,1,FF^XA^XZ", {u"~DGB:"_s}},
        {"~CC!!XA!JUS!XZ^XA^XZ", {u"~CC!"_s}},
        {"! U1 setvar \"device.languages\" \"epl\"\n^XA^XZ", {u"! U1 setvar \"device.lang"_s}},
        {"^XA^XZ {}{\"a\":null}", {u"{}{\"a\":null}"_s}},
        {"~DGR:L.GRF,1,1,FF\n! U1 do\n^XA^XZ", {u"! U1 do"_s}},
        {"^XA^GFB,2,2,1,ab^JUS^XZ", {u"^JUS"_s}},                 // after the picture
        {"^XA^GFB,x,12,2,^JUS^XZ^F^JUR", {u"^JUS"_s, u"^JUR"_s}}, // a broken size, a broken command
        {"^XA^J", {}},
        {"", {}},
    };
    for (const auto &[zpl, commands] : rows)
        EXPECT_EQ(Zpl::lastingCommands(zpl), commands) << zpl.toStdString();
}

} // namespace parcelory::test
