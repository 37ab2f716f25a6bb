#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace parcelory {

/// What the program was asked to do on its command line.
struct CommandLine {
    bool practice = false;
    QString practiceFolder;         ///< --data; empty for the practice desk's usual folder
    QString orders;                 ///< --ship; empty for the sample orders
    std::optional<QString> keyName; ///< --add-key; the token comes on standard input. Without both: --status

    /// Ends the process on --help, --version and on a mistake, as command-line programs do.
    static CommandLine parse(const QStringList &arguments);
};

} // namespace parcelory
