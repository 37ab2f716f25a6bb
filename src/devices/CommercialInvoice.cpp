#include "devices/CommercialInvoice.h"

#include "core/CountryCode.h"
#include "core/Deployment.h"
#include "core/PostalContact.h"
#include "core/Text.h"
#include "devices/PaperSheet.h"

#include <algorithm>
#include <iterator>

namespace parcelory::CommercialInvoice {
using namespace Qt::StringLiterals;

namespace {

// Everything is measured in points from the page's top left corner, y growing downward.
constexpr double left = 60, right = 552;
const QString certification =
    u"I certify that this invoice is true and correct and that the contents and the value of the shipment are as stated."_s;
const QString purpose =
    u"Commercial invoice for customs. The goods were paid in full before shipment; all amounts are in US dollars."_s;

QColor gray(double share)
{
    return QColor::fromRgbF(float(share), float(share), float(share));
}

const QColor labelGray = gray(0.55), panelGray = gray(0.95);
const QColor bannerBlue = QColor::fromRgbF(0.1F, 0.25F, 0.6F);

const TextStyle label{.color = labelGray}, value{}, heading{.size = 11, .color = labelGray},
    number{.align = Qt::AlignRight};

QString dollars(double amount)
{
    return u'$' + fixed(amount, 2);
}

QString countryName(const QString &country)
{
    return CountryCode::displayName(country);
}

QStringList addressLines(const PostalContact &who)
{
    const QString place = joinPresent({joinPresent({who.city, who.state}, u", "_s), who.zip}, u" "_s);
    const QString phone = who.phone.trimmed();
    return {who.name,
            who.company,
            who.street1,
            who.street2,
            place,
            countryName(who.country),
            phone.isEmpty() ? QString() : u"Tel. "_s + phone};
}

void drawHead(PaperSheet &sheet, const Data_ &data, const Deployment &deployment)
{
    const QStringList &letterhead = deployment.letterhead;
    sheet.draw(letterhead.value(0), {60, 70, 400, 33}, {.size = 26, .bold = true});
    sheet.draw(letterhead.mid(1), {60, 106, 250, 62}, {.size = 9, .step = 13});
    sheet.fill({400, 50, right - 400, 53}, bannerBlue);
    sheet.draw(u"Invoice"_s, {410, 58, 132, 40}, {.size = 30, .color = Qt::white, .bold = true});

    sheet.draw(u"Invoice No."_s, {60, 175, 85, 15}, heading);
    sheet.draw(data.invoiceNumber, {150, 175, 160, 15}, {.size = 11});
    sheet.draw(u"Customer ID:"_s, {60, 225, 85, 15}, heading);
    sheet.rule(239, 150, 300); // filled in by hand, if the customer has an id
    // An address of more than eight lines begins higher, so that up to twelve keep their size and spacing.
    const TextStyle small{.size = 9, .step = 13};
    const QStringList lines = addressLines(data.recipient);
    const qsizetype more = std::clamp<qsizetype>(sheet.countLines(lines, 122, small) - 8, 0, 4);
    const double top = 192 - small.step * double(more);
    sheet.draw(u"Bill To:"_s, {320, top - 17, 122, 15}, {.size = 11, .color = labelGray, .bold = true});
    sheet.draw(lines, {320, top, 122, 296 - top}, small);
}

void drawItem(PaperSheet &sheet, const Data_ &data)
{
    for (const double y : {300, 324, 380, 402, 460})
        sheet.rule(y, left, right);
    const QString extra = data.extraLine.value_or(QString());
    const struct {
        QRectF box;
        QString text;
        TextStyle style;
    } texts[] = {
        {{70, 305, 80, 14}, u"Date"_s, label},
        {{320, 305, 100, 14}, u"Ship Via"_s, label},
        {{70, 330, 80, 14}, data.date.toString(u"M/d/yy"_s), value},
        {{320, 330, 150, 40}, data.shipVia, value},
        {{70, 385, 60, 14}, u"Quantity"_s, label},
        {{200, 385, 120, 14}, u"Description"_s, label},
        {{480, 385, 60, 14}, u"Total"_s, {.color = labelGray, .align = Qt::AlignRight}},
        {{70, 410, 60, 14}, data.quantity, value},
        {{200, 410, 270, 14}, data.itemDescription, value},
        {{480, 410, 60, 14}, dollars(data.value), number},
        {{200, 424, 352, 14}, u"HS Code "_s + data.hsCode, value},
        {{200, 438, 352, 20}, extra, {.size = 8}},
    };
    for (const auto &text : texts)
        sheet.draw(text.text, text.box, text.style);
}

void drawSummary(PaperSheet &sheet, double subtotal)
{
    const double shipping = 0; // postage is not part of the value that customs assesses
    const double total = subtotal + shipping;
    const double paid = total; // nothing is shipped before it is paid
    const struct {
        QString name;
        double amount;
        bool bold;
    } rows[] = {{u"Subtotal:"_s, subtotal, false},
                {u"Shipping:"_s, shipping, false},
                {u"Total Due:"_s, total, true},
                {u"Paid:"_s, paid, false},
                {u"Balance:"_s, total - paid, true}};
    double y = 470;
    for (const auto &row : rows) {
        sheet.draw(row.name, {380, y, 95, 14}, {.color = labelGray, .bold = row.bold});
        sheet.draw(dollars(row.amount), {480, y, 60, 14}, {.bold = row.bold, .align = Qt::AlignRight});
        y += 18;
    }
}

/// The other data that customs requires, and the place for the signature.
void drawPanel(PaperSheet &sheet, const Data_ &data, const Deployment &deployment)
{
    constexpr double top = 572, step = 22;
    const QString signedOn = data.signer.isEmpty() ? QString() : data.date.toString(u"M/d/yy"_s);
    const QString rows[][4] = {
        {u"Currency"_s, u"US dollars (USD)"_s, u"Reason for export"_s, u"Sale of goods"_s},
        {u"Country of origin"_s, countryName(deployment.countryOfOrigin.value_or(u"US"_s)), u"Terms of sale"_s,
         deployment.incoterm.value_or(u"DDU"_s)},
        {u"Packages"_s, joinPresent({u"1"_s, data.weight}, u", "_s), u"If undeliverable"_s, u"Return to sender"_s},
        {u"Signature"_s, {}, u"Name"_s, data.signer},
        {{}, {}, u"Date"_s, signedOn},
    };
    sheet.fill({left, top, right - left, step * std::size(rows)}, panelGray);
    double y = top;
    for (const auto &[name, text, secondName, secondText] : rows) {
        sheet.draw(name, {70, y + 5, 85, 14}, {.size = 9, .color = labelGray});
        sheet.draw(text, {160, y + 5, 145, 14}, {.size = 9});
        sheet.draw(secondName, {320, y + 5, 85, 14}, {.size = 9, .color = labelGray});
        sheet.draw(secondText, {410, y + 5, 135, 14}, {.size = 9});
        // Keep lines out of the space for the signature.
        sheet.rule(y, name.isEmpty() ? 310 : left, right);
        y += step;
    }
    sheet.rule(y, left, right);
}

} // namespace

QByteArray pdf(const Data_ &data, const Deployment &deployment)
{
    return letterPage(u"The commercial invoice"_s, u"Commercial Invoice "_s + data.invoiceNumber,
                      [&](PaperSheet &sheet) {
                          drawHead(sheet, data, deployment);
                          drawItem(sheet, data);
                          drawSummary(sheet, data.value);
                          drawPanel(sheet, data, deployment);
                          sheet.draw({certification, purpose}, {left, 700, right - left, 66}, {.size = 9, .step = 13});
                      });
}

QString lettersWithoutGlyph(const Data_ &data)
{
    const QStringList texts = addressLines(data.recipient) +
                              QStringList{data.invoiceNumber, data.shipVia,  data.itemDescription,
                                          data.hsCode,        data.quantity, data.extraLine.value_or(QString()),
                                          data.signer};
    return parcelory::lettersWithoutGlyph(texts.join(u' '));
}

} // namespace parcelory::CommercialInvoice
