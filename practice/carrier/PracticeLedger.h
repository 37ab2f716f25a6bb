#pragma once

// Holds JSON by value; included by the .cpp files of the practice carrier only.

#include "core/Json.h"
#include "practice/carrier/PracticeAnswers.h"

#include <map>
#include <set>
#include <vector>

namespace parcelory {

/// A record as the service keeps it: what it shows now and, while it is still in work, what it will show.
struct PracticeRecord {
    Json shown;
    Json later = nullptr; ///< null once the record is finished
    int readsLeft = 0;    ///< reads that still show the unfinished record

    /// The record as a client that asks for it sees it; brings an unfinished one forward.
    const Json &read();
};

/// The records of one kind, in the order in which they were created.
class PracticeRecords {
public:
    /// Adds a finished record, or one that becomes `later` after `reads` further reads.
    const Json &add(Json shown);
    const Json &add(Json shown, Json later, int reads);
    PracticeRecord *find(const QString &id);
    std::vector<PracticeRecord> &all() { return m_records; }

    /// Back into the order of creation, after records were given older dates.
    void sortByCreation();

private:
    std::vector<PracticeRecord> m_records;
};

/// A file behind a signed link.
struct PracticeDocument {
    QByteArray query; ///< the signature; a link with any other is refused
    QByteArray contentType;
    QByteArray bytes;
};

/// A rate together with the shipment it was quoted for.
struct QuotedRate {
    const Json *shipment = nullptr;
    const Json *rate = nullptr;
};

/// Everything that was made with one kind of key.
struct PracticeLedger {
    bool test = true;
    std::string base; ///< where the carrier itself is reached, with a slash at the end
    PracticeRecords addresses, customs, shipments, transactions, refunds, manifests;
    std::set<std::string> manifested; ///< ids of the labels that are on a form
    std::map<QByteArray, PracticeDocument> documents;
    int lastNumber = 0; ///< of the tracking numbers given out

    /// Stores a file and gives the signed link to it, good for a year.
    std::string publish(const std::string &path, const QByteArray &contentType, const QByteArray &bytes);
    /// Null members when no shown shipment holds the rate.
    QuotedRate findRate(const QString &id);
};

} // namespace parcelory
