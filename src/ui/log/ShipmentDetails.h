#pragma once

#include "app/logs/MailingLogScreen.h"
#include "records/OpenItems.h"
#include "ui/log/LogModel.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Button.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/TextLabel.h"

#include <array>
#include <optional>
#include <vector>

class QGridLayout;
class QHBoxLayout;
class QStackedLayout;

namespace parcelory {

class LabelThumbnail;
class VerdictNotice;

/// The pane under the mailing log: one shipment in full, and its actions.
class ShipmentDetails : public PanelFrame {
    Q_OBJECT
public:
    /// `list` takes the focus from a button that becomes disabled.
    ShipmentDetails(MailingLogScreen &screen, QWidget *list, QWidget *parent = nullptr);

    /// Shows the chosen shipment as it is now, and why it is an open item.
    void refresh(const std::optional<OpenItem> &open);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    using Operation = Task<> (MailingLogScreen::*)(ShipmentRecord record);

    QWidget *makeHead();
    void connectButton(Button *button, Operation operation);
    QWidget *makeLines();
    QWidget *makeLabelSide();
    void fitLabel();
    void fitBadges();
    void refreshLabel();
    void refreshButtons(const ShipmentRecord &record);
    void show(const ShipmentRecord &record, const std::optional<OpenItem> &open);

    MailingLogScreen &m_screen;
    QWidget *m_list;
    QStackedLayout *m_pages;
    ElidedLabel *m_name;
    std::array<Badge *, 2> m_badges; ///< refund and test
    QList<RowBadge> m_allBadges;
    Button *m_reprint;
    Button *m_customs;
    Button *m_check;
    Button *m_copy;
    Button *m_track;
    Button *m_refund;
    LabelThumbnail *m_thumbnail;
    QHBoxLayout *m_body = nullptr;
    QGridLayout *m_lastColumn = nullptr;
    int m_rowBelow = 0;           ///< of the last column, for the verdict in a narrow pane
    PanelFrame *m_side = nullptr; ///< the verdict
    bool m_isSideBelow = false;
    VerdictNotice *m_verdict;
    TextLabel *m_compared, *m_unchecked; ///< items
    Button *m_showLabel;
    std::vector<TextLabel *> m_values; ///< in the order of `lines`
};

} // namespace parcelory
