#include "ui/sidebar/Sidebar.h"

#include "app/AppState.h"
#include "core/SettingsKeys.h"
#include "core/ports/Preferences.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/SegmentedControl.h"
#include "ui/sidebar/AddressBookView.h"
#include "ui/sidebar/InvoicePane.h"
#include "ui/theme/Tokens.h"

#include <QStackedWidget>
#include <QVBoxLayout>

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

Sidebar::Sidebar(AppState &app, AddressBook &book, QWidget *parent)
    : PanelFrame(&Tokens::window, parent), m_preferences(app.platform.preferences),
      m_modes(new SegmentedControl(u"Sidebar"_s)), m_panes(new QStackedWidget),
      m_addressBook(new AddressBookView(app, book)), m_invoice(new InvoicePane(app)),
      m_refresh([this, &app] { showScan(app.scanBusy); })
{
    setLines(Qt::LeftEdge);
    m_modes->add(endicia, u"Endicia Mode"_s);
    m_modes->add(deskline, u"Deskline Mode"_s);
    m_modes->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_panes->addWidget(m_addressBook);
    m_panes->addWidget(m_invoice);
    auto *head = new QHBoxLayout;
    head->setContentsMargins(11, 10, 12, 0);
    head->addWidget(m_modes);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(1, 0, 0, 0); // beside the line
    column->setSpacing(0);
    column->addLayout(head);
    column->addWidget(m_panes);
    connect(m_modes, &SegmentedControl::chosenByUser, this, [this](int mode) { choose(Mode(mode)); });
    m_refresh.follow(app);
    show(read(m_preferences, settings::addressBookMode) == u"deskline" ? deskline : endicia);
    showScan(app.scanBusy);
}

/// Shows the warnings of an invoice that is being read; the clerk's choice stays saved for the next start.
void Sidebar::showScan(bool busy)
{
    if (!std::exchange(m_wasReading, busy) && busy)
        show(deskline);
}

void Sidebar::show(Mode mode)
{
    m_modes->choose(mode);
    m_panes->setCurrentIndex(mode);
}

void Sidebar::choose(Mode mode)
{
    show(mode);
    write(m_preferences, settings::addressBookMode, mode == deskline ? u"deskline"_s : u"endicia"_s);
}

void Sidebar::focusSearch()
{
    choose(endicia);
    m_addressBook->focusSearch();
}

void Sidebar::focusInvoiceNumber()
{
    choose(deskline);
    m_invoice->focusNumber();
}

void Sidebar::focusContents()
{
    if (m_panes->currentIndex() == endicia)
        m_addressBook->focusSearch();
    else
        m_invoice->focusNumber();
}

} // namespace parcelory
