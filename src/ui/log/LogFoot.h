#pragma once

#include "ui/parts/BusyBar.h"
#include "ui/parts/PanelFrame.h"

class QHBoxLayout;

namespace parcelory {

/// The line under a log: the last operation's result and a busy bar.
class LogFoot : public PanelFrame {
public:
    explicit LogFoot(QWidget *parent = nullptr);

    QHBoxLayout *row() const { return m_row; }
    void setBusy(bool busy) { m_bar->setBusy(busy); }

private:
    BusyBar *m_bar;
    QHBoxLayout *m_row;
};

} // namespace parcelory
