#include "core/AddressBlock.h"
#include "core/Accents.h"
#include "core/ShippoAddress.h"
#include "support/Printing.h"

#include <gmock/gmock.h>

#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;

TEST(AddressBlock, IsSplitIntoItsFieldsOrNotAtAll)
{
    using A = ShippoAddress;
    const A home = {.name = u"Eleanor Whitfield"_s,
                    .street1 = u"418 Montford Ave"_s,
                    .street2 = u"Apt 3B"_s,
                    .city = u"Asheville"_s,
                    .state = u"NC"_s,
                    .zip = u"28801-6168"_s,
                    .country = u"US"_s};
    const A office = {.name = u"Silas Okonkwo"_s,
                      .company = u"S. O. & Sons"_s,
                      .street1 = u"PO Box 239"_s,
                      .city = u"West New York"_s,
                      .state = u"NJ"_s,
                      .zip = u"07093"_s,
                      .country = u"US"_s,
                      .phone = u"(828) 555-0142"_s,
                      .email = u"silas@example.com"_s};
    const A london = {.name = u"Harriet Ashcombe"_s,
                      .street1 = u"14 Chandos Place"_s,
                      .city = u"London"_s,
                      .zip = u"WC2N 4HS"_s,
                      .country = u"GB"_s};
    const A montreal = {.name = u"Amélie Dufresne"_s,
                        .street1 = u"410 Rue Saint-Paul"_s,
                        .city = u"Montréal"_s,
                        .state = u"QC"_s,
                        .zip = u"H2Y 1N3"_s,
                        .country = u"CA"_s};
    const A paris = {.name = u"Luc Martin"_s,
                     .street1 = u"5 Rue de la Paix"_s,
                     .city = u"Paris"_s,
                     .zip = u"75002"_s,
                     .country = u"FR"_s};
    const A placeOnly = {
        .street1 = u"7 Harbor Ct"_s, .city = u"Duluth"_s, .state = u"MN"_s, .zip = u"55802"_s, .country = u"US"_s};
    const std::pair<QString, A> blocks[] = {
        {u"Eleanor Whitfield\n418 Montford Ave\nApt 3B\nAsheville, NC 28801-6168"_s, home},
        {u"  Eleanor  Whitfield,\r\n\r\n418 Montford Ave\tApt 3B\r\nAsheville North Carolina 28801-6168\r\nUSA\r\n"_s,
         [&] {
             A joined = home;
             joined.street1 = u"418 Montford Ave Apt 3B"_s;
             joined.street2.clear();
             return joined;
         }()},
        {u"Silas Okonkwo\nS. O. & Sons\nPO Box 239\nWest New York, N.J. 07093\nPhone: (828) 555-0142\n"
         "silas@example.com"_s,
         office},
        {u"Harriet Ashcombe\n14 Chandos Place\nLondon WC2N 4HS\nUnited Kingdom"_s, london},
        {u"Amélie Dufresne\n410 Rue Saint-Paul\nMontréal QC H2Y 1N3\nCanada"_s, montreal},
        {u"Luc Martin\n5 Rue de la Paix\n75002 Paris\nFrance"_s, paris},
        {u"7 Harbor Ct\nDuluth MN 55802"_s, placeOnly},
    };
    for (const auto &[text, address] : blocks) {
        ASSERT_TRUE(addressFromBlock(text)) << text.toStdString();
        EXPECT_EQ(*addressFromBlock(text), address) << text.toStdString();
    }
    for (const QString &text : {u"Eleanor Whitfield, 418 Montford Ave, Asheville, NC 28801"_s, u"two\nlines"_s, u""_s,
                                u"Asheville, NC 28801"_s, u"Call 12345\nbefore XX 28801"_s, u"Ana\nFrance"_s})
        EXPECT_FALSE(addressFromBlock(text)) << text.toStdString();
}

TEST(Accents, LeavePlainLetters)
{
    const std::pair<QString, QString> texts[] = {{u"Amélie Øst"_s, u"amelie ost"_s},
                                                 {u"Ame\u0301lie"_s, u"amelie"_s},
                                                 {u"ŁÓDŹ Straße"_s, u"lodz strasse"_s},
                                                 {u"Žižkov 東京"_s, u"zizkov 東京"_s}};
    for (const auto &[text, plain] : texts)
        EXPECT_EQ(plainForm(text), plain);
    EXPECT_EQ(withoutAccents(u"ÆON"_s), u"AEON"_s);
}

} // namespace parcelory::test
