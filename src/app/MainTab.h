#pragma once

#include <QList>
#include <QString>

namespace parcelory {

enum class AppFlow { login, main };

/// The main window's tabs, in the order of the tab bar.
enum class MainTab { newLabel, mailingLog, masterLog, settings };

struct MainTabInfo {
    MainTab tab;
    QString title;
};

const QList<MainTabInfo> &mainTabs();

} // namespace parcelory
