#include "backoffice/DesklinePage.h"

#include "backoffice/DesklineInvoice.h"
#include "core/AppError.h"
#include "core/CountryCode.h"
#include "core/Json.h"
#include "core/ShippoAddress.h"
#include "core/UsStates.h"

#include <QRegularExpression>

#include <optional>
#include <tuple>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// A cell's text on one line.
QString line(const std::optional<QString> &cell)
{
    return cell.value_or(QString()).simplified();
}

/// A cell's non-blank lines.
QStringList lines(const std::optional<QString> &cell)
{
    QStringList found;
    for (const QString &text : cell.value_or(QString()).split(u'\n'))
        found += text.simplified();
    found.removeAll(QString());
    return found;
}

QStringList flags(const std::optional<QString> &cell)
{
    static const QRegularExpression separators(u"[,;/\\s]"_s);
    return cell.value_or(QString()).toUpper().split(separators, Qt::SkipEmptyParts);
}

/// Puts the street into the address; false if its end did not fit.
bool setStreet(ShippoAddress &address, const QStringList &street)
{
    const QString first = street.value(0), rest = street.mid(1).join(u", "_s);
    std::tie(address.street1, address.street2) = ShippoAddress::splitStreet(first, rest);
    const auto letters = [](QString text) { return text.remove(u' ').remove(u',').size(); };
    return letters(address.street1 + address.street2) == letters(first + rest);
}

} // namespace

std::pair<QString, QString> splitCityState(const QString &text)
{
    const qsizetype comma = text.lastIndexOf(u',');
    if (comma < 0)
        return {text.trimmed(), {}};
    const QString city = text.left(comma).trimmed(), state = text.mid(comma + 1).trimmed();
    const auto known = usStates().find(state.toLower());
    if (known != usStates().end())
        return {city, known->second};
    return {city, state.size() == 2 ? state.toUpper() : state};
}

std::optional<DesklinePage> parsePage(const QString &answer)
{
    try {
        auto page = decodeJson<DesklinePage>(answer.toUtf8(), Keys::asIs);
        if (!line(page.labels.name).isEmpty())
            return page;
    } catch (const DecodeError &) { // not an invoice
    }
    return std::nullopt;
}

DesklineInvoice invoiceFrom(const QString &id, const DesklinePage &page)
{
    const DesklinePageFields &labels = page.labels;
    DesklineInvoice invoice{.invoiceID = id, .buyerName = line(labels.name)};
    ShippoAddress &to = invoice.address;
    to.name = invoice.buyerName;
    to.company = line(labels.companyName);
    invoice.streetCut = !setStreet(to, lines(labels.address));
    std::tie(to.city, to.state) = splitCityState(line(labels.city));
    to.zip = line(labels.zip);
    const QString country = line(labels.country);
    to.country = CountryCode::alpha2(country.isEmpty() ? u"USA"_s : country);
    to.phone = line(labels.phone);
    to.email = line(labels.email);
    for (const DesklinePageItem &item : page.items.value_or(QList<DesklinePageItem>()))
        invoice.items.append({.title = item.title.simplified(), .qty = item.qty, .total = item.total});
    for (const DesklinePageNote &note : page.notes.value_or(QList<DesklinePageNote>()))
        invoice.notes.append({.text = note.text, .by = note.by, .date = note.date});
    invoice.shipMethod = line(page.shipMethod);
    invoice.shipCost = line(page.shipCost);
    invoice.paidAmount = line(page.paid);
    invoice.tracking = line(page.tracking);
    if (invoice.tracking == u"-" || invoice.tracking == u"--")
        invoice.tracking.clear();
    invoice.codes = flags(labels.codes);
    return invoice;
}

} // namespace parcelory
