#include "shell/CommandLine.h"

#include <QCommandLineParser>

namespace parcelory {
using namespace Qt::StringLiterals;

CommandLine CommandLine::parse(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Prepares, buys and prints USPS and FedEx labels.\n"
        "This build has no window yet: --practice ships sample orders on an embedded practice carrier."_s);
    const QCommandLineOption practice(u"practice"_s, u"Work on the practice desk: no keys, no postage, own records."_s);
    const QCommandLineOption data(u"data"_s, u"Keep the practice desk's files in <folder>."_s, u"folder"_s);
    const QCommandLineOption ship(u"ship"_s, u"Ship the orders of a JSON <file> on the practice desk."_s, u"file"_s);
    const QCommandLineOption status(u"status"_s, u"Tell which API key is active, where the records are and which "
                                                 "printers there are."_s);
    const QCommandLineOption addKey(u"add-key"_s, u"Store the API key that comes on standard input under <name>."_s,
                                    u"name"_s);
    parser.addOptions({practice, data, ship, status, addKey});
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(arguments);

    CommandLine line;
    line.practice = parser.isSet(practice);
    line.practiceFolder = parser.value(data);
    line.orders = parser.value(ship);
    line.status = parser.isSet(status);
    if (parser.isSet(addKey))
        line.keyName = parser.value(addKey);
    const bool practiceOnly = parser.isSet(data) || parser.isSet(ship);
    if (!parser.positionalArguments().isEmpty() || (practiceOnly && !line.practice) ||
        int(line.practice) + int(line.status) + int(line.keyName.has_value()) != 1)
        parser.showHelp(2);
    return line;
}

} // namespace parcelory
