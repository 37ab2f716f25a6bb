#include "shell/CommandLine.h"
#include "support/Table.h"

namespace parcelory::test {
namespace {

Display displayOf(const QString &options)
{
    QByteArrayList all = (u"parcelory "_s + options).trimmed().toLatin1().split(' ');
    std::vector<char *> arguments;
    for (QByteArray &argument : all)
        arguments.push_back(argument.data());
    return CommandLine::display(int(arguments.size()), arguments.data());
}

} // namespace

TEST(CommandLine, NeedsAScreenOnlyForWindows)
{
    const QStringList displays = {u"none"_s, u"screen"_s, u"memory"_s};
    const QByteArray names[] = {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"};
    QByteArrayList before;
    for (const QByteArray &name : names)
        before += qgetenv(name);
    for (const Json &row : table(u"command-line"_s, "displays")) { // options, the display with a screen and without
        qputenv("QT_QPA_PLATFORM", "offscreen");
        EXPECT_EQ(displayOf(text(row[0])), Display(displays.indexOf(text(row[1])))) << row;
#ifndef Q_OS_MACOS
        for (const QByteArray &name : names)
            qunsetenv(name);
        EXPECT_EQ(displayOf(text(row[0])), Display(displays.indexOf(text(row[2])))) << row;
#endif
    }
    for (qsizetype name = 0; name < before.size(); ++name)
        qputenv(names[name], before[name]);
}

TEST(CommandLine, RefusesWhatDoesNotGoTogether)
{
    const auto parse = [](const QString &given) { return CommandLine::parse((u"parcelory "_s + given).split(u' ')); };
    const CommandLine ship = parse(u"--practice --data d --ship o.json"_s);
    EXPECT_TRUE(ship.practice && !ship.status && !ship.screenshots);
    EXPECT_EQ(ship.practiceFolder, u"d"_s);
    EXPECT_EQ(ship.orders, u"o.json"_s);
    EXPECT_EQ(parse(u"--add-key Live"_s).keyName, u"Live"_s);
    for (const QString &given :
         {u"orders.json"_s, u"--data d"_s, u"--ship f"_s, u"--screenshots d"_s,
          u"--practice --ship f --screenshots d"_s, u"--practice --status"_s, u"--status --add-key Live"_s})
        EXPECT_EXIT(parse(given), testing::ExitedWithCode(2), "See parcelory --help") << given.toStdString();
}

} // namespace parcelory::test
