#pragma once

#include <QString>

#include <map>

namespace parcelory {

/// Names of US states in lower case, and their two-letter postal codes.
const std::map<QString, QString> &usStates();

} // namespace parcelory
