#include "carrier/ShippoError.h"
#include "support/Printing.h"

#include <gmock/gmock.h>

#include <optional>

namespace parcelory::test {
using namespace Qt::StringLiterals;

TEST(ShippoError, FlattensFieldErrorsIntoAtMostFourReadableLines)
{
    const struct {
        QByteArray body;
        std::optional<QString> lines;
    } rows[] = {
        {R"({"address_to": {"zip": ["Invalid zip"]}})", u"address_to zip: Invalid zip"_s},
        {R"({"messages": [{"text": "x"}]})", u"messages text: x"_s},
        {R"({"b": ["2"], "a": ["1", "1b"], "B": ["0"]})", u"B: 0\na: 1\na: 1b\nb: 2"_s},
        {R"({"f":"6","e":"5","d":"4","c":"3","b":"2","a":"1"})", u"a: 1\nb: 2\nc: 3\nd: 4"_s},
        {R"("plain text")", u"plain text"_s},
        {R"({"detail": 5, "other": null, "third": true})", std::nullopt},
        {"<html>not JSON</html>", std::nullopt},
        {QByteArray(200000, '[') + "\"deep\"" + QByteArray(200000, ']'), std::nullopt},
    };
    for (const auto &row : rows)
        EXPECT_EQ(prettyFieldErrors(row.body), row.lines) << row.body.left(60).toStdString();
}

TEST(ShippoError, ShowsOnlyTheStartOfALongServerError)
{
    const ShippoError error = ShippoError::http(500, QString(1000, u'x'));
    EXPECT_EQ(error.description(), u"Shippo HTTP 500: "_s + QString(300, u'x'));
}

} // namespace parcelory::test
