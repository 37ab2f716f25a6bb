#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace parcelory {

/// The response to a label download.
enum class LabelAnswer {
    normal,
    expired,   ///< 403 and an XML error document
    xmlError,  ///< the same document with status 200, as an old link may return
    html,      ///< 200 and a web page
    truncated, ///< a complete response that holds only the first half of the label
    brokenOff, ///< the connection ends in the middle of the label
};

/// The carrier's decision about a refund.
enum class RefundOutcome {
    granted,  ///< the label becomes REFUNDED
    rejected, ///< accepted first; the label becomes REFUNDREJECTED
    error,    ///< refused at once: the refund response is ERROR, the label is REFUNDREJECTED
};

/// How the bytes of a response arrive.
enum class AnswerFlow {
    whole,
    trickle, ///< one byte at a time, without an end
    endless, ///< as fast as they are read, without an end
};

/// A response that replaces the regular response for the next `count` matching requests.
struct CarrierFailure {
    QByteArray pathPrefix = {}; ///< without the leading slash: "transactions", "labels/"; empty matches everything
    int status = 500;
    QByteArray contentType = "application/json";
    QByteArray body = {};
    int count = 1;
    QByteArray method = {}; ///< empty matches every method
    int after = 0;          ///< this many matching requests succeed first
    AnswerFlow flow = AnswerFlow::whole;
};

/// Faults of the practice carrier. The default is a carrier without faults.
struct CarrierScenario {
    // Any request.
    std::chrono::milliseconds answerDelay{0};
    bool holdsAnswers = false;   ///< requests are processed, but responses wait for a scenario without this
    bool dropConnection = false; ///< requests are processed, but the connection ends before the response
    QByteArray droppedPath = {}; ///< the same for paths with this prefix: "manifests"
    std::optional<CarrierFailure> failNext = {};
    QString badToken = {}; ///< if not empty, every token is refused with 401 and this text

    // Lists.
    std::optional<int> rateLimitAfterListReads = {}; ///< further list reads get 429 in plain text
    bool endlessNext = false;                        ///< the last page links to another page; the records repeat
    int undatedRecords = 0; ///< this many records at the head of every page have no creation time

    // Rating.
    bool fedexConnected = true;
    bool noRates = false;
    bool rewrittenAddressTo = false; ///< the shipment's recipient loses its unit or box number
    bool shipmentQueuedWithRates = false;
    bool acceptsWeightOnly = false; ///< rates parcels without template and size, which the service's schema forbids

    // Purchase.
    int queuedReads = 0; ///< a purchase is QUEUED when created and for this many reads, by its id or in a list
    bool repeatsPurchases = false; ///< a machine on the way sends every purchase twice
    bool purchaseFails = false;
    QStringList purchaseMessages = {}; ///< messages of a failing purchase; an empty entry is a message without a text
    bool emptyLabelUrl = false;        ///< SUCCESS, but the link is an empty text
    QString labelFileType = {};        ///< "PDF" or "PNG": delivered regardless of the requested type
    LabelAnswer labelAnswer = LabelAnswer::normal;

    // After the purchase.
    RefundOutcome refundOutcome = RefundOutcome::granted;
    int refundReads = 0;    ///< the label stays REFUNDPENDING for this many reads
    QString trackedAs = {}; ///< tracking status of every label bought here: "TRANSIT"; empty: depends on the key
    int manifestQueuedReads = 0;
    bool manifestFails = false;       ///< the form ends as ERROR
    int manifestDocuments = 1;        ///< 0 to 2
    bool manifestAlreadyDone = false; ///< 404: no labels are left for a form
};

} // namespace parcelory
