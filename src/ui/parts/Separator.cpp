#include "ui/parts/Separator.h"

#include "ui/theme/Theme.h"

#include <QPainter>

namespace parcelory {

Separator::Separator(Qt::Orientation orientation, QWidget *parent) : QWidget(parent)
{
    if (orientation == Qt::Horizontal)
        setFixedHeight(1);
    else
        setFixedWidth(1);
}

void Separator::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), Theme::current().tokens().line);
}

} // namespace parcelory
