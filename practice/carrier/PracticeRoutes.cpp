#include "practice/carrier/PracticeRoutes.h"

#include "core/Json.h"
#include "practice/carrier/CarrierScenario.h"
#include "practice/carrier/PracticeAccounts.h"
#include "practice/carrier/PracticeAddresses.h"
#include "practice/carrier/PracticeAnswers.h"
#include "practice/carrier/PracticeLedger.h"
#include "practice/carrier/PracticeManifests.h"
#include "practice/carrier/PracticeShipments.h"
#include "practice/carrier/PracticeTracking.h"
#include "practice/carrier/PracticeTransactions.h"

#include <QUrlQuery>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int defaultPageSize = 25, defaultShortPageSize = 5, largestPageSize = 100;

/// The requested part of a list.
struct PageRequest {
    int size;
    int number = 1;
};

/// Reads "results" and "page" of a query; empty if they are invalid.
std::optional<PageRequest> pageRequest(const QUrl &target, int defaultSize)
{
    const QUrlQuery query(target);
    PageRequest page{.size = defaultSize};
    bool isNumber = true;
    if (query.hasQueryItem(u"results"_s))
        page.size = query.queryItemValue(u"results"_s).toInt(&isNumber);
    if (!isNumber || page.size < 1 || page.size > largestPageSize)
        return std::nullopt;
    if (query.hasQueryItem(u"page"_s))
        page.number = query.queryItemValue(u"page"_s).toInt(&isNumber);
    return isNumber && page.number >= 1 ? std::optional(page) : std::nullopt;
}

Json pageLink(const std::string &list, const PageRequest &page, int number, bool exists)
{
    if (!exists)
        return nullptr;
    return list + "?results=" + std::to_string(page.size) + "&page=" + std::to_string(number);
}

/// A page of `records`, which are in list order.
CarrierAnswer listPage(const CarrierRequest &request, const std::vector<const Json *> &records, int defaultSize,
                       const std::string &base, const CarrierScenario &scenario)
{
    const auto page = pageRequest(request.target, defaultSize);
    if (!page)
        return detailAnswer(400, "Invalid page: results must be a number from 1 to 100, page a number from 1 up.");
    const int count = int(records.size());
    const int pages = std::max(1, (count + page->size - 1) / page->size);
    const int shown = scenario.endlessNext ? 1 + (page->number - 1) % pages : page->number;
    if (shown > pages)
        return detailAnswer(404, "Invalid page.");
    Json results = Json::array();
    for (int i = (shown - 1) * page->size; i < std::min(count, shown * page->size); ++i) {
        results.push_back(*records[size_t(i)]);
        if (int(results.size()) <= scenario.undatedRecords)
            results.back()["object_created"] = nullptr;
    }
    const std::string list = base + request.path().constFirst().toStdString();
    const bool hasNext = scenario.endlessNext || page->number < pages;
    return jsonAnswer(200, {{"next", pageLink(list, *page, page->number + 1, hasNext)},
                            {"previous", pageLink(list, *page, page->number - 1, page->number > 1)},
                            {"results", results}});
}

CarrierAnswer listNewestFirst(const CarrierRequest &request, PracticeRecords &records, const PracticeLedger &ledger,
                              const CarrierScenario &scenario)
{
    std::vector<const Json *> newestFirst;
    for (PracticeRecord &record : records.all())
        newestFirst.push_back(&record.read()); // a purchase is finished also if only the list is read
    std::ranges::reverse(newestFirst);
    const bool isShort = &records == &ledger.addresses || &records == &ledger.manifests;
    return listPage(request, newestFirst, isShort ? defaultShortPageSize : defaultPageSize, ledger.base, scenario);
}

CarrierAnswer listAccounts(const CarrierRequest &request, const PracticeLedger &ledger, const CarrierScenario &scenario)
{
    const std::vector<Json> accounts = PracticeAccounts::list(ledger, scenario);
    std::vector<const Json *> records;
    records.reserve(accounts.size());
    for (const Json &account : accounts)
        records.push_back(&account);
    return listPage(request, records, defaultShortPageSize, ledger.base, scenario);
}

PracticeRecords *recordsOf(const QString &kind, PracticeLedger &ledger)
{
    const std::pair<QString, PracticeRecords *> kinds[] = {{u"addresses"_s, &ledger.addresses},
                                                           {u"shipments"_s, &ledger.shipments},
                                                           {u"transactions"_s, &ledger.transactions},
                                                           {u"refunds"_s, &ledger.refunds},
                                                           {u"manifests"_s, &ledger.manifests}};
    const auto found = std::ranges::find(kinds, kind, &std::pair<QString, PracticeRecords *>::first);
    return found == std::end(kinds) ? nullptr : found->second;
}

CarrierAnswer create(const CarrierRequest &request, PracticeLedger &ledger, const CarrierScenario &scenario)
{
    const std::optional<Json> sent = parseJsonIfPossible(request.body);
    if (!sent)
        return detailAnswer(400, "JSON parse error - the body is no JSON text.");
    const Json &body = *sent;
    if (!body.is_object())
        return jsonAnswer(400, {{"__all__", Json::array({"Invalid data. Expected a dictionary."})}});
    const QString kind = request.path().constFirst();
    if (kind == u"addresses")
        return createAddress(ledger, body);
    if (kind == u"shipments")
        return createShipment(ledger, scenario, body);
    if (kind == u"transactions")
        return createTransaction(ledger, scenario, body);
    if (kind == u"refunds")
        return createRefund(ledger, scenario, body);
    return createManifest(ledger, scenario, body);
}

CarrierAnswer read(const CarrierRequest &request, PracticeLedger &ledger, const CarrierScenario &scenario)
{
    const QStringList path = request.path();
    if (path == QStringList{u"carrier_accounts"_s})
        return listAccounts(request, ledger, scenario);
    if (path.size() == 3 && path[0] == u"tracks")
        return trackParcel(ledger, scenario, path[1], path[2]);
    PracticeRecords *records = path.isEmpty() ? nullptr : recordsOf(path[0], ledger);
    if (!records || path.size() > 2)
        return notFoundPage(request.target.path().toUtf8());
    if (path.size() == 1)
        return listNewestFirst(request, *records, ledger, scenario);
    PracticeRecord *record = records->find(path[1]);
    return record ? jsonAnswer(200, record->read()) : notFound();
}

} // namespace

bool CarrierRequest::keepsRecords() const
{
    const QString kind = path().value(0);
    return kind == u"transactions" || kind == u"refunds" || kind == u"manifests";
}

bool CarrierRequest::readsList() const
{
    return method == "GET" && path().size() == 1;
}

CarrierAnswer answerTo(const CarrierRequest &request, PracticeLedger &ledger, const CarrierScenario &scenario)
{
    const QStringList path = request.path();
    // The real service responds to a doubled slash with an empty body, declared as JSON.
    if (request.target.path().contains(u"//"))
        return {.status = 404};
    if (request.method == "GET")
        return read(request, ledger, scenario);
    if (path.size() != 1 || !recordsOf(path[0], ledger))
        return notFoundPage(request.target.path().toUtf8());
    if (request.method != "POST")
        return detailAnswer(405, "Method \"" + request.method.toStdString() + "\" not allowed.");
    return create(request, ledger, scenario);
}

CarrierAnswer fileRefusal(int status, const QByteArray &code, const QByteArray &text)
{
    return {.status = status,
            .body = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Error><Code>" + code + "</Code><Message>" + text +
                    "</Message></Error>",
            .contentType = "application/xml"};
}

std::optional<CarrierAnswer> fileFor(const CarrierRequest &request, const PracticeLedger &ledger,
                                     const CarrierScenario &scenario)
{
    const auto found = ledger.documents.find(request.target.path().mid(1).toUtf8());
    if (found == ledger.documents.end())
        return std::nullopt;
    const PracticeDocument &file = found->second;
    if (request.target.query(QUrl::FullyEncoded).toUtf8() != file.query)
        return fileRefusal(403, "SignatureDoesNotMatch", "The signature of this link is not valid.");
    CarrierAnswer answer = {.body = file.bytes, .contentType = file.contentType};
    if (!request.target.path().startsWith(u"/labels/"))
        return answer;
    switch (scenario.labelAnswer) {
    case LabelAnswer::normal:
        break;
    case LabelAnswer::expired:
        return fileRefusal(403, "AccessDenied", "Request has expired");
    case LabelAnswer::xmlError:
        return fileRefusal(200, "AccessDenied", "Request has expired");
    case LabelAnswer::html:
        return CarrierAnswer{.body = "<!DOCTYPE html><html><body><h1>Label not available</h1></body></html>",
                             .contentType = "text/html"};
    case LabelAnswer::truncated:
        answer.body.truncate(answer.body.size() / 2);
        break;
    case LabelAnswer::brokenOff:
        answer.brokenOff = true;
        break;
    }
    return answer;
}

} // namespace parcelory
