#include "carrier/PurchaseTag.h"
#include "compose/Services.h"
#include "core/ShippoAddress.h"
#include "support/Test.h"

namespace parcelory::test {

TEST(PurchaseTag, HoldsFiveFieldsForAnyAddress)
{
    const ShippoAddress desk{.zip = u"05701-1234"_s};
    const ShippoAddress abroad{.name = u"Harriet | Ashcombe of the very long name"_s, .country = u"england"_s};
    const PurchaseTag tag = PurchaseTag::of(desk, abroad, Carrier::fedex, u"International Priority"_s);
    EXPECT_EQ(tag.text(), u"KX|GB|Harriet / Ashcombe of |FedEx International Priority|05701"_s);
    EXPECT_EQ(PurchaseTag::read(tag.text()), tag);
    EXPECT_EQ(PurchaseTag::of(desk, {.name = u"Al"_s}, Carrier::usps, u"Priority Mail"_s).text(),
              u"KX|US|Al|USPS Priority Mail|05701"_s);
    EXPECT_EQ(PurchaseTag::read(u"KX|gb|||"_s)->country, u"GB"_s);
    for (const QString &other : {u"KX|US|Al|USPS Priority Mail"_s, u"KX|US|Al|USPS|9|1"_s, u"kx|US|Al|USPS|9"_s,
                                 QString(), u"Order 7|a|b|c|d"_s})
        EXPECT_FALSE(PurchaseTag::read(other)) << other.toStdString();
}

TEST(PurchaseTag, StaysWithinWhatTheCarrierKeepsForEveryServiceAndCountryCode)
{
    const ShippoAddress desk{.zip = u"97301-1234"_s};
    const ShippoAddress to{.name = QString(60, u'W'), .country = u"GB"_s};
    for (const ServiceClassInfo &service : serviceClasses()) {
        const QString tag = PurchaseTag::of(desk, to, service.carrier, service.displayName).text();
        EXPECT_LE(tag.size(), 100) << tag.toStdString();
        EXPECT_TRUE(tag.endsWith(u"|97301"_s));
    }
}

} // namespace parcelory::test
