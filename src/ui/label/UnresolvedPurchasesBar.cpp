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

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString beingAsked = u"The carrier is being asked now."_s;

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

void UnresolvedPurchasesBar::refresh()
{
    const auto state = std::pair(m_purchases.unresolved.value(), m_purchases.resolved.value());
    if (state != m_shown) {
        m_shown = state;
        rebuild();
    }
    const QString obstacle = m_purchases.checking ? beingAsked : m_screen.busy ? notWhileBusy : QString();
    for (Button *check : std::as_const(m_checks))
        enableUnless(obstacle, check, this);
    setVisible(m_list);
}

void UnresolvedPurchasesBar::rebuild()
{
    m_checks.clear();
    if (m_list)
        m_list->deleteLater();
    m_list = nullptr;
    if (m_shown.first.isEmpty() && m_shown.second.isEmpty())
        return;
    m_list = new QWidget;
    auto *rows = new QVBoxLayout(m_list);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(2);
    m_rows->addWidget(m_list);
    for (const UnresolvedPurchase &purchase : std::as_const(m_shown.first)) {
        auto *check = new Button(u"Check again"_s, Button::Kind::standard, u"ui_refresh"_s);
        m_checks.append(check);
        connect(check, &QPushButton::clicked, this, [this] { spawn([this] { return m_purchases.checkAgain(); }); });
        const ShipmentRecord &record = purchase.purchase.record;
        const QString state = record.transactionID.isEmpty() ? u"Outcome unknown: "_s
                                                             : u"Not complete yet: "_s; // the carrier assigned an id
        QList<QWidget *> buttons{check};
        if (purchase.isInconclusive && !purchase.isUnlogged) { // asking further may not help
            const std::pair<QString, Purchases::ByHand> outcomes[] = {
                {u"It was not bought"_s, Purchases::ByHand::notBought},
                {u"I have the label"_s, Purchases::ByHand::haveLabel}};
            for (const auto &[text, outcome] : outcomes) {
                auto *resolve = new Button(text, Button::Kind::link);
                connect(resolve, &QPushButton::clicked, this, [this, id = purchase.purchase.id, outcome = outcome] {
                    spawn([this, id, outcome] { return m_purchases.resolveByHand(id, outcome); });
                });
                buttons.append(resolve);
            }
        }
        addRow(state + PurchaseTexts::title(record) + u". "_s + purchase.text, u"ui_pending"_s, &Tokens::warn, buttons);
    }
    for (const ResolvedPurchase &purchase : std::as_const(m_shown.second)) {
        QList<QWidget *> buttons;
        if (purchase.isBought) {
            auto *print = new Button(purchase.isPrinted ? u"Print Again"_s : u"Print Label"_s, Button::Kind::tint,
                                     u"ui_printer"_s);
            connect(print, &QPushButton::clicked, this, [this, purchase] {
                if (!std::exchange(m_printing, true)) // a disabled button would pass the focus to Dismiss
                    spawn([this, purchase] { return printOnce(purchase); });
            });
            buttons.append(print);
        }
        auto *dismiss = new Button(u"Dismiss"_s, Button::Kind::link);
        connect(dismiss, &QPushButton::clicked, this, [this, purchase] { m_purchases.dismiss(purchase); });
        addRow(purchase.text, purchase.isBought ? u"ui_success"_s : u"ui_info"_s,
               purchase.isBought ? &Tokens::ok : &Tokens::muted, buttons + QList<QWidget *>{dismiss});
    }
}

Task<> UnresolvedPurchasesBar::printOnce(ResolvedPurchase label)
{
    const QPointer<UnresolvedPurchasesBar> alive(this);
    co_await m_purchases.print(label);
    if (alive)
        m_printing = false;
}

void UnresolvedPurchasesBar::addRow(const QString &text, const QString &icon, Token ink,
                                    const QList<QWidget *> &buttons)
{
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    auto *notice = new Notice(icon, ink, FontRole::strong);
    notice->setTextInk(&Tokens::text);
    notice->setText(text);
    row->addWidget(notice, 1, Qt::AlignVCenter);
    for (QWidget *button : buttons)
        row->addWidget(button);
    static_cast<QVBoxLayout *>(m_list->layout())->addLayout(row);
}

} // namespace parcelory
