#include "core/Deployment.h"
#include "core/AppError.h"
#include "core/CompanySanitizer.h"
#include "core/Json.h"
#include "support/Printing.h"

#include <QFile>
#include <gmock/gmock.h>

#include <tuple>
#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;

namespace {

Json deployed()
{
    QFile file(QStringLiteral(PARCELORY_SOURCE_DIR "/deployment/deployment.json"));
    return file.open(QIODevice::ReadOnly) ? parseJson(file.readAll()) : Json();
}

QString complaint(const Json &json)
{
    try {
        Deployment::parse(dumpJson(json));
    } catch (const AppError &error) {
        return error.description();
    }
    return u"accepted"_s;
}

} // namespace

TEST(Deployment, AcceptsOnlyHttpsAddressesThatEndInTheHostsSlash)
{
    const std::pair<const char *, bool> rows[] = {
        {"https://api.example.com/", true},
        {"https://api.example.com:8443/", true},
        {"HTTPS://api.example.com/", true},
        {"http://api.example.com/", false},
        {"https://api.example.com", false},
        {"https://api.example.com/v1/", false},
        {"https:///", false},
        {"api.example.com", false},
        {"", false},
    };
    for (const char *key : {"carrierApi", "backOffice"}) {
        for (const auto &[address, allowed] : rows) {
            Json json = deployed();
            json[key] = address;
            const QString said = complaint(json);
            EXPECT_EQ(said == u"accepted"_s, allowed) << address;
            if (!allowed)
                EXPECT_TRUE(said.contains(QLatin1StringView(key))) << said.toStdString();
        }
    }
}

TEST(Deployment, AcceptsOnlyAValidUpdateHostAndKey)
{
    const std::tuple<const char *, const char *, bool> rows[] = {
        {"updateFeedHost", "media.example.com", true},
        {"updateFeedHost", "REPLACE-WITH-HOST", true}, // reported later as a missing feed
        {"updateFeedHost", "media.example.com/app", false},
        {"updateFeedHost", "https://media.example.com", false},
        {"updateFeedHost", "", false},
        {"updatePublicKey", "MDEyMzQ1Njc4OWFiY2RlZjAxMjM0NTY3ODlhYmNkZWY=", true},
        {"updatePublicKey", "MDEyMzQ1Njc4OWFiY2RlZg==", false},
        {"updatePublicKey", "not base64 at all, though long enough!!!!!!!", false},
    };
    for (const auto &[key, value, allowed] : rows) {
        Json json = deployed();
        json[key] = value;
        EXPECT_EQ(complaint(json) == u"accepted"_s, allowed) << value;
    }
}

TEST(Deployment, NamesAMissingKey)
{
    const Json whole = deployed();
    ASSERT_EQ(complaint(whole), u"accepted"_s);
    for (const auto &[key, value] : whole.items()) {
        Json part = whole;
        part.erase(key);
        if (key == "countryOfOrigin" || key == "incoterm") { // optional, because older files lack these keys
            EXPECT_EQ(complaint(part), u"accepted"_s);
            continue;
        }
        EXPECT_EQ(complaint(part),
                  u"The deployment file cannot be used — missing key \"%1\"."_s.arg(QString::fromStdString(key)));
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
    EXPECT_FALSE(built.officeLabel.isEmpty());
    EXPECT_FALSE(built.returnAddress.isEmpty());
    for (const StoreName &store : built.storeNames) { // the sanitizer relies on this
        EXPECT_FALSE(store.code.isEmpty());
        EXPECT_EQ(store.name, store.name.toLower().remove(u' '));
    }
}

} // namespace parcelory::test
