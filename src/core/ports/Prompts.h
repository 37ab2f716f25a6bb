#pragma once

#include "core/Task.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace parcelory {

/// Two texts to be held against each other.
struct Comparison {
    QString lead; ///< above both
    QString leftTitle, left;
    QString rightTitle, right;
    QStringList marked; ///< words of the left text that the right one lacks
    QString closing;    ///< below both
};

/// A question with a fixed set of answers, each a button.
struct Question {
    QString title;
    QString text;
    QStringList choices;
    int safeChoice = 0;                        ///< the default button, and what closing the dialog means
    std::optional<Comparison> comparison = {}; ///< the same text in parts, for a dialog that shows them side by side
};

/// Everything the program says or asks in a dialog.
class Prompts {
public:
    virtual ~Prompts() = default;

    /// A warning with one button; done when it was dismissed.
    virtual Task<> alert(QString title, QString text) = 0;
    /// Index of the answer chosen.
    virtual Task<int> choose(Question question) = 0;
    /// The file to write, `proposed` being its name at first; empty when the clerk thinks better of it.
    virtual Task<QString> saveFile(QString title, QString proposed) = 0;
    /// The file to read; empty likewise.
    virtual Task<QString> openFile(QString title) = 0;
};

} // namespace parcelory
