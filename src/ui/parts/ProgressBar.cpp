#include "ui/parts/ProgressBar.h"

#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QPainter>

namespace parcelory {

ProgressBar::ProgressBar(const QString &name, int width, QWidget *parent) : QProgressBar(parent)
{
    setAccessibleName(name);
    setTextVisible(false);
    setRange(0, 1000);
    setFixedHeight(6);
    if (width > 0)
        setFixedWidth(Theme::current().scaled(width));
}

void ProgressBar::setProgress(double progress)
{
    setValue(qRound(progress * maximum()));
}

void ProgressBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const Tokens &t = Theme::current().tokens();
    painter.setBrush(t.line);
    painter.drawRoundedRect(rect(), 3, 3);
    painter.setBrush(t.accent);
    painter.setClipRect(0, 0, width() * value() / maximum(), height());
    painter.drawRoundedRect(rect(), 3, 3);
}

} // namespace parcelory
