#include "ui/parts/PanelFrame.h"

#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QPainter>

#include <utility>

namespace parcelory {

PanelFrame::PanelFrame(Token fill, QWidget *parent) : QFrame(parent), m_fill(fill) {}

PanelFrame *PanelFrame::card(QWidget *parent)
{
    auto *card = new PanelFrame(&Tokens::sheet, parent);
    card->m_shape = Shape::card;
    return card;
}

void PanelFrame::setFill(Token fill)
{
    if (std::exchange(m_fill, fill) != fill)
        update();
}

void PanelFrame::setEdge(Token edge)
{
    if (std::exchange(m_edge, edge) != edge)
        update();
}

void PanelFrame::setLines(Qt::Edges edges)
{
    if (std::exchange(m_lines, edges) != edges)
        update();
}

void PanelFrame::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::current();
    QPainter painter(this);
    if (m_shape == Shape::card) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(theme.color(m_edge), 1));
        painter.setBrush(theme.color(m_fill));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), Theme::cardRadius, Theme::cardRadius);
        return;
    }
    painter.fillRect(rect(), theme.color(m_fill));
    const QColor edge = theme.color(m_edge);
    if (m_lines & Qt::TopEdge)
        painter.fillRect(0, 0, width(), 1, edge);
    if (m_lines & Qt::BottomEdge)
        painter.fillRect(0, height() - 1, width(), 1, edge);
    if (m_lines & Qt::LeftEdge)
        painter.fillRect(0, 0, 1, height(), edge);
    if (m_lines & Qt::RightEdge)
        painter.fillRect(width() - 1, 0, 1, height(), edge);
}

} // namespace parcelory
