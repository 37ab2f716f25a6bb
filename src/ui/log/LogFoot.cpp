#include "ui/log/LogFoot.h"
#include "ui/parts/BusyBar.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/Separator.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace parcelory {

LogFoot::LogFoot(QWidget *parent) : PanelFrame(&Tokens::sheet, parent), m_bar(new BusyBar), m_row(new QHBoxLayout)
{
    constexpr int height = 40;
    // Keeps its height when it is empty, so that the layout does not jump.
    setMinimumHeight(Theme::current().scaled(height));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(16, 0, 16, 4);
    rows->setSpacing(4);
    rows->addWidget(new Separator);
    rows->addWidget(m_bar);
    rows->addLayout(m_row, 1);
    m_row->setSpacing(10);
}

} // namespace parcelory
