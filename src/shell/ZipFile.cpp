#include "shell/ZipFile.h"

#include "core/AppError.h"

#include <QScopeGuard>

#include <utility>
#include <zip.h>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void fail(zip_error_t *error)
{
    throw AppError(u"the archive could not be made — "_s + QString::fromUtf8(zip_error_strerror(error)));
}

} // namespace

QByteArray zipOf(const QList<std::pair<QString, QByteArray>> &files)
{
    zip_error_t error;
    zip_error_init(&error);
    const auto forgotten = qScopeGuard([&error] { zip_error_fini(&error); });
    zip_source_t *memory = zip_source_buffer_create(nullptr, 0, 0, &error);
    if (!memory)
        fail(&error);
    const auto freed = qScopeGuard([memory] { zip_source_free(memory); });
    zip_source_keep(memory); // the archive takes one of two references
    zip_t *archive = zip_open_from_source(memory, ZIP_TRUNCATE, &error);
    if (!archive) {
        zip_source_free(memory);
        fail(&error);
    }
    bool isDone = true;
    for (const auto &[name, contents] : files) {
        zip_source_t *file = zip_source_buffer(archive, contents.constData(), zip_uint64_t(contents.size()), 0);
        isDone = isDone && file && zip_file_add(archive, name.toUtf8().constData(), file, ZIP_FL_ENC_UTF_8) >= 0;
    }
    if (!isDone || zip_close(archive) != 0) {
        const QString reason = QString::fromUtf8(zip_strerror(archive));
        zip_discard(archive);
        throw AppError(u"the archive could not be made — "_s + reason);
    }
    QByteArray bytes;
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_source_stat(memory, &stat) != 0 || zip_source_open(memory) != 0)
        fail(zip_source_error(memory));
    bytes.resize(qsizetype(stat.size));
    const zip_int64_t read = zip_source_read(memory, bytes.data(), stat.size);
    zip_source_close(memory);
    if (read != zip_int64_t(stat.size))
        fail(zip_source_error(memory));
    return bytes;
}

} // namespace parcelory
