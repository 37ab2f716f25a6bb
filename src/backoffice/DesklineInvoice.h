#pragma once

#include "compose/Customs.h"
#include "core/AppError.h"
#include "core/ShippoAddress.h"

#include <QList>
#include <QString>
#include <QUuid>

#include <optional>

namespace parcelory {

/// One line of an invoice, its texts as the page shows them.
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

/// A customer's invoice as it was read in the back office.
struct DesklineInvoice {
    QString invoiceID;
    QString buyerName;
    ShippoAddress address; ///< the country as a two-letter code, the company made discreet
    QList<DesklineInvoiceItem> items;
    QString shipMethod;
    QString shipCost;
    QString tracking; ///< not empty: a label may exist already
    QString paidAmount;
    QStringList codes; ///< address flags, in capitals
    QList<DesklineInvoiceNote> notes;
    bool streetCut = false; ///< the street is longer than a label's two lines; its end is not in `address`

    static const QList<DesklineCodeMeaning> &codeMeanings();
    /// What the items look like to customs.
    std::optional<CustomsItemType> suggestedCustomsType() const;
    /// The sum of the items in US dollars; nothing when there are none or when one has no readable amount.
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

/// Nothing where an invoice has neither flags nor notes.
std::optional<InvoiceAttention> invoiceAttention(const DesklineInvoice &invoice);

/// Why an invoice could not be read.
class DesklineInvoiceError : public AppError {
public:
    enum class Kind { badCode, timeout, noBuyer, unreachable, notSignedIn };

    /// `text`: what was scanned or typed, for badCode; otherwise the invoice number, or nothing.
    explicit DesklineInvoiceError(Kind kind, const QString &text = {});

    Kind kind() const { return m_kind; }

private:
    Kind m_kind;
};

} // namespace parcelory
