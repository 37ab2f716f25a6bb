#include "carrier/ShippoError.h"
#include "carrier/CarrierWords.h"
#include "carrier/ShippoRecords.h"
#include "core/ports/HttpTransport.h"
#include "support/Table.h"

namespace parcelory::test {

TEST(ShippoError, FlattensFieldErrorsIntoAtMostFourReadableLines)
{
    for (const Json &row : table(u"carrier-errors"_s, "lines"))
        EXPECT_EQ(prettyFieldErrors(text(row[0]).toUtf8()), optionalText(row[1])) << row;
    EXPECT_EQ(prettyFieldErrors(QByteArray(200000, '[') + "\"deep\"" + QByteArray(200000, ']')), std::nullopt);
    EXPECT_EQ(prettyFieldErrors('[' + QByteArray("\"a\",").repeated(1 << 19) + "\"a\"]"), std::nullopt);
    const QString text(20 << 20, u'x');
    EXPECT_EQ(ShippoError::http(500, text).description(), u"Shippo HTTP 500: "_s + text.left(300));
    EXPECT_EQ(ShippoError::validation(text).description(), text.left(2000));
}

TEST(CarrierWords, AreReadInAnyCase)
{
    for (const Json &row : table(u"carrier-errors"_s, "transaction words")) {
        const QString word = text(row[0]);
        EXPECT_EQ(transactionStatusFrom(word), TransactionStatus(row[1].get<int>())) << row;
        EXPECT_EQ(isPending(ShippoTransaction{.status = word}), row[2].get<bool>()) << row;
        EXPECT_EQ(isPending(ShippoManifest{.status = word}), row[2].get<bool>()) << row;
    }
    EXPECT_EQ(serviceName({.token = u"usps_priority"_s}), u"usps_priority"_s);
}

TEST(ShippoError, TellsWhetherTheRequestMayHaveReachedTheCarrier)
{
    const auto fate = [](const AppError &error) { return fateOf(error); };
    EXPECT_EQ(fate(NotSent(u"no network"_s)), RequestFate::notSent);
    EXPECT_EQ(fate(ShippoError::noToken()), RequestFate::notSent);
    EXPECT_EQ(fate(ShippoError::api(u"Label purchase failed."_s)), RequestFate::refused);
    for (const int status : {400, 401, 422, 429})
        EXPECT_EQ(fate(ShippoError::validation({}, status)), RequestFate::refused) << status;
    for (const int status : {408, 409})
        EXPECT_EQ(fate(ShippoError::validation({}, status)), RequestFate::unknown) << status;
    for (const int status : {0, 302, 500, 503})
        EXPECT_EQ(fate(ShippoError::http(status, {})), RequestFate::unknown) << status;
    EXPECT_EQ(fate(AppError(u"timeout"_s)), RequestFate::unknown);
    EXPECT_EQ(fate(DecodeError(u"status"_s)), RequestFate::unknown);
    EXPECT_EQ(fate(Unconfirmed(u"detail: Not found."_s, u"1"_s)), RequestFate::unknown);
}

TEST(ShippoError, ARefusedKeyAndABusyCarrierSayWhatToDo)
{
    const std::pair<ShippoError, QString> rows[] = {
        {ShippoError::validation(u"detail: Invalid token"_s, 401),
         u"detail: Invalid token\nShippo refuses the active key “Main” — check it in Settings."_s},
        {ShippoError::validation(u"no"_s, 429, std::chrono::seconds(40)), u"no\nShippo is busy — try again in 40 s."_s},
        {ShippoError::validation(u"no"_s, 429), u"no\nShippo is busy — try again in a minute."_s},
        {ShippoError::validation(u"zip: wrong"_s, 422), u"zip: wrong"_s},
    };
    for (const auto &[error, advice] : rows)
        EXPECT_EQ(withAdvice(error, u"Main"_s), advice);
}

} // namespace parcelory::test
