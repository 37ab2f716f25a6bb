#pragma once

#include "compose/Customs.h"
#include "core/AppError.h"
#include "core/ShippoAddress.h"

#include <QList>
#include <QString>
#include <QUuid>

#include <optional>

namespace parcelory {

/// An item line of an invoice, with its texts as the page shows them.
struct DesklineInvoiceItem {
    QUuid id = QUuid::createUuid();
    QString title;
    QString qty;
    QString total;

    bool operator==(const DesklineInvoiceItem &) const = default;
};

struct DesklineInvoiceNote {
    QUuid id = QUuid::createUuid();
    QString text;
    QString by;
    QString date;

    bool operator==(const DesklineInvoiceNote &) const = default;
};

/// What an invoice's address flag means.
struct DesklineCodeMeaning {
    QString code;
    QString title;
    QString detail;
};

/// A customer's invoice as read from the back office.
struct DesklineInvoice {
    QString invoiceID;
    QString buyerName;
    ShippoAddress address; ///< country as a two-letter code, company sanitized
    QList<DesklineInvoiceItem> items;
    QString shipMethod;
    QString shipCost;
    QString tracking; ///< not empty: a label may exist already
    QString paidAmount;
    QStringList codes; ///< address flags, in capitals
    QList<DesklineInvoiceNote> notes;
    bool streetCut = false; ///< the street is longer than a label's two lines; its end is not in `address`

    static const QList<DesklineCodeMeaning> &codeMeanings();
    /// The customs item type that the item titles suggest.
    std::optional<CustomsItemType> suggestedCustomsType() const;
    /// The sum of the items in US dollars; empty if there are no items or an amount is not readable.
    std::optional<double> subtotal() const;
    /// "2 items"
    QString itemCount() const;

    bool operator==(const DesklineInvoice &) const = default;
};

/// What the clerk has to read before a label is printed.
struct InvoiceAttention {
    QString title;
    QString text;
};

/// Empty if the invoice has no flags and no notes, and its street was not cut.
std::optional<InvoiceAttention> invoiceAttention(const DesklineInvoice &invoice);

/// Why an invoice could not be read.
class DesklineInvoiceError : public AppError {
public:
    enum class Kind { badCode, timeout, noBuyer, unreachable, notSignedIn };

    /// `text`: the scanned or typed text for badCode; otherwise the invoice number, or empty.
    explicit DesklineInvoiceError(Kind kind, const QString &text = {});

    Kind kind() const { return m_kind; }

private:
    Kind m_kind;
};

} // namespace parcelory
