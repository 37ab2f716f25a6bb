#pragma once

#include "compose/LabelReadBack.h"
#include "core/ports/Prompts.h"

#include <QByteArray>
#include <QList>

namespace parcelory {

// Pictures of labels in questions. A label that cannot be drawn has no picture: a failed drawing holds no printing.
// Drawing takes time, so call these on the thread pool.

/// A list of one picture, or an empty list.
QList<QuestionPicture> thumbnailOf(const QByteArray &label, const QString &recipient);
/// The parts of the label where items differ, each once. `texts`: what the label's elements say.
QList<QuestionPicture> enlargedParts(const QByteArray &label, const QList<LabelText> &texts,
                                     const QList<LabelFinding> &differences);

} // namespace parcelory
