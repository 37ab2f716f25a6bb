#include "app/logs/MailingLogScreen.h"

#include "app/records/CopyRecords.h"
#include "core/AppError.h"
#include "core/Progress.h"
#include "core/SaveFile.h"
#include "core/Task.h"
#include "core/ports/Prompts.h"
#include "records/ShipmentLog.h"
#include "shell/ErrorLog.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QScopeGuard>

#include <algorithm>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

enum ImportChoice { importNothing, importNew, importAll };

Question knownQuestion(int known, const QString &file)
{
    const QString text = known == 1
                             ? u"1 shipment in %1 has a tracking number that is already in the mailing log."_s.arg(file)
                             : u"%1 shipments in %2 have tracking numbers that are already in the mailing log."_s.arg(
                                   QString::number(known), file);
    return {.title = u"Import Endicia Mail Log"_s,
            .text = text + u"\n\nImporting them again lists them twice."_s,
            .choices = {u"Cancel"_s, u"Import Only New Shipments"_s, u"Import All"_s},
            .safeChoice = importNothing};
}

/// "Line 7", "Lines 7, 19 and 12 more"
QString lineText(const QList<int> &lines)
{
    constexpr qsizetype most = 20;
    QStringList numbers;
    for (const int line : lines.first(std::min(most, lines.size())))
        numbers += QString::number(line);
    return (lines.size() == 1 ? u"Line "_s : u"Lines "_s) + numbers.join(u", "_s) +
           (lines.size() > most ? u" and %1 more"_s.arg(lines.size() - most) : QString());
}

/// Paragraphs about a finished import: what was imported, and then everything else that the clerk should know.
QStringList reportLines(const ImportReport &report, KnownRows mode)
{
    const auto counted = [](qsizetype count, const QString &one, const QString &many) {
        return count == 1 ? u"1 "_s + one : QString::number(count) + u' ' + many;
    };
    QStringList lines = {u"Imported: "_s + counted(report.imported, u"shipment."_s, u"shipments."_s)};
    if (report.known > 0)
        lines += u"Already in the mailing log: "_s + counted(report.known, u"shipment"_s, u"shipments"_s) +
                 (mode == KnownRows::skip ? u", not imported again."_s : u", imported again."_s);
    if (!report.skippedLines.isEmpty())
        lines += lineText(report.skippedLines) + (report.skippedLines.size() == 1
                                                      ? u" can't be read and was not imported."_s
                                                      : u" can't be read and were not imported."_s);
    if (!report.undatedLines.isEmpty())
        lines += lineText(report.undatedLines) +
                 (report.undatedLines.size() == 1
                      ? u" has no readable date. This shipment got today's date; it is never on a SCAN form."_s
                      : u" have no readable date. These shipments got today's date; they are never on a SCAN form."_s);
    return lines;
}

} // namespace

/// Starts an operation's progress display; the returned callback may run on any thread.
Progress MailingLogScreen::followProgress()
{
    m_cancel = {};
    say(QString());
    QElapsedTimer time;
    time.start();
    return Progress(m_cancel, [this, time, shown = -1](qint64 done, qint64 total) mutable {
        const int percent = total > 0 ? int(100 * done / total) : 0;
        constexpr int notWorthABar = 1000; // milliseconds
        if (time.elapsed() > notWorthABar && std::exchange(shown, percent) != percent)
            QMetaObject::invokeMethod(
                this,
                [this, percent] {
                    if (busy) // the operation may have ended by now
                        progress = percent / 100.0;
                },
                Qt::QueuedConnection);
    });
}

Task<> MailingLogScreen::exportCSV()
{
    if (busy)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] {
        progress = std::nullopt;
        busy = false;
    });
    const QString path = co_await m_app.platform.prompts.saveFile(u"Export Mail Log"_s, u"Mail Log Export.csv"_s);
    if (path.isEmpty())
        co_return;
    try {
        const bool complete = co_await onPool([&log = m_app.log, path, follow = followProgress()] {
            return saveFile(path, [&](QIODevice &file) { return log.exportEndiciaCSV(file, follow).orThrow(); });
        });
        say(complete ? u"Exported to "_s + QFileInfo(path).fileName() : u"Export canceled."_s);
    } catch (const AppError &error) {
        say(u"Export failed: "_s + m_app.recorded(u"Export CSV"_s, error, Popup::no), true);
    }
}

Task<> MailingLogScreen::importCSV()
{
    if (busy)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] {
        progress = std::nullopt;
        busy = false;
    });
    const QString path =
        co_await m_app.platform.prompts.openFile(u"Import Endicia Mail Log"_s, u"Mail logs (*.csv *.tsv *.txt)"_s);
    if (path.isEmpty())
        co_return;
    try {
        const QString name = QFileInfo(path).fileName();
        say(QString());
        const int known = co_await onPool(m_app.log, &ShipmentLog::knownLines, path);
        const int answer = known == 0 ? importAll : co_await m_app.platform.prompts.choose(knownQuestion(known, name));
        ImportReport report{.isCanceled = true, .skippedLines = {}, .undatedLines = {}};
        const KnownRows mode = answer == importNew ? KnownRows::skip : KnownRows::import;
        if (answer != importNothing) {
            co_await copyRecordsBefore(m_app, CopyReason::beforeImport);
            report = co_await onPool(m_app.log, &ShipmentLog::importEndiciaCSV, path, mode, followProgress());
        }
        say(report.isCanceled ? u"Import canceled. Nothing was imported."_s
                              : u"Imported %1 shipments from "_s.arg(report.imported) + name);
        const QStringList sheet = reportLines(report, mode);
        if (sheet.size() > 1) // the message line has said the first one
            co_await m_app.platform.prompts.alert(u"Import Endicia Mail Log"_s, sheet.join(u"\n\n"_s));
    } catch (const AppError &error) {
        say(u"Import failed: "_s + m_app.recorded(u"Import CSV"_s, error, Popup::no), true);
    }
}

} // namespace parcelory
