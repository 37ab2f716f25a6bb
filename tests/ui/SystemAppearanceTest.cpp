#include "ui/theme/SystemAppearance.h"
#include "support/RunTask.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QSignalSpy>

#include <gmock/gmock.h>

namespace parcelory::test {

/// The desktop portal's setting for light or dark.
class Portal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")
public:
    uint scheme = 0;

public slots:
    QDBusVariant Read(const QString &group, const QString &key)
    {
        EXPECT_EQ(group, QStringLiteral("org.freedesktop.appearance"));
        EXPECT_EQ(key, QStringLiteral("color-scheme"));
        return QDBusVariant(QVariant::fromValue(QDBusVariant(scheme))); // older versions wrap twice
    }

signals:
    void SettingChanged(const QString &group, const QString &key, const QDBusVariant &value);
};

namespace {

TEST(SystemAppearance, FollowsThePortalAtTheStartAndOnChanges)
{
    using namespace Qt::StringLiterals;
    QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"portal"_s); // another program
    if (!bus.isConnected())
        GTEST_SKIP() << "there is no session bus";
    Portal portal;
    portal.scheme = 1;
    ASSERT_TRUE(bus.registerService(u"org.freedesktop.portal.Desktop"_s));
    ASSERT_TRUE(bus.registerObject(u"/org/freedesktop/portal/desktop"_s, &portal,
                                   QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
    SystemAppearance appearance;
    QSignalSpy changes(&appearance, &SystemAppearance::darkChanged);
    const auto next = [&] {
        runUntil([&] { return !changes.isEmpty(); });
        return changes.takeFirst().first().toBool();
    };
    EXPECT_TRUE(next());
    emit portal.SettingChanged(u"org.gnome.desktop.interface"_s, u"color-scheme"_s, QDBusVariant(0U)); // ignored
    emit portal.SettingChanged(u"org.freedesktop.appearance"_s, u"color-scheme"_s, QDBusVariant(2U));
    EXPECT_FALSE(next());
    emit portal.SettingChanged(u"org.freedesktop.appearance"_s, u"color-scheme"_s, QDBusVariant(1U));
    EXPECT_TRUE(next() && changes.isEmpty());
}

} // namespace
} // namespace parcelory::test

#include "SystemAppearanceTest.moc"
