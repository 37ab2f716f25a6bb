#pragma once

// What read-invoice.js returns, under its own keys. Only `fields` is required.

#include "backoffice/DesklineInvoice.h"
#include "core/RecordField.h"

#include <QList>
#include <QString>

#include <optional>
#include <tuple>
#include <utility>

namespace parcelory {

/// The labeled cells of an invoice page.
struct DesklinePageFields {
    std::optional<QString> name, email, address, city, zip, country, phone, companyName, codes;

    static constexpr auto fields()
    {
        using F = DesklinePageFields;
        return std::tuple{field("Name", &F::name),       field("Email", &F::email),
                          field("Address", &F::address), field("City", &F::city),
                          field("Zip", &F::zip),         field("Country", &F::country),
                          field("Phone", &F::phone),     field("Company Name", &F::companyName),
                          field("Codes", &F::codes)};
    }
};

struct DesklinePageItem {
    QString title, qty, total;

    static constexpr auto fields()
    {
        using I = DesklinePageItem;
        return std::tuple{field("title", &I::title), field("qty", &I::qty), field("total", &I::total)};
    }
};

struct DesklinePageNote {
    QString text, by, date;

    static constexpr auto fields()
    {
        using N = DesklinePageNote;
        return std::tuple{field("text", &N::text), field("by", &N::by), field("date", &N::date)};
    }
};

struct DesklinePage {
    DesklinePageFields labels;
    std::optional<QList<DesklinePageItem>> items;
    std::optional<QList<DesklinePageNote>> notes;
    std::optional<QString> shipMethod, shipCost, tracking, paid, profileUserID;

    static constexpr auto fields()
    {
        using P = DesklinePage;
        return std::tuple{field("fields", &P::labels),     field("items", &P::items),
                          field("notes", &P::notes),       field("shipMethod", &P::shipMethod),
                          field("shipCost", &P::shipCost), field("tracking", &P::tracking),
                          field("paid", &P::paid),         field("profileUserID", &P::profileUserID)};
    }
};

/// Parses what the script returned; empty if it names no buyer.
std::optional<DesklinePage> parsePage(const QString &answer);

/// The invoice that the page shows; the company is not sanitized yet.
DesklineInvoice invoiceFrom(const QString &id, const DesklinePage &page);

/// "Portland, Oregon" becomes Portland and OR. Two letters become capitals; any other unknown state stays as written.
std::pair<QString, QString> splitCityState(const QString &text);

} // namespace parcelory
