#include "app/records/CopyRecords.h"

#include "core/AppError.h"
#include "core/Platform.h"
#include "core/SettingsKeys.h"
#include "core/ports/Clock.h"
#include "core/ports/Preferences.h"
#include "core/ports/Prompts.h"
#include "shell/ErrorLog.h"

namespace parcelory {
using namespace Qt::StringLiterals;

QDir copiesFolder(const Platform &platform)
{
    const QString chosen = read(platform.preferences, settings::copiesFolder);
    return chosen.isEmpty() ? QDir(platform.dataFolder.filePath(u"Copies"_s)) : QDir(chosen);
}

Task<QString> copyRecords(AppState &app, CopyReason reason, CancelToken cancel)
{
    const RecordCopy made = co_await onPool([&copies = app.copies, reason, now = app.platform.clock.now(), cancel] {
        return copies.make(reason, now, Progress(cancel));
    });
    app.copyCount = app.copyCount + 1;
    co_return made.isGood() ? QString() : u"Parcelory can't copy the records — "_s + made.failure + u'.';
}

Task<> copyRecordsBefore(AppState &app, CopyReason reason, CancelToken cancel)
{
    const QString failure = co_await copyRecords(app, reason, cancel);
    if (failure.isEmpty())
        co_return;
    const int answer = co_await app.platform.prompts.choose(
        {.title = u"Records Not Copied"_s,
         .text = failure + u"\n\nIf you continue, you can't restore today's records."_s,
         .choices = {u"Go On"_s, u"Cancel"_s},
         .safeChoice = 1});
    if (answer != 0)
        throw AppError(failure);
    app.errors.record(u"Copy of the Records"_s, AppError(failure), Popup::no);
}

} // namespace parcelory
