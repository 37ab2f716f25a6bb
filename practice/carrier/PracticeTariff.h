#pragma once

#include "practice/carrier/PracticeAccounts.h"

#include <QString>

#include <optional>
#include <span>

namespace parcelory {

/// A service of an account and its price, in US dollars.
struct Offer {
    Contract contract;
    const char *token;
    const char *name;
    int days;            ///< 0: unknown
    const char *arrives; ///< time of day, or null
    const char *terms;
    double base, perPound, perZone;
    double mostPounds = 150;
};

/// The services to a destination in the order in which the carriers return them, which is arbitrary.
std::span<const Offer> offers(bool abroad);

/// The price of a USPS flat-rate template, independent of weight and distance; empty for other packaging.
std::optional<double> flatRate(const QString &parcelTemplate, bool abroad);

} // namespace parcelory
