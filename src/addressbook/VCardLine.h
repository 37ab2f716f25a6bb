#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>

namespace parcelory {

/// One property of a card: "item1.ADR;TYPE=home;CHARSET=UTF-8:;;418 Montford Ave".
struct VCardProperty {
    QByteArray group; ///< "item1"; may be empty
    QByteArray name;  ///< in capitals
    /// Names in capitals, values without their quotation marks. A bare value (version 2.1) has an empty name.
    QList<std::pair<QByteArray, QByteArray>> parameters;
    QByteArray value; ///< as written

    /// The value of a parameter; empty if the parameter is missing.
    QByteArray parameter(const QByteArray &name) const;
    /// The words of TYPE in lower case, and bare values.
    QList<QByteArray> types() const;
    bool isQuotedPrintable() const;

    QString text() const;
    /// The first `most` parts of a value that semicolons separate; 0 returns the whole value as one part.
    QStringList parts(qsizetype most) const;
};

/// Reads a file property by property.
class VCardLines {
public:
    /// `file`: from vCardBytes(); text that is not UTF-8 is decoded property by property. The bytes must outlive this.
    explicit VCardLines(QByteArrayView file) : m_file(file) {}

    /// The next property with one of these names; nothing at the end of the file. Lines that are not a property are
    /// skipped.
    std::optional<VCardProperty> next(const QList<QByteArray> &names);

private:
    bool isAtEnd() const { return m_at == m_file.size(); }
    QByteArrayView takeLine();
    bool isContinued() const;
    std::optional<VCardProperty> takeProperty(const QList<QByteArray> &names);

    QByteArrayView m_file;
    qsizetype m_at = 0;        ///< where the next line begins
    qsizetype m_lineFeed = -1; ///< the next line feed, or the end of the file, if it is not before m_at
};

/// Converts a UTF-16 or UTF-32 file to UTF-8.
QByteArray vCardBytes(const QByteArray &file);

} // namespace parcelory
