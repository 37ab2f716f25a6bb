#include "compose/rules/RuleBook.h"
#include "compose/rules/Contents.h"
#include "compose/rules/ShippingRules.h"
#include "core/SettingsKeys.h"
#include "support/FakePlatform.h"

#include <QSet>

namespace parcelory::test {
namespace {

const QString rule = u"{\"id\": \"a\", \"group\": \"G\", \"severity\": \"%1\", \"text\": \"T\", \"source\": \"S\", "
                     "\"checked\": \"2026-01-01\", \"when\": {\"%2\": 1}}"_s;

QString naming(const char *key, const char *name)
{
    return rule.arg(u"note"_s, QLatin1StringView(key))
        .replace(u": 1}"_s, u": [\"%1\"]}"_s.arg(QLatin1StringView(name)));
}

QByteArray fileOf(const QString &rules, const QString &date = u"2027-01-01"_s)
{
    return u"{\"date\": \"%1\", \"rules\":\n%2}"_s.arg(date, rules).toUtf8();
}

bool speaks(const RuleBook &book, const QString &id, const RuleParcel &parcel)
{
    const QList<Rule> advice = book.advise(parcel, {});
    return std::ranges::find(advice, id, &Rule::id) != advice.end();
}

} // namespace

TEST(RuleBook, EachRuleKnowsItsLimit)
{
    RuleBook book = RuleBook::builtIn();
    const QStringList ids = each(book.rules, &Rule::id);
    QSet<QString> unseen(ids.begin(), ids.end());
    for (const Json &row : table(u"rules"_s, "sides")) {
        const RuleParcel parcel = changed(RuleParcel{.carrier = u"usps"_s, .country = u"US"_s}, row[1]);
        EXPECT_TRUE(speaks(book, text(row[0]), parcel)) << row;
        EXPECT_FALSE(speaks(book, text(row[0]), changed(parcel, row[2]))) << row;
        unseen -= text(row[0]);
    }
    EXPECT_TRUE(unseen.isEmpty()) << "without a case: " << unseen.values().join(u' ').toStdString();

    RuleBook narrow = book;
    narrow.setInsurerExclusion(u"Loose bullion is not covered."_s, QStringList{u"bullion"_s});
    for (const QString &content : {u"bullion"_s, u"coins"_s})
        EXPECT_EQ(speaks(narrow, u"insurer-exclusion"_s, {.contents = {content}, .insured = 10}),
                  content == u"bullion");
    const RuleParcel parcel{.carrier = u"usps"_s, .contents = {u"bullion"_s}, .insured = 60000};
    book.setInsurerExclusion({});
    const QList<Rule> advice = book.advise(parcel, {});
    ASSERT_EQ(advice.size(), 2);
    EXPECT_EQ(advice[0].id, u"registered-pays-money"_s) << "the most severe comes first";
    EXPECT_EQ(book.advise(parcel, {u"registered-pays-money"_s}).size(), 1);
}

TEST(RuleBook, ABadFileIsRefusedByItsLine)
{
    const QString good = rule.arg(u"note"_s, u"poundsOver"_s);
    EXPECT_EQ(RuleBook::parse(fileOf(u'[' + good + u']')).rules.size(), 1);
    for (const Json &row : table(u"rules"_s, "faults")) {
        const QString rules = text(row[0])
                                  .replace(u"%1"_s, good)
                                  .replace(u"%2"_s, rule.arg(u"note"_s, u"valueover"_s))
                                  .replace(u"%3"_s, rule.arg(u"stop"_s, u"valueOver"_s))
                                  .replace(u"%4"_s, naming("exceptServices", "usps_prioritty"))
                                  .replace(u"%5"_s, naming("countries", "UK"))
                                  .replace(u"%6"_s, naming("states", "OX"));
        EXPECT_EQ(failureOf([&] { RuleBook::parse(fileOf(rules)); }), text(row[1])) << row;
    }
}

TEST(RuleBook, TellsCoinsAndMoneyByTheDescription)
{
    for (const Json &row : table(u"rules"_s, "contents")) {
        const std::optional<QStringList> found = describedContents(text(row[0]));
        EXPECT_EQ(found.has_value(), !row[1].is_null()) << row;
        EXPECT_EQ(found.value_or(QStringList()), row[1].is_null() ? QStringList() : texts(row[1])) << row;
    }
    EXPECT_TRUE(contentsOf(CustomsItemType::silver).contains(u"bullion"_s)) << "the limits of bullion hold for it";
}

TEST(ShippingRules, TakesANewerFileAndKeepsTheSwitches)
{
    FakePlatform desk;
    const QDate builtIn = RuleBook::builtIn().date;
    const QString good = u'[' + rule.arg(u"note"_s, u"poundsOver"_s) + u']';
    const std::tuple<QByteArray, bool, bool> rows[] = {
        {{}, true, false},
        {fileOf(good, builtIn.toString(Qt::ISODate)), true, false}, // not newer
        {fileOf(good, builtIn.addDays(1).toString(Qt::ISODate)), false, false},
        {fileOf(u"[{}]"_s), true, true},
    };
    for (const auto &[bytes, isBuiltIn, isRefused] : rows) {
        ShippingRules rules(desk.platform);
        ASSERT_TRUE(QDir().mkpath(rules.folder()));
        if (!bytes.isEmpty())
            put(rules.folder() + u"/us-shipping.json"_s, bytes);
        runTask(rules.load());
        EXPECT_EQ(rules.isBuiltIn, isBuiltIn) << bytes.constData();
        EXPECT_EQ(rules.refusal.value().contains(u"(line 2: "_s), isRefused) << rules.refusal.value().toStdString();
    }
    ShippingRules(desk.platform).setOn(u"military"_s, false);
    ShippingRules again(desk.platform);
    EXPECT_FALSE(again.isOn(u"military"_s));
    again.setOn(u"military"_s, true);
    EXPECT_TRUE(read(desk.preferences, settings::rulesOff).isEmpty());
}

} // namespace parcelory::test
