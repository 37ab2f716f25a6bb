#include "ui/theme/SystemAppearance.h"

#include <QGuiApplication>
#include <QPalette>
#include <QStyleHints>

#ifndef Q_OS_MACOS
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#endif

namespace parcelory {
using namespace Qt::StringLiterals;

bool SystemAppearance::paletteIsDark()
{
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightnessF() < palette.color(QPalette::WindowText).lightnessF();
}

#ifdef Q_OS_MACOS

SystemAppearance::SystemAppearance()
{
    connect(QGuiApplication::styleHints(), &QStyleHints::colorSchemeChanged, this,
            [this](Qt::ColorScheme scheme) { emit darkChanged(scheme == Qt::ColorScheme::Dark); });
}

#else

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString settingsInterface = u"org.freedesktop.portal.Settings"_s;
const QString appearance = u"org.freedesktop.appearance"_s;
const QString colorScheme = u"color-scheme"_s;

/// The portal wraps the value in one or two variants, depending on its version.
uint unwrapped(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toUInt();
}

} // namespace

SystemAppearance::SystemAppearance()
{
    QDBusConnection::sessionBus().connect(service, path, settingsInterface, u"SettingChanged"_s, this,
                                          SLOT(settingChanged(QDBusMessage)));
    askPortal();
}

void SystemAppearance::askPortal()
{
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, settingsInterface, u"Read"_s);
    question << appearance << colorScheme;
    const QDBusPendingReply<QDBusVariant> reply = QDBusConnection::sessionBus().asyncCall(question);
    auto *answer = new QDBusPendingCallWatcher(reply, this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QDBusVariant> known = *answer;
        if (!known.isError())
            take(unwrapped(known.value().variant()));
        answer->deleteLater();
    });
}

void SystemAppearance::settingChanged(const QDBusMessage &news)
{
    const QVariantList parts = news.arguments();
    if (parts.value(0) == appearance && parts.value(1) == colorScheme)
        take(unwrapped(parts.value(2)));
}

void SystemAppearance::take(uint scheme)
{
    constexpr uint preferDark = 1; // 0: no preference, 2: light
    emit darkChanged(scheme == preferDark);
}

#endif

} // namespace parcelory
