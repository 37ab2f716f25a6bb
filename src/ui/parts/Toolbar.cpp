#include "ui/parts/Toolbar.h"
#include "ui/parts/PanelFrame.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>

namespace parcelory {

Toolbar::Toolbar(QWidget *parent) : PanelFrame(&Tokens::window, parent), m_row(new QHBoxLayout(this))
{
    setLines(Qt::BottomEdge);
    setFixedHeight(Theme::current().scaled(47));
    m_row->setContentsMargins(16, 0, 12, 0);
    m_row->setSpacing(8);
}

Toolbar *Toolbar::add(QWidget *widget)
{
    m_row->addWidget(widget);
    return this;
}

Toolbar *Toolbar::fill()
{
    m_row->addStretch(1);
    return this;
}

} // namespace parcelory
