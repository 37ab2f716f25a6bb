#include "ui/StatusStrip.h"
#include "app/AppState.h"
#include "app/Screens.h"
#include "app/settings/KeysScreen.h"
#include "core/StatusKind.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Button.h"
#include "ui/parts/IconView.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QMouseEvent>

namespace parcelory {
using namespace Qt::StringLiterals;

StatusStrip::StatusStrip(AppState &app, Screens &screens, QWidget *parent)
    : PanelFrame(&Tokens::window, parent), m_app(app), m_screens(screens), m_keys(screens.keys),
      m_lastTitle(new TextLabel(u"Last Shipment:"_s, FontRole::caption, &Tokens::muted)),
      m_last(new ElidedLabel({}, FontRole::caption)), m_scan(new ElidedLabel({}, FontRole::caption, &Tokens::muted)),
      m_change(new ElidedLabel({}, FontRole::caption)), m_cancelScan(new Button(u"Cancel"_s, Button::Kind::link)),
      m_undo(new Button(u"Undo"_s, Button::Kind::link)),
      m_printerIcon(new IconView(u"ui_printer"_s, 16, &Tokens::warn)),
      m_printer(new ElidedLabel({}, FontRole::captionStrong)), m_scanIcon(new IconView(u"ui_qr"_s, 14)),
      m_warning(new IconView(u"ui_warning"_s, 16, &Tokens::warn)), m_mode(new Badge({}, BadgeKind::plain)),
      m_key(new TextLabel({}, FontRole::caption)), m_refresh([this] { refresh(); })
{
    setLines(Qt::TopEdge);
    setFixedHeight(Theme::current().scaled(30));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(16, 1, 12, 0);
    row->setSpacing(8);
    row->addWidget(m_printerIcon);
    row->addWidget(m_printer);
    row->addWidget(m_lastTitle);
    row->addWidget(m_last);
    row->addWidget(m_scanIcon);
    row->addWidget(m_scan, 1000); // the first text that is shortened
    row->addWidget(m_cancelScan);
    row->addWidget(m_change);
    row->addWidget(m_undo);
    row->addStretch(1);
    m_scan->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    row->addWidget(m_warning);
    row->addWidget(m_mode);
    row->addWidget(m_key);
    for (QWidget *live : {m_printer, m_change})
        setAccessibleRole(live, QAccessible::Notification);
    m_cancelScan->setAccessibleName(u"Stop reading the invoice"_s);
    m_cancelScan->setFocusPolicy(Qt::TabFocus); // a click leaves the focus where the clerk types
    connect(m_cancelScan, &QPushButton::clicked, &app, &AppState::cancelInvoiceScan);
    connect(m_undo, &QPushButton::clicked, this, [&screens] { screens.undoChange(); });
    m_refresh.follow(screens);
    refresh();
}

void StatusStrip::refresh()
{
    m_last->setFullText(m_app.lastShipmentSummary);
    m_scan->setFullText(m_app.scanLine());
    m_scan->setMaximumWidth(m_scan->sizeHint().width());
    m_scanIcon->setVisible(!m_scan->fullText().isEmpty());
    m_cancelScan->setVisible(m_app.isReadingInvoice());
    refreshPrinter();
    refreshChange();
    const PostageMode mode = m_keys.mode;
    m_warning->setVisible(mode == PostageMode::none);
    m_mode->setVisible(mode != PostageMode::none && mode != PostageMode::unknown);
    if (mode == PostageMode::practice)
        m_mode->set(u"PRACTICE"_s, BadgeKind::practice);
    else if (mode == PostageMode::test)
        m_mode->set(u"TEST"_s, BadgeKind::test);
    else
        m_mode->set(u"LIVE"_s, BadgeKind::live);
    m_key->setText(m_keys.statusText);
    m_key->setToolTip(plainToolTip(m_keys.statusText));
    m_key->setInk(mode == PostageMode::none || mode == PostageMode::test ? &Tokens::warn : &Tokens::text);
    m_key->setCursor(mode == PostageMode::none ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

/// On every tab, a printer problem replaces the last label.
void StatusStrip::refreshPrinter()
{
    const QString notice = m_app.printWatch.notice;
    const bool news = notice != m_printer->fullText();
    m_printer->setFullText(notice);
    m_printer->setVisible(!notice.isEmpty());
    m_printerIcon->setVisible(!notice.isEmpty());
    m_last->setVisible(notice.isEmpty());
    m_lastTitle->setVisible(notice.isEmpty() && !m_last->fullText().isEmpty());
    setFill(notice.isEmpty() ? &Tokens::window : &Tokens::warnTint);
    setEdge(notice.isEmpty() ? &Tokens::line : &Tokens::warnEdge);
    if (news && !notice.isEmpty()) {
        m_printer->setAccessibleName(notice);
        announce(m_printer);
    }
}

/// The place that shows the change itself may be hidden.
void StatusStrip::refreshChange()
{
    const bool isBook = m_app.lastChange.text.value().isEmpty();
    const QString change = m_screens.changeText();
    nameWidget(m_undo, isBook ? u"Undo the change in the address book"_s : u"Undo the last change"_s);
    const bool news = change != m_change->fullText();
    m_change->setFullText(change);
    m_change->setVisible(!change.isEmpty());
    m_undo->setVisible(!change.isEmpty());
    if (news && !change.isEmpty()) {
        m_change->setAccessibleName(change);
        announce(m_change);
    }
}

void StatusStrip::mouseReleaseEvent(QMouseEvent *event)
{
    if (m_keys.mode == PostageMode::none && m_key->geometry().contains(event->pos()))
        emit keysRequested();
}

} // namespace parcelory
