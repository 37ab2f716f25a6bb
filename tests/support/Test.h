#pragma once

// What every test uses, and what several tests do in the same way.

// IWYU pragma: begin_exports
#include "core/AppError.h"
#include "support/Printing.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTimeZone>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <future>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>
// IWYU pragma: end_exports

namespace parcelory::test {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// Why the operation failed; "no failure" if it did not.
template <class Operation>
QString failureOf(Operation operation)
{
    try {
        operation();
    } catch (const AppError &error) {
        return error.description();
    }
    return u"no failure"_s;
}

/// A failure as code and text; code 0 if the exception has no code, -1 if nothing was thrown.
using Failure = std::pair<int, QString>;

inline Failure codedFailureOf(const std::function<void()> &operation)
{
    try {
        operation();
    } catch (const SystemError &error) {
        return {error.code(), error.description()};
    } catch (const AppError &error) {
        return {0, error.description()};
    }
    return {-1, {}};
}

/// A value of each record in a list: what the field or the function `of` yields.
template <class List, class Of>
auto each(const List &list, Of of)
{
    QList<std::decay_t<decltype(std::invoke(of, *std::begin(list)))>> values;
    for (const auto &record : list)
        values += std::invoke(of, record);
    return values;
}

/// A file's bytes; "(none)" if there is no such file.
inline QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "(none)";
}
inline void put(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()) << path.toStdString();
}
/// Changes the time of a file to two hours ago.
inline void makeOld(const QString &path)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) &&
                file.setFileTime(QDateTime::currentDateTime().addSecs(-2 * 3600), QFileDevice::FileModificationTime));
}
/// What the files hold that a store set aside because it could not read them.
inline QList<QByteArray> setAside(const QString &folder, const QString &name)
{
    QList<QByteArray> kept;
    for (const QString &entry : QDir(folder).entryList({name + u".unreadable-*"_s}, QDir::Files))
        kept += contentsOf(folder + u'/' + entry);
    return kept;
}
/// A file of tests/data.
inline QByteArray dataFile(const QString &name)
{
    const QByteArray bytes = contentsOf(QStringLiteral(PARCELORY_TEST_DATA "/") + name);
    EXPECT_NE(bytes, "(none)") << name.toStdString();
    return bytes;
}

} // namespace parcelory::test
