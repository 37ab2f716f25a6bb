#include "core/PostalContact.h"
#include "support/Table.h"

namespace parcelory::test {
namespace {

PostalContact contact()
{
    return decodeJson<PostalContact>(dumpJson(table(u"addresses"_s, "contacts")[0]), Keys::asIs);
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
    for (const Json &row : table(u"addresses"_s, "long streets"))
        EXPECT_EQ(ShippoAddress::splitStreet(text(row[0]), text(row[1])), std::pair(text(row[2]), text(row[3]))) << row;
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
