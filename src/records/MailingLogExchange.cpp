#include "records/MailingLogScreen.h"

#include "records/SaveFile.h"

#include <QFileInfo>
#include <QScopeGuard>

namespace parcelory {
using namespace Qt::StringLiterals;

Task<> MailingLogScreen::exportCSV()
{
    if (busy)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    const QString path = co_await m_app.platform.prompts.saveFile(u"Export Mail Log"_s, u"Mail Log Export.csv"_s);
    if (path.isEmpty())
        co_return;
    message = QString();
    try {
        auto writing = onPool([&log = m_app.log, path] {
            bool complete = false;
            const QString text = log.exportEndiciaCSV(&complete);
            if (!complete)
                throw AppError(u"The mailing log could not be read to its end."_s);
            saveText(path, text);
        });
        co_await writing;
        message = u"Exported to "_s + QFileInfo(path).fileName();
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
    const auto done = qScopeGuard([this] { busy = false; });
    const QString path = co_await m_app.platform.prompts.openFile(u"Import Endicia Mail Log"_s);
    if (path.isEmpty())
        co_return;
    message = QString();
    try {
        auto reading = onPool([&log = m_app.log, path] { return log.importEndiciaCSV(path); });
        const int count = co_await reading;
        message = u"Imported %1 shipments from "_s.arg(count) + QFileInfo(path).fileName();
    } catch (const AppError &error) {
        message = u"Import failed: "_s + error.description();
        m_app.errors.record(u"Import CSV"_s, error, Popup::no);
    }
}

} // namespace parcelory
