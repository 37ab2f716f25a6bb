#pragma once

#include "practice/carrier/PracticeAccounts.h"

#include <QString>

#include <optional>
#include <span>

namespace parcelory {

/// One service of one account and how it is priced, in US dollars.
struct Offer {
    Contract contract;
    const char *token;
    const char *name;
    int days;            ///< 0: the carrier names none
    const char *arrives; ///< time of day, or null
    const char *terms;
    double base, perPound, perZone;
    double mostPounds = 150;
};

/// The services to a destination in the order in which the carriers answer, which is no useful one.
std::span<const Offer> offers(bool abroad);

/// The price of a USPS flat-rate template, whatever the weight and distance; nothing for other packaging.
std::optional<double> flatRate(const QString &parcelTemplate, bool abroad);

} // namespace parcelory
