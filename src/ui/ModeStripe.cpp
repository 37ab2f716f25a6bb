#include "ui/ModeStripe.h"

#include "app/settings/KeysScreen.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QPainter>

namespace parcelory {

ModeStripe::ModeStripe(QWidget *parent) : QWidget(parent)
{
    setFixedHeight(6);
    setVisible(false);
}

void ModeStripe::setMode(PostageMode mode)
{
    m_mode = mode;
    setVisible(mode == PostageMode::test || mode == PostageMode::practice);
    update();
}

void ModeStripe::paintEvent(QPaintEvent *)
{
    const Tokens &t = Theme::current().tokens();
    const bool practice = m_mode == PostageMode::practice;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), practice ? t.practice : t.test);
    painter.setPen(Qt::NoPen);
    painter.setBrush(practice ? t.onPractice : t.onTest);
    constexpr int step = 16;
    for (int x = -step; x < width() + step; x += step)
        painter.drawPolygon(QPolygonF({QPointF(x, 6), QPointF(x + 7, 6), QPointF(x + 12, 0), QPointF(x + 5, 0)}));
}

} // namespace parcelory
