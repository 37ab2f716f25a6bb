#pragma once

#include "core/Task.h"

#include <QByteArray>
#include <QList>
#include <QRect>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace parcelory {

/// Two texts to compare side by side.
struct Comparison {
    QString lead; ///< above both
    QString leftTitle, left;
    QString rightTitle, right;
    QStringList marked;           ///< words of the left text that are missing from the right text
    QString closing;              ///< below both
    QStringList markedRight = {}; ///< words of the right text that differ
    QString same = {};            ///< what is the same, below both texts with a check mark
};

/// A picture in a question.
struct QuestionPicture {
    QByteArray png;
    QString name;            ///< for screen readers
    QString caption = {};    ///< above an enlarged part of a picture; without one, the picture is a thumbnail
    QRect mark = {};         ///< what the question is about, in pixels of the picture; may be empty
    QList<QRect> words = {}; ///< the words in `mark` that differ
};

/// A question with a fixed set of answers, each a button.
struct Question {
    QString title;
    QString text;
    QStringList choices;
    int safeChoice = 0;                        ///< the default button, and the answer if the dialog is closed
    std::optional<Comparison> comparison = {}; ///< the same text in parts, for a dialog that shows them side by side
    QList<QuestionPicture> pictures = {};      ///< the dialog shows them one at a time
    std::function<void()> enlarge = {};        ///< opens a larger view of the picture; the question stays open
};

/// The program's messages and questions in dialogs.
class Prompts {
public:
    virtual ~Prompts() = default;

    /// A warning with one button; completes when it is dismissed.
    virtual Task<> alert(QString title, QString text) = 0;
    /// The index of the chosen answer.
    virtual Task<int> choose(Question question) = 0;
    /// The file to write; `proposed` is the suggested name, or a path to begin in that folder. Empty if canceled.
    virtual Task<QString> saveFile(QString title, QString proposed) = 0;
    /// The file to read; empty if canceled. `filter`: its type, "vCard files (*.vcf)".
    virtual Task<QString> openFile(QString title, QString filter) = 0;
    /// An existing folder; empty if canceled.
    virtual Task<QString> openFolder(QString title) = 0;
};

} // namespace parcelory
