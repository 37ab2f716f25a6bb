#include "core/Text.h"
#include "support/Table.h"

namespace parcelory::test {

TEST(Text, NeverCutsThroughACharacter)
{
    const QString accented = u"e\u0301"_s; // two code points
    const QString coin = u"\U0001FA99"_s;  // two code units
    const QString family = u"\U0001F469\u200D\U0001F467"_s;
    const QString name = u"R"_s + accented + coin + family + u"\r\n"_s;
    EXPECT_EQ(characters(name), (QStringList{u"R"_s, accented, coin, family, u"\r\n"_s}));
    EXPECT_EQ(firstCharacters(name, 0), QString());
    EXPECT_EQ(firstCharacters(name, 3), u"R"_s + accented + coin);
    EXPECT_EQ(firstCharacters(name, 6), name);
}

TEST(Text, TrimsSpacesAndTabsButNoLineBreaks)
{
    for (const auto &[text, trimmed] : {std::pair{u" \t a b \t"_s, u"a b"_s},
                                        {u" \n a"_s, u"\n a"_s},
                                        {u"\u00A0a"_s, u"\u00A0a"_s},
                                        {u" \t "_s, u""_s}})
        EXPECT_EQ(trimBlanks(text), trimmed);
}

TEST(Text, ReadsPlainDecimalNumbersOnly)
{
    for (const Json &row : table(u"numbers"_s, "read")) {
        EXPECT_EQ(decimal(text(row[0])), optional<double>(row[1])) << row;
        EXPECT_EQ(decimalOrZero(text(row[0])), optional<double>(row[1]).value_or(0));
    }
}

TEST(Text, JoinsWhatIsPresentAndGroupsNumbers)
{
    EXPECT_EQ(joinPresent({{}, u"a"_s, u""_s, u"b"_s}, u", "_s), u"a, b"_s);
    EXPECT_EQ(isolated(u"Ana Ruiz"_s), u"Ana Ruiz"_s);
    EXPECT_EQ(isolated(u"Ana ليلى"_s), u"\u2068Ana ليلى\u2069"_s);
    EXPECT_EQ(groupsOfFour(u"92055901"_s), u"9205 5901"_s);
    EXPECT_EQ(groupsOfFour(u"920559017"_s), u"9205 5901 7"_s);
}

TEST(Text, WritesNumbersTheSameWayInEveryLanguage)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    for (const Json &row : table(u"numbers"_s, "written")) {
        EXPECT_EQ(fixed(row[0], row[1]), text(row[2]));
        EXPECT_EQ(shortest(row[0], row[1]), text(row[3]));
    }
    QLocale::setDefault(before);
}

} // namespace parcelory::test
