#include "addressbook/BlockingWork.h"
#include "addressbook/ContactsAddressProvider.h"
#include "addressbook/ImportProgress.h"
#include "core/PostalContact.h"
#include "core/Progress.h"
#include "core/ports/ContactsSource.h"
#include "support/RunTask.h"
#include "support/Table.h"

#include <QSemaphore>

namespace parcelory::test {
namespace {

struct FakeContacts : ContactsSource {
    explicit FakeContacts(QSemaphore &released) : gone(released) {}
    ~FakeContacts() override { gone.release(); }
    int authorizationStatus() override { return status; }
    bool requestAccess() override
    {
        onAsk();
        return status == fullAccess;
    }
    bool openLegacy() override { return legacyOpens; }
    void readLegacy(const Take &take) override { give(legacy, take, onLegacy); }
    qsizetype containerCount() override { return 2; }
    void read(const Request &request, const Take &take) override
    {
        requests.append(request);
        give(people, take, onRead);
    }
    static void give(const QList<PlatformContact> &all, const Take &take, const std::function<void()> &call)
    {
        call();
        for (qsizetype at = 0; at < all.size() && take(all[at]); ++at) {
        }
    }

    int status = fullAccess;
    bool legacyOpens = true;
    QList<PlatformContact> legacy, people;
    QList<Request> requests;
    std::function<void()> onAsk = [] {}, onLegacy = [] {}, onRead = [] {}; ///< called before the answer
    QSemaphore &gone;
};

PlatformContact person(const QString &given, const QStringList &streets)
{
    PlatformContact person{.given = given, .family = u"Doe"_s, .phones = {u"1"_s, u"2"_s}, .emails = {u"a@b"_s}};
    for (const QString &street : streets)
        person.addresses.append({.label = u"home"_s, .street = street, .isoCountry = u"us"_s});
    return person;
}

struct AppleContacts : testing::Test {
    QTemporaryDir folder;
    FakeClock clock;
    QSemaphore gone; ///< released when the source is destroyed
    std::shared_ptr<FakeContacts> source = std::make_shared<FakeContacts>(gone);
    std::optional<ContactsAddressProvider> provider{std::in_place, source, clock, QDir(folder.path())};

    QStringList read(const Progress &progress = {})
    {
        return each(runTask(provider->all(progress)), [](const PostalContact &c) {
            return QStringList{c.name, c.street1, c.street2, c.country, c.phone, c.email}.join(u'|');
        });
    }
    QByteArray cache()
    {
        provider->flush();
        return contentsOf(folder.filePath(u"contacts_cache.json"_s));
    }
    /// Lets an abandoned read continue and waits until it ends.
    void comeBack(QSemaphore &answers)
    {
        provider.reset();
        source.reset();
        answers.release();
        ASSERT_TRUE(gone.tryAcquire(1, 60000));
    }
};

} // namespace

TEST_F(AppleContacts, AreReadThroughTheOlderInterfaceOrElseTheNewer)
{
    source->legacy = {person(u"zoe"_s, {u"9 Oak St"_s}), person(u"Ana"_s, {u"2 Elm St"_s, u"1 Elm St\nRear\nTop"_s}),
                      person(u"Nobody"_s, {})};
    EXPECT_THAT(read(), ElementsAre(u"Ana Doe|1 Elm St|Rear Top|US|1|a@b"_s, u"Ana Doe|2 Elm St||US|1|a@b"_s,
                                    u"zoe Doe|9 Oak St||US|1|a@b"_s));
    EXPECT_TRUE(source->requests.isEmpty());
    EXPECT_EQ(decodeJson<QList<PostalContact>>(cache(), Keys::asIs).value(2).street1, u"9 Oak St"_s);
    source->legacy = {person(u"Nobody"_s, {})};
    source->people = {person(u"Bo"_s, {u"1 Elm St"_s})};
    EXPECT_THAT(read(), ElementsAre(u"Bo Doe|1 Elm St||US|1|a@b"_s));
    source->onLegacy = [] { throw AppError(u"broken"_s); };
    EXPECT_EQ(read().size(), 1);
    source->onRead = [] { throw AppError(u"broken, too"_s); };
    EXPECT_THROW(read(), AppError);
}

TEST_F(AppleContacts, AreNotReadWithoutAccessOrWhenCanceled)
{
    EXPECT_TRUE(runTask(provider->requestAccess()));
    source->status = 2;
    EXPECT_FALSE(runTask(provider->requestAccess()));
    source->legacy = QList<PlatformContact>(2000, person(u"Ana"_s, {u"1 Elm St"_s}));
    const CancelToken cancel;
    EXPECT_THROW(read(Progress(cancel, [&cancel](qint64, qint64) { cancel.cancel(); })), ImportCanceled);
    EXPECT_EQ(cache(), "(none)");
    ContactsAddressProvider none(nullptr, clock, QDir(folder.path()));
    EXPECT_FALSE(none.isAvailable() || runTask(none.requestAccess()));
}

TEST_F(AppleContacts, ThatHangAreAbandonedAfterTheTimeout)
{
    QSemaphore answers;
    source->legacy = QList<PlatformContact>(1000, person(u"Ana"_s, {u"1 Elm St"_s}));
    source->onLegacy = [&answers] { answers.acquire(); };
    int reports = 0;
    EXPECT_THROW(runTask(provider->all(Progress({}, [&reports](qint64, qint64) { ++reports; })), &clock),
                 AddressLoadTimeout);
    EXPECT_EQ(clock.elapsed(), std::chrono::seconds(170));
    comeBack(answers);
    EXPECT_EQ(reports, 0); // an abandoned read reports nothing
}

TEST_F(AppleContacts, AreNotWaitedForWhileTheQuestionForAccessIsOpen)
{
    QSemaphore answers;
    source->onAsk = [&answers] { answers.acquire(); };
    workPool().waitForDone();
    EXPECT_THROW(runTask(provider->requestAccess(), &clock), AddressLoadTimeout);
    EXPECT_EQ(clock.elapsed(), ContactsAddressProvider::timeout);
    const CancelToken cancel;
    bool isCanceled = false;
    spawn([&]() -> Task<> {
        try {
            co_await provider->requestAccess(cancel);
        } catch (const ImportCanceled &) {
            isCanceled = true;
        }
    });
    EXPECT_EQ(workPool().activeThreadCount(), 0) << "the end of the program waits for the pool";
    clock.advance(std::chrono::seconds(1));
    EXPECT_FALSE(isCanceled);
    cancel.cancel();
    clock.advance(std::chrono::seconds(1));
    runUntil([&isCanceled] { return isCanceled; });
    answers.release();
    comeBack(answers);
}

TEST_F(AppleContacts, AreDiagnosedStepByStep)
{
    source->legacy = source->people = {person(u"Ana"_s, {}), person(u"Bo"_s, {})};
    EXPECT_EQ(runTask(provider->diagnostics()).split(u'\n'), texts(table(u"contacts"_s, "diagnosis")));
    EXPECT_EQ(source->requests.value(0).most, 1000);
    EXPECT_TRUE(!source->requests.value(0).isUnified && source->requests.value(1).isUnified);
    for (const auto &[status, refused] : {std::pair(1, 5), std::pair(2, 5), std::pair(4, 0)}) {
        source->status = status;
        EXPECT_EQ(runTask(provider->diagnostics()).count(u": no access"_s), refused) << status;
    }
}

TEST_F(AppleContacts, AreDiagnosedPastAStepThatFailsOrHangs)
{
    QSemaphore answers, asked;
    source->legacyOpens = false;
    source->onRead = [] { throw AppError(u"no answer"_s); };
    source->onLegacy = [&] {
        asked.release();
        answers.acquire();
    };
    QString report;
    spawn([&]() -> Task<> { report = co_await provider->diagnostics(); });
    runUntil([&asked] { return asked.available() > 0; });
    clock.advance(ContactsAddressProvider::stepTimeout);
    runUntil([&report] { return !report.isEmpty(); });
    EXPECT_TRUE(
        report.contains(u"FAIL Legacy AB open: cannot be opened\nTIMED OUT Legacy AB people()\n"
                        "PASS CN containers: 2 containers\nFAIL CN raw fetch, first 1000, no unify: no answer"));
    comeBack(answers);
}

TEST(BlockingWork, ResumesItsCallerExactlyOnce)
{
    FakeClock clock;
    const auto answer = [&clock](auto work) { return runTask(blockingWork(clock, std::chrono::seconds(1), {}, work)); };
    EXPECT_EQ(answer([] { return 5; }), 5);
    EXPECT_THROW(answer([]() -> int { throw ImportCanceled(); }), ImportCanceled);
    EXPECT_FALSE(clock.fireNext()); // no timer is left behind
    ResumeOnce once;
    EXPECT_TRUE(once.take());
    EXPECT_FALSE(once.take());
}

} // namespace parcelory::test
