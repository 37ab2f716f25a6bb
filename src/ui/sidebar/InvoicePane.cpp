#include "ui/sidebar/InvoicePane.h"

#include "app/AppState.h"
#include "backoffice/DesklineInvoice.h"
#include "compose/SecondLabel.h"
#include "core/StatusKind.h"
#include "ui/parts/BusyBar.h"
#include "ui/parts/Button.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/TextLabel.h"
#include "ui/sidebar/InvoiceCards.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QGraphicsOpacityEffect>
#include <QKeyEvent>
#include <QScrollBar>
#include <QVBoxLayout>

#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

InvoicePane::InvoicePane(AppState &app, QWidget *parent)
    : QScrollArea(parent), m_app(app), m_number(new LineEdit(u"Invoice #"_s)), m_lookUp(new Button(u"Look Up"_s)),
      m_cancel(new Button(u"Cancel"_s)), m_bar(new BusyBar),
      m_status(new Notice(u"ui_info"_s, &Tokens::muted, FontRole::caption)),
      m_empty(new EmptyState(u"ui_qr"_s, u"Waiting for QR scan"_s)),
      m_whose(new TextLabel({}, FontRole::captionStrong, &Tokens::muted)), m_column(new QVBoxLayout),
      m_refresh([this] { refresh(); })
{
    auto *help = new TextLabel(u"Scan an invoice QR with the TEEMI scanner — from anywhere in the app — or enter the "
                               "invoice number."_s,
                               FontRole::caption, &Tokens::muted);
    help->setWordWrap(true);
    auto *entry = new FormRow(u"Invoice #"_s, 0);
    entry->add(m_number, 1)->add(m_lookUp);
    auto *entryWithBar = new QVBoxLayout;
    entryWithBar->setSpacing(2);
    entryWithBar->addWidget(entry);
    entryWithBar->addWidget(m_bar);

    auto *contents = new QWidget;
    contents->setLayout(m_column);
    m_column->setContentsMargins(11, 10, 12, 12);
    m_column->setSpacing(8);
    m_column->addWidget(help);
    m_column->addLayout(entryWithBar);
    m_column->addWidget(m_cancel, 0, Qt::AlignRight);
    m_column->addWidget(m_status);
    m_column->addWidget(m_whose);
    m_column->addWidget(m_empty, 1);
    setWidget(contents);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(u"Invoice"_s);

    connect(m_lookUp, &QPushButton::clicked, this, &InvoicePane::lookUp);
    connect(m_cancel, &QPushButton::clicked, &app, &AppState::cancelInvoiceScan);
    m_refresh.follow(app);
    refresh();
}

void InvoicePane::focusNumber()
{
    if (!m_number->isEnabled()) {
        setFocus();
        return;
    }
    m_number->setFocus();
    m_number->selectAll();
    verticalScrollBar()->setValue(0);
}

/// Return looks up the number; it must not reach the form, which would take its next step. Escape stops reading.
void InvoicePane::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape && m_app.scanBusy)
        m_app.cancelInvoiceScan();
    else if (!isReturn)
        QScrollArea::keyPressEvent(event);
    else if (!event->isAutoRepeat())
        lookUp();
}

void InvoicePane::lookUp()
{
    if (m_app.scanBusy)
        return;
    focusNumber(); // ready for the next number
    if (!m_number->text().trimmed().isEmpty())
        m_app.handleInvoiceScan(m_number->text());
}

void InvoicePane::refresh()
{
    const bool busy = m_app.scanBusy, reading = m_app.isReadingInvoice(); // an alert may follow the reading
    const bool focused = hasFocus() || isAncestorOf(window()->focusWidget());
    if (busy && m_number->isEnabled() && focused)
        setFocus(); // a disabled field would pass the focus on
    m_number->setEnabled(!busy);
    m_lookUp->setEnabled(!busy);
    if (!reading && m_cancel->hasFocus())
        setFocus();
    m_cancel->setVisible(reading);
    m_bar->setBusy(reading);
    if (!busy && hasFocus())
        focusNumber();
    showStatus();
    showInvoice();
    showWhose();
}

/// Dims an invoice that is not of the parcel in the form.
void InvoicePane::showWhose()
{
    const std::optional<DesklineInvoice> &invoice = m_app.scannedInvoice.value();
    const QDateTime sold = m_app.invoiceSoldAt;
    const bool isInForm =
        invoice && !m_app.draftTo.value().isEmpty() && isSameRecipient(m_app.draftTo, invoice->address);
    const QString text = !invoice         ? QString()
                         : sold.isValid() ? u"Label bought "_s + sold.toLocalTime().toString(u"h:mm AP"_s)
                         : isInForm       ? QString()
                         : m_app.draftTo.value().isEmpty() ? u"This invoice isn't in the form"_s
                                                           : u"The form shows another recipient"_s;
    m_whose->setText(text);
    m_whose->setVisible(!text.isEmpty());
    if (!m_cards)
        return;
    constexpr qreal dimmed = 0.55;
    auto *effect = qobject_cast<QGraphicsOpacityEffect *>(m_cards->graphicsEffect());
    if (!effect) {
        effect = new QGraphicsOpacityEffect(m_cards);
        m_cards->setGraphicsEffect(effect);
    }
    effect->setOpacity(dimmed);
    effect->setEnabled(!text.isEmpty());
}

void InvoicePane::showStatus()
{
    switch (m_app.scanStatusKind.value()) {
    case StatusKind::progress:
        m_status->setLook(u"ui_pending"_s, &Tokens::muted);
        break;
    case StatusKind::success:
        m_status->setLook(u"ui_success"_s, &Tokens::ok);
        m_status->setTextInk(&Tokens::text);
        break;
    case StatusKind::none:
    case StatusKind::failure:
        m_status->setLook(u"ui_error"_s, &Tokens::warn);
        break;
    }
    m_status->setText(breakable(m_app.scanLine(), FontRole::caption, narrowestText));
}

void InvoicePane::showInvoice()
{
    const std::optional<DesklineInvoice> &invoice = m_app.scannedInvoice.value();
    if (invoice == m_shown)
        return;
    m_shown = invoice;
    delete std::exchange(m_cards, nullptr);
    m_empty->setVisible(!invoice);
    if (!invoice)
        return;
    m_cards = makeInvoiceCards(*invoice);
    m_column->addWidget(m_cards, 1, Qt::AlignTop);
    verticalScrollBar()->setValue(0);
}

} // namespace parcelory
