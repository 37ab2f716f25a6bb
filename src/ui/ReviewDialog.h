#pragma once

#include "core/ports/Prompts.h"
#include "ui/parts/Dialog.h"

namespace parcelory {

/// A warning with one button. Ends with any result.
Dialog *makeAlert(Clock &clock, const QString &title, const QString &text, QWidget *parent);

/// A question; ends with the number of the choice, counted from 1; 0 when it was closed. Where the question compares
/// two texts they stand side by side, the words that one lacks marked.
Dialog *makeQuestion(Clock &clock, const Question &question, QWidget *parent);

} // namespace parcelory
