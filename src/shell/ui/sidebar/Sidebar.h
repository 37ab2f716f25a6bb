#pragma once

#include "core/AppState.h"
#include "shell/ui/parts/Surface.h"

namespace parcelory {

class InvoicePane;

/// The right edge of the New Label screen: where recipients come from.
class Sidebar : public Surface {
public:
    explicit Sidebar(AppState &app, QWidget *parent = nullptr);

    void focusInvoiceNumber();

private:
    InvoicePane *m_invoice;
};

} // namespace parcelory
