#pragma once

// The shipping vocabulary: carriers, service classes and extra services. Raw values are stored in the mailing log and
// sent to the carrier; each enumeration has one table that holds everything about its cases, in their order.

#include <QList>
#include <QString>

#include <optional>

namespace parcelory {

enum class Carrier { usps, fedex };

struct CarrierInfo {
    Carrier carrier;
    QString rawValue;
    QString displayName;
    QString icon;
    double weightLimit; ///< pounds, inclusive
};

const QList<CarrierInfo> &carriers();
const CarrierInfo &carrierInfo(Carrier carrier);
std::optional<Carrier> carrierFrom(const QString &rawValue);

/// "USPS Priority Mail", "FedEx 2Day": FedEx's own service names begin with its name already.
QString carrierAndService(Carrier carrier, const QString &service);

/// Raw value = the carrier API's service-level token.
enum class ServiceClass {
    priority,
    groundAdvantage,
    express,
    mediaMail,
    fedexGround,
    fedexHomeDelivery,
    fedex2Day,
    fedex2DayAM,
    fedexExpressSaver,
    fedexStandardOvernight,
    fedexPriorityOvernight,
    fedexFirstOvernight,
    fedexIntlGround,
    fedexIntlEconomy,
    fedexIntlPriority,
    fedexIntlPriorityExpress,
    fedexIntlFirst,
    firstClassIntl,
    priorityIntl,
    expressIntl,
};

struct ServiceClassInfo {
    ServiceClass serviceClass;
    Carrier carrier;
    bool international;
    QString rawValue;
    QString displayName;
};

const QList<ServiceClassInfo> &serviceClasses();
const ServiceClassInfo &serviceClassInfo(ServiceClass serviceClass);
std::optional<ServiceClass> serviceClassFrom(const QString &rawValue);
/// The class that a draft falls back to when its own does not fit carrier and destination.
ServiceClass defaultServiceClass(Carrier carrier, bool international);

enum class ServiceOption { tracking, signature, certified, adult, fedexNone, fedexIndirect, fedexDirect };

struct ServiceOptionInfo {
    ServiceOption option;
    Carrier carrier;
    QString rawValue;
    QString label; ///< also what the mailing log's services column says
    QString icon;
    QString signatureConfirmation; ///< the carrier API's word; empty asks for nothing
};

const QList<ServiceOptionInfo> &serviceOptions();
const ServiceOptionInfo &serviceOptionInfo(ServiceOption option);
std::optional<ServiceOption> serviceOptionFrom(const QString &rawValue);

} // namespace parcelory
