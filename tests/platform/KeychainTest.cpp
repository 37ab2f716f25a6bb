// The real secret store. Keychain.* needs a secret service, see support/with-secret-service.sh.
// KeychainWithoutService.* runs in a separate process, because a process looks for the service only once.

#include "platform/Keychain.h"
#include "carrier/ShippoKeys.h"
#include "core/ports/SecretStore.h"
#include "support/FakePlatform.h"

#undef signals
#include <libsecret/secret.h>

namespace parcelory::test {
namespace {

/// Stores bytes like another program or an older version.
bool plant(const QByteArray &bytes, const char *service, const char *account)
{
    SecretSchema *schema =
        secret_schema_new(SecretStore::service, SECRET_SCHEMA_NONE, "service", SECRET_SCHEMA_ATTRIBUTE_STRING,
                          "account", SECRET_SCHEMA_ATTRIBUTE_STRING, nullptr);
    SecretValue *value = secret_value_new(bytes.constData(), bytes.size(), "text/plain");
    const bool stored = secret_password_store_binary_sync(schema, SECRET_COLLECTION_DEFAULT, "planted", value, nullptr,
                                                          nullptr, "service", service, "account", account, nullptr);
    secret_value_unref(value);
    secret_schema_unref(schema);
    return stored;
}

} // namespace

TEST(Keychain, ReturnsTheLastValueSet)
{
    const QString long_ = u"ß"_s.repeated(10'000);
    Keychain keychain;
    EXPECT_EQ(keychain.get(u"shippo.token.missing"_s), std::nullopt);
    for (const QString &account : {u"shippo.token.Live"_s, u"shippo.token.Büro 2 “neu”"_s, QString()}) {
        for (const QString &value : {u"shippo_live_abc"_s, u"schlüssel 🔑\n"_s, QString(), long_, u"x"_s}) {
            keychain.set(value, account);
            EXPECT_EQ(Keychain().get(account), value) << account.toStdString();
        }
    }
}

TEST(Keychain, IgnoresInvalidTextAndItemsOfOtherPrograms)
{
    ASSERT_TRUE(plant("\xC3\x28", SecretStore::service, "bytes"));
    ASSERT_TRUE(plant("text", SecretStore::service, "text"));
    ASSERT_TRUE(plant("text", "com.example.other", "foreign"));
    Keychain keychain;
    EXPECT_EQ(keychain.get(u"bytes"_s), std::nullopt);
    EXPECT_EQ(keychain.get(u"text"_s), u"text"_s);
    EXPECT_EQ(keychain.get(u"foreign"_s), std::nullopt);
}

TEST(Keychain, ServesSeveralThreadsAtOnce)
{
    const QString a = u"a"_s.repeated(500), b = u"b"_s.repeated(500);
    Keychain keychain;
    keychain.set(a, u"shared"_s);
    std::atomic<int> torn = 0;
    std::vector<std::thread> threads;
    for (int reader = 0; reader < 4; ++reader)
        threads.emplace_back([&] {
            for (int i = 0; i < 50; ++i) {
                const auto value = keychain.get(u"shared"_s);
                torn += value != a && value != b;
            }
        });
    threads.emplace_back([&] {
        for (int i = 0; i < 20; ++i)
            keychain.set(i % 2 ? a : b, u"shared"_s);
    });
    std::ranges::for_each(threads, &std::thread::join);
    EXPECT_EQ(torn, 0);
}

TEST(KeychainWithoutService, ReadsAndWritesNothingWithoutAnError)
{
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus");
    qunsetenv("DISPLAY");
    MemoryPreferences preferences;
    Keychain keychain;
    ShippoKeys keys(keychain, preferences);
    keys.set(u"shippo_live_abc"_s, u"Live"_s);
    EXPECT_EQ(keys.activeToken(), std::nullopt);
    EXPECT_EQ(keys.statusText(keys.activeToken().value_or(QString())), u"No Shippo API key — add one in Settings"_s);
}

} // namespace parcelory::test
