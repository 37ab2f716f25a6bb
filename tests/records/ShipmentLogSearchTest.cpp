#include "records/ShipmentLogIndex.h"
#include "support/LogFile.h"

#include <array>

namespace parcelory::test {
namespace {

/// A log that is large enough to be searched in memory. Every tenth row is for Ana.
struct LargeLog : LogFile {
    LargeLog()
    {
        const ShipmentLog log(QDir(folder.path()));
        run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 12000) INSERT INTO shipments"
            " (created_at, recipient) SELECT i / 3, iif(i % 10, 'Ben ', 'Ana ') || i FROM n");
    }
};

/// An index as in ShipmentLog, on its own connection.
struct Indexed {
    Database db;
    std::mutex lock;
    ShipmentLogIndex index;

    explicit Indexed(const LogFile &file) : db(file.path()), index(db, file.path(), lock) {}
    bool isCurrent()
    {
        const std::lock_guard turn(lock);
        return index.isCurrent();
    }
    bool isCurrentAfterReading()
    {
        isCurrent();
        workPool().waitForDone();
        return isCurrent();
    }
    /// Adds a row whose texts may be invalid.
    void insert(double createdAt, const std::array<std::optional<QByteArray>, 4> &texts)
    {
        const std::lock_guard turn(lock);
        Statement row(db, "INSERT INTO shipments (created_at, recipient, tracking, description, reference) VALUES"
                          " (?, CAST(? AS TEXT), CAST(? AS TEXT), CAST(? AS TEXT), CAST(? AS TEXT))");
        row.bind(1, createdAt);
        for (int text = 0; text < 4; ++text)
            row.bind(text + 2, texts[text]);
        EXPECT_TRUE(row.execute());
        index.follow(db.lastInsertedId());
    }
};

/// Random texts that are hard for LIKE: both cases, characters of one to four bytes, broken characters, zero bytes,
/// wildcards.
class Chance {
public:
    QByteArray text(int most)
    {
        static const QList<QByteArray> pieces =
            QByteArray("a A b Z z [ 1 % _ é É \U0001FA99 % _ a \xA0 \xC3 \uFFFD \uFFFF \xED\xA0\x80 "
                       "\xF9\x81\x82\x83\x84\x85 \xC1\xA1 % _ b \u00A0")
                .split(' ');
        QByteArray text;
        for (int left = upTo(most); left > 0; --left)
            text += upTo(80) ? pieces[upTo(int(pieces.size()) - 1)] : QByteArray(1, '\0');
        return text;
    }
    std::optional<QByteArray> textOrNull() { return upTo(3) ? std::optional(text(9)) : std::nullopt; }
    int upTo(int most) { return std::uniform_int_distribution(0, most)(m_numbers); }

private:
    std::mt19937 m_numbers{20261120};
};

QList<qint64> plainlyFound(const Database &db, const QByteArray &pattern, int limit)
{
    Statement query(db, "SELECT id FROM shipments WHERE recipient LIKE ?1 OR tracking LIKE ?1 OR description LIKE ?1"
                        " OR reference LIKE ?1 ORDER BY created_at DESC, id DESC LIMIT " +
                            QByteArray::number(limit));
    query.bind(1, QString::fromUtf8(pattern));
    QList<qint64> ids;
    while (query.step())
        ids += query.integer(0);
    return ids;
}

} // namespace

TEST(ShipmentLogIndex, FindsTheRowsThatLikeFindsInTheirOrder)
{
    const LogFile file;
    const ShipmentLog log(QDir(file.folder.path()));
    Indexed indexed(file);
    Chance chance;
    const auto addRows = [&](int count) {
        for (int row = 0; row < count; ++row)
            indexed.insert(chance.upTo(400),
                           {chance.textOrNull(), chance.textOrNull(), chance.textOrNull(), chance.textOrNull()});
    };
    ASSERT_TRUE(indexed.db.exec("BEGIN"));
    addRows(10000);
    ASSERT_TRUE(indexed.db.exec("COMMIT"));
    ASSERT_TRUE(indexed.isCurrentAfterReading());
    addRows(40); // the index follows these
    ASSERT_TRUE(indexed.isCurrent());
    int someFound = 0;
    for (int round = 0; round < 300; ++round) {
        // Like the log, which passes a QString without broken characters.
        const QByteArray pattern = QString::fromUtf8('%' + chance.text(7) + '%').toUtf8();
        const int limit = round % 3 ? 1000 : 20;
        const std::vector<qint64> found = indexed.index.find(pattern, limit, {});
        const QList<qint64> expected = plainlyFound(indexed.db, pattern, limit);
        ASSERT_EQ(QList<qint64>(found.begin(), found.end()), expected) << pattern.toPercentEncoding().toStdString();
        someFound += !expected.isEmpty() && expected.size() < limit;
    }
    EXPECT_GT(someFound, 50) << "too few patterns find some rows but not all";
}

TEST(ShipmentLogIndex, AnswersOnlyWhileItKnowsEveryRow)
{
    for (const Json &row : table(u"mailing-log"_s, "index after a change")) {
        const LargeLog file;
        Indexed indexed(file);
        ASSERT_TRUE(indexed.isCurrentAfterReading());
        if (row[2].get<bool>())
            EXPECT_TRUE(indexed.db.exec(bytes(row[1]).constData()));
        else
            file.run(bytes(row[1]));
        indexed.index.follow();
        EXPECT_EQ(indexed.isCurrent(), row[3].get<bool>()) << row;
        workPool().waitForDone();
        EXPECT_EQ(indexed.isCurrent(), row[4].get<bool>()) << row;
    }
}

TEST(ShipmentLog, SearchesALargeLogThatChanges)
{
    const LargeLog file;
    ShipmentLog log(QDir(file.folder.path()));
    const auto found = [&log](const QString &search) {
        EXPECT_TRUE(log.reload(search));
        return shown(log);
    };
    const QStringList twice = {u"Ana 12000"_s, u"Ana 1200"_s};
    EXPECT_EQ(found(u"ANA 1200"_s), twice); // the start has not read the index
    workPool().waitForDone();
    EXPECT_EQ(found(u"ANA 1200"_s), twice);
    EXPECT_TRUE(log.insert(shipmentTo(u"Ana 1200 B"_s), false) && log.setStatus(rowOf(log, 1200), u"REFUNDED"_s));
    const QStringList all = {u"Ana 1200 B"_s, u"Ana 12000"_s, u"Ana 1200"_s};
    EXPECT_EQ(found(u"ANA 1200"_s), all);
    file.run("UPDATE shipments SET recipient = 'Ana 1200 C' WHERE id = 7; DELETE FROM shipments WHERE id = 1200");
    const QStringList changed = {u"Ana 1200 B"_s, u"Ana 12000"_s, u"Ana 1200 C"_s};
    EXPECT_EQ(found(u"ANA 1200"_s), changed); // not indexed yet, so the database is queried
    workPool().waitForDone();
    EXPECT_EQ(found(u"ANA 1200"_s), changed);
    EXPECT_EQ(found(QString(60000, u'%')), QStringList()); // longer than LIKE allows
}

TEST(ShipmentLog, SearchesALargeLogThatAnotherProgramHasRestored)
{
    const LargeLog file, copy;
    copy.run("UPDATE shipments SET recipient = 'Cleo ' || id WHERE recipient LIKE 'Ana%'");
    ShipmentLog log(QDir(file.folder.path()));
    const auto found = [&log](const QString &search) {
        EXPECT_TRUE(log.reload(search));
        workPool().waitForDone();
        return shown(log);
    };
    found(u"Ana 1200"_s);
    EXPECT_EQ(found(u"Ana 1200"_s), (QStringList{u"Ana 12000"_s, u"Ana 1200"_s}));
    file.replaceWith(copy);
    const QStringList restored = {u"Cleo 12000"_s, u"Cleo 1200"_s};
    EXPECT_EQ(found(u"Cleo 1200"_s), restored);
    EXPECT_EQ(found(u"Cleo 1200"_s), restored) << "with the new index";
    EXPECT_EQ(found(u"Ana 1200"_s), QStringList());
}

TEST(ShipmentLog, IsNeitherCopiedNorExportedFromAFormerFile)
{
    for (const bool isFollowed : {false, true}) {
        SCOPED_TRACE(isFollowed);
        const LargeLog file;
        file.run("CREATE TABLE bulk (bytes BLOB); INSERT INTO bulk VALUES (zeroblob(8000000))"); // portions of a copy
        ShipmentLog log(QDir(file.folder.path()));
        const Progress restoring({}, [&](qint64, qint64) {
            file.replaceWith(LargeLog());
            EXPECT_TRUE(!isFollowed || !log.isEmpty());
        });
        EXPECT_EQ(log.copyTo(file.path(u"copy.sqlite"_s), restoring), u"another program has just replaced it"_s);
        QBuffer out;
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        EXPECT_EQ(log.exportEndiciaCSV(out, restoring).failure(),
                  u"The mailing log could not be read — another Parcelory has just restored a copy. Try again."_s);
    }
}

TEST(ShipmentLog, DiscardsACanceledSearch)
{
    const LargeLog file;
    for (const bool isIndexed : {false, true}) {
        ShipmentLog log(QDir(file.folder.path()));
        log.reload(u"Ana 1200"_s); // starts to read the index
        if (isIndexed)
            workPool().waitForDone();
        const QStringList before = shown(log);
        const CancelToken canceled;
        canceled.cancel();
        EXPECT_FALSE(log.reload(u"B%x"_s, ShipmentLog::listLimit, canceled));
        EXPECT_EQ(shown(log), before);
        EXPECT_EQ(log.shownSearch(), u"Ana 1200"_s);
        EXPECT_TRUE(log.insert(shipmentTo(u"Zoe"_s))) << "only the search was interrupted";
        EXPECT_EQ(shown(log).first(), u"Zoe"_s);
    }
}

} // namespace parcelory::test
