#include "core/JsonFile.h"

#include "core/PrivateFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>

#include <chrono>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Another program only merges and writes meanwhile.
constexpr auto patience = std::chrono::seconds(2);

bool moveAside(const QString &path)
{
    return !QFile::exists(path) || QFile::rename(path, asidePath(path));
}

bool replaceFile(const QString &path, const QByteArray &bytes)
{
    createPrivateFolder(QFileInfo(path).absoluteDir());
    QSaveFile file(path);
    // Check flush() explicitly: commit() alone renames a file that a full disk left empty.
    const bool isOpen = file.open(QIODevice::WriteOnly);
    if (isOpen)
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    if (!isOpen || file.write(bytes) != bytes.size() || !file.flush() || !file.commit()) {
        qWarning("Parcelory: cannot write %s: %s", qPrintable(path), qPrintable(file.errorString()));
        return false;
    }
    return true;
}

} // namespace

JsonFile::JsonFile(QString path, Merge merge) : m_path(std::move(path)), m_merge(std::move(merge)) {}

JsonFile::~JsonFile()
{
    flush();
}

std::optional<QByteArray> JsonFile::contents() const
{
    QFile file(m_path);
    const QFileInfo info(m_path);
    if (info.isFile() && info.size() <= largest && file.open(QIODevice::ReadOnly)) // a pipe would block
        return file.readAll();
    return std::nullopt;
}

std::optional<QByteArray> JsonFile::read()
{
    std::optional<QByteArray> bytes = contents();
    if (!bytes)
        m_setAside = QFileInfo::exists(m_path);
    m_base = bytes.value_or(QByteArray());
    return bytes;
}

void JsonFile::write(QByteArray bytes)
{
    m_writer.post([this, bytes = std::move(bytes)] { replace(bytes); });
}

/// The bytes to write; nothing if what is in the file's place could not be set aside.
std::optional<QByteArray> JsonFile::mergedWithDisk(const QByteArray &bytes)
{
    if (m_merge && !m_setAside) {
        const std::optional<QByteArray> theirs = contents();
        if (!theirs || *theirs == m_base)
            return bytes;
        if (std::optional<QByteArray> merged = m_merge(m_base, bytes, *theirs))
            return merged;
        m_setAside = true;
    }
    if (m_setAside && !moveAside(m_path)) {
        qWarning("Parcelory: cannot set %s aside, so it is not replaced", qPrintable(m_path));
        return std::nullopt;
    }
    m_setAside = false;
    return bytes;
}

void JsonFile::replace(const QByteArray &bytes)
{
    QLockFile turn(m_path + u".lock"_s);
    if (m_merge) {
        createPrivateFolder(QFileInfo(m_path).absoluteDir());
        turn.tryLock(patience); // without the lock, the write reports the reason
    }
    const std::optional<QByteArray> merged = mergedWithDisk(bytes);
    if (merged && replaceFile(m_path, *merged))
        m_base = bytes; // not `merged`: this program's next change is a change of what it knows
}

void JsonFile::flush()
{
    m_writer.wait();
}

} // namespace parcelory
