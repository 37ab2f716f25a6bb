#pragma once

#include "ui/label/BuyBlock.h"
#include "ui/label/RateList.h"
#include "ui/label/RuleLine.h"
#include "ui/parts/BusyBar.h"
#include "ui/parts/Button.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"
#include "ui/preview/VerdictNotice.h"

namespace parcelory {

class LabelThumbnail;

/// The middle of the screen: the last label, the rates or what is missing for them, and the Buy block below.
class RatesPanel : public PanelFrame {
    Q_OBJECT
public:
    RatesPanel(LabelScreen &screen, KeysScreen &keys, SettingsScreen &settings, QWidget *parent = nullptr);

    RateList *list() const { return m_list; }
    QWidget *ruleLink() const { return m_rule->link(); }
    /// What has the focus while the last label waits for its reprint.
    QWidget *lastLabelEntrance() const;
    /// Where a key that leads to the rates goes: the rates, or the button that can act; null if nothing here can.
    QWidget *entrance() const;
    /// Less space around and between the parts, for a low window.
    void setDense(bool dense);

signals:
    void getRatesRequested();
    void buyRequested();
    void reprintRequested();
    void rulesRequested();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QWidget *makeHead();
    QWidget *makeLastLabel();
    void addCheck(const QString &text, Notice *&row);
    void refresh();
    void refreshLastLabel();
    void makeRoom();
    int heightOf(const QWidget *part) const;
    int freeHeight() const;
    bool isHeld() const;

    LabelScreen &m_screen;
    QWidget *m_head = nullptr;
    TextLabel *m_count;
    Button *m_getRates;
    BusyBar *m_bar;
    PanelFrame *m_lastLabel;
    Notice *m_lastTitle;
    TextLabel *m_lastPrice;
    ElidedLabel *m_lastName;
    TextLabel *m_lastPlace, *m_lastTracking, *m_lastService, *m_lastMessage;
    VerdictNotice *m_lastVerdict;
    QWidget *m_verdictRow = nullptr;
    LabelThumbnail *m_thumbnail = nullptr;
    Button *m_reprint, *m_copy, *m_dismiss, *m_customs;
    RateList *m_list;
    EmptyState *m_empty;
    QWidget *m_checks;
    Notice *m_senderCheck, *m_recipientCheck, *m_weightCheck;
    RuleLine *m_rule;
    BuyBlock *m_block;
    RefreshScheduler m_refresh;
};

} // namespace parcelory
