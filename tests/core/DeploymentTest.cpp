#include "core/Deployment.h"
#include "core/CompanySanitizer.h"
#include "support/Table.h"

namespace parcelory::test {
namespace {

Json deployed()
{
    return parseJson(contentsOf(QStringLiteral(PARCELORY_SOURCE_DIR "/deployment/deployment.json")));
}
QString complaint(const Json &json)
{
    return failureOf([&] { Deployment::parse(dumpJson(json)); });
}

} // namespace

TEST(Deployment, AcceptsOnlyEncryptedAddressesAndAValidUpdateHostAndKey)
{
    for (const Json &row : table(u"deployment"_s, "values")) {
        for (const QString &key : texts(row[0])) {
            Json json = deployed();
            json[key.toStdString()] = row[1];
            const QString said = complaint(json);
            EXPECT_EQ(said == u"no failure"_s, row[2].get<bool>()) << row;
            EXPECT_TRUE(row[2].get<bool>() || said.contains(key)) << said.toStdString();
        }
    }
}

TEST(Deployment, NamesAMissingKey)
{
    const Json whole = deployed();
    ASSERT_EQ(complaint(whole), u"no failure"_s);
    const QStringList mayLack = texts(table(u"deployment"_s, "optional keys")); // older files lack these
    for (const auto &[key, value] : whole.items()) {
        Json part = whole;
        part.erase(key);
        const QString name = QString::fromStdString(key);
        const QString missing = u"The deployment file cannot be used — missing key \"%1\"."_s.arg(name);
        EXPECT_EQ(complaint(part), mayLack.contains(name) ? u"no failure"_s : missing);
    }
    Json noZip = whole;
    noZip["returnAddress"].erase("zip");
    EXPECT_TRUE(complaint(noZip).contains(u"\"returnAddress.zip\""_s));
    EXPECT_TRUE(complaint(Json("text")).contains(u"expected object"_s));
}

TEST(Deployment, OfThisBuildIsValid)
{
    const Deployment built = Deployment::builtIn();
    EXPECT_EQ(built.carrierApi.scheme(), u"https"_s);
    EXPECT_FALSE(built.officeLabel.isEmpty() || built.returnAddress.isEmpty());
    for (const StoreName &store : built.storeNames) { // the sanitizer relies on this
        EXPECT_FALSE(store.code.isEmpty());
        EXPECT_EQ(store.name, store.name.toLower().remove(u' '));
    }
}

} // namespace parcelory::test
