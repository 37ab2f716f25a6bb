#pragma once

#include "core/ports/Prompts.h"
#include "ui/parts/Dialog.h"

namespace parcelory {

/// A message with an OK button. Its result has no meaning.
Dialog *makeAlert(Clock &clock, const QString &title, const QString &text, QWidget *parent);

/// A question. Its result is the number of the choice, counted from 1, or 0 if the dialog was closed. A comparison
/// shows its two texts side by side, with the words that the right text lacks marked in the left text.
Dialog *makeQuestion(Clock &clock, const Question &question, QWidget *parent);

} // namespace parcelory
