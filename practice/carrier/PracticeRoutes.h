#pragma once

#include "practice/carrier/PracticeAnswers.h"

#include <QStringList>
#include <QUrl>

namespace parcelory {

struct PracticeLedger;
struct CarrierScenario;

/// A request as far as its answer depends on it.
struct CarrierRequest {
    QByteArray method;
    QUrl target; ///< path and query
    QByteArray body;

    /// The parts of the path; a slash at the end makes no difference.
    QStringList path() const { return target.path().split(u'/', Qt::SkipEmptyParts); }
    /// True for reads of a whole list, which the service counts more strictly than other requests.
    bool readsList() const;
};

/// The answer to a request whose token belongs to `ledger`.
CarrierAnswer answerTo(const CarrierRequest &request, PracticeLedger &ledger, const CarrierScenario &scenario);

/// The file behind a signed link; null when the ledger knows no such file.
std::optional<CarrierAnswer> fileFor(const CarrierRequest &request, const PracticeLedger &ledger,
                                     const CarrierScenario &scenario);

/// The refusal of a link that carries what it should not, as the file host words it.
CarrierAnswer fileRefusal(int status, const QByteArray &code, const QByteArray &text);

} // namespace parcelory
