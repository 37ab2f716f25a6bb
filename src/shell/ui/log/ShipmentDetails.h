#pragma once

#include "records/MailingLogScreen.h"
#include "shell/ui/parts/Badge.h"
#include "shell/ui/parts/Button.h"
#include "shell/ui/parts/Surface.h"
#include "shell/ui/parts/TextLabel.h"

#include <array>
#include <vector>

class QStackedLayout;

namespace parcelory {

/// The pane under the mailing log: one shipment in full, and what can be done with it.
class ShipmentDetails : public Surface {
    Q_OBJECT
public:
    explicit ShipmentDetails(MailingLogScreen &screen, QWidget *parent = nullptr);

    /// Shows the chosen shipment as it is now.
    void refresh();

private:
    QWidget *makeHead();
    QWidget *makeLines();
    void show(const ShipmentRecord &record);

    MailingLogScreen &m_screen;
    QStackedLayout *m_pages;
    ElidedLabel *m_name;
    std::array<Badge *, 2> m_badges; ///< refund and test
    Button *m_reprint;
    Button *m_customs;
    Button *m_copy;
    std::vector<TextLabel *> m_values; ///< in the order of the lines' table
};

} // namespace parcelory
