#include "shell/Redactor.h"

#include <QFile>
#include <QRegularExpression>

static void loadResources()
{
    Q_INIT_RESOURCE(support); // a static library's resources are linked only when asked for
}

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString gap = u"[…]"_s;

/// A short word of a name, such as "the", must not take every "the" out.
QString secretForm(const QString &word)
{
    constexpr qsizetype shortWord = 3;
    return word.size() > shortWord ? word.toLower() : word;
}

const QRegularExpression &words()
{
    static const QRegularExpression pattern(u"[\\p{L}\\p{M}\\p{N}_'’]+"_s);
    return pattern;
}

} // namespace

Redactor::Redactor()
{
    loadResources();
    QFile file(u":/support/support-words.txt"_s);
    if (file.open(QIODevice::ReadOnly)) {
        for (const QString &word : QString::fromUtf8(file.readAll()).split(QRegularExpression(u"\\s+"_s)))
            m_known.insert(word);
    }
}

void Redactor::learn(const QString &text)
{
    for (auto found = words().globalMatch(text); found.hasNext();)
        m_secret.insert(secretForm(found.next().captured()));
}

bool Redactor::mayStay(const QString &word) const
{
    return m_known.contains(word) && !m_secret.contains(secretForm(word)) && !m_secret.contains(word);
}

QString Redactor::redacted(const QString &text) const
{
    static const QRegularExpression piece(u"(?<address>\\S*(?:@|://|www\\.)\\S*)"
                                          "|(?<code>(?<=HTTP )\\d{3}(?!\\d)|(?<=status )\\d{3}(?!\\d))"
                                          "|(?<word>[\\p{L}\\p{M}\\p{N}_'’]+)"_s);
    QString kept;
    qsizetype end = 0;
    for (auto found = piece.globalMatch(text); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        const QString between = text.mid(end, match.capturedStart() - end);
        const bool stays = match.hasCaptured(u"code"_s) || (match.hasCaptured(u"word"_s) && mayStay(match.captured()));
        const bool repeatsGap = !stays && kept.endsWith(gap) && between.trimmed().size() <= 1;
        if (!repeatsGap)
            kept += between + (stays ? match.captured() : gap);
        end = match.capturedEnd();
    }
    return kept + text.mid(end);
}

} // namespace parcelory
