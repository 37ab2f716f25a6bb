#include "core/CountryCode.h"
#include "core/Text.h"
#include "practice/carrier/PracticeLabel.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString smallPrint = u"PRACTICE DESK. NOTHING WAS CHARGED."_s;

/// A label of a live key has no sample mark; its small print still tells that it is of the practice desk.
QString markOf(const LabelContent &content)
{
    return content.isTest ? u"SAMPLE — DO NOT MAIL"_s : u"PRACTICE DESK LABEL"_s;
}

/// A text as field data: characters that would start a command become hexadecimal escapes.
QByteArray fieldData(const QString &text)
{
    QByteArray escaped;
    for (const char c : text.toUtf8()) {
        if (c == '^' || c == '~' || c == '_' || (c >= 0 && c < ' '))
            escaped += '_' + QByteArray(1, c).toHex().toUpper();
        else
            escaped += c;
    }
    return escaped;
}

/// Writes the commands of a label. Lengths are dots.
class ZplSheet {
public:
    ZplSheet() : m_zpl("^XA\n^CI28\n^PW812\n^LL1218\n^LH0,0\n^FWN\n^CF0,28\n^FXPractice label^FS\n") {}

    void text(int x, int y, int height, const QString &text)
    {
        const bool isDefault = height == 28;
        field(x, y, isDefault ? QByteArray() : "^A0N," + QByteArray::number(height), text);
    }
    /// Lines in one field, `align` as ^FB names it.
    void block(int x, int y, int width, int height, char align, const QStringList &lines)
    {
        field(x, y,
              "^A0N," + QByteArray::number(height) + "^FB" + QByteArray::number(width) + ',' +
                  QByteArray::number(lines.size()) + ",4," + align,
              lines.join(u"\\&"_s) + u"\\&"_s);
    }
    void rightText(int x, int y, int height, const QString &text)
    {
        m_zpl += "^FO" + at(x, y) + ",1^A0N," + QByteArray::number(height) + "^FH^FD" + fieldData(text) + "^FS\n";
    }
    /// White on black.
    void banner(int x, int y, int width, const QString &text)
    {
        box(x, y, width, 40, 40);
        m_zpl += "^FO" + at(x + 12, y + 8) + "^FR^A0N,28^FH^FD" + fieldData(text) + "^FS\n";
    }
    void box(int x, int y, int width, int height, int pen)
    {
        m_zpl += "^FO" + at(x, y) + "^GB" + at(width, height) + ',' + QByteArray::number(pen) + "^FS\n";
    }
    void code(int x, int y, const QByteArray &command, const QByteArray &data)
    {
        m_zpl += "^FO" + at(x, y) + command + "^FD" + data + "^FS\n";
    }
    void command(const QByteArray &command) { m_zpl += command + '\n'; }

    QByteArray finished() const { return m_zpl + "^PQ1\n^XZ\n"; }

private:
    static QByteArray at(int x, int y) { return QByteArray::number(x) + ',' + QByteArray::number(y); }
    void field(int x, int y, const QByteArray &commands, const QString &text)
    {
        m_zpl += "^FO" + at(x, y) + commands + "^FH^FD" + fieldData(text) + "^FS\n";
    }

    QByteArray m_zpl;
};

QString five(const QString &zip)
{
    return zip.left(5);
}

QString weightText(double ounces)
{
    const int pounds = int(ounces / 16);
    return u"%1 LB %2 OZ"_s.arg(pounds).arg(shortest(ounces - pounds * 16, 1));
}

/// Digits only, so that they fit into a bar code.
QByteArray digits(const QString &text)
{
    QByteArray result;
    for (const QChar c : text) {
        if (c >= u'0' && c <= u'9')
            result += char(c.unicode());
    }
    return result;
}

/// The recipient as USPS prints it: the unit beside the street.
QStringList uspsLines(const ShippoAddress &address)
{
    constexpr qsizetype longest = 36; // of a line that fits beside "SHIP TO:"
    ShippoAddress printed = address;
    const QString street = joinPresent({address.street1, address.street2}, u" "_s);
    if (street.size() <= longest) {
        printed.street1 = street;
        printed.street2.clear();
    }
    return addressLines(printed);
}

QString serviceLetter(const QString &service)
{
    if (service.contains(u"Express"_s))
        return u"E"_s;
    if (service.contains(u"Priority"_s))
        return u"P"_s;
    return service.contains(u"First"_s) ? u"F"_s : service.contains(u"Media"_s) ? u"M"_s : u"G"_s;
}

void upperLines(ZplSheet &sheet, int x, int y, int height, int step, const QStringList &lines)
{
    for (const QString &line : lines) {
        sheet.text(x, y, height, line.toUpper());
        y += step;
    }
}

QByteArray uspsLabel(const LabelContent &content)
{
    const QDate day = QDate::fromString(content.shipDate, Qt::ISODate);
    const QString date = day.toString(u"MM/dd/yy"_s);
    const bool isAbroad = !content.to.country.isEmpty();
    const QByteArray tracking = digits(content.tracking);
    ZplSheet sheet;
    sheet.box(10, 10, 792, 1198, 4);
    sheet.box(10, 10, 170, 204, 4);
    sheet.text(52, 34, 190, serviceLetter(content.service));
    sheet.block(200, 28, 400, 28, 'L',
                {u"PRACTICE DESK POSTAGE"_s, u"NOTHING WAS CHARGED"_s, date + u" FROM "_s + five(content.from.zip),
                 weightText(content.ounces), u"COMMERCIAL BASE PRICING"_s});
    sheet.code(630, 34, "^BXN,6,200,24,24",
               "_1" + QByteArray("00") + tracking.right(18).rightJustified(18, '0') + "_1" + "91" +
                   digits(content.shipDate));
    sheet.box(10, 210, 792, 4, 4);
    sheet.block(10, 228, 792, 54, 'C', {content.title().toUpper()});
    sheet.box(10, 290, 792, 4, 4);

    upperLines(sheet, 40, 308, 24, 29, uspsLines(content.from));
    sheet.rightText(780, 308, 24, u"SHIP DATE "_s + date);
    sheet.box(670, 350, 110, 44, 3);
    sheet.text(690, 358, 32, u"C012"_s);
    if (content.needsSignature)
        sheet.banner(476, 450, 306, u"SIGNATURE REQUIRED"_s);
    sheet.text(36, 520, 30, u"SHIP"_s);
    sheet.text(36, 556, 30, u"TO:"_s);
    constexpr qsizetype longest = 33; // longer lines are printed smaller
    int y = 518;
    for (const QString &line : uspsLines(content.to)) {
        sheet.text(126, y, line.size() > longest ? 26 : 38, line.toUpper());
        y += 44;
    }
    if (!isAbroad)
        sheet.code(706, 740, "^BXN,5,200", digits(content.to.zip).leftJustified(9, '0', true));

    sheet.box(10, 836, 792, 8, 8);
    const QString title = content.needsSignature ? u"USPS SIGNATURE TRACKING #"_s : u"USPS TRACKING #"_s;
    sheet.block(10, 856, 792, 34, 'C', {title});
    const QByteArray routing = isAbroad ? QByteArray() : ">8420" + digits(five(content.to.zip));
    sheet.command("^BY3,3,150");
    sheet.code(isAbroad ? 120 : 44, 900, "^BCN,150,N,N,N,N", ">;" + routing + ">8" + tracking);
    sheet.block(10, 1062, 792, 36, 'C', {groupsOfFour(content.tracking)});
    sheet.box(10, 1104, 792, 8, 8);
    if (!content.reference.isEmpty())
        sheet.text(40, 1118, 22, u"REF "_s + content.reference);
    sheet.block(10, 1140, 792, 40, 'C', {markOf(content)});
    sheet.block(10, 1182, 792, 20, 'C', {smallPrint});
    return sheet.finished();
}

/// What FedEx puts into its PDF417: header, routing, number and address, divided by control characters.
QByteArray fedexData(const LabelContent &content)
{
    const QString country = content.to.country.isEmpty() ? u"US"_s : CountryCode::alpha2(content.to.country);
    const QStringList fields = {u"01"_s,          u"02"_s + content.to.zip,
                                country,          u"13"_s,
                                content.tracking, u"PRAC"_s,
                                u"1/1"_s,         shortest(content.ounces / 16, 2) + u"LB"_s,
                                u"N"_s,           content.to.street1,
                                content.to.city,  content.to.state,
                                content.to.name};
    return "[)>_1E" + fieldData(fields.join(u'\x1D')) + "_1E_04";
}

/// One line for each part, also for an empty part, as FedEx prints them.
void fedexRecipient(ZplSheet &sheet, const ShippoAddress &to)
{
    constexpr qsizetype longest = 35;
    sheet.text(20, 232, 24, u"TO"_s);
    int y = 228;
    for (const QString &line : {to.name, to.company, to.street1, to.street2}) {
        sheet.text(76, y, 36, line.toUpper().left(longest));
        y += 41;
    }
    sheet.text(76, y + 4, 44, joinPresent({to.city, to.state, to.zip}, u" "_s).toUpper());
    sheet.text(76, y + 56, 26, to.country.isEmpty() ? u"(US)"_s : to.country.toUpper());
}

QByteArray fedexLabel(const LabelContent &content)
{
    const QDate day = QDate::fromString(content.shipDate, Qt::ISODate);
    const ShippoAddress &to = content.to;
    ZplSheet sheet;
    sheet.text(20, 16, 20, u"FROM:"_s);
    upperLines(sheet, 90, 16, 22, 26, addressLines(content.from));
    sheet.block(500, 16, 300, 22, 'L',
                {u"SHIP DATE: "_s + QLocale::c().toString(day, u"ddMMMyy"_s).toUpper(),
                 u"ACTWGT: "_s + fixed(content.ounces / 16, 2) + u" LB"_s, u"CAD: 999999999/PRAC"_s, u"BILL SENDER"_s});
    sheet.box(10, 214, 792, 4, 4);
    fedexRecipient(sheet, to);
    sheet.command("^CF0,22");
    sheet.text(20, 492, 22, content.reference.isEmpty() ? QString() : u"REF: "_s + content.reference);
    if (content.needsSignature)
        sheet.banner(476, 474, 306, u"DIRECT SIGNATURE"_s);
    sheet.command("^BY2,3");
    sheet.code(20, 526, "^B7N,8,5,14^FH", fedexData(content));
    sheet.rightText(790, 536, 48, content.provider);
    sheet.rightText(790, 596, 22, u"Practice desk"_s);
    sheet.box(706, 652, 64, 70, 4);
    sheet.text(722, 662, 64, u"E"_s);
    sheet.box(10, 772, 792, 4, 4);
    sheet.text(20, 800, 24, u"TRK#"_s);
    sheet.box(16, 830, 70, 30, 2);
    sheet.text(24, 834, 24, u"0201"_s);
    sheet.text(100, 792, 48, groupsOfFour(content.tracking));
    sheet.rightText(790, 790, 38, content.service.toUpper());
    sheet.rightText(790, 832, 38, QLocale::c().toString(day, u"ddd - dd MMM"_s).toUpper());
    sheet.text(20, 890, 96, u"PR ACTX"_s);
    sheet.rightText(790, 880, 72, to.zip);
    sheet.rightText(790, 954, 30, joinPresent({to.state, CountryCode::alpha2(to.country)}, u"-"_s));
    sheet.command("^BY3,3,160");
    sheet.code(60, 1000, "^BCN,160,N,N", ">;9632001900000000000000" + digits(content.tracking));
    sheet.block(10, 1172, 792, 34, 'C', {markOf(content)});
    return sheet.finished();
}

} // namespace

QByteArray zplLabel(const LabelContent &content)
{
    return content.provider == u"USPS" ? uspsLabel(content) : fedexLabel(content);
}

} // namespace parcelory
