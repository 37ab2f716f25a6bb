#include "records/BoxProfile.h"
#include "records/BoxStore.h"
#include "records/DraftStore.h"
#include "records/SenderProfile.h"
#include "records/SenderStore.h"
#include "support/FakePlatform.h"

namespace parcelory::test {
namespace {

const QString sendersName = u"sender_profiles.json"_s;
const QString boxesName = u"box_profiles.json"_s;

struct StoreDesk : FakePlatform {
    QByteArray contents(const QString &name) const { return contentsOf(path(name)); }
    QList<QByteArray> setAside(const QString &name) const { return test::setAside(folder.path(), name); }
    Json savedSenders() const { return parseJson(contents(sendersName)); }
};

constexpr auto address = R"({"name":"","company":"Desk","street1":"1 Main St","street2":"","city":"Reno","state":"NV",)"
                         R"("zip":"89501","country":"US","phone":"","email":""})";

QByteArray twoSenders(const QByteArray &rest)
{
    return QByteArray(R"({"profiles":[{"address":)") + address +
           R"(,"name":"West","id":"0e1f2a3b-4c5d-6e7f-8091-a2b3c4d5e6f7","since":2019},)" +
           R"({"id":"11111111-2222-3333-4444-555555555555","name":"East","address":)" + address + "}]" + rest + '}';
}

} // namespace

TEST(SenderStore, StartsWithTheCompanysAddressOrAnEarlierVersionsAddress)
{
    const QStringList all = {u"name"_s,  u"company"_s, u"street1"_s, u"street2"_s, u"city"_s,
                             u"state"_s, u"zip"_s,     u"phone"_s,   u"email"_s};
    const std::pair<QStringList, ShippoAddress> rows[] = {
        {{}, FakePlatform().platform.deployment.returnAddress},
        {{u"zip"_s}, {.zip = u"zip"_s, .country = u"US"_s}}, // the smallest address that counts
        {all, {all[0], all[1], all[2], all[3], all[4], all[5], all[6], u"US"_s, all[7], all[8]}},
    };
    for (const auto &[stored, address] : rows) {
        StoreDesk desk;
        for (const QString &key : stored)
            desk.preferences.setValue(u"sender."_s + key, key);
        SenderStore store(desk.platform);
        ASSERT_EQ(store.profiles.value().size(), 1);
        const SenderProfile first = store.profiles.value().first();
        EXPECT_EQ(first.name, desk.platform.deployment.officeLabel);
        EXPECT_EQ(first.address, address);
        EXPECT_EQ(store.defaultID.value(), first.id);
        store.flush();
        EXPECT_EQ(desk.savedSenders()["profiles"].size(), 1u); // written immediately

        desk.preferences.setValue(u"sender.name"_s, u"Somebody else"_s);
        SenderStore again(desk.platform);
        EXPECT_EQ(again.profiles.value(), QList{first}); // a store with a file ignores the preferences
    }
}

TEST(SenderStore, FindsTheDefaultOrTakesTheFirst)
{
    const std::pair<QByteArray, QString> rows[] = {
        {R"(,"defaultID":"11111111-2222-3333-4444-555555555555")", u"East"_s},
        {R"(,"defaultID":"99999999-2222-3333-4444-555555555555")", u"West"_s},
        {R"(,"version":3)", u"West"_s},
    };
    for (const auto &[rest, expected] : rows) {
        StoreDesk desk;
        put(desk.path(sendersName), twoSenders(rest));
        SenderStore store(desk.platform);
        ASSERT_TRUE(store.defaultProfile());
        EXPECT_EQ(store.defaultProfile()->name, expected) << rest.toStdString();
        store.flush();
        EXPECT_EQ(desk.contents(sendersName), twoSenders(rest)); // reading alone changes nothing
    }
}

TEST(SenderStore, WritesEveryChangeAndReadsItBack)
{
    StoreDesk desk;
    SenderStore store(desk.platform);
    const SenderProfile first = store.profiles.value().first(), second = store.add(), third = store.add();
    EXPECT_EQ(second.name, u"New Profile"_s);
    EXPECT_EQ(third.address, ShippoAddress{.country = u"US"_s});
    EXPECT_NE(second.id, third.id);
    QList<SenderProfile> edited = store.profiles;
    edited[2].address.city = u"Zürich \"am See\""_s;
    store.profiles = edited;
    store.defaultID = third.id;
    store.flush();
    EXPECT_EQ(SenderStore(desk.platform).profiles.value(), edited);

    store.remove(second.id);
    EXPECT_EQ(store.defaultID.value(), third.id);
    store.remove(QUuid::createUuid());
    EXPECT_EQ(store.profiles.value().size(), 2);
    store.remove(third.id);
    EXPECT_EQ(store.defaultID.value(), first.id); // the first remaining profile
    store.remove(first.id);
    EXPECT_EQ(store.profiles.value(), QList{first}); // the last profile stays
    store.flush();
    SenderStore again(desk.platform);
    EXPECT_EQ(again.profiles.value(), QList{first});
    EXPECT_EQ(again.defaultID.value(), first.id);

    store.defaultID = std::nullopt;
    store.flush();
    EXPECT_FALSE(desk.savedSenders().contains("defaultID"));
    EXPECT_EQ(store.defaultProfile(), first);
}

TEST(SenderStore, KeepsTheReadableProfilesAndSetsADamagedFileAside)
{
    const QByteArray west = "0e1f2a3b-4c5d-6e7f-8091-a2b3c4d5e6f7";
    const QStringList none = {u"Main Office"_s}, east = {u"East"_s}, both = {u"West"_s, u"East"_s};
    const std::pair<QByteArray, QStringList> rows[] = {
        {"{broken", none},
        {"", none},
        {"[]", none},
        {QByteArray(60000, '['), none},
        {twoSenders({}).replace(R"("phone":"",)", ""), none},
        {twoSenders(R"(,"defaultID":"none")"), none},
        {twoSenders({}).replace(R"("name":"West")", R"("name":7)"), east},
        {twoSenders({}).replace(west, west + " or so"), east},
        {twoSenders({}).replace(west, "{" + west + "}"), east},
        {twoSenders({}).replace(west, "00000000-0000-0000-0000-000000000000"), both}, // an id like any other
    };
    for (const auto &[saved, kept] : rows) {
        StoreDesk desk;
        put(desk.path(sendersName), saved);
        SenderStore store(desk.platform);
        EXPECT_EQ(each(store.profiles.value(), &SenderProfile::name), kept) << saved.left(200).toStdString();
        store.add();
        store.flush();
        EXPECT_EQ(desk.setAside(sendersName), kept == both ? QList<QByteArray>() : QList{saved});
        EXPECT_EQ(desk.savedSenders()["profiles"].size(), std::size_t(kept.size() + 1));
    }
    StoreDesk desk;
    put(desk.path(sendersName), R"({"profiles":[]})"); // readable, but a desk needs an address
    EXPECT_EQ(SenderStore(desk.platform).profiles.value().size(), 1);
}

TEST(BoxStore, WritesNothingBeforeTheFirstChange)
{
    StoreDesk desk;
    BoxStore store(desk.platform);
    EXPECT_TRUE(store.profiles.value().isEmpty());
    store.flush();
    EXPECT_EQ(desk.contents(boxesName), "(none)");

    const BoxProfile box = store.add();
    EXPECT_EQ(box.name, u"New Box"_s);
    store.flush();
    EXPECT_EQ(desk.contents(boxesName), R"([{"id":")" + box.id.toString(QUuid::WithoutBraces).toUpper().toLatin1() +
                                            R"(","name":"New Box","length":"","width":"","height":""}])");
    QList<BoxProfile> edited = store.profiles;
    edited[0].length = u"12 1/2"_s; // as typed
    store.profiles = edited;
    store.flush();
    EXPECT_EQ(BoxStore(desk.platform).find(box.id), edited[0]);
    EXPECT_EQ(store.find(QUuid::createUuid()), std::nullopt);

    store.remove(box.id);
    store.flush();
    EXPECT_EQ(desk.contents(boxesName), "[]");
}

TEST(BoxStore, SetsAnUnreadableFileAsideWhenReplacingIt)
{
    const QByteArray box =
        R"({"id":"0e1f2a3b-4c5d-6e7f-8091-a2b3c4d5e6f7","name":"S-4344","length":"1","width":"2","height":"3"})";
    for (const QByteArray &bad : {QByteArray("["), QByteArray("{}"), '[' + box + ",{}]",
                                  '[' + QByteArray(box).replace(R"(,"height":"3")", "") + ']'}) {
        StoreDesk desk;
        put(desk.path(boxesName), bad);
        BoxStore store(desk.platform);
        EXPECT_TRUE(store.profiles.value().isEmpty());
        store.flush();
        EXPECT_EQ(desk.contents(boxesName), bad);
        store.add();
        store.flush();
        EXPECT_EQ(desk.setAside(boxesName), QList{bad});
        EXPECT_EQ(BoxStore(desk.platform).profiles.value().size(), 1);
    }
}

TEST(BoxProfile, ShowsItsDimensions)
{
    EXPECT_EQ((BoxProfile{.length = u"12"_s, .width = u"10"_s, .height = u"8"_s}).dimsDisplay(), u"12×10×8\""_s);
    EXPECT_EQ((BoxProfile{.height = u"8"_s}).dimsDisplay(), u"××8\""_s);
    EXPECT_EQ((BoxProfile{.name = u"S-4344"_s}).dimsDisplay(), u"no dims"_s);
}

TEST(DraftStore, KeepsTheDraftOfOneProgramForTheNextStart)
{
    const QString name = u"label_draft.json"_s;
    const QDateTime now = QDateTime::fromSecsSinceEpoch(1795000000);
    StoreDesk desk;
    const SavedDraft draft{
        .recipient = {.name = u"Ann"_s}, .senderID = QUuid::createUuid(), .box = {}, .weightLb = u"1 ½"_s};
    {
        DraftStore first(desk.platform.dataFolder), second(desk.platform.dataFolder);
        EXPECT_FALSE(first.read());
        first.save({}, now, u"1"_s);
        first.save(draft, now, u"1"_s);
        first.flush();
        EXPECT_FALSE(second.read()) << "the first program still runs";
        second.clear();
        second.flush();
        EXPECT_THAT(desk.contents(name), HasSubstr("Ann"));
    }
    const QString lock = desk.path(u"label_draft.lock"_s); // came with the files from another computer
    put(lock, "1\nparcelory\nelsewhere\nanother\nlong ago\n");
    makeOld(lock);
    DraftStore later(desk.platform.dataFolder);
    ASSERT_TRUE(later.read());
    EXPECT_EQ(later.stored()->draft, draft);
    EXPECT_EQ(later.stored()->storedAt, now);
    later.clear();
    later.flush();
    EXPECT_FALSE(later.read());
    put(desk.path(name), "torn");
    EXPECT_FALSE(later.read());
    later.save(draft, now, u"1"_s);
    later.flush();
    EXPECT_EQ(desk.setAside(name), QList<QByteArray>{"torn"});
    EXPECT_EQ(later.read()->draft, draft);
}

TEST(TwoPrograms, KeepEachOthersBoxes)
{
    struct Row {
        const char *name;
        std::function<void(BoxStore &)> here, there;
        QStringList both, told;
    };
    const auto rename = [](const QString &name) {
        return [name](BoxStore &store) {
            QList<BoxProfile> all = store.profiles;
            all[0].name = name;
            store.profiles = all;
        };
    };
    const auto add = [](const QString &name) {
        return [name](BoxStore &store) { store.profiles = store.profiles.value() + QList{BoxProfile{.name = name}}; };
    };
    const auto removeFirst = [](BoxStore &store) { store.remove(store.profiles.value().first().id); };
    const Row rows[] = {
        {"both add", add(u"Here"_s), add(u"There"_s), {u"A"_s, u"B"_s, u"There"_s, u"Here"_s}, {}},
        {"removed there", add(u"Here"_s), removeFirst, {u"B"_s, u"Here"_s}, {}},
        {"removed here", removeFirst, add(u"There"_s), {u"B"_s, u"There"_s}, {}},
        {"changed there", add(u"Here"_s), rename(u"There"_s), {u"There"_s, u"B"_s, u"Here"_s}, {}},
        {"changed alike", rename(u"New"_s), rename(u"New"_s), {u"New"_s, u"B"_s}, {}},
        {"changed twice", rename(u"Here"_s), rename(u"There"_s), {u"Here"_s, u"B"_s}, {u"Here"_s}},
        {"removed here, changed there", removeFirst, rename(u"There"_s), {u"B"_s}, {u"There"_s}},
        {"changed here, removed there", rename(u"Here"_s), removeFirst, {u"B"_s, u"Here"_s}, {u"Here"_s}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        FakePlatform desk;
        BoxStore first(desk.platform);
        first.profiles = QList{BoxProfile{.name = u"A"_s}, BoxProfile{.name = u"B"_s}};
        first.flush();
        BoxStore second(desk.platform);
        QStringList told;
        QObject::connect(&first, &BoxStore::overridden, &first, [&told](const QStringList &names) { told += names; });
        row.there(second);
        second.flush();
        row.here(first);
        first.flush();
        settle();
        first.flush();
        EXPECT_EQ(each(first.profiles.value(), &BoxProfile::name), row.both);
        EXPECT_EQ(each(BoxStore(desk.platform).profiles.value(), &BoxProfile::name), row.both);
        EXPECT_EQ(told, row.told);
    }
}

TEST(TwoPrograms, KeepEachOthersReturnAddresses)
{
    StoreDesk desk;
    SenderStore first(desk.platform);
    first.flush();
    SenderStore second(desk.platform);
    const SenderProfile there = second.add();
    second.defaultID = there.id;
    second.flush();
    first.add();
    const SenderProfile last = first.add(); // before it knows of the other program's profile
    first.flush();
    settle();
    first.flush();
    EXPECT_EQ(first.profiles.value().size(), 4);
    EXPECT_EQ(first.defaultID.value(), there.id);
    const SenderStore again(desk.platform);
    EXPECT_EQ(again.profiles.value(), first.profiles.value());
    EXPECT_EQ(again.defaultID.value(), there.id);
    EXPECT_TRUE(again.find(last.id));

    put(desk.path(sendersName), "torn");
    first.add();
    first.flush();
    EXPECT_EQ(desk.setAside(sendersName), QList<QByteArray>{"torn"});
    EXPECT_EQ(SenderStore(desk.platform).profiles.value().size(), 5);
}

} // namespace parcelory::test
