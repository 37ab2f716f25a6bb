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
    /// Names in capitals, values without their quotation marks. A bare value, as version 2.1 has them, has no name.
    QList<std::pair<QByteArray, QByteArray>> parameters;
    QByteArray value; ///< as written

    /// The value of a parameter; empty when there is none.
    QByteArray parameter(const QByteArray &name) const;
    /// The words of TYPE in lower case, and bare values.
    QList<QByteArray> types() const;
    bool isQuotedPrintable() const;

    QString text() const;
    /// The first `most` parts of a value that semicolons part.
    QStringList parts(qsizetype most) const;
};

/// Reads a file property by property.
class VCardLines {
public:
    /// In any encoding of Unicode, or with properties of older ones. The bytes must outlive this.
    explicit VCardLines(QByteArrayView file) : m_rest(file) {}

    /// The next property of one of these names; nothing at the end of the file. What is no property is skipped.
    std::optional<VCardProperty> next(const QList<QByteArray> &names);

private:
    QByteArrayView takeLine();
    bool isContinued() const;
    std::optional<VCardProperty> takeProperty(const QList<QByteArray> &names);

    QByteArrayView m_rest;
};

/// The file as UTF-8 when it is UTF-16, and without a byte order mark.
QByteArray vCardBytes(const QByteArray &file);

} // namespace parcelory
