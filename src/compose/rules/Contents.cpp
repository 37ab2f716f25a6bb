#include "compose/rules/Contents.h"

#include <QRegularExpression>

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString coins = u"coins"_s, bullion = u"bullion"_s, paperMoney = u"paperMoney"_s;

struct Goods {
    QStringList words; ///< singular; a word that also means something else needs the word before or after it
    QString content;   ///< empty: neither coins nor money
};

const QList<Goods> &goods()
{
    static const QList<Goods> table = {
        {{u"coin"_s, u"sovereign"_s, u"krugerrand"_s, u"dollar"_s, u"cent"_s, u"dime"_s, u"proof set"_s,
          u"silver proof"_s, u"gold proof"_s, u"proof eagle"_s},
         coins},
        {{u"bullion"_s, u"ingot"_s, u"gold bar"_s, u"silver bar"_s, u"platinum bar"_s, u"palladium bar"_s, u"oz bar"_s,
          u"ounce bar"_s, u"gram bar"_s, u"kilo bar"_s},
         bullion},
        {{u"banknote"_s, u"currency"_s, u"bank note"_s, u"reserve note"_s, u"treasury note"_s, u"national note"_s,
          u"pound note"_s, u"star note"_s, u"dollar note"_s, u"dollar bill"_s, u"silver certificate"_s,
          u"gold certificate"_s},
         paperMoney},
        {{u"book"_s, u"catalog"_s, u"album"_s, u"magazine"_s, u"document"_s, u"supply"_s}, {}},
    };
    return table;
}

QString singular(QString word)
{
    if (word.endsWith(u"ies"_s))
        return word.chopped(3) + u'y';
    return word.endsWith(u's') ? word.chopped(1) : word;
}

} // namespace

QStringList contentsOf(CustomsItemType type)
{
    switch (type) {
    case CustomsItemType::gold:
    case CustomsItemType::silver:
    case CustomsItemType::investmentGold: // a coin of gold or silver is bullion for USPS and for an insurer
        return {coins, bullion};
    case CustomsItemType::currency:
        return {paperMoney};
    case CustomsItemType::readingMaterial:
        break;
    }
    return {};
}

std::optional<QStringList> describedContents(const QString &description)
{
    static const QRegularExpression between(u"[^a-z]+"_s);
    std::optional<QStringList> found;
    QString before;
    for (const QString &typed : description.toLower().split(between, Qt::SkipEmptyParts)) {
        const QString word = singular(typed), pair = std::exchange(before, word) + u' ' + word;
        for (const Goods &kind : goods()) {
            if (!kind.words.contains(word) && !kind.words.contains(pair))
                continue;
            if (!found)
                found.emplace();
            if (!kind.content.isEmpty() && !found->contains(kind.content))
                found->append(kind.content);
        }
    }
    return found;
}

} // namespace parcelory
