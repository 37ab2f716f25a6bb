#include "practice/carrier/PracticeArchive.h"

#include "core/Json.h"
#include "practice/carrier/PracticeAnswers.h"
#include "practice/carrier/PracticeLedger.h"

#include <optional>
#include <set>
#include <string>
#include <utility>

namespace parcelory {

namespace {

Json archived(const PracticeRecords &records)
{
    Json list = Json::array();
    for (const PracticeRecord &record : records.all())
        list.push_back({{"shown", record.shown}, {"later", record.later}, {"reads", record.readsLeft}});
    return list;
}

void restore(const Json &list, PracticeRecords &records)
{
    for (const Json &record : list)
        records.add(record.at("shown"), record.at("later"), record.at("reads").get<int>());
}

/// A quote that was not bought is of no use tomorrow.
PracticeRecords soldShipments(const PracticeLedger &ledger)
{
    std::set<std::string> sold;
    for (const PracticeRecord &transaction : ledger.transactions.all())
        sold.insert(transaction.shown.at("parcel").get<std::string>());
    PracticeRecords shipments;
    for (const PracticeRecord &shipment : ledger.shipments.all()) {
        const Json &parcels = shipment.shown.at("parcels");
        if (!parcels.empty() && sold.contains(parcels.at(0).at("object_id").get<std::string>()))
            shipments.add(shipment.shown, shipment.later, shipment.readsLeft);
    }
    return shipments;
}

Json archived(const PracticeLedger &ledger)
{
    Json documents = Json::object();
    for (const auto &[path, document] : ledger.documents)
        documents[path.toStdString()] = {{"query", document.query.toStdString()},
                                         {"type", document.contentType.toStdString()},
                                         {"bytes", document.bytes.toBase64().toStdString()}};
    return {{"shipments", archived(soldShipments(ledger))},
            {"transactions", archived(ledger.transactions)},
            {"refunds", archived(ledger.refunds)},
            {"manifests", archived(ledger.manifests)},
            {"manifested", ledger.manifested},
            {"documents", documents},
            {"lastNumber", ledger.lastNumber}};
}

PracticeLedger restored(const Json &json, const PracticeLedger &empty)
{
    PracticeLedger ledger = empty;
    restore(json.at("shipments"), ledger.shipments);
    restore(json.at("transactions"), ledger.transactions);
    restore(json.at("refunds"), ledger.refunds);
    restore(json.at("manifests"), ledger.manifests);
    ledger.manifested = json.at("manifested").get<std::set<std::string>>();
    for (const auto &[path, document] : json.at("documents").items()) {
        const auto text = [&document = document](const char *key) {
            return QByteArray::fromStdString(document.at(key).get<std::string>());
        };
        ledger.documents[QByteArray::fromStdString(path)] = {text("query"), text("type"),
                                                             QByteArray::fromBase64(text("bytes"))};
    }
    ledger.lastNumber = json.at("lastNumber").get<int>();
    return ledger;
}

} // namespace

QByteArray archived(const PracticeLedger &test, const PracticeLedger &live)
{
    const Json all = {{"base", test.base}, {"test", archived(test)}, {"live", archived(live)}};
    return QByteArray::fromStdString(all.dump());
}

void restoreArchive(const QByteArray &archive, PracticeLedger &test, PracticeLedger &live)
{
    try {
        const Json before = Json::parse(archive.toStdString());
        const auto base = QByteArray::fromStdString(before.at("base").get<std::string>());
        const QByteArray moved = QByteArray(archive).replace(base, QByteArray::fromStdString(test.base));
        const Json all = Json::parse(moved.toStdString());
        PracticeLedger newTest = restored(all.at("test"), test), newLive = restored(all.at("live"), live);
        test = std::move(newTest);
        live = std::move(newLive);
    } catch (const Json::exception &) {
    }
}

} // namespace parcelory
