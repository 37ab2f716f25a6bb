#include "devices/LabelPicture.h"
#include "practice/carrier/PracticePdf.h"
#include "support/Test.h"

namespace parcelory::test {
namespace {

QByteArray pngSample()
{
    QImage paper(812, 1218, QImage::Format_ARGB32);
    paper.fill(Qt::transparent);
    paper.setPixel(4, 4, qRgb(0, 0, 0));
    return pngOf(paper);
}

QByteArray pdfSample()
{
    PdfPage page(288, 432);
    page.write(40, 200, 40, u"LABEL"_s);
    return page.document();
}

} // namespace

TEST(LabelPicture, DrawsEveryKindOfLabelInItsPrintedSize)
{
    const QByteArray turned = "^XA^POI^PW406^LL203^FO10,10^GB50,50,50^FS^XZ";
    const std::tuple<const char *, QByteArray, QString, int, bool, bool> table[] = {
        {"zpl", dataFile(u"labels/usps.zpl"_s), u"4 × 6 in"_s, 1, false, true},
        {"two labels", dataFile(u"labels/usps.zpl"_s) + dataFile(u"labels/fedex.zpl"_s), u"4 × 6 in"_s, 2, false, true},
        {"turns itself", turned, u"2 × 1 in"_s, 1, true, false},
        {"pdf", pdfSample(), u"4 × 6 in"_s, 1, false, false},
        {"png", pngSample(), u"4 × 6 in"_s, 1, false, false},
    };
    for (const auto &[name, label, size, pages, isTurned, isTurnedBySetting] : table) {
        SCOPED_TRACE(name);
        const auto picture = drawnLabel(label);
        EXPECT_EQ(picture->sizeText(), size);
        EXPECT_EQ(picture->pages.size(), pages);
        EXPECT_EQ(picture->isTurned, isTurned);
        EXPECT_EQ(picture->isTurnedBySetting, isTurnedBySetting);
        QSet<QRgb> colors;
        const QImage page = picture->pages.first().image.convertToFormat(QImage::Format_RGB32);
        for (int y = 0; y < page.height(); ++y) {
            for (int x = 0; x < page.width(); ++x)
                colors.insert(page.pixel(x, y));
        }
        EXPECT_TRUE(colors.contains(qRgb(0, 0, 0)) && colors.contains(qRgb(255, 255, 255))) << "ink on white paper";
        EXPECT_EQ(drawnLabel(QByteArray(label.constData(), label.size())), picture) << "drawn once";
        const auto saved = drawnLabel(pdfOf(*picture));
        EXPECT_EQ(saved->pages.size(), pages);
        EXPECT_EQ(saved->sizeText(), size);
    }
    for (const QByteArray &label :
         {QByteArray(), QByteArray("<html>"), pdfSample().left(60), pngSample().left(40), QByteArray("^XA^XZ")})
        EXPECT_THROW(drawnLabel(label), AppError) << label.left(20).toStdString();
}

TEST(LabelPicture, FindsElementsOnTheirPages)
{
    const QByteArray label = "^XA^PW406^LL203^FO10,10^GB50,50,50^FS^FO100,10^GB50,40,40^FS^XZ"
                             "^XA^PW406^LL203^FO20,30^GB50,60,50^FS^XZ";
    const auto picture = drawnLabel(label);
    EXPECT_EQ(picture->placeOf(0).area, QRect(10, 10, 50, 50));
    EXPECT_EQ(picture->placeOf(2).page, 1);
    EXPECT_EQ(picture->placeOf(2).area, QRect(20, 30, 50, 60));
    EXPECT_EQ(picture->placeOf({0, 1, 2}).area, QRect(10, 10, 140, 50)) << "the third is on another page";
    EXPECT_TRUE(picture->placeOf(-1).area.isEmpty() && picture->placeOf(3).area.isEmpty());
}

} // namespace parcelory::test
