#include "devices/CommercialInvoice.h"
#include "core/Deployment.h"
#include "support/Table.h"

#include <QGuiApplication>
#include <QImage>
#include <QProcess>

#include <cstdlib>

namespace parcelory::test {
namespace {

int argc = 1;
char programName[] = "invoice_tests", *argv[] = {programName, nullptr};

/// An invoice of `value` dollars in which all texts are the same.
CommercialInvoice::Data_ invoice(const QString &text, double value)
{
    CommercialInvoice::Data_ data{text, {}, text, QDate(2026, 3, 7), text, text, text, value, text, text, text};
    data.recipient = {.name = text, .company = text, .street1 = text, .street2 = text, .city = text};
    return data;
}

/// An invoice that is drawn on a worker thread and read by independent tools.
struct Page {
    explicit Page(const CommercialInvoice::Data_ &data, const Deployment &deployment = Deployment::builtIn())
    {
        static const QGuiApplication fonts(argc, argv); // created only after the case without it
        std::thread([&] {
            put(folder.filePath(u"page"_s), CommercialInvoice::pdf(data, deployment));
            missing = CommercialInvoice::lettersWithoutGlyph(data);
        }).join();
        static const QRegularExpression word(u"xMin=\"(.+)\" yMin=\"(.+)\" xMax=\"(.+)\" yMax=\"(.+)\">(.*)</word>"_s);
        for (const auto &match : word.globalMatch(ask(u"pdftotext -bbox page -"_s))) {
            const auto number = [&](int i) { return match.captured(i).toDouble(); };
            words.append({match.captured(5), QRectF(QPointF(number(1), number(2)), QPointF(number(3), number(4)))});
        }
        text = ask(u"pdftotext -layout page -"_s).simplified();
    }

    QString ask(const QString &command) const
    {
        QProcess process;
        process.setWorkingDirectory(folder.path());
        process.startCommand(command);
        EXPECT_TRUE(process.waitForFinished(-1) && process.exitCode() == 0) << command.toStdString();
        return QString::fromUtf8(process.readAllStandardOutput());
    }

    struct Word {
        QString text;
        QRectF box;
    };
    QTemporaryDir folder;
    QList<Word> words;
    QString text, missing;
};

} // namespace

TEST(CommercialInvoice, FailsWithAMessageInAProgramWithoutFonts)
{
    const QCoreApplication app(argc, argv);
    EXPECT_THROW(CommercialInvoice::pdf({}, Deployment::builtIn()), AppError);
}

TEST(CommercialInvoice, HasEveryTextAndRuleInItsPlaceOnOneLetterSheet)
{
    auto data = invoice(u"Coin"_s, 25);
    data.recipient.country = u"uk"_s;
    const Page page(data);
    for (const Json &place : table(u"commercial-invoice"_s, "places")) {
        const double edge = place[1], top = place[2], size = place[3];
        const double line = page.words.value(0).box.height() * size / 30; // the first word is the title, in size 30
        EXPECT_TRUE(std::ranges::any_of(page.words, [&](const Page::Word &word) {
            const double x = edge == 540 ? word.box.right() : word.box.left();
            return word.text == text(place[0]) && std::abs(x - edge) < 0.1 && std::abs(word.box.top() - top) < 0.1 &&
                   std::abs(word.box.height() - line) < 0.1;
        })) << place;
    }
    const QString facts = page.ask(u"pdfinfo page"_s).simplified();
    for (const char *fact : {"Title: Commercial Invoice Coin", "Creator: Parcelory", "Pages: 1 ", "612 x 792 pts"})
        EXPECT_TRUE(facts.contains(QLatin1StringView(fact))) << facts.toStdString();
    page.ask(u"pdftoppm -r 144 -png -singlefile page picture"_s);
    const QImage picture(page.folder.filePath(u"picture.png"_s)); // a pixel is half a point
    const std::pair<QPoint, QColor> areas[] = {
        {{402, 52}, {26, 64, 153}}, {{70, 576}, {242, 242, 242}}, {{70, 302}, Qt::white}};
    for (const auto &[at, color] : areas)
        EXPECT_EQ(picture.pixelColor(at * 2), color) << at.y();
    for (const int y : {300, 324, 380, 402, 460})
        EXPECT_NEAR(qGray(picture.pixel(400, 2 * y - 1)) + qGray(picture.pixel(400, 2 * y)), 255 + 191, 8) << y;
    const auto ink = [&picture](int top) { // of the amount below
        int sum = 0;
        for (int x = 2 * 500; x < 2 * 541; ++x) {
            for (int y = 2 * top; y < 2 * (top + 14); ++y)
                sum += 255 - qGray(picture.pixel(x, y));
        }
        return sum;
    };
    EXPECT_GT(ink(506), ink(470) * 1.15) << "the total due is bold";
    EXPECT_GT(ink(542) + ink(506), (ink(488) + ink(470)) * 1.15) << "and so is the balance";
    int darkest = 255;
    for (int x = 2 * 70; x < 2 * 90; ++x) { // the label "Date"
        for (int y = 2 * 306; y < 2 * 316; ++y)
            darkest = std::min(darkest, qGray(picture.pixel(x, y)));
    }
    EXPECT_NEAR(darkest, 140, 8);
}

TEST(CommercialInvoice, HasTheFieldsForCustomsAndAccountingAndOmitsEmptyLines)
{
    auto data = invoice(u"Coin"_s, 25);
    const QString text = Page(data).text;
    for (const QString &said : texts(table(u"commercial-invoice"_s, "texts")))
        EXPECT_TRUE(text.contains(said)) << said.toStdString() << " is not in " << text.toStdString();
    EXPECT_EQ(text.count(u"3/7/26"_s), 2);
    data.signer = data.weight = QString();
    EXPECT_EQ(Page(data).text.count(u"3/7/26"_s), 1) << "the line for the signature is empty";
    Deployment deployment = Deployment::builtIn();
    deployment.countryOfOrigin = u"CA"_s;
    deployment.letterhead = {u"Corvallon-Coins-and-Bullion"_s};
    const Page other(data, deployment);
    EXPECT_TRUE(other.text.contains(u"origin Canada"_s));
    const QRectF company = std::ranges::find(other.words, deployment.letterhead.first(), &Page::Word::text)->box;
    EXPECT_TRUE(company.width() > 340 && company.width() < 400) << company.width();
    EXPECT_NEAR(company.height(), Page(data).words.first().box.height() * 26 / 30, 0.1) << "a long name keeps its size";
    data.extraLine = std::nullopt;
    for (const Page::Word &word : Page(data).words)
        EXPECT_TRUE(word.box.top() < 425 || word.box.top() > 461) << word.text.toStdString();
}

// A letter that is missing in all fonts is read from the page as nothing or as another letter.
TEST(CommercialInvoice, DrawsEveryScriptAsSearchableText)
{
    for (const QString &name : texts(table(u"commercial-invoice"_s, "names"))) {
        const Page page(invoice(name, 1));
        EXPECT_TRUE(page.text.contains(name.normalized(QString::NormalizationForm_C))) << page.text.toStdString();
        for (const QString &font : page.ask(u"pdffonts page"_s).trimmed().split(u'\n').mid(2))
            EXPECT_TRUE(font.contains(QRegularExpression(u" yes +(yes|no) +yes "_s))) << font.toStdString(); // embedded
    }
    for (const Json &row : table(u"commercial-invoice"_s, "shaped names")) {
        const QString name = text(row[0]), font = text(row[1]);
        const Page page(invoice(name + u" Elm"_s, 1));
#ifndef Q_OS_MACOS // which has fonts of its own for these scripts
        EXPECT_TRUE(page.ask(u"pdffonts page"_s).contains(font)) << font.toStdString();
#endif
        EXPECT_EQ(page.missing, QString()) << font.toStdString();
        const bool fromTheRight = std::ranges::any_of(page.words, [](const Page::Word &word) {
            return word.text == u"Elm" && std::abs(word.box.left() - 320) < 0.1;
        });
        EXPECT_EQ(fromTheRight, name.isRightToLeft()) << font.toStdString();
    }
    EXPECT_EQ(Page(invoice(u"Zoë \u0378 \u200D\U00040000"_s, 1)).missing, u"\u0378\U00040000"_s);
}

TEST(CommercialInvoice, KeepsTheSpacingOfAnAddressOfUpToTwelveLines)
{
    const std::pair<int, double> rows[] = {{6, 192}, {8, 192}, {9, 179}, {12, 140}, {13, 140}};
    for (const auto &[count, top] : rows) {
        auto data = invoice(u"Coin"_s, 25);
        data.recipient.name = QString(QString(15, u'm') + u' ').repeated(count - 5);
        data.recipient.country = u"uk"_s;
        QList<double> tops;
        for (const Page::Word &word : Page(data).words) {
            if (std::abs(word.box.left() - 320) < 0.1 && word.box.top() > 110 && word.box.top() < 299)
                tops += word.box.top();
        }
        ASSERT_EQ(tops.size(), count + 1);
        EXPECT_NEAR(tops[0], top - 17, 0.1) << "Bill To:";
        for (int line = 0; line < count && count <= 12; ++line)
            EXPECT_NEAR(tops[line + 1], top + 13 * line, 0.1) << count << " lines";
        EXPECT_LT(tops.last(), 287);
    }
}

TEST(CommercialInvoice, KeepsLongAndOddTextsInTheirBoxes)
{
    auto twoLong = invoice(u"Coin"_s, 25);
    twoLong.recipient.company = u"Internationale Gesellschaft für Numismatik und Geldgeschichte mbH"_s;
    twoLong.recipient.street1 = u"Donaudampfschifffahrtsgesellschaftskapitänsallee 128, Hinterhaus, 4. Stock"_s;
    const Page shrunk(twoLong);
    EXPECT_TRUE(shrunk.text.contains(u"Stock"_s) && !shrunk.text.contains(u'…')) << shrunk.text.toStdString();
    auto oneLong = invoice(u"Coin"_s, 25);
    oneLong.itemDescription = u"Numismatic Study Item "_s.repeated(3);
    const Page line(oneLong);
    const auto baseline = [&line](double left) {
        for (const Page::Word &word : line.words) {
            if (std::abs(word.box.left() - left) < 0.1 && word.box.top() > 405 && word.box.top() < 420)
                return word.box.top() + word.box.height() * 0.81;
        }
        return 0.0;
    };
    EXPECT_NEAR(baseline(70), baseline(200), 0.3) << "the smaller text stays on the line";
    EXPECT_TRUE(Page(invoice(u"A\u202Eb"_s, 1)).text.contains(u"A b"_s));
    for (const auto &data :
         {twoLong, invoice(u"Line\x01\r\nbreak\t\u202E"_s, 1e5), invoice(u"word "_s.repeated(60), 1e7),
          invoice(QString(500, u'W'), 1e9), invoice(u"長"_s.repeated(200), 1e20)}) {
        const QList<Page::Word> words = Page(data).words;
        ASSERT_GT(words.size(), 60);
        for (const auto &[text, box] : words) {
            EXPECT_TRUE(QRectF(59.9, 50, 492.2, 740).contains(box)) << text.toStdString();
            if (box.left() > 319 && box.top() > 191 && box.top() < 299)
                EXPECT_TRUE(QRectF(319.9, 190, 122.2, 109).contains(box)) << text.toStdString();
            const auto letters = [](const QRectF &b) { return b.adjusted(0.2, b.height() / 5, -0.2, -b.height() / 5); };
            for (const Page::Word &other : words)
                EXPECT_TRUE(box == other.box || !letters(box).intersects(letters(other.box)))
                    << text.toStdString() << " lies over " << other.text.toStdString();
        }
    }
}

} // namespace parcelory::test

int main(int argc, char **argv) // the cases create different application objects
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
