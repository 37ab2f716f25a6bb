#pragma once

#include "core/Deployment.h"
#include "core/PostalContact.h"

#include <QByteArray>
#include <QDate>
#include <QString>

#include <optional>

namespace parcelory {

/// The commercial invoice that customs requires with an international parcel: one US Letter page for the office
/// printer.
namespace CommercialInvoice {

struct Data_ {
    QString invoiceNumber;
    PostalContact recipient; ///< the "Bill To" party
    QString shipVia;         ///< carrier and service
    QDate date;
    QString itemDescription;
    QString hsCode;
    QString quantity;                 ///< as shown
    double value = 0;                 ///< of all pieces together, in US dollars
    std::optional<QString> extraLine; ///< small print under the item
    QString signer;                   ///< who certifies the invoice; empty: name and date are written by hand
    QString weight;                   ///< of the parcel, as shown; empty: unknown
};

/// The page as a PDF with embedded fonts and real text. Letterhead, origin and terms of sale are deployment values.
/// May be called on any thread. Throws AppError in a program without a QGuiApplication, which the fonts need.
QByteArray pdf(const Data_ &data, const Deployment &deployment);

/// The letters of the invoice that no installed font has: the page shows a box in their place.
QString lettersWithoutGlyph(const Data_ &data);

} // namespace CommercialInvoice
} // namespace parcelory
