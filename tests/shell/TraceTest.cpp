#include "shell/Trace.h"
#include "support/FakeClock.h"
#include "support/Test.h"

namespace parcelory::test {

TEST(Trace, KeepsTheNewestLinesOverARestart)
{
    const QTemporaryDir folder;
    FakeClock clock;
    const auto note = [&](qint64 from, qint64 to) {
        Trace trace(clock, QDir(folder.path()));
        for (qint64 number = from; number < to; ++number)
            trace.note("rates"_L1, "offered"_L1, number);
        return trace.lines();
    };
    note(0, 350);
    const QList<QByteArray> lines = note(350, 500);
    ASSERT_EQ(lines.size(), Trace::kept);
    EXPECT_TRUE(lines.first().endsWith(" rates: offered 300"));
    EXPECT_TRUE(lines.last().endsWith(" rates: offered 499"));
    EXPECT_LE(contentsOf(folder.filePath(u"trace.log"_s)).count('\n'), 2 * Trace::kept);
    EXPECT_EQ(QFile::permissions(folder.filePath(u"trace.log"_s)) & (QFile::ReadGroup | QFile::ReadOther),
              QFile::Permissions());
}

} // namespace parcelory::test
