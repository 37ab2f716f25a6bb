#include "devices/Zpl.h"
#include "devices/ZplCommands.h"
#include "support/Table.h"

namespace parcelory::test {
namespace {

QString nameOf(LabelKind kind)
{
    return QStringList{u"zpl"_s, u"pdf"_s, u"png"_s, u"notALabel"_s}[int(kind)];
}

} // namespace

TEST(Zpl, RecognizesALabelByItsBytesAndWhetherItIsWhole)
{
    for (const Json &row : table(u"zpl"_s, "kinds"))
        EXPECT_EQ(nameOf(labelKind(bytes(row[0]))), text(row[1])) << row;
    for (const Json &row : table(u"zpl"_s, "whole files")) {
        const LabelFile file = parseLabel(bytes(row[0]));
        EXPECT_EQ(file.bytes, bytes(row[0]));
        EXPECT_EQ(nameOf(file.kind), text(row[1])) << row;
        EXPECT_EQ(file.isWhole, row[2].get<bool>()) << row;
        EXPECT_EQ(file.isWholePdf(), file.isWhole && file.kind == LabelKind::pdf);
    }
    EXPECT_FALSE(parseLabel("%PDF-1.4\n%%EOF\n" + QByteArray(2000, 'x')).isWhole);
}

TEST(Zpl, CutsLabelsThatDeclareMoreThanThePaper)
{
    for (const Json &row : table(u"zpl"_s, "lengths"))
        EXPECT_EQ(Zpl::declaredLength(bytes(row[0])), optional<int>(row[1])) << row;
    for (const Json &row : table(u"zpl"_s, "cut"))
        EXPECT_EQ(Zpl::clamped(bytes(row[0])), bytes(row[1]));
    for (const char *zpl : {"^XA^PW1200^LL1800", "^XA^LL1231^PW833", "^XA^LL1800"})
        EXPECT_TRUE(Zpl::isCutFrom300Dpi(zpl)) << zpl;
    for (const char *zpl :
         {"^LL1400", "^PW832^LL1800", "^PW1200^LL1230", "^PW1249^LL1800", "^PW1200^LL1851", "^LL1800\xFC"})
        EXPECT_FALSE(Zpl::isCutFrom300Dpi(zpl)) << zpl;
}

TEST(Zpl, RotatesALabelByItsPrintOrientation)
{
    for (const Json &row : table(u"zpl"_s, "rotated"))
        EXPECT_EQ(Zpl::rotated(bytes(row[0])), bytes(row[1]));
}

TEST(Zpl, NamesTheCommandsThatOutliveALabel)
{
    for (const Json &row : table(u"zpl"_s, "lasting commands"))
        EXPECT_EQ(Zpl::lastingCommands(bytes(row[0])), texts(row[1])) << row;
}

} // namespace parcelory::test
