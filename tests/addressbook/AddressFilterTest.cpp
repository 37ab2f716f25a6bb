#include "addressbook/AddressFilter.h"
#include "core/PostalContact.h"
#include "core/Text.h"
#include "support/Table.h"

#include <QRandomGenerator>

namespace parcelory::test {
namespace {

/// Folds with Qt, where the filter uses another library and its own code for ASCII.
QByteArray plainlyFolded(const QString &text, const QLocale &locale)
{
    QString folded = text.normalized(QString::NormalizationForm_C);
    if (locale.language() == QLocale::Turkish)
        folded.replace(u'I', u'ı').replace(u'İ', u'i');
    folded.replace(u"İ"_s, u"i\u0307"_s).replace(u"ß"_s, u"ss"_s); // Qt folds each character to one
    static const QRegularExpression accents(u"\\p{Mn}"_s);
    return folded.toCaseFolded().normalized(QString::NormalizationForm_D).remove(accents).toUtf8();
}

/// The reference implementation: checks one contact after the other.
QList<int> plainly(const QList<PostalContact> &contacts, const QString &query, const QLocale &locale)
{
    const QByteArray wanted = plainlyFolded(trimBlanks(query), locale);
    QList<int> rows;
    for (int row = 0; row < contacts.size(); ++row) {
        const PostalContact &contact = contacts[row];
        const QStringList texts = {contact.name, contact.company, contact.addressSummary()};
        if (wanted.isEmpty() || std::ranges::any_of(texts, [&](const QString &text) {
                return plainlyFolded(text, locale).contains(wanted);
            }))
            rows.append(row);
    }
    return rows;
}

QString randomText(QRandomGenerator &random, int most)
{
    static const QStringList alphabet = characters(u"aAbBiIıİsSß éÉ,1😀"_s);
    QString text;
    for (int left = random.bounded(most + 1); left > 0; --left)
        text += alphabet[random.bounded(alphabet.size())];
    return text;
}

} // namespace

TEST(AddressFilter, SearchesNameCompanyAndSummaryIgnoringCaseAndAccents)
{
    const QList<PostalContact> contacts = {
        {.name = u"Eleanor Whitfield"_s, .street1 = u"418 Montford Ave"_s, .city = u"Asheville"_s},
        {.name = u"Jörg STRASSER"_s, .company = u"Münzen GmbH"_s, .city = u"Ave"_s, .zip = u"1"_s},
        {.name = u"IRMAK İnci"_s, .street2 = u"Whitfield Suite"_s, .label = u"home"_s}};
    const AddressFilter english(contacts, QLocale(u"en_US"_s)), turkish(contacts, QLocale(u"tr_TR"_s));
    const auto numbers = [](const QList<int> &rows) { return Json(std::vector(rows.begin(), rows.end())); };
    for (const Json &row : table(u"address-search"_s, "filtered")) {
        EXPECT_EQ(numbers(english.filtered(text(row[0]))), row[1]) << row;
        EXPECT_EQ(numbers(turkish.filtered(text(row[0]))), row[2]) << row;
    }
    EXPECT_TRUE(AddressFilter().filtered(u"a"_s).isEmpty());
}

TEST(AddressFilter, FindsTheSameContactsAsTheReference)
{
    QRandomGenerator random(20261121);
    for (const QLocale &locale : {QLocale(u"en_US"_s), QLocale(u"tr_TR"_s)}) {
        QList<PostalContact> contacts;
        for (int i = 0; i < 100; ++i)
            contacts.append({.name = randomText(random, 9),
                             .company = randomText(random, 4),
                             .street1 = randomText(random, 30),
                             .city = randomText(random, 6)});
        const AddressFilter filter(contacts, locale);
        for (int i = 0; i < 100; ++i) {
            const QString query = randomText(random, 4);
            ASSERT_EQ(filter.filtered(query), plainly(contacts, query, locale)) << query.toStdString();
        }
    }
}

} // namespace parcelory::test
