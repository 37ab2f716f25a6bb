#pragma once

// How gtest prints Qt's texts in a failure.

#include <QByteArray>
#include <QString>

#include <ostream>

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QByteArray &bytes, std::ostream *out)
{
    *out << '"' << bytes.toStdString() << '"';
}
QT_END_NAMESPACE
