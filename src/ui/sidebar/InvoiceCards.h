#pragma once

#include "backoffice/DesklineInvoice.h"

class QWidget;

namespace parcelory {

/// The width in logical pixels that a text beside an icon has in the narrowest sidebar.
inline constexpr int narrowestText = 190;

/// An invoice as cards one below the other: warnings, then buyer and items, then the notes.
QWidget *makeInvoiceCards(const DesklineInvoice &invoice);

} // namespace parcelory
