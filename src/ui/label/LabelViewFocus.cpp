#include "ui/label/LabelView.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "ui/label/RatesPanel.h"
#include "ui/label/UnresolvedPurchasesBar.h"
#include "ui/parts/LineEdit.h"
#include "ui/sidebar/Sidebar.h"

#include <QApplication>
#include <QScrollArea>

#include <functional>
#include <utility>

// Where the clerk continues: after an operation, after a fill, and from one region to the next.

namespace parcelory {

/// Checks a recipient that was filled in: at once, or when the carrier is free unless the clerk types meanwhile.
void LabelView::takeRecipient()
{
    m_fillWaits = m_screen.busy;
    if (m_screen.isFillDue())
        checkFill();
}

/// Validates the recipient, or takes the clerk to what it lacks.
void LabelView::checkFill()
{
    if (m_screen.recipientFilled()) {
        validate();
        return;
    }
    m_screen.askForMissing();
    m_typedMeanwhile = false;
    m_keepsField = false;
    QMetaObject::invokeMethod(this, &LabelView::settleFocus, Qt::QueuedConnection);
}

/// The clerk may have begun to work on the form that was filled in.
void LabelView::checkWaitingFill()
{
    if (m_screen.busy || !std::exchange(m_fillWaits, false) || !m_screen.isFillDue())
        return;
    checkFill();
    m_keepsField = true;
}

void LabelView::noteTyping()
{
    m_typedMeanwhile = true;
    m_fillWaits = false;
}

void LabelView::settleFocus()
{
    if (!isVisible() || m_typedMeanwhile || m_screen.showIntlPaperwork)
        return;
    if (const QWidget *dialog = QApplication::activeModalWidget()) { // the clerk reads it first
        connect(dialog, &QObject::destroyed, this, &LabelView::settleFocus,
                Qt::ConnectionType(Qt::QueuedConnection | Qt::UniqueConnection));
        return;
    }
    const QWidget *focused = QApplication::focusWidget();
    if (m_keepsField && qobject_cast<const QLineEdit *>(focused) && m_scroll->isAncestorOf(focused))
        return;
    if (m_pressed && focused && focused != m_pressed && focused != this && window()->isAncestorOf(focused) &&
        !isAncestorOf(focused))
        return; // the clerk went on in the address book
    LineEdit *next = nullptr;
    if (m_screen.faultyField.value())
        next = field(*m_screen.faultyField.value());
    else if (m_screen.last.comesFirst()) {
        m_rates->lastLabelEntrance()->setFocus();
        return;
    } else if (!m_screen.rates.value().isEmpty()) {
        m_rates->list()->setFocus();
        return;
    } else if (m_screen.validationOK && m_screen.totalPounds() <= 0)
        next = field(DraftField::weight);
    else if (m_app.draftTo.value().isEmpty())
        next = field(DraftField::name);
    if (next) {
        next->setFocus();
        next->selectAll();
        m_scroll->ensureWidgetVisible(next);
    } else if (m_screen.purchases.unresolvedFor(m_app.draftTo)) {
        m_unresolved->focusCheck();
    } else if (QWidget *back = m_pressed && m_pressed->isHidden() ? m_rates->entrance() : m_pressed.data();
               back && hasFocus()) { // the list of the rates may be gone
        back->setFocus();
    }
}

void LabelView::focusStart()
{
    if (m_screen.last.comesFirst())
        m_rates->lastLabelEntrance()->setFocus();
    else
        focusRecipient();
}

void LabelView::focusRecipient()
{
    field(DraftField::name)->setFocus();
    field(DraftField::name)->selectAll();
    m_scroll->ensureWidgetVisible(field(DraftField::name));
}

void LabelView::focusRegion(int step)
{
    struct Region {
        const QWidget *area;
        std::function<void()> enter;
    };
    QList<Region> regions = {{m_scroll, [this] { focusRecipient(); }},
                             {m_rates, [this] { m_rates->entrance()->setFocus(); }},
                             {m_sidebar, [this] { m_sidebar->focusContents(); }}};
    regions.removeIf([this](const Region &region) {
        return region.area->isHidden() || (region.area == m_rates && !m_rates->entrance());
    });
    qsizetype at = 0; // focus outside the regions counts as the form
    for (qsizetype each = 0; each < regions.size(); ++each) {
        if (regions[each].area->isAncestorOf(focusWidget()))
            at = each;
    }
    regions[(at + step + regions.size()) % regions.size()].enter();
}

} // namespace parcelory
