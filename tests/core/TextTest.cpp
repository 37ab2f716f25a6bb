#include "core/Text.h"
#include "support/Test.h"

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
    const std::pair<QString, std::optional<double>> rows[] = {
        {u"24.5"_s, 24.5}, {u".75"_s, 0.75}, {u"7."_s, 7},   {u"-3"_s, -3},     {u" +3\n"_s, 3},
        {u"007"_s, 7},     {u""_s, {}},      {u"."_s, {}},   {u"-"_s, {}},      {u"1,234.50"_s, {}},
        {u"1e3"_s, {}},    {u"0x10"_s, {}},  {u"nan"_s, {}}, {u"inf"_s, {}},    {u"1.2.3"_s, {}},
        {u"3 oz"_s, {}},   {u"$5"_s, {}},    {u"1 2"_s, {}}, {u"\u0663"_s, {}}, // an Arabic three
    };
    for (const auto &[text, number] : rows) {
        EXPECT_EQ(decimal(text), number) << text.toStdString();
        EXPECT_EQ(decimalOrZero(text), number.value_or(0));
    }
}

TEST(Text, JoinsWhatIsPresentAndGroupsNumbers)
{
    EXPECT_EQ(joinPresent({{}, u"a"_s, u""_s, u"b"_s}, u", "_s), u"a, b"_s);
    EXPECT_EQ(groupsOfFour(u"92055901"_s), u"9205 5901"_s);
    EXPECT_EQ(groupsOfFour(u"920559017"_s), u"9205 5901 7"_s);
}

TEST(Text, WritesNumbersTheSameWayInEveryLanguage)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const struct {
        double value;
        int places;
        QString fixedText, shortestText;
    } rows[] = {
        {1234567.5, 2, u"1234567.50"_s, u"1234567.5"_s},
        {2.25, 1, u"2.2"_s, u"2.2"_s},
        {2.75, 1, u"2.8"_s, u"2.8"_s}, // halves round to the even digit, as in C
        {100, 0, u"100"_s, u"100"_s},
        {-0.5, 1, u"-0.5"_s, u"-0.5"_s},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(fixed(row.value, row.places), row.fixedText);
        EXPECT_EQ(shortest(row.value, row.places), row.shortestText);
    }
    QLocale::setDefault(before);
}

} // namespace parcelory::test
