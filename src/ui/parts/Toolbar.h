#pragma once

#include "ui/parts/PanelFrame.h"

class QHBoxLayout;

namespace parcelory {

/// The strip above a table.
class Toolbar : public PanelFrame {
public:
    explicit Toolbar(QWidget *parent = nullptr);

    Toolbar *add(QWidget *widget);
    Toolbar *fill(); ///< widgets added afterwards are at the right

private:
    QHBoxLayout *m_row;
};

} // namespace parcelory
