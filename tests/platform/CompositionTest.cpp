#include "support/Test.h"

namespace parcelory::test {
namespace {

QString textOf(const QString &path)
{
    return QString::fromUtf8(contentsOf(QStringLiteral(PARCELORY_SOURCE_DIR "/src/") + path));
}

} // namespace

// Reads the text, because the adapters of other systems are not built here: the contacts of macOS were written once and
// never connected.
TEST(Composition, ConnectsEveryAdapterOfAPort)
{
    static const QRegularExpression adapter(u"class (\\w+)[^{;:]*: public (\\w+)"_s);
    const QString composition =
        textOf(u"platform/SystemPlatform.h"_s) + textOf(u"platform/SystemPlatform.cpp"_s) + textOf(u"main.cpp"_s);
    const QDir sources(QStringLiteral(PARCELORY_SOURCE_DIR "/src"));
    int adapters = 0;
    for (const QString &header : QDir(sources.filePath(u"platform"_s)).entryList({u"*.h"_s})) {
        for (const QRegularExpressionMatch &match : adapter.globalMatch(textOf(u"platform/"_s + header))) {
            if (!sources.exists(u"core/ports/%1.h"_s.arg(match.captured(2))))
                continue;
            ++adapters;
            const QRegularExpression name(u"\\b%1\\b"_s.arg(match.captured(1)));
            EXPECT_TRUE(composition.contains(name)) << match.captured(1).toStdString() << " is not connected";
        }
    }
    EXPECT_GE(adapters, 10);
}

} // namespace parcelory::test
