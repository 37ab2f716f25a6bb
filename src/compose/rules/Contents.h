#pragma once

#include "compose/Customs.h"

#include <QStringList>

#include <optional>

namespace parcelory {

/// What the shipping rules call the goods of a customs declaration: "coins", "bullion", "paperMoney".
QStringList contentsOf(CustomsItemType type);
/// The same for a description in the clerk's words; nothing if it does not tell.
std::optional<QStringList> describedContents(const QString &description);

} // namespace parcelory
