#include "compose/Services.h"

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

const QList<CarrierInfo> &carriers()
{
    static const QList<CarrierInfo> table = {
        {Carrier::usps, u"usps"_s, u"USPS"_s, u"ship_usps"_s, 70},
        {Carrier::fedex, u"fedex"_s, u"FedEx"_s, u"ship_fedex"_s, 150},
    };
    return table;
}

const CarrierInfo &carrierInfo(Carrier carrier)
{
    return carriers()[qsizetype(carrier)];
}

std::optional<Carrier> carrierFrom(const QString &rawValue)
{
    const auto found = std::ranges::find(carriers(), rawValue, &CarrierInfo::rawValue);
    return found == carriers().end() ? std::nullopt : std::optional(found->carrier);
}

QString carrierAndService(Carrier carrier, const QString &service)
{
    const QString &name = carrierInfo(carrier).displayName;
    return service.startsWith(name) ? service : name + u' ' + service;
}

const QList<ServiceClassInfo> &serviceClasses()
{
    using enum ServiceClass;
    constexpr auto usps = Carrier::usps, fedex = Carrier::fedex;
    static const QList<ServiceClassInfo> table = {
        {priority, usps, false, u"usps_priority"_s, u"Priority Mail"_s},
        {groundAdvantage, usps, false, u"usps_ground_advantage"_s, u"Ground Advantage"_s},
        {express, usps, false, u"usps_priority_express"_s, u"Priority Mail Express"_s},
        {mediaMail, usps, false, u"usps_media_mail"_s, u"Media Mail"_s},
        {fedexGround, fedex, false, u"fedex_ground"_s, u"FedEx Ground"_s},
        {fedexHomeDelivery, fedex, false, u"fedex_home_delivery"_s, u"FedEx Home Delivery"_s},
        {fedex2Day, fedex, false, u"fedex_2_day"_s, u"FedEx 2Day"_s},
        {fedex2DayAM, fedex, false, u"fedex_2_day_am"_s, u"FedEx 2Day A.M."_s},
        {fedexExpressSaver, fedex, false, u"fedex_express_saver"_s, u"FedEx Express Saver"_s},
        {fedexStandardOvernight, fedex, false, u"fedex_standard_overnight"_s, u"FedEx Standard Overnight"_s},
        {fedexPriorityOvernight, fedex, false, u"fedex_priority_overnight"_s, u"FedEx Priority Overnight"_s},
        {fedexFirstOvernight, fedex, false, u"fedex_first_overnight"_s, u"FedEx First Overnight"_s},
        {fedexIntlGround, fedex, true, u"fedex_international_ground"_s, u"FedEx International Ground (CA/MX)"_s},
        {fedexIntlEconomy, fedex, true, u"fedex_international_economy"_s, u"FedEx International Economy"_s},
        {fedexIntlPriority, fedex, true, u"fedex_international_priority"_s, u"FedEx International Priority"_s},
        {fedexIntlPriorityExpress, fedex, true, u"fedex_international_priority_express"_s,
         u"FedEx International Priority Express"_s},
        {fedexIntlFirst, fedex, true, u"fedex_international_first"_s, u"FedEx International First"_s},
        {firstClassIntl, usps, true, u"usps_first_class_package_international_service"_s,
         u"First-Class Package International"_s},
        {priorityIntl, usps, true, u"usps_priority_mail_international"_s, u"Priority Mail International"_s},
        {expressIntl, usps, true, u"usps_priority_mail_express_international"_s,
         u"Priority Mail Express International"_s},
    };
    return table;
}

const ServiceClassInfo &serviceClassInfo(ServiceClass serviceClass)
{
    return serviceClasses()[qsizetype(serviceClass)];
}

std::optional<ServiceClass> serviceClassFrom(const QString &rawValue)
{
    const auto found = std::ranges::find(serviceClasses(), rawValue, &ServiceClassInfo::rawValue);
    return found == serviceClasses().end() ? std::nullopt : std::optional(found->serviceClass);
}

ServiceClass defaultServiceClass(Carrier carrier, bool international)
{
    if (carrier == Carrier::usps)
        return international ? ServiceClass::priorityIntl : ServiceClass::priority;
    return international ? ServiceClass::fedexIntlPriority : ServiceClass::fedex2Day;
}

const QList<ServiceOptionInfo> &serviceOptions()
{
    using enum ServiceOption;
    constexpr auto usps = Carrier::usps, fedex = Carrier::fedex;
    // The carrier API has no value for a direct signature: STANDARD is FedEx's direct signature.
    static const QList<ServiceOptionInfo> table = {
        {tracking, usps, u"tracking"_s, u"USPS Tracking"_s, u"service_usps_tracking"_s, {}},
        {signature, usps, u"signature"_s, u"Signature Confirmation"_s, u"service_signature"_s, u"STANDARD"_s},
        {certified, usps, u"certified"_s, u"Certified Mail"_s, u"service_certified_mail"_s, u"CERTIFIED"_s},
        {adult, usps, u"adult"_s, u"Adult Signature Required"_s, u"service_adult_signature"_s, u"ADULT"_s},
        {fedexNone, fedex, u"fedexNone"_s, u"No Signature Required"_s, u"service_fedex_none"_s, {}},
        {fedexIndirect, fedex, u"fedexIndirect"_s, u"Indirect Signature Required"_s, u"service_fedex_indirect"_s,
         u"INDIRECT"_s},
        {fedexDirect, fedex, u"fedexDirect"_s, u"Direct Signature Required"_s, u"service_fedex_direct"_s,
         u"STANDARD"_s},
    };
    return table;
}

const ServiceOptionInfo &serviceOptionInfo(ServiceOption option)
{
    return serviceOptions()[qsizetype(option)];
}

std::optional<ServiceOption> serviceOptionFrom(const QString &rawValue)
{
    const auto found = std::ranges::find(serviceOptions(), rawValue, &ServiceOptionInfo::rawValue);
    return found == serviceOptions().end() ? std::nullopt : std::optional(found->option);
}

} // namespace parcelory
