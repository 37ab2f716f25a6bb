#include "carrier/ShippoKeys.h"
#include "practice/MemorySecrets.h"
#include "support/FakePlatform.h"

namespace parcelory::test {
namespace {

struct ShippoKeysTest : testing::Test {
    MemorySecrets secrets;
    MemoryPreferences preferences;
    ShippoKeys keys{secrets, preferences};
};

} // namespace

TEST_F(ShippoKeysTest, OnlyTheFirstKeyBecomesActiveByItself)
{
    EXPECT_EQ(keys.activeToken(), std::nullopt);
    keys.set(u"shippo_test_1"_s, u"Test"_s);
    keys.set(u"shippo_live_1"_s, u"Live"_s);
    EXPECT_EQ(keys.activeToken(), u"shippo_test_1"_s);

    keys.makeActive(u"Live"_s);
    keys.set(u"shippo_test_2"_s, u"Test"_s); // replaces only the token
    EXPECT_EQ(keys.names(), (QStringList{u"Test"_s, u"Live"_s}));
    EXPECT_EQ(keys.activeToken(), u"shippo_live_1"_s);
    EXPECT_EQ(keys.token(u"Test"_s), u"shippo_test_2"_s);
    EXPECT_EQ(secrets.get(u"shippo.token.Test"_s), u"shippo_test_2"_s) << "older versions use the same account name";
}

TEST_F(ShippoKeysTest, RemovingTheActiveKeyActivatesTheFirstRemainingKey)
{
    for (const Json &row : table(u"shippo-keys"_s, "removed")) { // the active key, the removed one, the active one then
        preferences.values.clear();
        for (const QString &name : {u"A"_s, u"B"_s, u"C"_s})
            keys.set(u"token "_s + name, name);
        keys.makeActive(text(row[0]));
        keys.remove(text(row[1]));
        EXPECT_EQ(keys.activeName(), text(row[2]));
        EXPECT_EQ(keys.names(), texts(row[3]));
        EXPECT_EQ(keys.token(text(row[1])), QString()) << "the token itself is overwritten";
    }
    for (const QString &name : keys.names())
        keys.remove(name);
    EXPECT_EQ(keys.activeName(), QString());
    EXPECT_EQ(keys.activeToken(), std::nullopt);
    keys.set(u"new token"_s, u"A"_s);
    EXPECT_EQ(keys.activeToken(), u"new token"_s);
}

TEST_F(ShippoKeysTest, NamesTheSingleKeyOfEarlierVersionsOnce)
{
    for (const Json &row : table(u"shippo-keys"_s, "named")) {
        const QString legacy = text(row[0]);
        secrets.set(legacy, u"shippo.token"_s);
        preferences.values.clear();
        EXPECT_EQ(keys.activeToken(), legacy);
        EXPECT_EQ(keys.names(), QStringList{text(row[1])});
        secrets.set(u"changed later"_s, u"shippo.token"_s);
        EXPECT_EQ(keys.activeToken(), legacy);
    }
    preferences.values.clear();
    keys.set(u"shippo_test_new"_s, u"New"_s);
    EXPECT_EQ(keys.activeToken(), u"shippo_test_new"_s);
    EXPECT_EQ(keys.names(), QStringList{u"New"_s}) << "a desk with a named key is not migrated";

    preferences.values.clear();
    secrets.set(QString(), u"shippo.token"_s);
    EXPECT_EQ(keys.activeToken(), std::nullopt);
    EXPECT_TRUE(keys.names().isEmpty());
}

TEST_F(ShippoKeysTest, SaysWhetherTheActiveKeyCostsMoney)
{
    EXPECT_EQ(keys.settingsText(keys.activeToken().value_or(QString())),
              u"No API key active. Add one below (Shippo dashboard → API → Developer keys)."_s);
    EXPECT_EQ(keys.statusText(keys.activeToken().value_or(QString())), u"No Shippo API key — add one in Settings"_s);
    for (const Json &row : table(u"shippo-keys"_s, "free labels")) {
        const bool test = row[1];
        keys.set(text(row[0]), u"Desk 1"_s);
        EXPECT_EQ(keys.settingsText(keys.activeToken().value_or(QString())),
                  test ? u"“Desk 1” active — TEST key, labels are free and not valid postage."_s
                       : u"“Desk 1” active — LIVE key, labels cost real money."_s);
        EXPECT_EQ(keys.statusText(keys.activeToken().value_or(QString())),
                  test ? u"Shippo TEST mode (Desk 1) — labels are not real postage"_s
                       : u"Shippo LIVE (Desk 1) — labels cost real money"_s);
    }
}

TEST_F(ShippoKeysTest, ARemovedKeyOfAnEarlierVersionStaysRemoved)
{
    secrets.set(u"shippo_live_1"_s, u"shippo.token"_s);
    EXPECT_EQ(keys.activeToken(), u"shippo_live_1"_s);
    EXPECT_EQ(secrets.get(u"shippo.token"_s), u"shippo_live_1"_s) << "an earlier version still finds it";
    keys.remove(keys.activeName());
    EXPECT_EQ(keys.activeToken().value_or(QString()), QString());
    EXPECT_TRUE(keys.names().isEmpty());
}

} // namespace parcelory::test
