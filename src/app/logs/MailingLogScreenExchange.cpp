#include "app/logs/MailingLogScreen.h"

#include "app/logs/SaveFile.h"
#include "core/AppError.h"
#include "core/Progress.h"
#include "core/Task.h"
#include "shell/ErrorLog.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QScopeGuard>

#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

/// Starts an operation's progress display; the returned callback may run on any thread.
Progress MailingLogScreen::followProgress()
{
    m_cancel = {};
    message = QString();
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
            return saveFile(path, [&](QIODevice &file) { return log.exportEndiciaCSV(file, follow); });
        });
        if (!complete && !m_cancel.isCanceled())
            throw AppError(u"the mailing log could not be read to its end."_s);
        message = complete ? u"Exported to "_s + QFileInfo(path).fileName() : u"Export canceled."_s;
    } catch (const AppError &error) {
        message = u"Export failed: "_s + error.description();
        m_app.errors.record(u"Export CSV"_s, error, Popup::no);
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
    const QString path = co_await m_app.platform.prompts.openFile(u"Import Endicia Mail Log"_s);
    if (path.isEmpty())
        co_return;
    try {
        const int count = co_await onPool(m_app.log, &ShipmentLog::importEndiciaCSV, path, followProgress());
        message = count == 0 && m_cancel.isCanceled()
                      ? u"Import canceled. Nothing was imported."_s
                      : u"Imported %1 shipments from "_s.arg(count) + QFileInfo(path).fileName();
    } catch (const AppError &error) {
        message = u"Import failed: "_s + error.description();
        m_app.errors.record(u"Import CSV"_s, error, Popup::no);
    }
}

} // namespace parcelory
