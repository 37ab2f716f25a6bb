// The adapters of macOS on a real Mac. A keychain of their own keeps questions away; see .github/workflows/ci.yml.

#include "platform/HidScales.h"
#include "platform/Keychain.h"
#include "platform/SettingsPreferences.h"
#include "platform/SystemPlatform.h"
#include "platform/SystemProcesses.h"
#include "support/FakePlatform.h"

#include <QProcess>

namespace parcelory::test {

namespace {

/// Removes an item without a question, also an item of another build: the next build of the tests may not read the item
/// of this one.
void forget(const QString &account)
{
    const QString service = QString::fromLatin1(SecretStore::service);
    SystemProcesses().run(u"/usr/bin/security"_s, {u"delete-generic-password"_s, u"-s"_s, service, u"-a"_s, account});
}

} // namespace

TEST(MacTest, KeychainReturnsTheLastValueSet)
{
    for (const QString &account : {u"parcelory.test"_s, u"parcelory.test.Büro 2 “neu”"_s}) {
        forget(account);
        for (const QString &value : {u"shippo_test_abc"_s, u"schlüssel 🔑\n"_s, QString()}) {
            Keychain().set(value, account);
            EXPECT_EQ(Keychain().get(account), value) << account.toStdString();
        }
        forget(account);
    }
    EXPECT_EQ(Keychain().get(u"parcelory.test.missing"_s), std::nullopt);
}

TEST(MacTest, ContactsAreConnected)
{
    FakePrompts prompts;
    SilentKeyboard keyboard;
    SystemPlatform system(prompts, keyboard);
    ASSERT_TRUE(system.platform().contacts);
    const int status = system.platform().contacts->authorizationStatus(); // asks nothing
    EXPECT_GE(status, 0);
    EXPECT_LE(status, 4);
}

TEST(MacTest, ScalesStartAndStop)
{
    HidScales scales;
    for (int i = 0; i < 3; ++i) {
        scales.start(
            {.attached = [](int, const QString &) {}, .removed = [](int) {}, .report = [](int, const QByteArray &) {}});
        scales.stop();
    }
}

TEST(MacTest, PreferencesAreVisibleToTheSystem)
{
    const QString key = u"test.fromTheTests"_s;
    {
        SettingsPreferences preferences;
        preferences.setValue(key, u"visible"_s);
    } // the end writes it
    QProcess defaults;
    defaults.start(u"/usr/bin/defaults"_s, {u"read"_s, u"com.corvallon.parcelory"_s, key});
    ASSERT_TRUE(defaults.waitForFinished());
    EXPECT_EQ(defaults.readAllStandardOutput().trimmed(), "visible");
    QProcess::execute(u"/usr/bin/defaults"_s, {u"delete"_s, u"com.corvallon.parcelory"_s, key});
}

} // namespace parcelory::test
