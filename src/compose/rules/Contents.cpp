#include "compose/rules/Contents.h"

#include <QRegularExpression>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString coins = u"coins"_s, bullion = u"bullion"_s, paperMoney = u"paperMoney"_s;

struct Goods {
    QStringList words; ///< singular
    QString content;   ///< empty: neither coins nor money
};

const QList<Goods> &goods()
{
    static const QList<Goods> table = {
        {{u"coin"_s, u"sovereign"_s, u"krugerrand"_s, u"dollar"_s, u"cent"_s, u"dime"_s, u"proof"_s}, coins},
        {{u"bullion"_s, u"bar"_s, u"ingot"_s}, bullion},
        {{u"banknote"_s, u"note"_s, u"currency"_s, u"bill"_s}, paperMoney},
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
        return {coins};
    case CustomsItemType::investmentGold:
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
    for (const QString &typed : description.toLower().split(between, Qt::SkipEmptyParts)) {
        const QString word = singular(typed);
        for (const Goods &kind : goods()) {
            if (!kind.words.contains(word))
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
