#pragma once

// Holds JSON by value; included by the .cpp files of the practice carrier only.

#include "core/Json.h"
#include "practice/carrier/PracticeAnswers.h"

#include <map>
#include <set>
#include <vector>

namespace parcelory {

/// A record of the service: what it shows now and, while it is unfinished, what it will show.
struct PracticeRecord {
    Json shown;
    Json later = nullptr; ///< null once the record is finished
    int readsLeft = 0;    ///< reads that still show the unfinished record

    /// The record as a client sees it; each read brings an unfinished record forward.
    const Json &read();
};

/// The records of one kind, in the order in which they were created.
class PracticeRecords {
public:
    /// Adds a finished record, or a record that becomes `later` after `reads` further reads.
    const Json &add(Json shown);
    const Json &add(Json shown, Json later, int reads);
    PracticeRecord *find(const QString &id);
    std::vector<PracticeRecord> &all() { return m_records; }
    const std::vector<PracticeRecord> &all() const { return m_records; }

    /// Restores the order of creation after records got older dates.
    void sortByCreation();

private:
    std::vector<PracticeRecord> m_records;
};

/// A file behind a signed link.
struct PracticeDocument {
    QByteArray query; ///< the signature; a link with another query is refused
    QByteArray contentType;
    QByteArray bytes;
};

/// A rate together with the shipment it was quoted for.
struct QuotedRate {
    const Json *shipment = nullptr;
    const Json *rate = nullptr;
};

/// Every record that was made with one kind of key.
struct PracticeLedger {
    bool test = true;
    std::string base; ///< the carrier's base URL, with a slash at the end
    PracticeRecords addresses, customs, shipments, transactions, refunds, manifests;
    std::set<std::string> manifested; ///< ids of the labels that are on a form
    std::map<QByteArray, PracticeDocument> documents;
    int lastNumber = 0; ///< serial number in the last tracking number

    /// Stores a file and returns its signed link, which names an expiry in a year.
    std::string publish(const std::string &path, const QByteArray &contentType, const QByteArray &bytes);
    /// Null members if no visible shipment holds the rate.
    QuotedRate findRate(const QString &id);
};

} // namespace parcelory
