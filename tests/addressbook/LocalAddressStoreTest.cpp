#include "addressbook/LocalAddressStore.h"
#include "core/PostalContact.h"
#include "support/FaultyDisk.h"
#include "support/RunTask.h"
#include "support/Table.h"
#include "support/WaitingRoom.h"

namespace parcelory::test {
using Removal = LocalAddressStore::Removal;

namespace {

struct LocalAddresses : testing::Test {
    QTemporaryDir folder;
    LocalAddressStore store{QDir(folder.filePath(u"Parcelory"_s))};

    bool exec(const char *sql) { return Database(path()).exec(sql); }
    int count()
    {
        settle();
        return store.count;
    }
    QString path() const { return folder.filePath(u"Parcelory/addresses.sqlite"_s); }
    /// Puts another book in the book's place, like another program that restores a copy.
    void restore(const PostalContact &contact) const
    {
        const QTemporaryDir copy;
        EXPECT_TRUE(LocalAddressStore(QDir(copy.path())).upsert(contact));
        EXPECT_EQ(std::rename(copy.filePath(u"addresses.sqlite"_s).toUtf8().constData(), path().toUtf8().constData()),
                  0);
    }
    QString names(const QString &matching = {}) const
    {
        return each(store.rows(matching), &PostalContact::name).join(u' ');
    }
    /// "imported/skipped".
    QString merge(const QList<PostalContact> &contacts)
    {
        const auto merged = store.merge(contacts);
        return u"%1/%2"_s.arg(merged.imported).arg(merged.skipped);
    }
};

PostalContact at(const QString &name, const QString &street = u"1 Elm St"_s, const QString &zip = u"97301"_s)
{
    return changed(PostalContact{.name = name, .street1 = street, .zip = zip}, table(u"addresses"_s, "stored")[0]);
}

QString shown(const PostalContact &c)
{
    return QStringList{c.street1, c.city, c.state, c.zip, c.country}.join(u'|');
}

} // namespace

TEST_F(LocalAddresses, AreKeptReplacedAndDeleted)
{
    PostalContact ana = at(u"Ana"_s);
    ASSERT_TRUE(store.upsert(ana));
    ASSERT_TRUE(store.upsert(at(u"Baker"_s)));
    EXPECT_EQ(store.count, 0); // set later, on the main thread
    EXPECT_EQ(count(), 2);
    const auto change = [&ana](const auto &, const auto &...texts) { // all but the id
        ((ana.*texts.member).prepend(u"Boone "_s), ...);
    };
    std::apply(change, PostalContact::fields());
    ASSERT_TRUE(store.upsert(ana));
    EXPECT_THAT(LocalAddressStore(QDir(folder.filePath(u"Parcelory"_s))).rows(u"boone"_s), ElementsAre(ana));
    EXPECT_EQ(store.remove(ana.id), Removal::done);
    EXPECT_EQ(store.remove(ana.id), Removal::missing);
    EXPECT_EQ(names(), u"Baker"_s);
    EXPECT_EQ(count(), 1);
}

TEST_F(LocalAddresses, AreListedByNameIgnoringCaseAndSearchedWithLike)
{
    store.merge({at(u"Baker"_s, u"5% Rd"_s), at(u"adams"_s), at(u"Clark"_s, u"2 Oak"_s, u"10001"_s)});
    for (const Json &row : table(u"address-search"_s, "stored"))
        EXPECT_EQ(names(text(row[0])), text(row[1])) << row;
    ASSERT_TRUE(exec("UPDATE addresses SET uuid = 'none', email = NULL WHERE name = 'Clark'"));
    EXPECT_FALSE(store.rows(u"Clark"_s).value(0).id.isNull());
    EXPECT_EQ(store.rows(u"Clark"_s).value(0).email, QString());
}

TEST_F(LocalAddresses, AreMergedWithoutDuplicates)
{
    const PostalContact split{.name = u"Split"_s, .street1 = u"12 Main St, Springfield, IL 62704"_s};
    const QList<PostalContact> batch = {at(u"Baker"_s),
                                        at(u"BAKER"_s, u"1 ELM st"_s),  // differs only in case
                                        at(u"Baker"_s, u"1 Elm St "_s), // a different address because of the space
                                        at(u"Baker"_s, u"1 Elm St"_s, u"97301-0001"_s),
                                        split,
                                        at(u"split"_s, u"12 main st"_s, u"62704"_s)}; // as the previous is stored
    EXPECT_EQ(merge(batch), u"4/2"_s);
    EXPECT_EQ(store.rows(u"Split"_s).value(0).id, split.id);
    EXPECT_EQ(merge(batch), u"0/6"_s);
    EXPECT_EQ(merge({}), u"0/0"_s);
    EXPECT_EQ(count(), 4);
}

TEST_F(LocalAddresses, AreFoundInWhateverFormTheirIdIsStored)
{
    PostalContact ana = at(u"Ana"_s), bo = at(u"Bo"_s);
    ASSERT_TRUE(store.upsert(ana) && store.upsert(bo));
    ASSERT_TRUE(exec("UPDATE addresses SET uuid = lower(uuid) WHERE name = 'Ana'"));
    ASSERT_TRUE(exec("UPDATE addresses SET uuid = '{' || lower(uuid) || '}' WHERE name = 'Bo'"));
    ana.city = bo.city = u"Keene"_s;
    ASSERT_TRUE(store.upsert(ana) && store.upsert(bo));
    EXPECT_THAT(store.rows(), ElementsAre(ana, bo));
    EXPECT_EQ(store.remove(ana.id), Removal::done);
    EXPECT_EQ(store.remove(bo.id), Removal::done);
    EXPECT_EQ(count(), 0);
}

TEST_F(LocalAddresses, AreRestoredAsTheyWere)
{
    const PostalContact one{.name = u"Jo"_s, .street1 = u"1 Elm St, Salem, OR 97301"_s, .country = u"usa"_s};
    PostalContact suite = one, other = one;
    suite.id = QUuid::createUuid();
    suite.street2 = u"Suite 2"_s; // a duplicate for a merge
    ASSERT_TRUE(store.upsert(other = at(u"Ana"_s)));
    PostalContact sameId = one, foreign = other;
    sameId.id = other.id;
    sameId.name = u"Zoe"_s;
    foreign.street1 = u"9 Oak St"_s;
    const CancelToken canceled;
    canceled.cancel();
    EXPECT_THROW(store.add({.contacts = {}, .exported = {one}, .skipped = {}}, canceled), ImportCanceled);
    const auto restored = store.add({.contacts = {foreign}, .exported = {one, suite, one, sameId}, .skipped = {}});
    EXPECT_EQ(restored.imported, 4);
    EXPECT_EQ(restored.skipped, 1);
    const QList<PostalContact> rows = store.rows();
    ASSERT_EQ(rows.size(), 5);
    EXPECT_TRUE(rows.contains(other)) << "no entry is replaced";
    EXPECT_TRUE(rows.contains(one) && rows.contains(suite));
    EXPECT_NE(rows[4].id, other.id);
}

TEST_F(LocalAddresses, AreSplitWhenTypedIntoOneLine)
{
    const Json rows = table(u"one-line-addresses"_s, "split");
    for (const Json &row : rows)
        EXPECT_EQ(shown(LocalAddressStore::normalized({.street1 = text(row[0])})), text(row[1]));
    for (const QString &street : texts(table(u"one-line-addresses"_s, "kept")))
        EXPECT_EQ(shown(LocalAddressStore::normalized({.street1 = street})), street + u"||||"_s);
    const QString line = text(rows[0][0]);
    EXPECT_EQ(shown(LocalAddressStore::normalized({.street1 = line, .city = u"Salem"_s, .country = u"u.s.A."_s})),
              line + u"|Salem|||US"_s);
    EXPECT_EQ(shown(LocalAddressStore::normalized({.street1 = line, .country = u"Canada"_s})),
              u"12 Main St|Springfield|IL|62704|Canada"_s);
}

TEST_F(LocalAddresses, StayUnchangedWhenWritingFails)
{
    ASSERT_TRUE(exec("CREATE TRIGGER t BEFORE INSERT ON addresses WHEN new.name = 'Bad' BEGIN SELECT RAISE(FAIL, 'x');"
                     "END"));
    EXPECT_EQ(merge({at(u"One"_s), at(u"Bad"_s), at(u"Two"_s)}), u"2/0"_s); // only the bad address is rejected
    EXPECT_FALSE(store.upsert(at(u"Bad"_s)));
    EXPECT_EQ(store.lastError(), u"x"_s);
    // Like a full disk: the database rolls the transaction back itself.
    ASSERT_TRUE(exec("DROP TRIGGER t; CREATE TRIGGER t BEFORE INSERT ON addresses WHEN new.name = 'Bad'"
                     "BEGIN SELECT RAISE(ROLLBACK, 'full'); END"));
    EXPECT_THROW(merge({at(u"Three"_s), at(u"Bad"_s), at(u"Four"_s)}), AppError);
    EXPECT_EQ(names(), u"One Two"_s);
    EXPECT_EQ(merge({at(u"Three"_s)}), u"1/0"_s); // the store still works

    ASSERT_TRUE(QDir(folder.path()).mkpath(u"none/addresses.sqlite"_s));
    testing::internal::CaptureStderr();
    LocalAddressStore none{QDir(folder.filePath(u"none"_s))};
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("cannot open address store at "));
    EXPECT_TRUE(none.rows().isEmpty());
    EXPECT_FALSE(none.upsert(at(u"One"_s)));
    EXPECT_EQ(none.remove(at(u"One"_s).id), Removal::failed);
    EXPECT_FALSE(none.read().failure.isEmpty());
    EXPECT_TRUE(store.read().failure.isEmpty());
    ASSERT_TRUE(exec("DROP TABLE addresses"));
    EXPECT_FALSE(store.read().failure.isEmpty()) << "a book that cannot be read is not empty";
    EXPECT_THROW(none.merge({at(u"One"_s)}), AppError);
    ASSERT_TRUE(QDir(folder.path()).rmdir(u"none/addresses.sqlite"_s));
    EXPECT_TRUE(none.upsert(at(u"One"_s))) << "the file can be opened now";
    EXPECT_EQ(none.read().contacts.size(), 1);
}

TEST_F(LocalAddresses, AreNotImportedIfTheBookCannotBeReadToItsEnd)
{
    QList<PostalContact> many;
    for (int number = 0; number < 400; ++number)
        many += at(QString::number(number));
    store.merge(many);
    for (PostalContact &contact : many)
        contact.id = QUuid::createUuid();
    int failures = 0;
    for (int read = 0;; ++read) {
        const FaultyDisk disk(u"addresses.sqlite"_s, read);
        LocalAddressStore late{QDir(folder.filePath(u"Parcelory"_s))};
        try {
            EXPECT_EQ(late.merge(many).imported, 0) << read;
        } catch (const AppError &) {
            ++failures;
        }
        if (!disk.hasFailed())
            break;
    }
    EXPECT_GT(failures, 5);
    EXPECT_EQ(store.rows().size(), 400);
}

TEST_F(LocalAddresses, AreThoseThatAnotherProgramHasRestored)
{
    const WaitingRoom room;
    for (const bool isWaiting : {false, true}) {
        SCOPED_TRACE(isWaiting);
        LocalAddressStore open{QDir(folder.filePath(u"Parcelory"_s))};
        const PostalContact ana = at(u"Ana"_s);
        ASSERT_TRUE(open.upsert(ana));
        const auto after = [&](const PostalContact &contact, const std::function<void()> &work) {
            afterRestoring(path(), isWaiting, [&] { restore(contact); }, work);
        };
        const PostalContact bo = at(u"Bo"_s);
        after(bo, [&] { EXPECT_TRUE(open.upsert(at(u"Cy"_s))); });
        EXPECT_EQ(names(), u"Bo Cy"_s);
        after(ana, [&] { EXPECT_EQ(open.remove(bo.id), Removal::missing); });
        after(bo, [&] {
            if (isWaiting)
                EXPECT_THROW(open.merge({at(u"Dee"_s)}), AppError);
            EXPECT_EQ(open.merge({at(u"Dee"_s)}).imported, 1);
        });
        EXPECT_EQ(names(), u"Bo Dee"_s);
        if (!isWaiting) {
            restore(ana);
            EXPECT_THAT(open.rows(), ElementsAre(ana));
        }
        EXPECT_EQ(each(open.rows(), &PostalContact::name).join(u' '), names());
    }
}

TEST_F(LocalAddresses, AreNotReplacedWhileAnotherProgramWrites)
{
    const WaitingRoom room;
    LocalAddressStore open{QDir(folder.filePath(u"Parcelory"_s))};
    int replaced = 0;
    const auto replace = [&] {
        ++replaced;
        Database other(path(), 0ms);
        EXPECT_FALSE(other.exec("BEGIN IMMEDIATE")) << "no other program begins to write";
        return QString();
    };
    Database other(path());
    ASSERT_TRUE(other.exec("BEGIN IMMEDIATE"));
    EXPECT_EQ(open.replaceFile(replace), u"another program has it open (database is locked)"_s);
    EXPECT_EQ(replaced, 0);
    ASSERT_TRUE(other.exec("ROLLBACK"));
    EXPECT_EQ(open.replaceFile(replace), QString());
    EXPECT_EQ(replaced, 1);
    EXPECT_TRUE(open.upsert(at(u"Ana"_s)));
}

TEST_F(LocalAddresses, AreChangedBySeveralThreads)
{
    QList<QFuture<void>> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.append(QtConcurrent::run([this, thread] {
            for (int i = 0; i < 5; ++i) {
                const QString name = QString::number(thread * 100 + i);
                EXPECT_TRUE(thread % 2 ? store.upsert(at(name)) : merge({at(name)}) == u"1/0"_s);
            }
        }));
    }
    for (QFuture<void> &thread : threads)
        thread.waitForFinished();
    EXPECT_EQ(count(), 20);
}

} // namespace parcelory::test
