#pragma once

#include "practice/carrier/PracticeAnswers.h"

#include <QStringList>
#include <QUrl>

namespace parcelory {

struct PracticeLedger;
struct CarrierScenario;

/// The parts of a request that determine its response.
struct CarrierRequest {
    QByteArray method;
    QUrl target; ///< path and query
    QByteArray body;

    /// The parts of the path; a slash at the end makes no difference.
    QStringList path() const { return target.path().split(u'/', Qt::SkipEmptyParts); }
    /// True for reads of a whole list, which the service counts more strictly than other requests.
    bool readsList() const;
    /// True for what a restart of the carrier keeps.
    bool keepsRecords() const;
};

/// The response to a request whose token belongs to `ledger`.
CarrierAnswer answerTo(const CarrierRequest &request, PracticeLedger &ledger, const CarrierScenario &scenario);

/// The file behind a signed link; empty if the ledger has no such file.
std::optional<CarrierAnswer> fileFor(const CarrierRequest &request, const PracticeLedger &ledger,
                                     const CarrierScenario &scenario);

/// The file host's XML error.
CarrierAnswer fileRefusal(int status, const QByteArray &code, const QByteArray &text);

} // namespace parcelory
