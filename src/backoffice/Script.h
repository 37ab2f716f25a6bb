#pragma once

#include <QString>

namespace parcelory {

/// A script of this folder: a function expression in parentheses, to be called by whoever evaluates it.
QString scriptText(const QString &name);

} // namespace parcelory
