#include "addressbook/ImportProgress.h"

#include "core/AppError.h"
#include "core/Progress.h"

#include <QLocale>

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

ImportCanceled::ImportCanceled() : AppError(u"The import was canceled."_s) {}

void requireNotCanceled(const CancelToken &cancel)
{
    if (cancel.isCanceled())
        throw ImportCanceled();
}

ImportProgress::ImportProgress(Progress progress) : m_progress(std::move(progress)) {}

void ImportProgress::reached(qsizetype addresses)
{
    constexpr int callsBetweenReports = 250;
    if (addresses > mostAddresses) {
        throw AppError(u"There are more than %1 addresses, which is more than the address book takes."_s.arg(
            QLocale().toString(mostAddresses)));
    }
    if (++m_calls % callsBetweenReports == 0 && !m_progress.report(addresses))
        throw ImportCanceled();
}

} // namespace parcelory
