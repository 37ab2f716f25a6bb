#pragma once

#include <QSet>
#include <QString>

namespace parcelory {

/// Takes out of a text what support must not see. Only words that are on the program's own list stay
/// (support-words.txt), and of these no word that it was told of. E-mail addresses, web addresses and numbers go,
/// except a status code.
class Redactor {
public:
    Redactor();

    /// The words of this text (a name, a street …) never stay.
    void learn(const QString &text);
    QString redacted(const QString &text) const;

private:
    bool mayStay(const QString &word) const;

    QSet<QString> m_known;
    QSet<QString> m_secret; ///< in lower case; words of up to three letters as they are
};

} // namespace parcelory
