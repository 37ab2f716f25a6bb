#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/Follower.h"
#include "ui/parts/Notice.h"
#include "ui/parts/Surface.h"

class QVBoxLayout;

namespace parcelory {

/// Purchases whose end was not seen: those that are still a question, and what became of the others. Hidden on an
/// ordinary day.
class OpenPurchasesBar : public Surface {
public:
    explicit OpenPurchasesBar(LabelScreen &screen, QWidget *parent = nullptr);

private:
    void refresh();
    Task<> printOnce(SettledPurchase label);
    void addRow(const QString &text, const QString &icon, Token ink, const QList<QWidget *> &buttons);

    Purchases &m_purchases;
    QVBoxLayout *m_rows;
    QWidget *m_list = nullptr;
    bool m_printing = false;
    Follower m_follower;
};

} // namespace parcelory
