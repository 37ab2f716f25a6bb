#include "compose/AddressGuard.h"

#include <algorithm>

namespace parcelory::AddressGuard {

QSet<QString> digitTokens(const QString &street1, const QString &street2)
{
    QSet<QString> tokens;
    QString token;
    bool hasDigit = false;
    // A trailing blank ends the last token like any other.
    const QString text = QString(street1 + u' ' + street2 + u' ').toUpper();
    for (const QChar c : text.normalized(QString::NormalizationForm_C)) {
        const bool isAccent = c.isMark() && !token.isEmpty(); // that has no composed letter
        if (c.isLetter() || c.isDigit() || isAccent) {
            token += c;
            hasDigit = hasDigit || c.isDigit();
            continue;
        }
        if (hasDigit)
            tokens.insert(token);
        token.clear();
        hasDigit = false;
    }
    return tokens;
}

QStringList lostTokens(const QString &originalStreet1, const QString &originalStreet2, const QString &finalStreet1,
                       const QString &finalStreet2)
{
    const QSet<QString> lost = digitTokens(originalStreet1, originalStreet2) - digitTokens(finalStreet1, finalStreet2);
    QStringList list(lost.begin(), lost.end());
    std::ranges::sort(list);
    return list;
}

} // namespace parcelory::AddressGuard
