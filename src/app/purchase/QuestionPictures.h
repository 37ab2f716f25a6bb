#pragma once

#include "compose/LabelReadBack.h"
#include "core/ports/Prompts.h"

#include <QByteArray>

#include <optional>

namespace parcelory {

// Pictures of labels in questions. A label that cannot be drawn has none: a failed drawing holds no printing. Drawing
// takes time, so call these on the thread pool.

std::optional<QuestionPicture> thumbnailOf(const QByteArray &label, const QString &recipient);
/// The part of the label where an item differs.
std::optional<QuestionPicture> enlargedPart(const QByteArray &label, const LabelFinding &difference);

} // namespace parcelory
