#include "shell/ui/sidebar/Sidebar.h"

#include "shell/ui/sidebar/InvoicePane.h"

#include <QVBoxLayout>

namespace parcelory {

Sidebar::Sidebar(AppState &app, QWidget *parent) : Surface(&Tokens::window, parent), m_invoice(new InvoicePane(app))
{
    setLines(Qt::LeftEdge);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(1, 0, 0, 0); // beside the line
    column->addWidget(m_invoice);
}

void Sidebar::focusInvoiceNumber()
{
    m_invoice->focusNumber();
}

} // namespace parcelory
