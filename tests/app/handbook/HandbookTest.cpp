// The handbook as the build makes it from docs/handbook.

#include "app/handbook/Handbook.h"
#include "support/AppTest.h"

#include <QDirIterator>

namespace parcelory::test {
namespace {

const QString handbookFolder = QStringLiteral(PARCELORY_HANDBOOK);

QString contents(const QString &path)
{
    return QString::fromUtf8(contentsOf(path));
}

/// All sources, with each text on one line as the clerk reads it.
QString sources()
{
    QString all;
    QDirIterator files(QStringLiteral(PARCELORY_SOURCE_DIR "/src"), {u"*.cpp"_s, u"*.h"_s, u"*.mm"_s}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext())
        all += contents(files.next());
    all.remove(QRegularExpression(uR"(^\s*//.*$)"_s, QRegularExpression::MultilineOption));
    return all.remove(QRegularExpression(uR"lit("(_s)?\s*\n\s*u?")lit"_s));
}

struct HandbookDesk : testing::Test, CarrierDesk {
    ErrorLog errors{platform};
    AppState app{platform};
    Handbook handbook{app};

    void load(const QStringList &folders) { runTask(handbook.load(folders)); }
};

} // namespace

TEST(HandbookPages, ExplainOnlyMessagesOfTheProgram)
{
    const QString program = sources();
    const QStringList lines = contents(handbookFolder + u"/messages.tsv"_s).split(u'\n', Qt::SkipEmptyParts);
    EXPECT_GT(lines.size(), 40);
    for (const QString &line : lines) {
        const QString message = line.section(u'\t', 1);
        QStringList parts = message.split(u'…', Qt::SkipEmptyParts);
        for (QString &part : parts)
            part = QRegularExpression::escape(part.trimmed());
        // Between the parts are placeholders, or names that the source puts in.
        EXPECT_TRUE(program.contains(QRegularExpression(parts.join(u"[^;]{0,160}?"_s)))) << qUtf8Printable(message);
    }
}

TEST(HandbookPages, LinksAndPicturesLeadSomewhere)
{
    static const QRegularExpression link(uR"lit((?:href|src|url)="?([^"#:>]*)(?:#([^">]*))?")lit"_s);
    QDirIterator pages(handbookFolder, {u"*.html"_s}, QDir::Files, QDirIterator::Subdirectories);
    int links = 0;
    while (pages.hasNext()) {
        const QFileInfo page(pages.next());
        for (const QRegularExpressionMatch &found : link.globalMatch(contents(page.filePath()))) {
            const QString target =
                found.captured(1).isEmpty() ? page.filePath() : page.dir().filePath(found.captured(1));
            ASSERT_TRUE(QFileInfo(target).isFile()) << qUtf8Printable(page.fileName() + u": "_s + target);
            if (found.hasCaptured(2))
                EXPECT_TRUE(contents(target).contains(u"id=\"%1\""_s.arg(found.captured(2))))
                    << qUtf8Printable(page.fileName() + u": "_s + found.captured(0));
            ++links;
        }
    }
    EXPECT_GT(links, 100);
}

TEST_F(HandbookDesk, OpensTheParagraphOfAMessage)
{
    load({u"/nowhere"_s});
    EXPECT_FALSE(handbook.installed);
    EXPECT_EQ(handbook.pageAbout(u"Address Revision Check (14 Days)"_s), QString());

    load({u"/nowhere"_s, handbookFolder});
    ASSERT_TRUE(handbook.installed);
    const Json rows = table(u"handbook"_s, "messages");
    for (const Json &row : rows)
        EXPECT_EQ(handbook.pageAbout(text(row[0])), text(row[1]));

    runTask(handbook.open());
    runTask(handbook.open(text(rows[0][1])));
    EXPECT_EQ(desktop.opened, QStringList({u"file://"_s + handbookFolder + u"/index.html"_s,
                                           u"file://"_s + handbookFolder + u'/' + text(rows[0][1])}));
    desktop.fails = true;
    runTask(handbook.open());
    EXPECT_EQ(prompts.alerts.size(), 1) << "the clerk reads why nothing opened";
}

} // namespace parcelory::test
