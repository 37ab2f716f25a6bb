#include "core/Json.h"
#include "core/ShippoAddress.h"
#include "records/BoxProfile.h"
#include "records/BoxStore.h"
#include "records/DraftStore.h"
#include "records/SenderProfile.h"
#include "records/SenderStore.h"
#include "support/FakePlatform.h"
#include "support/Test.h"

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

TEST(DraftStore, KeepsTheDraftForTheNextStart)
{
    const QString name = u"label_draft.json"_s;
    StoreDesk desk;
    const SavedDraft draft{
        .recipient = {.name = u"Ann"_s}, .senderID = QUuid::createUuid(), .box = {}, .weightLb = u"1 ½"_s};
    DraftStore first(desk.platform.dataFolder);
    EXPECT_FALSE(first.saved());
    first.save({});
    first.save(draft);
    first.flush();
    DraftStore second(desk.platform.dataFolder);
    EXPECT_EQ(second.saved(), draft);
    second.clear();
    second.flush();
    EXPECT_FALSE(first.saved());
    put(desk.path(name), "torn");
    EXPECT_FALSE(first.saved());
    first.save(draft);
    first.flush();
    EXPECT_EQ(desk.setAside(name), QList<QByteArray>{"torn"});
    EXPECT_EQ(second.saved(), draft);
}

} // namespace parcelory::test
