#include "app/label/LabelScreen.h"
#include "carrier/ShippoRecords.h"
#include "compose/Customs.h"
#include "compose/Services.h"
#include "compose/rules/Contents.h"
#include "compose/rules/RuleBook.h"
#include "core/CountryCode.h"
#include "core/Deployment.h"
#include "core/Text.h"

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

QList<Rule> LabelScreen::advice() const
{
    const ShippoAddress &to = recipient();
    const Deployment &company = m_app.platform.deployment;
    const CustomsItem &goods = customsItem(customs.value().itemType);
    const std::optional<ShippoRate> rate = selectedRate();
    const double insured = decimalOrZero(insuranceValue);
    RuleParcel parcel{.carrier = carrierInfo(carrier).rawValue,
                      .service = serviceClassInfo(effectiveClass()).rawValue,
                      .country = u"US"_s,
                      .state = to.state.trimmed().toUpper(),
                      .contents =
                          describedContents(descriptionText).value_or(company.usualContents.value_or(QStringList())),
                      .tariffNumber = goods.hsCode,
                      .description = goods.description,
                      .value = std::max(insured, invoiceValue()),
                      .insured = insured,
                      .pounds = totalPounds(),
                      .daysAhead = int(m_app.platform.clock.now().date().daysTo(shipDate)),
                      .abroad = isInternational(),
                      .directSignature = service == ServiceOption::fedexDirect,
                      .coinContract = company.fedexContractAllowsCoins.value_or(false)};
    if (rate && rate->servicelevel.token)
        parcel.service = *rate->servicelevel.token;
    if (parcel.abroad) {
        parcel.country = CountryCode::alpha2(to.country);
        parcel.contents = contentsOf(goods.type);
        parcel.value = decimalOrZero(customs.value().value);
    }
    if (sendsOwnDimensions()) {
        parcel.length = decimalOrZero(dimLength);
        parcel.width = decimalOrZero(dimWidth);
        parcel.height = decimalOrZero(dimHeight);
    }
    return m_app.rules.advise(parcel);
}

QString LabelScreen::ruleAt(RuleField field) const
{
    for (const Rule &rule : recipientFilled() ? advice() : QList<Rule>()) {
        if (rule.field == field)
            return rule.text;
    }
    return {};
}

} // namespace parcelory
