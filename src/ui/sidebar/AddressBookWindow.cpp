#include "ui/sidebar/AddressBookWindow.h"

#include "app/AppState.h"
#include "app/addressbook/AddressBook.h"
#include "core/SettingsKeys.h"
#include "core/ports/Preferences.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/WindowSize.h"
#include "ui/sidebar/AddressBookView.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QKeyEvent>
#include <QShortcut>
#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

AddressBookWindow::AddressBookWindow(AppState &app, AddressBook &book, QWidget *parent)
    : PanelFrame(&Tokens::window, parent), m_preferences(app.platform.preferences),
      m_view(new AddressBookView(app, book))
{
    const Theme &theme = Theme::current();
    setWindowFlag(Qt::Window);
    setWindowTitle(u"Address Book"_s);
    sizeWindow(*this, {theme.scaled(280), theme.scaled(400)}, {theme.scaled(420), theme.scaled(640)});
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 4, 0, 2);
    rows->addWidget(m_view);
    connect(m_view, &AddressBookView::filled, this, &AddressBookWindow::filled);
    connect(new QShortcut(Qt::CTRL | Qt::Key_W, this), &QShortcut::activated, this, &QWidget::close);
    connect(new QShortcut(Qt::CTRL | Qt::Key_F, this), &QShortcut::activated, m_view, &AddressBookView::focusSearch);
    restoreGeometry(read(m_preferences, settings::addressBookGeometry));
    m_view->focusSearch();
}

/// Escape is not a QShortcut of this window, because the search must get it first, to clear itself.
void AddressBookWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        PanelFrame::keyPressEvent(event);
}

void AddressBookWindow::closeEvent(QCloseEvent *event)
{
    write(m_preferences, settings::addressBookGeometry, saveGeometry());
    PanelFrame::closeEvent(event);
}

} // namespace parcelory
