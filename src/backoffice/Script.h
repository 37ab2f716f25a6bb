#pragma once

#include <QString>

namespace parcelory {

/// A script of this folder: a parenthesized function expression, to which the caller appends the arguments.
QString scriptText(const QString &name);

} // namespace parcelory
