#pragma once

#include "compose/LabelReadBack.h"

#include <QString>

#include <optional>

namespace parcelory {

/// What a comparison of a label with its parcel comes to.
enum class LabelOutcome {
    notCompared,
    same,      ///< address and tracking number
    different, ///< at least one item, also an item that does not hold the printing
    notFound,
    unchecked
};

/// The verdict in words, the same wherever the label is shown.
namespace LabelVerdictTexts {

LabelOutcome outcomeOf(const std::optional<LabelVerdict> &verdict);
/// "Address and tracking match the label ✓", or what is different.
QString lineOf(const std::optional<LabelVerdict> &verdict);
/// "Name, ZIP, tracking number"; empty if no item has this result.
QString itemsWith(const LabelVerdict &verdict, LabelMatch match);

/// "tracking number in the bar code"
QString nameOf(LabelItem item);
/// "The ZIP differs: 28801 on the parcel, 28804 on the label."
QString sentenceOf(const LabelFinding &difference);

} // namespace LabelVerdictTexts
} // namespace parcelory
