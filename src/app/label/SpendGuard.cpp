#include "app/label/SpendGuard.h"

#include "core/SettingsKeys.h"
#include "core/Text.h"
#include "core/ports/Preferences.h"

namespace parcelory {
using namespace Qt::StringLiterals;

SpendGuard SpendGuard::of(const Preferences &preferences)
{
    return {.isOn = read(preferences, settings::spendGuardOn),
            .above = decimalOrZero(read(preferences, settings::spendGuardAbove)),
            .namesCheaper = read(preferences, settings::spendGuardNamesCheaper),
            .wantsReference = read(preferences, settings::spendGuardWantsReference)};
}

bool SpendGuard::covers(const ShippoRate &rate) const
{
    return isOn && decimalOrZero(rate.amount) > above;
}

QString SpendGuard::lackOf(const QString &reference, const ShippoRate &rate) const
{
    if (!covers(rate) || !wantsReference || !reference.trimmed().isEmpty())
        return {};
    return u"A label above $%1 needs a reference — type it under Ref #."_s.arg(fixed(above, 2));
}

QString SpendGuard::question(const ShippoRate &rate, const QList<ShippoRate> &offered) const
{
    if (!covers(rate))
        return {};
    const QString asked = u"This label costs $%1, more than $%2."_s.arg(rate.amount, fixed(above, 2));
    const double price = decimalOrZero(rate.amount);
    const auto isCheaper = [&](const ShippoRate &other) {
        return namesCheaper && rate.estimatedDays && other.estimatedDays &&
               *other.estimatedDays <= *rate.estimatedDays && decimalOrZero(other.amount) < price;
    };
    const ShippoRate *cheaper = nullptr;
    for (const ShippoRate &other : offered) {
        if (isCheaper(other) && (!cheaper || decimalOrZero(other.amount) < decimalOrZero(cheaper->amount)))
            cheaper = &other;
    }
    return cheaper ? asked + u" %1 is just as fast and costs $%2."_s.arg(serviceName(cheaper->servicelevel),
                                                                         cheaper->amount)
                   : asked;
}

} // namespace parcelory
