#pragma once

#include "core/ports/Prompts.h"

namespace parcelory {

/// Prompts for runs without a window: prints everything to standard output and answers each question with its safe
/// choice.
class ConsolePrompts : public Prompts {
public:
    Task<> alert(QString title, QString text) override;
    Task<int> choose(Question question) override;
    Task<QString> saveFile(QString title, QString proposed) override;
    Task<QString> openFile(QString title, QString filter) override;
    Task<QString> openFolder(QString title) override;
};

} // namespace parcelory
