#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace parcelory {

/// What a link to a finished label delivers.
enum class LabelAnswer {
    normal,
    expired,   ///< 403 and an XML error document
    xmlError,  ///< the same document, but with 200, as an old link may answer
    html,      ///< 200 and a web page
    truncated, ///< a complete answer that holds only the first half of the label
    brokenOff, ///< the connection ends in the middle of the label
};

/// How the carrier decides about a refund.
enum class RefundOutcome {
    granted,  ///< the label becomes REFUNDED
    rejected, ///< accepted first; the label becomes REFUNDREJECTED
    error,    ///< refused at once: the refund is answered with ERROR, the label is REFUNDREJECTED
};

/// An answer put in the place of the regular one, for the next `count` requests that match.
struct CarrierFailure {
    QByteArray pathPrefix = {}; ///< without the leading slash: "transactions", "labels/"; empty matches everything
    int status = 500;
    QByteArray contentType = "application/json";
    QByteArray body = {};
    int count = 1;
    QByteArray method = {}; ///< empty matches every method
};

/// What is out of the ordinary at the practice carrier. The defaults are a quiet day.
struct CarrierScenario {
    // Any request.
    std::chrono::milliseconds answerDelay{0};
    bool holdsAnswers = false;   ///< requests are carried out, but their answers wait for a scenario without this
    bool dropConnection = false; ///< requests are carried out, but the connection ends before the answer
    QByteArray droppedPath = {}; ///< the same for paths that begin so: "manifests"
    std::optional<CarrierFailure> failNext = {};
    QString badToken = {}; ///< not empty: every token is refused with 401 and this text

    // Lists.
    std::optional<int> rateLimitAfterListReads = {}; ///< further list reads are answered with 429 in plain text
    bool endlessNext = false;                        ///< the last page links to a next one; the records repeat
    int undatedRecords = 0; ///< so many records at the head of every page come without a creation time

    // Rating.
    bool fedexConnected = true;
    bool noRates = false;
    bool rewrittenAddressTo = false; ///< the shipment's recipient loses its unit or box number
    bool shipmentQueuedWithRates = false;
    bool acceptsWeightOnly = false; ///< rates parcels without template and size, which the service's schema forbids

    // Purchase.
    int queuedReads = 0; ///< a purchase stays QUEUED when created and for so many reads after that
    bool purchaseFails = false;
    QStringList purchaseMessages = {}; ///< of a failing purchase; an empty one stands for a message without a text
    bool emptyLabelUrl = false;        ///< SUCCESS, but the link is an empty text
    QString labelFileType = {};        ///< "PDF" or "PNG": delivered whatever was asked for
    LabelAnswer labelAnswer = LabelAnswer::normal;

    // After the purchase.
    RefundOutcome refundOutcome = RefundOutcome::granted;
    int refundReads = 0;    ///< the label stays REFUNDPENDING for so many reads
    QString trackedAs = {}; ///< what every number bought here is tracked as: "TRANSIT"; empty: as the key has it
    int manifestQueuedReads = 0;
    bool manifestFails = false;       ///< the form ends as ERROR
    int manifestDocuments = 1;        ///< 0 to 2
    bool manifestAlreadyDone = false; ///< 404: no labels are left for a form
};

} // namespace parcelory
