#pragma once

#include "core/Task.h"

#include <QString>
#include <QStringList>

namespace parcelory {

/// A question with a fixed set of answers, each a button.
struct Question {
    QString title;
    QString text;
    QStringList choices;
    int safeChoice = 0; ///< the default button, and what closing the dialog means
};

/// Everything the program says or asks in a dialog.
class Prompts {
public:
    virtual ~Prompts() = default;

    /// A warning with one button; done when it was dismissed.
    virtual Task<> alert(QString title, QString text) = 0;
    /// Index of the answer chosen.
    virtual Task<int> choose(Question question) = 0;
};

} // namespace parcelory
