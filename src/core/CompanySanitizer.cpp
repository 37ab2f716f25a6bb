#include "core/CompanySanitizer.h"

#include "core/Text.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace parcelory {
namespace {

/// The order matters: the substring pass replaces in this order, so a plural comes before its singular. "numis" and
/// "penny" come before "numispro" and "pennywise", so inside a longer word only their first part is replaced.
constexpr QStringView words[] = {
    u"coins",       u"coin",       u"jewels",       u"jewelry",        u"jewel",         u"numismatics",
    u"numismatica", u"numismatic", u"numismatists", u"numismatist",    u"numis",         u"bullion",
    u"silver",      u"gold",       u"diamonds",     u"diamond",        u"precious",      u"metals",
    u"metal",       u"gems",       u"gem",          u"dollars",        u"dollar",        u"pennies",
    u"penny",       u"currencies", u"currency",     u"collectables",   u"collectibles",  u"collectable",
    u"collectible", u"collectors", u"collector",    u"tangible",       u"assets",        u"asset",
    u"rarities",    u"rarity",     u"rare",         u"wholesalers",    u"wholesaler",    u"stamps",
    u"stamp",       u"antiques",   u"antique",      u"errors",         u"error",         u"chests",
    u"chest",       u"numispro",   u"numiplus",     u"commemoratives", u"commemorative", u"shoppes",
    u"shoppe",      u"exchange",   u"banknotes",    u"notes",          u"note",          u"treasures",
    u"treasure",    u"universe",   u"pennywise",    u"mints",          u"mint",          u"states",
    u"state",       u"americana",  u"numentio",
};

bool isSeparator(QChar c)
{
    return QStringView(u"- /:;.").contains(c);
}

/// Replaces every occurrence, also inside longer words; the replacement itself is not searched again.
void replaceCaseInsensitive(QString &text, QStringView target, const QString &replacement)
{
    for (qsizetype at = text.indexOf(target, 0, Qt::CaseInsensitive); at >= 0 && !target.isEmpty();
         at = text.indexOf(target, at + replacement.size(), Qt::CaseInsensitive))
        text.replace(at, target.size(), replacement);
}

/// Cuts a listed word to its initial and keeps what follows its letters and digits; any other word stays unchanged.
QString shortened(const QString &word)
{
    const auto coreEnd = std::find_if_not(word.begin(), word.end(), [](QChar c) { return c.isLetterOrNumber(); });
    const qsizetype coreSize = coreEnd - word.begin();
    const QString core = word.left(coreSize).toLower();
    if (std::find(std::begin(words), std::end(words), QStringView(core)) == std::end(words))
        return word;
    return word.at(0).toUpper() + word.mid(coreSize);
}

QString wordPass(const QString &text)
{
    QString output, word;
    for (const QChar c : text) {
        if (!isSeparator(c)) {
            word += c;
            continue;
        }
        output += shortened(word) + c;
        word.clear();
    }
    return output + shortened(word);
}

} // namespace

CompanySanitizer::CompanySanitizer(QList<StoreName> stores) : m_stores(std::move(stores)) {}

QString CompanySanitizer::sanitize(const QString &company) const
{
    if (company.isEmpty())
        return company;
    QString text = company;
    for (const StoreName &store : m_stores)
        replaceCaseInsensitive(text, store.name, store.code);
    text = wordPass(text);
    for (const QStringView word : words)
        replaceCaseInsensitive(text, word, QString(word.front().toUpper()));
    return trimBlanks(text);
}

} // namespace parcelory
