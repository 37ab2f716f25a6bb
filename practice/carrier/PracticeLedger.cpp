#include "practice/carrier/PracticeLedger.h"

#include "core/Json.h"
#include "practice/carrier/PracticeAnswers.h"

#include <map>
#include <ranges>
#include <string>
#include <utility>

namespace parcelory {

const Json &PracticeRecord::read()
{
    if (later.is_null())
        return shown;
    if (readsLeft > 0) {
        --readsLeft;
        return shown;
    }
    shown = std::move(later);
    later = nullptr;
    return shown;
}

const Json &PracticeRecords::add(Json shown)
{
    return add(std::move(shown), nullptr, 0);
}

const Json &PracticeRecords::add(Json shown, Json later, int reads)
{
    return m_records.emplace_back(PracticeRecord{std::move(shown), std::move(later), reads}).shown;
}

PracticeRecord *PracticeRecords::find(const QString &id)
{
    const std::string wanted = id.toStdString();
    // Most lookups are for new records, so the search starts with the newest record.
    for (PracticeRecord &record : m_records | std::views::reverse) {
        if (record.shown.at("object_id").get_ref<const std::string &>() == wanted)
            return &record;
    }
    return nullptr;
}

void PracticeRecords::sortByCreation()
{
    // Times of one zone and format sort as texts; records with equal times keep their order.
    std::multimap<std::string, PracticeRecord> byCreation;
    for (PracticeRecord &record : m_records) {
        std::string created = record.shown.at("object_created").get<std::string>();
        byCreation.emplace(std::move(created), std::move(record));
    }
    m_records.clear();
    for (auto &[created, record] : byCreation)
        m_records.push_back(std::move(record));
}

std::string PracticeLedger::publish(const std::string &path, const QByteArray &contentType, const QByteArray &bytes)
{
    const qint64 expires = QDateTime::currentSecsSinceEpoch() + 365 * 24 * 3600;
    const std::string query =
        "Expires=" + std::to_string(expires) + "&Signature=" + newObjectId() + "~_&Key-Pair-Id=PRACTICE";
    documents[QByteArray::fromStdString(path)] = {QByteArray::fromStdString(query), contentType, bytes};
    return base + path + '?' + query;
}

QuotedRate PracticeLedger::findRate(const QString &id)
{
    const std::string wanted = id.toStdString();
    for (const PracticeRecord &shipment : shipments.all() | std::views::reverse) {
        for (const Json &rate : shipment.shown.at("rates")) {
            if (rate.at("object_id").get_ref<const std::string &>() == wanted)
                return {&shipment.shown, &rate};
        }
    }
    return {};
}

} // namespace parcelory
