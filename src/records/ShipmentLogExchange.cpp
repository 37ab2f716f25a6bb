#include "records/ShipmentLog.h"

#include "core/AppError.h"
#include "core/Progress.h"
#include "records/EndiciaFormat.h"
#include "records/LogExport.h"
#include "records/LogImport.h"
#include "records/LogRead.h"

#include <QFile>
#include <QUtf8StringView>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Rows or lines between two progress reports.
constexpr int portion = 2000;

QByteArray readFile(const QString &path)
{
    constexpr qint64 largest = 1024 * 1024 * 1024;
    QFile file(path);
    if (QFileInfo(path).exists() && !QFileInfo(path).isFile())
        throw AppError(u"This is not a file."_s); // a pipe or a device may never end
    if (file.size() > largest)
        throw AppError(u"The file is larger than 1 GB. Export the log in parts."_s);
    if (!file.open(QIODevice::ReadOnly))
        throw AppError(u"The file could not be opened — "_s + file.errorString() + u'.');
    QByteArray bytes = file.readAll();
    if (file.error() != QFile::NoError)
        throw AppError(u"The file could not be read — "_s + file.errorString() + u'.');
    if (!QUtf8StringView(bytes).isValidUtf8())
        throw AppError(u"The file is not UTF-8 text — export it again as a tab-separated mail log."_s);
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes.remove(0, 3); // the byte order mark would hide the header's first name
    return bytes;
}

/// Waits for a copy in progress. False if it was canceled.
bool waitFor(std::unique_lock<std::mutex> &copying, const Progress &progress)
{
    while (!copying.try_lock()) {
        if (!progress.report(0))
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return true;
}

} // namespace

LogRead<bool> ShipmentLog::exportEndiciaCSV(QIODevice &out, const Progress &progress) const
{
    const auto write = [&out](const QByteArray &text) { return out.write(text) == text.size(); };
    if (!write(EndiciaFormat::header().toUtf8() + '\n'))
        return false;
    const Database db(m_path, Database::Threads::oneAtATime);
    const std::optional<std::vector<qint64>> ids = LogExport::oldestFirst(db);
    if (!ids)
        return LogRead<bool>::failed(notRead(db));
    // One reader reads while the other reader's lines are written; reading is most of the work.
    using LogExport::LineReader;
    std::array<LineReader, 2> readers{LineReader(m_path), LineReader(m_path)};
    if (db.isReplaced()) // the readers may have opened another file
        return LogRead<bool>::failed(notRead(db));
    std::span<const qint64> rest(*ids);
    const auto start = [&rest](LineReader &reader) {
        const auto ids = rest.first(std::min<std::size_t>(portion, rest.size()));
        rest = rest.subspan(ids.size());
        reader.start(ids);
    };
    for (LineReader &reader : readers)
        start(reader);
    for (std::size_t done = 0, turn = 0; done < ids->size(); ++turn) {
        LineReader &reader = readers[turn % readers.size()];
        const std::optional<QByteArray> lines = reader.result();
        if (!lines)
            return LogRead<bool>::failed(notRead(reader.database()));
        start(reader);
        done = std::min(done + portion, ids->size());
        if (!write(*lines) || !progress.report(qint64(done), qint64(ids->size())))
            return false;
    }
    return true;
}

int ShipmentLog::knownLines(const QString &path) const
{
    const QByteArray text = readFile(path);
    const Database db(m_path, Database::Threads::oneAtATime);
    const std::optional<int> count = LogImport::knownLines(db, text);
    if (!count)
        throw AppError(notRead(db));
    return *count;
}

ImportReport ShipmentLog::importEndiciaCSV(const QString &path, KnownRows known, const Progress &progress)
{
    const QByteArray text = readFile(path);
    ImportReport report;
    prepare();
    {
        // Before the first line: a copy does not wait as long as an import holds the file.
        std::unique_lock copying(m_copying, std::defer_lock);
        if (!waitFor(copying, progress))
            return {.isCanceled = true, .skippedLines = {}, .undatedLines = {}};
        const std::lock_guard writing(m_writing);
        report = LogImport::appendLines(m_path, text, known, progress, &ShipmentLog::reasonOf);
    }
    reload();
    return report;
}

} // namespace parcelory
