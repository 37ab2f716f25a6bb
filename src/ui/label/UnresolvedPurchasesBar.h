#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/Button.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RefreshScheduler.h"

#include <utility>

class QVBoxLayout;

namespace parcelory {

/// Unresolved purchases, and the outcomes of those that were resolved. Usually hidden.
class UnresolvedPurchasesBar : public PanelFrame {
public:
    explicit UnresolvedPurchasesBar(LabelScreen &screen, QWidget *parent = nullptr);

private:
    void refresh();
    void rebuild();
    Task<> printOnce(ResolvedPurchase label);
    void addRow(const QString &text, const QString &icon, Token ink, const QList<QWidget *> &buttons);

    LabelScreen &m_screen;
    Purchases &m_purchases;
    QVBoxLayout *m_rows;
    QWidget *m_list = nullptr;
    QList<Button *> m_checks;
    std::pair<QList<UnresolvedPurchase>, QList<ResolvedPurchase>> m_shown;
    bool m_printing = false;
    RefreshScheduler m_refresh;
};

} // namespace parcelory
