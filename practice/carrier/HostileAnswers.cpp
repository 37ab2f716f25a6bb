#include "practice/carrier/HostileAnswers.h"

namespace parcelory {

namespace {

/// A record with every list that a client may look for, and one more key.
QByteArray recordWith(const QByteArray &field)
{
    return R"({"object_id": "hostile", "rates": [], "results": [], )" + field + '}';
}

QByteArray nested(const QByteArray &opening, const QByteArray &closing, int levels)
{
    return opening.repeated(levels) + closing.repeated(levels);
}

QByteArray ratesFor(const QByteArrayList &amounts)
{
    QByteArrayList rates;
    for (const QByteArray &amount : amounts)
        rates += R"({"object_id": "r", "amount": ")" + amount +
                 R"(", "currency": "USD", "provider": "USPS", "servicelevel": {"token": "usps_priority"}})";
    return R"({"object_id": "hostile", "rates": [)" + rates.join(',') + "]}";
}

QByteArray manyRates(int count)
{
    QByteArrayList amounts;
    for (int rate = 0; rate < count; ++rate)
        amounts += QByteArray::number(rate);
    return ratesFor(amounts);
}

CarrierFailure answer(int status, const QByteArray &body, const QByteArray &contentType = "application/json")
{
    return {.status = status, .contentType = contentType, .body = body};
}

} // namespace

std::vector<HostileAnswer> hostileAnswers()
{
    constexpr int deep = 60000, megabyte = 1 << 20;
    const QByteArray longText(4 * megabyte, 'x');
    const QByteArray plain = "application/octet-stream"; // so that the server does not compress it
    const QByteArray markup = R"({"detail": "<b>bold</b> <img src='file:///etc/passwd'> \u202e \u0000 %1 {}"})";
    return {
        {"nothing", answer(200, {})},
        {"nothing, and says so", answer(204, {})},
        {"a web page", answer(200, "<html><body>Sign in to the network</body></html>", "text/html")},
        {"half a record", answer(201, R"({"object_id": "hostile", "sta)")},
        {"no UTF-8", answer(201, "{\"object_id\": \"\xff\xfe\"}")},
        {"null", answer(200, "null")},
        {"a number", answer(200, "7")},
        {"a list", answer(200, "[]")},
        {"no fields", answer(200, "{}")},
        {"wrong types", answer(200, R"({"object_id": 7, "status": [], "rates": {}, "results": 5, "next": true})")},
        {"wrong elements", answer(200, R"({"object_id": "h", "rates": [null], "results": [[]], "messages": [1]})")},
        {"an infinite number", answer(200, recordWith(R"("estimated_days": 1e999)"))},
        {"a key twice", answer(200, recordWith(R"("rates": 1, "results": 1)"))},
        {"deep lists", answer(200, nested("[", "]", deep))},
        {"deep lists without an end", answer(200, QByteArray(deep, '['))},
        {"deep objects", answer(200, nested(R"({"a":)", "}", deep).replace(":}", ":1}"))},
        {"depth in a key that is not read", answer(200, recordWith(R"("x": )" + nested("[", "]", deep)))},
        {"depth in a refusal", answer(400, recordWith(R"("x": )" + nested("[", "]", deep)))},
        {"5,000 rates", answer(201, manyRates(5000))},
        {"rates without a price", answer(201, ratesFor({"NaN", "inf", "1e999", "5,00", "-7.00", ""}))},
        {"a refusal of 4 MB", answer(400, R"({"detail": ")" + longText + R"("})", plain)},
        {"a failure of 4 MB", answer(500, longText, plain)},
        {"markup", answer(422, markup)},
        {"a redirect to nowhere", answer(302, {})},
        {"no status of HTTP", answer(799, {})},
        {"an endless answer", {.status = 200, .contentType = "application/octet-stream", .flow = AnswerFlow::endless}},
        {"a trickle", {.status = 200, .flow = AnswerFlow::trickle}},
    };
}

} // namespace parcelory
