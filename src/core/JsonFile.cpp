#include "core/JsonFile.h"

#include "core/PrivateFiles.h"

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
    return !QFile::exists(path) || QFile::rename(path, asidePath(path));
}

void replaceFile(const QString &path, const QByteArray &bytes)
{
    createPrivateFolder(QFileInfo(path).absoluteDir());
    QSaveFile file(path);
    // Check flush() explicitly: commit() alone renames a file that a full disk left empty.
    const bool isOpen = file.open(QIODevice::WriteOnly);
    if (isOpen)
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    if (!isOpen || file.write(bytes) != bytes.size() || !file.flush() || !file.commit())
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
    const QFileInfo info(m_path);
    QFile file(m_path);
    if (info.isFile() && info.size() <= largest && file.open(QIODevice::ReadOnly)) // a pipe would block
        return file.readAll();
    m_setAside = info.exists();
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
