#include "core/SaveFile.h"

#include "core/AppError.h"

#include <QFileInfo>

#include <functional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Detects a short write, which QSaveFile itself does not report.
class WholeFile : public QSaveFile {
public:
    using QSaveFile::QSaveFile;

    bool isWhole() const { return !m_cutShort && error() == QFileDevice::NoError; }
    QString reason() const { return error() == QFileDevice::NoError ? u"the disk is full"_s : errorString(); }

protected:
    qint64 writeData(const char *data, qint64 size) override
    {
        const qint64 written = QSaveFile::writeData(data, size);
        m_cutShort = m_cutShort || written != size;
        return written;
    }

private:
    bool m_cutShort = false;
};

} // namespace

bool saveFile(const QString &path, const std::function<bool(QIODevice &file)> &write)
{
    const QFileInfo former(path);
    if (former.exists() && !former.isFile())
        throw AppError(u"%1 is not a file and cannot be replaced"_s.arg(former.fileName()));
    WholeFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw AppError(u"the file could not be written — "_s + file.errorString());
    const bool wanted = write(file);
    if (!file.isWhole() || (wanted && !file.flush()))
        throw AppError(u"the file could not be written — "_s + file.reason());
    if (!wanted)
        return false;
    if (!file.commit())
        throw AppError(u"the file could not be written — "_s + file.reason());
    return true;
}

void saveBytes(const QString &path, const QByteArray &bytes)
{
    [[maybe_unused]] const bool wanted = saveFile(path, [&bytes](QIODevice &file) {
        file.write(bytes);
        return true;
    });
}

} // namespace parcelory
