#pragma once

// The shipping vocabulary: carriers, service classes and extra services. Each enumeration has one table that holds
// everything about its cases, in their order. Raw values name the cases in the carrier API and in practice orders.

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

/// "USPS Priority Mail", "FedEx 2Day": FedEx's service names already begin with its name.
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
/// The class that a draft falls back to if its own class does not fit carrier and destination.
ServiceClass defaultServiceClass(Carrier carrier, bool international);

enum class ServiceOption { tracking, signature, certified, adult, fedexNone, fedexIndirect, fedexDirect };

struct ServiceOptionInfo {
    ServiceOption option;
    Carrier carrier;
    QString rawValue;
    QString label; ///< also the text in the mailing log's services column
    QString icon;
    QString signatureConfirmation; ///< the carrier API's value; empty requests no signature
};

const QList<ServiceOptionInfo> &serviceOptions();
const ServiceOptionInfo &serviceOptionInfo(ServiceOption option);
std::optional<ServiceOption> serviceOptionFrom(const QString &rawValue);

} // namespace parcelory
