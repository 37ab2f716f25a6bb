#include "shell/CommandLine.h"
#include "support/Test.h"

#include <vector>

namespace parcelory::test {
namespace {

Display displayOf(const QByteArrayList &given)
{
    QByteArrayList all = QByteArrayList{"parcelory"} + given;
    std::vector<char *> arguments;
    for (QByteArray &argument : all)
        arguments.push_back(argument.data());
    return CommandLine::display(int(arguments.size()), arguments.data());
}

} // namespace

TEST(CommandLine, NeedsAScreenOnlyForWindows)
{
    const std::tuple<QByteArrayList, Display, Display> rows[] = {
        {{}, Display::screen, Display::none},
        {{"--status"}, Display::none, Display::none},
        {{"--verify"}, Display::none, Display::none},
        {{"--add-key", "Live"}, Display::none, Display::none},
        {{"--practice"}, Display::screen, Display::memory},
        {{"--practice", "--ship=orders.json"}, Display::memory, Display::memory},
        {{"--practice", "--screenshots", "out"}, Display::memory, Display::memory}};
    const QByteArray names[] = {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"};
    QByteArrayList before;
    for (const QByteArray &name : names)
        before += qgetenv(name);
    for (const auto &[given, withScreen, without] : rows) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        EXPECT_EQ(displayOf(given), withScreen) << given.join(' ').toStdString();
#ifndef Q_OS_MACOS
        for (const QByteArray &name : names)
            qunsetenv(name);
        EXPECT_EQ(displayOf(given), without) << given.join(' ').toStdString();
#endif
    }
    for (qsizetype name = 0; name < before.size(); ++name)
        qputenv(names[name], before[name]);
}

TEST(CommandLine, RefusesWhatDoesNotGoTogether)
{
    const auto parse = [](const QStringList &given) { return CommandLine::parse(QStringList{u"parcelory"_s} + given); };
    const CommandLine ship = parse({u"--practice"_s, u"--data"_s, u"d"_s, u"--ship"_s, u"o.json"_s});
    EXPECT_TRUE(ship.practice && !ship.status && !ship.screenshots);
    EXPECT_EQ(ship.practiceFolder, u"d"_s);
    EXPECT_EQ(ship.orders, u"o.json"_s);
    EXPECT_EQ(parse({u"--add-key"_s, u"Live"_s}).keyName, u"Live"_s);
    for (const QStringList &given :
         {QStringList{u"orders.json"_s}, QStringList{u"--data"_s, u"d"_s}, QStringList{u"--ship"_s, u"f"_s},
          QStringList{u"--screenshots"_s, u"d"_s},
          QStringList{u"--practice"_s, u"--ship"_s, u"f"_s, u"--screenshots"_s, u"d"_s},
          QStringList{u"--practice"_s, u"--status"_s}, QStringList{u"--status"_s, u"--add-key"_s, u"Live"_s}})
        EXPECT_EXIT(parse(given), testing::ExitedWithCode(2), "See parcelory --help") << given.join(u' ').toStdString();
}

} // namespace parcelory::test
