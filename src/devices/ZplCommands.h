#pragma once

#include <QByteArray>
#include <QStringList>

namespace parcelory::Zpl {

/// What a label would do to the printer beyond printing, each named once as the label has it, such as "^JUS": commands
/// that save settings, write or delete stored files, reset or lock the printer, or change its network or the characters
/// that begin a command; and text outside the labels that is no command. Empty for a usual label, which may store
/// graphics in R:, the printer's working memory, and delete them.
QStringList lastingCommands(const QByteArray &zpl);

} // namespace parcelory::Zpl
