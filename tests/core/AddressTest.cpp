#include "core/PostalContact.h"
#include "core/ShippoAddress.h"
#include "support/Table.h"
#include "support/Test.h"

namespace parcelory::test {
namespace {

PostalContact contact()
{
    return decodeJson<PostalContact>(dumpJson(table(u"addresses"_s, "contacts")[0]), Keys::asIs);
}

QString word(qsizetype length, char16_t letter = u'x')
{
    return QString(length, letter);
}

} // namespace

TEST(Address, FitsOneLine)
{
    for (const Json &row : table(u"addresses"_s, "one line"))
        EXPECT_EQ(addressOf(row[0]).oneLine(), text(row[1]));

    PostalContact person = contact();
    person.street2 = u"Apt 2"_s;
    EXPECT_EQ(person.addressSummary(), u"1 Main St, Reno NV 89501"_s);
    EXPECT_EQ(PostalContact().addressSummary(), QString());
}

TEST(Address, IsEmptyWithACountryButWithNothingElse)
{
    EXPECT_TRUE(ShippoAddress{.country = u"US"_s}.isEmpty());
    for (QString ShippoAddress::*field : {&ShippoAddress::name, &ShippoAddress::company, &ShippoAddress::street1,
                                          &ShippoAddress::street2, &ShippoAddress::city, &ShippoAddress::state,
                                          &ShippoAddress::zip, &ShippoAddress::phone, &ShippoAddress::email}) {
        ShippoAddress address{.country = u"US"_s};
        address.*field = u" "_s;
        EXPECT_FALSE(address.isEmpty());
    }
}

TEST(Address, SplitsALongStreetAtAWordWithinFiftyCharacters)
{
    const QString x50 = word(50), a48 = word(48, u'a'), coins = QString(u"\U0001FA99"_s).repeated(50);
    const struct {
        QString street1, street2, first, second;
    } rows[] = {
        {x50, word(51, u'y'), x50, word(50, u'y')},
        {x50 + u'x', {}, x50, u"x"_s},                             // no space: cut at 50
        {a48 + u" bc"_s, {}, a48, u"bc"_s},                        // the space is the 49th character
        {a48 + u"a bc"_s, u"Apt 2"_s, a48 + u'a', u"bc, Apt 2"_s}, // the space is the 50th
        {a48 + u"aa bc"_s, {}, a48 + u"aa"_s, u"bc"_s},            // the space is the 51st and is trimmed off the rest
        {u"1 "_s + x50, {}, u"1"_s, x50},
        {u"1\t"_s + x50, {}, u"1"_s, x50},
        {u"1,"_s + x50 + u'z', u"Apt"_s, u"1"_s, x50}, // text beyond the second line is dropped
        {u" "_s + x50, {}, word(49), u"x"_s},          // a leading space is not a place to split
        {u"12 Long Street, , "_s + x50, {}, u"12 Long Street"_s, x50},
        {coins, {}, coins, {}}, // characters, not code units
        {coins + u" b"_s, {}, coins, u"b"_s},
    };
    for (const auto &row : rows)
        EXPECT_EQ(ShippoAddress::splitStreet(row.street1, row.street2), std::pair(row.first, row.second));
}

TEST(Address, GoesToTheCarrierUnchangedWithoutIdAndLabel)
{
    PostalContact person = contact();
    person.street2 = u"Apt 2"_s;
    const ShippoAddress address = person.asShippoAddress();
    EXPECT_EQ(PostalContact::of(address).asShippoAddress(), address);
    EXPECT_EQ(
        encodeJson(address, Keys::snake),
        R"({"name":"Ana \"Nita\" Ruiz","company":"Münzhaus","street1":"1 Main St","street2":"Apt 2","city":"Reno",)"
        R"("state":"NV","zip":"89501","country":"u.s.a.","phone":"775-555-0100","email":"ana@example.com"})");
}

TEST(Address, SurvivesAFileAndIsRejectedIfAKeyIsMissing)
{
    const PostalContact person = contact();
    const QByteArray text = encodeJson(person, Keys::asIs);
    EXPECT_TRUE(
        text.startsWith(R"({"id":"0E1F2A3B-4C5D-6E7F-8091-A2B3C4D5E6F7","name":"Ana \"Nita\" Ruiz","company":)"));
    EXPECT_EQ(decodeJson<PostalContact>(text, Keys::asIs), person);

    const Json whole = parseJson(text);
    ASSERT_EQ(whole.size(), 12u);
    for (const auto &[key, value] : whole.items()) {
        Json part = whole;
        part.erase(key);
        EXPECT_THROW(decodeJson<PostalContact>(dumpJson(part), Keys::asIs), DecodeError) << key;
    }
}

} // namespace parcelory::test
