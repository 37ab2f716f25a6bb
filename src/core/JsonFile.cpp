#include "core/JsonFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

bool moveAside(const QString &path)
{
    const QString suffix = QDateTime::currentDateTime().toString(u"yyyyMMdd-hhmmss-zzz"_s);
    return !QFile::exists(path) || QFile::rename(path, path + u".unreadable-"_s + suffix);
}

void replaceFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    // Check flush() explicitly: commit() alone renames a file that a full disk left empty.
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush() || !file.commit())
        qWarning("Parcelory: cannot write %s: %s", qPrintable(path), qPrintable(file.errorString()));
}

} // namespace

JsonFile::JsonFile(QString path) : m_path(std::move(path)) {}

JsonFile::~JsonFile()
{
    flush();
}

std::optional<QByteArray> JsonFile::read()
{
    QFile file(m_path);
    if (file.open(QIODevice::ReadOnly))
        return file.readAll();
    m_setAside = file.exists();
    return std::nullopt;
}

void JsonFile::write(QByteArray bytes)
{
    m_writer.post([this, bytes = std::move(bytes)] {
        if (m_setAside && !moveAside(m_path)) {
            qWarning("Parcelory: cannot set %s aside, so it is not replaced", qPrintable(m_path));
            return;
        }
        m_setAside = false;
        replaceFile(m_path, bytes);
    });
}

void JsonFile::flush()
{
    m_writer.wait();
}

} // namespace parcelory
