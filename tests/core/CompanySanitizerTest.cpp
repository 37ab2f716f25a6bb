#include "core/CompanySanitizer.h"
#include "support/Printing.h"

#include <gmock/gmock.h>

#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;

namespace {

/// The second store's name contains the first store's code.
const CompanySanitizer
    sanitizer({{u"harborlightcoins"_s, u"HLC"_s}, {u"hlcoldmint"_s, u"OMB"_s}, {u"loopcode"_s, u"xLoopCode"_s}});

} // namespace

TEST(CompanySanitizer, CutsRevealingWordsToTheirInitial)
{
    const std::pair<QString, QString> rows[] = {
        {{}, {}},
        {u"Acme Widgets"_s, u"Acme Widgets"_s},
        {u"Smith Rare Coins & Bullion, LLC"_s, u"Smith R C & B, LLC"_s},
        {u"Gold-Silver Exchange"_s, u"G-S E"_s},
        {u"GOLD gold Gold gOlD"_s, u"G G G G"_s},
        {u"  \tgold; silver: mint.  "_s, u"G; S: M."_s},
        {u"Collector's Gems, Inc."_s, u"C's G, Inc."_s}, // text after a word stays
        {u"Goldstein & TheCoinBox"_s, u"Gstein & TheCBox"_s},
        {u"TheCoinShop"_s, u"TheChop"_s}, // "coins" comes before "coin"
        {u"Coins+Stamps_Metals"_s, u"C+S_M"_s},
        {u"Numispro-Pennywise Numiplus/Numispro:Pennywise;Numispro.Numiplus"_s, u"N-P N/N:P;N.N"_s},
        {u"Numisprox"_s, u"Nprox"_s}, // inside a longer word, the shorter form matches first
        {u"Estates"_s, u"ES"_s},      // contains "states"
        {u"Münzen – Gold"_s, u"Münzen – G"_s},
        {u"\n Coins"_s, u"\n C"_s},
    };
    for (const auto &[company, discreet] : rows) {
        EXPECT_EQ(sanitizer.sanitize(company), discreet) << company.toStdString();
        EXPECT_EQ(sanitizer.sanitize(discreet), discreet) << "again: " << company.toStdString();
    }
}

TEST(CompanySanitizer, ReplacesStoreNamesInTheirOrderWithoutSearchingTheReplacement)
{
    const std::pair<QString, QString> rows[] = {
        {u"HarborLightCoins"_s, u"HLC"_s},
        {u"eBay: harborlightcoins1 / HARBORLIGHTCOINS"_s, u"eBay: HLC1 / HLC"_s},
        {u"harborlightcoinsoldmint"_s, u"OMB"_s},
        {u"oldmint harborlight coins"_s, u"oldM harborlight C"_s},
        {u"LOOPCODEloopcode"_s, u"xLoopCodexLoopCode"_s},
        {u"ccoinoin"_s, u"cCoin"_s}, // the replacement creates a new match, which stays
    };
    for (const auto &[company, discreet] : rows)
        EXPECT_EQ(sanitizer.sanitize(company), discreet) << company.toStdString();
}

} // namespace parcelory::test
