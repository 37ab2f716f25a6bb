#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

namespace parcelory {

/// A command with its parameters.
struct ZplCommand {
    char prefix = '^'; ///< '^' or '~', whatever sign the label uses for it
    QByteArray name;   ///< in capitals: "FO"; "A" for all fonts
    QByteArray rest;   ///< what follows the name, as it is
    char delimiter = ',';

    /// The parameters without blanks around them.
    QList<QByteArray> parameters() const;
};

/// The parameters of a command by their position; a missing parameter gives the default.
class ZplParameters {
public:
    explicit ZplParameters(const ZplCommand &command) : m_values(command.parameters()) {}

    QByteArray text(qsizetype at) const { return m_values.value(at); }
    /// The first sign in capitals.
    char letter(qsizetype at, char otherwise) const;
    /// A whole number with its limits; digits after a point are dropped.
    int number(qsizetype at, int otherwise, int least = 0, int most = 32000) const;
    double decimal(qsizetype at, double otherwise) const;

private:
    QList<QByteArray> m_values;
};

/// Divides a file into commands.
class ZplScanner {
public:
    explicit ZplScanner(const QByteArray &bytes) : m_bytes(bytes) {}

    /// The next command; nothing at the end of the file.
    std::optional<ZplCommand> next();

private:
    bool isPrefix(qsizetype at) const;
    qsizetype endOfField(qsizetype from) const;
    qsizetype endOfParameters(qsizetype from) const;
    std::optional<qsizetype> endOfBinary(const QByteArray &name, qsizetype from) const;
    void change(const QByteArray &name);

    QByteArray m_bytes;
    qsizetype m_at = 0;
    char m_caret = '^', m_tilde = '~', m_delimiter = ',';
};

} // namespace parcelory
