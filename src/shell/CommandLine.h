#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace parcelory {

/// Where the program draws: nowhere, on the screen, or in memory.
enum class Display { none, screen, memory };

/// The parsed command line; without options, the program opens its window.
struct CommandLine {
    bool practice = false;
    QString practiceFolder;             ///< --data; empty for the practice desk's usual folder
    std::optional<QString> orders;      ///< --ship; ships these orders without a window
    std::optional<QString> screenshots; ///< --screenshots; where the pictures go
    bool status = false;
    bool verify = false;            ///< compares the mailing log with what was bought
    std::optional<QString> keyName; ///< --add-key; the token comes on standard input

    /// The display that these arguments and this session need; required before the application object is created.
    static Display display(int count, char **arguments);
    /// Ends the process on --help, --version and invalid arguments.
    static CommandLine parse(const QStringList &arguments);
};

} // namespace parcelory
