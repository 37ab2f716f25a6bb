#include "addressbook/LocalAddressStore.h"
#include "core/AppError.h"
#include "core/PostalContact.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <QTemporaryDir>

#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;
using testing::ElementsAre;
using Removal = LocalAddressStore::Removal;

namespace {

struct LocalAddresses : testing::Test {
    QTemporaryDir folder;
    LocalAddressStore store{QDir(folder.filePath(u"Parcelory"_s))};

    bool exec(const char *sql) { return Database(folder.filePath(u"Parcelory/addresses.sqlite"_s)).exec(sql); }
    int count()
    {
        settle();
        return store.count;
    }
    QString names(const QString &matching = {}) const
    {
        QStringList names;
        for (const PostalContact &contact : store.rows(matching))
            names.append(contact.name);
        return names.join(u' ');
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
    return {.name = name,
            .company = u"Ça"_s,
            .street1 = street,
            .street2 = u"Apt"_s,
            .city = u"Salem"_s,
            .state = u"OR"_s,
            .zip = zip,
            .country = u"US"_s,
            .label = u"home"_s,
            .phone = u"1"_s,
            .email = u"a@b"_s};
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
    for (QString PostalContact::*field :
         {&PostalContact::name, &PostalContact::company, &PostalContact::street1, &PostalContact::street2,
          &PostalContact::city, &PostalContact::state, &PostalContact::zip, &PostalContact::country,
          &PostalContact::label, &PostalContact::phone, &PostalContact::email})
        (ana.*field).prepend(u"Boone "_s);
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
    const std::pair<QString, QString> rows[] = {{{}, u"adams Baker Clark"_s},
                                                {u"%"_s, u"adams Baker Clark"_s},
                                                {u"salEM"_s, u"adams Baker Clark"_s},
                                                {u"Ça"_s, u"adams Baker Clark"_s},
                                                {u"BAK"_s, u"Baker"_s},
                                                {u"b_k%r"_s, u"Baker"_s},
                                                {u"1000"_s, u"Clark"_s},
                                                {u"oak"_s, u"Clark"_s},
                                                {u"Apt"_s, {}},
                                                {u"'"_s, {}}};
    for (const auto &[query, expected] : rows)
        EXPECT_EQ(names(query), expected) << query.toStdString();
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
    PostalContact sameId = one;
    sameId.id = other.id;
    sameId.name = u"Zoe"_s;
    const auto restored = store.restore({one, suite, one, sameId});
    EXPECT_EQ(restored.imported, 3);
    EXPECT_EQ(restored.skipped, 1);
    const QList<PostalContact> rows = store.rows();
    ASSERT_EQ(rows.size(), 4);
    EXPECT_EQ(rows[0], other);
    EXPECT_TRUE(rows.contains(one) && rows.contains(suite));
    EXPECT_NE(rows[3].id, other.id);
}

TEST_F(LocalAddresses, StayAsTheyWereIfAnImportIsCanceled)
{
    ASSERT_TRUE(store.upsert(at(u"Ana"_s)));
    CancelToken canceled;
    canceled.cancel();
    EXPECT_THROW(store.merge({at(u"Bo"_s)}, canceled), ImportCanceled);
    EXPECT_THROW(store.restore({at(u"Bo"_s)}, canceled), ImportCanceled);
    EXPECT_EQ(count(), 1);
}

TEST(LocalAddressStore, OpensALaterTimeIfTheFolderWasMissing)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"book"_s);
    QFile obstacle(path);
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    LocalAddressStore store{QDir(path)};
    EXPECT_FALSE(store.read().failure.isEmpty());
    EXPECT_FALSE(store.upsert({.name = u"Ana"_s}));
    EXPECT_THROW(store.merge({{.name = u"Ana"_s}}), AppError);
    ASSERT_TRUE(obstacle.remove() && QDir().mkdir(path));
    EXPECT_TRUE(store.upsert({.name = u"Ana"_s})) << store.lastError().toStdString();
    EXPECT_EQ(store.rows().size(), 1);
}

TEST_F(LocalAddresses, AreSplitWhenTypedIntoOneLine)
{
    const std::pair<QString, QString> rows[] = {
        {u"12 Main St, Springfield, IL 62704"_s, u"12 Main St|Springfield|IL|62704|US"_s},
        {u" 12 Main St ,, Springfield Illinois 62704-1234 ,"_s, u"12 Main St|Springfield|IL|62704-1234|US"_s},
        {u"5 A St, Apt 2, Grand Forks north dakota 58201"_s, u"5 A St, Apt 2|Grand Forks|ND|58201|US"_s},
        {u"9 K St, Washington, District of Columbia 20001"_s, u"9 K St|Washington|DC|20001|US"_s},
        {u"1 Base Rd, APO ae 09123"_s, u"1 Base Rd|APO|AE|09123|US"_s},
        {u"1 Elm St, Salem 97301"_s, u"1 Elm St|Salem||97301|US"_s},
        {u"1 Elm St, Salem OR97301"_s, u"1 Elm St|Salem|OR|97301|US"_s},
        {u"PO Box 5, Bend OR\t97701"_s, u"PO Box 5|Bend|OR|97701|US"_s},
        {u"PO Box 5, Bend OR\u00A0 \n97701\u00A0"_s, u"PO Box 5|Bend|OR|97701|US"_s},
        {u"PO Box 5,\u00A0Bend OR 97701-1234\r\n"_s, u"PO Box 5|Bend|OR|97701-1234|US"_s},
        {u"1 Elm\nRear, Salem OR 9997301"_s, u"1 Elm\nRear|Salem OR 99||97301|US"_s},
    };
    for (const auto &[street, expected] : rows)
        EXPECT_EQ(shown(LocalAddressStore::normalized({.street1 = street})), expected);
    for (const QString &street :
         {u"350 5th Ave, New York 10001"_s /* "New York" is the state, so there is no city */, u"1 Elm St, IL 62704"_s,
          u"Salem OR 97301,"_s, u"1 Elm St, Salem OR 9730"_s, u"1 Elm St, Salem OR 97301 USA"_s,
          u"1 Elm St, Salem\nOR 97301"_s, u"1 Elm St, Salem OR 97301\n\n"_s, u"1 Elm St Salem OR 97301"_s, u", ,"_s})
        EXPECT_EQ(shown(LocalAddressStore::normalized({.street1 = street})), street + u"||||"_s);
    PostalContact contact{.street1 = rows[0].first, .city = u"Salem"_s, .country = u"u.s.A."_s};
    EXPECT_EQ(shown(LocalAddressStore::normalized(contact)), rows[0].first + u"|Salem|||US"_s);
    contact.city.clear();
    contact.country = u"Canada"_s;
    EXPECT_EQ(shown(LocalAddressStore::normalized(contact)), u"12 Main St|Springfield|IL|62704|Canada"_s);
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
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("cannot open address store at "));
    EXPECT_TRUE(none.rows().isEmpty());
    EXPECT_FALSE(none.upsert(at(u"One"_s)));
    EXPECT_EQ(none.remove(at(u"One"_s).id), Removal::failed);
    EXPECT_FALSE(none.read().failure.isEmpty());
    EXPECT_TRUE(store.read().failure.isEmpty());
    EXPECT_THROW(none.merge({at(u"One"_s)}), AppError);
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
