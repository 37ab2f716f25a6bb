#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/Button.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RefreshScheduler.h"

class QVBoxLayout;

namespace parcelory {

/// Unresolved purchases, and the outcomes of those that were resolved. Usually hidden.
class UnresolvedPurchasesBar : public PanelFrame {
public:
    explicit UnresolvedPurchasesBar(LabelScreen &screen, QWidget *parent = nullptr);

    /// Focuses the first button that asks the carrier; without one that can act, the bar itself.
    void focusCheck();

private:
    enum class Look { pending, bought, notBought };
    enum class Action { checkAgain, notBought, haveLabel, printLabel, printAgain, refund, dismiss };
    struct Row {
        qint64 id = 0; ///< the journal's
        QString text;
        Look look = Look::pending;
        QList<Action> actions = {};

        bool operator==(const Row &) const = default;
    };

    void refresh();
    Row rowOf(const UnresolvedPurchase &purchase) const;
    Row rowOf(const ResolvedPurchase &purchase) const;
    void rebuild();
    void addRow(const Row &row);
    static Button *makeButton(Action action);
    void act(Action action, qint64 id);
    Task<> printOnce(ResolvedPurchase label);

    LabelScreen &m_screen;
    Purchases &m_purchases;
    QVBoxLayout *m_rows;
    QWidget *m_list = nullptr;
    QList<Button *> m_checks;
    QList<Row> m_shown;
    bool m_printing = false;
    RefreshScheduler m_refresh;
};

} // namespace parcelory
