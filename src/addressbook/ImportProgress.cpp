#include "addressbook/ImportProgress.h"

#include <QLocale>

namespace parcelory {
using namespace Qt::StringLiterals;

ImportCancelled::ImportCancelled() : AppError(u"The import was cancelled."_s) {}

ImportProgress::ImportProgress(Report report) : m_report(std::move(report)) {}

void ImportProgress::reached(qsizetype addresses)
{
    constexpr int callsBetweenReports = 250;
    if (addresses > mostAddresses) {
        throw AppError(u"There are more than %1 addresses, which is more than the address book takes."_s.arg(
            QLocale().toString(mostAddresses)));
    }
    if (++m_calls % callsBetweenReports == 0 && m_report && !m_report(addresses))
        throw ImportCancelled();
}

} // namespace parcelory
