#include "shell/CommandLine.h"

#include <QCommandLineParser>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void refuse(const QString &mistake)
{
    std::fprintf(stderr, "parcelory: %s See parcelory --help.\n", qUtf8Printable(mistake));
    std::exit(2);
}

} // namespace

Display CommandLine::display(int count, char **arguments)
{
    const auto given = [&](const char *option) {
        return std::any_of(arguments + 1, arguments + count,
                           [option](const char *argument) { return QByteArrayView(argument).startsWith(option); });
    };
    if (given("--screenshots"))
        return Display::memory;
#ifdef Q_OS_MACOS
    constexpr bool hasScreen = true;
#else
    const bool hasScreen = !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
                           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
#endif
    if (given("--status") || given("--verify") || given("--add-key"))
        return Display::none;
    if (!given("--practice"))
        return hasScreen ? Display::screen : Display::none;
    return hasScreen && !given("--ship") ? Display::screen : Display::memory; // documents are drawn without a screen
}

CommandLine CommandLine::parse(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Prepares, buys and prints USPS and FedEx labels.\n"
        "--practice opens the program on an embedded carrier; without a display it ships sample orders instead."_s);
    const QCommandLineOption practice(u"practice"_s, u"Work on the practice desk: no keys, no postage, own records."_s);
    const QCommandLineOption data(u"data"_s, u"Keep the practice desk's files in <folder>."_s, u"folder"_s);
    const QCommandLineOption ship(u"ship"_s, u"Ship the orders of a JSON <file> on the practice desk."_s, u"file"_s);
    const QCommandLineOption screenshots(
        u"screenshots"_s, u"Draw every screen of the practice desk as a picture in <folder>; needs no display."_s,
        u"folder"_s);
    const QCommandLineOption status(u"status"_s, u"Show the active API key, the records folder and the printers."_s);
    const QCommandLineOption verify(
        u"verify"_s, u"Check that each row of the mailing log is as it was bought; the exit status is 1 if not."_s);
    const QCommandLineOption addKey(u"add-key"_s, u"Store the API key that comes on standard input under <name>."_s,
                                    u"name"_s);
    parser.addOptions({practice, data, ship, screenshots, status, verify, addKey});
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(arguments);

    CommandLine line;
    line.practice = parser.isSet(practice);
    line.status = parser.isSet(status);
    line.verify = parser.isSet(verify);
    line.practiceFolder = parser.value(data);
    if (parser.isSet(ship))
        line.orders = parser.value(ship);
    if (parser.isSet(screenshots))
        line.screenshots = parser.value(screenshots);
    if (parser.isSet(addKey))
        line.keyName = parser.value(addKey);
    const int asked = int(line.practice) + int(line.status) + int(line.verify) + int(line.keyName.has_value());
    if (!parser.positionalArguments().isEmpty())
        refuse(u"\"%1\" is not an option."_s.arg(parser.positionalArguments().first()));
    if ((parser.isSet(data) || line.orders || line.screenshots) && !line.practice)
        refuse(u"--data, --ship and --screenshots belong to --practice."_s);
    if (line.orders && line.screenshots)
        refuse(u"--ship and --screenshots do not go together."_s);
    if (asked > 1)
        refuse(u"Give only one of --practice, --status, --verify and --add-key."_s);
    return line;
}

} // namespace parcelory
