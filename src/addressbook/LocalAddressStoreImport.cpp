#include "addressbook/LocalAddressStore.h"

#include "addressbook/AddressCsv.h"
#include "addressbook/EndiciaList.h"
#include "addressbook/ImportProgress.h"
#include "addressbook/VCard.h"
#include "core/AppError.h"
#include "core/PostalContact.h"
#include "core/Progress.h"

#include <QFile>
#include <QFileInfo>

#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Large enough for the most addresses that are read, in the longest of the forms; reading takes up to four times as
/// much memory.
constexpr qint64 largestMegabytes = 256;

QByteArray bytesOf(const QString &path)
{
    constexpr qint64 largest = largestMegabytes * 1024 * 1024;
    QFile file(path);
    if (QFileInfo(path).exists() && !QFileInfo(path).isFile())
        throw AppError(u"This is not a file."_s); // a pipe or a device may never end
    if (!file.open(QIODevice::ReadOnly))
        throw AppError(u"The file could not be opened — "_s + file.errorString() + u'.');
    if (file.size() > largest)
        throw AppError(
            u"The file is larger than %1 MB. Export the addresses without their pictures."_s.arg(largestMegabytes));
    const QByteArray bytes = file.read(largest); // limited, because a file may grow or not report its size
    if (file.error() != QFile::NoError)
        throw AppError(u"The file could not be read — "_s + file.errorString() + u'.');
    return bytes;
}

} // namespace

QList<PostalContact> LocalAddressStore::importEndicia(const QString &path, Progress progress)
{
    ImportProgress reading(std::move(progress));
    return EndiciaList::contacts(bytesOf(path), reading);
}

/// Also reads the CSV file that this program exports.
ReadAddresses LocalAddressStore::importVCard(const QString &path, Progress progress)
{
    ImportProgress reading(std::move(progress));
    const QByteArray bytes = bytesOf(path);
    if (AddressCsv::isExport(bytes))
        return {.contacts = {}, .exported = AddressCsv::read(bytes, reading), .skipped = {}};
    return VCard::read(bytes, reading);
}

std::optional<QString> LocalAddressStore::endiciaPlistURL(const QDir &dataFolder)
{
    const QString path = QDir::cleanPath(dataFolder.absoluteFilePath(u"../Endicia/importedAddresses.plist"_s));
    return QFileInfo(path).isFile() ? std::optional(path) : std::nullopt;
}

} // namespace parcelory
