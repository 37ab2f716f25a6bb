#include "records/SaveFile.h"

#include "core/AppError.h"

namespace parcelory {
using namespace Qt::StringLiterals;

bool saveFile(const QString &path, const std::function<bool(QIODevice &file)> &write)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw AppError(u"the file could not be written — "_s + file.errorString());
    if (!write(file) && file.error() == QFileDevice::NoError)
        return false;
    if (file.error() != QFileDevice::NoError || !file.flush() || !file.commit())
        throw AppError(u"the file could not be written — "_s + file.errorString());
    return true;
}

void saveText(const QString &path, const QString &text)
{
    saveFile(path, [&text](QIODevice &file) {
        const QByteArray bytes = text.toUtf8();
        return file.write(bytes) == bytes.size();
    });
}

} // namespace parcelory
