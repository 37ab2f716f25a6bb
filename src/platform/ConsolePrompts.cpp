#include "platform/ConsolePrompts.h"

#include "core/Task.h"
#include "core/ports/Prompts.h"

#include <cstdio>

namespace parcelory {

namespace {

void say(const QString &title, const QString &text)
{
    std::printf("\n  ! %s\n", qUtf8Printable(title));
    for (const QString &line : text.split(u'\n', Qt::SkipEmptyParts))
        std::printf("    %s\n", qUtf8Printable(line));
}

} // namespace

Task<> ConsolePrompts::alert(QString title, QString text)
{
    say(title, text);
    co_return;
}

Task<QString> ConsolePrompts::saveFile(QString, QString)
{
    co_return QString(); // no clerk can choose a file
}

Task<QString> ConsolePrompts::openFile(QString, QString)
{
    co_return QString();
}

Task<QString> ConsolePrompts::openFolder(QString)
{
    co_return QString();
}

Task<int> ConsolePrompts::choose(Question question)
{
    say(question.title, question.text);
    std::printf("    → %s\n", qUtf8Printable(question.choices.value(question.safeChoice)));
    co_return question.safeChoice;
}

} // namespace parcelory
