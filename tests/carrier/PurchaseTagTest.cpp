#include "carrier/PurchaseTag.h"

#include "core/Text.h"
#include "support/Printing.h"

#include <gmock/gmock.h>

namespace parcelory::test {
using namespace Qt::StringLiterals;

TEST(PurchaseTag, HoldsFiveFieldsWhateverTheAddressesSay)
{
    const ShippoAddress desk{.zip = u"97301-1234"_s};
    const ShippoAddress abroad{.name = u"Harriet | Ashcombe of the very long name"_s, .country = u"england"_s};
    EXPECT_EQ(purchaseTag(desk, abroad, Carrier::fedex, u"International Priority"_s),
              u"KX|GB|Harriet / Ashcombe of |FedEx International Priority|97301"_s);
    const ShippoAddress home{.name = u"Al"_s};
    EXPECT_EQ(purchaseTag(desk, home, Carrier::usps, u"Priority Mail"_s), u"KX|US|Al|USPS Priority Mail|97301"_s);
}

TEST(PurchaseTag, StaysWithinWhatTheCarrierKeepsForEveryServiceAndCountryCode)
{
    const ShippoAddress desk{.zip = u"97301-1234"_s};
    const ShippoAddress to{.name = QString(60, u'W'), .country = u"GB"_s};
    for (const ServiceClassInfo &service : serviceClasses()) {
        const QString tag = purchaseTag(desk, to, service.carrier, service.displayName);
        EXPECT_LE(tag.size(), 100) << tag.toStdString();
        EXPECT_TRUE(tag.endsWith(u"|97301"_s));
    }
}

} // namespace parcelory::test
