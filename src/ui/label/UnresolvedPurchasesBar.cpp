#include "ui/label/UnresolvedPurchasesBar.h"

#include "app/label/LabelScreen.h"
#include "app/purchase/PurchaseTexts.h"
#include "app/purchase/Purchases.h"
#include "core/Task.h"
#include "records/ShipmentRecord.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Button.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString beingAsked = u"Parcelory is asking the carrier now."_s;

} // namespace

UnresolvedPurchasesBar::UnresolvedPurchasesBar(LabelScreen &screen, QWidget *parent)
    : PanelFrame(&Tokens::warnTint, parent), m_screen(screen), m_purchases(screen.purchases),
      m_rows(new QVBoxLayout(this)), m_refresh([this] { refresh(); })
{
    setEdge(&Tokens::warnEdge);
    setLines(Qt::BottomEdge);
    setAccessibleName(u"Unresolved purchases"_s);
    m_rows->setContentsMargins(16, 4, 10, 4);
    m_refresh.follow(screen);
    refresh();
}

/// A lookup in vain changes no row, so that a button keeps the focus.
void UnresolvedPurchasesBar::refresh()
{
    QList<Row> rows;
    for (const UnresolvedPurchase &purchase : m_purchases.unresolved.value())
        rows.append(rowOf(purchase));
    for (const ResolvedPurchase &purchase : m_purchases.resolved.value())
        rows.append(rowOf(purchase));
    if (rows != m_shown) {
        m_shown = rows;
        rebuild();
    }
    const QString obstacle = m_purchases.checking ? beingAsked : m_screen.busy ? notWhileBusy : QString();
    for (Button *check : std::as_const(m_checks))
        enableUnless(obstacle, check, this);
    setVisible(m_list);
}

void UnresolvedPurchasesBar::focusCheck()
{
    const auto check = std::ranges::find_if(m_checks, [](const Button *button) { return button->isEnabled(); });
    if (check != m_checks.end())
        (*check)->setFocus();
    else
        setFocus();
}

UnresolvedPurchasesBar::Row UnresolvedPurchasesBar::rowOf(const UnresolvedPurchase &purchase) const
{
    const ShipmentRecord &record = purchase.purchase.record;
    const QString state = record.transactionID.isEmpty() ? u"Checking whether this was bought: "_s
                                                         : u"Finishing this purchase: "_s; // the carrier assigned an id
    Row row{.id = purchase.purchase.id,
            .text = state + PurchaseTexts::title(record) + u". "_s + purchase.text,
            .look = Look::pending,
            .actions = {Action::checkAgain}};
    if (purchase.isInconclusive && !purchase.isUnlogged) // asking further may not help
        row.actions += {Action::notBought, Action::haveLabel};
    return row;
}

UnresolvedPurchasesBar::Row UnresolvedPurchasesBar::rowOf(const ResolvedPurchase &purchase) const
{
    Row row{.id = purchase.id, .text = purchase.text, .look = purchase.isBought ? Look::bought : Look::notBought};
    if (purchase.isSecond) {
        row.look = Look::pending;
        row.actions += Action::refund;
    } else if (purchase.isBought) {
        row.actions += purchase.isPrinted ? Action::printAgain : Action::printLabel;
    }
    row.actions += Action::dismiss;
    return row;
}

void UnresolvedPurchasesBar::rebuild()
{
    m_checks.clear();
    if (m_list)
        m_list->deleteLater();
    m_list = nullptr;
    if (m_shown.isEmpty())
        return;
    m_list = new QWidget;
    auto *rows = new QVBoxLayout(m_list);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(2);
    m_rows->addWidget(m_list);
    for (const Row &row : std::as_const(m_shown))
        addRow(row);
}

Button *UnresolvedPurchasesBar::makeButton(Action action)
{
    switch (action) {
    case Action::checkAgain:
        return new Button(u"Check again"_s, Button::Kind::standard, u"ui_refresh"_s);
    case Action::notBought:
        return new Button(u"It Was Not Bought"_s, Button::Kind::link);
    case Action::haveLabel:
        return new Button(u"I Have the Label"_s, Button::Kind::link);
    case Action::printLabel:
        return new Button(u"Print Label"_s, Button::Kind::tint, u"ui_printer"_s);
    case Action::printAgain:
        return new Button(u"Print Again"_s, Button::Kind::tint, u"ui_printer"_s);
    case Action::refund:
        return new Button(u"Refund"_s, Button::Kind::tint);
    case Action::dismiss:
        break;
    }
    return new Button(u"Dismiss"_s, Button::Kind::link);
}

void UnresolvedPurchasesBar::act(Action action, qint64 id)
{
    const QList<ResolvedPurchase> resolved = m_purchases.resolved;
    const auto label = std::ranges::find(resolved, id, &ResolvedPurchase::id);
    switch (action) {
    case Action::checkAgain:
        spawn([this] { return m_purchases.checkAgain(); });
        break;
    case Action::notBought:
        spawn([this, id] { return m_purchases.resolveByHand(id, Purchases::ByHand::notBought); });
        break;
    case Action::haveLabel:
        spawn([this, id] { return m_purchases.resolveByHand(id, Purchases::ByHand::haveLabel); });
        break;
    case Action::printLabel:
    case Action::printAgain:
        if (label != resolved.end() && !std::exchange(m_printing, true)) // a disabled button would pass the focus on
            spawn([this, purchase = *label] { return printOnce(purchase); });
        break;
    case Action::refund:
        if (label != resolved.end())
            m_purchases.refund(*label);
        break;
    case Action::dismiss:
        if (label != resolved.end())
            m_purchases.dismiss(*label);
        break;
    }
}

Task<> UnresolvedPurchasesBar::printOnce(ResolvedPurchase label)
{
    const QPointer<UnresolvedPurchasesBar> alive(this);
    co_await m_purchases.print(label);
    if (alive)
        m_printing = false;
}

void UnresolvedPurchasesBar::addRow(const Row &row)
{
    const bool pending = row.look == Look::pending, bought = row.look == Look::bought;
    auto *line = new QHBoxLayout;
    line->setSpacing(8);
    auto *notice = new Notice(pending  ? u"ui_pending"_s
                              : bought ? u"ui_success"_s
                                       : u"ui_info"_s,
                              pending  ? &Tokens::warn
                              : bought ? &Tokens::ok
                                       : &Tokens::muted,
                              FontRole::strong);
    notice->setTextInk(&Tokens::text);
    notice->setText(row.text);
    line->addWidget(notice, 1, Qt::AlignVCenter);
    for (const Action action : row.actions) {
        Button *button = makeButton(action);
        connect(button, &QPushButton::clicked, this, [this, action, id = row.id] { act(action, id); });
        if (action == Action::checkAgain)
            m_checks.append(button);
        line->addWidget(button);
    }
    static_cast<QVBoxLayout *>(m_list->layout())->addLayout(line);
}

} // namespace parcelory
