#pragma once

#include "app/AppState.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RefreshScheduler.h"

class QStackedWidget;

namespace parcelory {

class AddressBook;
class AddressBookView;
class InvoicePane;
class SegmentedControl;

/// The right edge of the New Label screen, the source of recipients: the desk's address book or the back office.
class Sidebar : public PanelFrame {
    Q_OBJECT
public:
    Sidebar(AppState &app, AddressBook &book, QWidget *parent = nullptr);

    AddressBookView &addressBook() { return *m_addressBook; }
    void focusSearch();        ///< in Endicia Mode
    void focusInvoiceNumber(); ///< in Deskline Mode
    void focusContents();      ///< in the current mode

private:
    enum Mode { endicia, deskline };

    void show(Mode mode);
    void choose(Mode mode);
    void showScan(bool busy);

    Preferences &m_preferences;
    SegmentedControl *m_modes;
    QStackedWidget *m_panes;
    AddressBookView *m_addressBook;
    InvoicePane *m_invoice;
    bool m_wasReading = false;
    RefreshScheduler m_refresh;
};

} // namespace parcelory
