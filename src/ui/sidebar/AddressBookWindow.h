#pragma once

#include "ui/parts/PanelFrame.h"
#include "ui/sidebar/AddressBookView.h"

namespace parcelory {

/// The secondary window "Address Book".
class AddressBookWindow : public PanelFrame {
    Q_OBJECT
public:
    AddressBookWindow(AppState &app, AddressBook &book, QWidget *parent = nullptr);

    AddressBookView &view() { return *m_view; }

signals:
    void filled(); ///< the label's recipient was filled from here

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    Preferences &m_preferences;
    AddressBookView *m_view;
};

} // namespace parcelory
