#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace parcelory {

/// Whether there is anything to be drawn, and where.
enum class Display { none, screen, memory };

/// What the program was asked to do on its command line; nothing means its window.
struct CommandLine {
    bool practice = false;
    QString practiceFolder;             ///< --data; empty for the practice desk's usual folder
    std::optional<QString> orders;      ///< --ship; ships them without a window
    std::optional<QString> screenshots; ///< --screenshots; where the pictures go
    bool status = false;
    std::optional<QString> keyName; ///< --add-key; the token comes on standard input

    /// What these arguments and this session call for; to be known before the application object is made.
    static Display display(int count, char **arguments);
    /// Ends the process on --help, --version and on a mistake, as command-line programs do.
    static CommandLine parse(const QStringList &arguments);
};

} // namespace parcelory
