#include "ui/parts/Surface.h"

#include "ui/theme/Icons.h"

#include <QPainter>

namespace parcelory {

Surface::Surface(Token fill, QWidget *parent) : QFrame(parent), m_fill(fill) {}

Surface *Surface::card(QWidget *parent)
{
    auto *card = new Surface(&Tokens::sheet, parent);
    card->m_shape = Shape::card;
    return card;
}

void Surface::setFill(Token fill)
{
    m_fill = fill;
    update();
}

void Surface::setEdge(Token edge)
{
    m_edge = edge;
    update();
}

void Surface::setLines(Qt::Edges edges)
{
    m_lines = edges;
    update();
}

void Surface::paintEvent(QPaintEvent *)
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

Rule::Rule(Qt::Orientation orientation, QWidget *parent) : QWidget(parent)
{
    if (orientation == Qt::Horizontal)
        setFixedHeight(1);
    else
        setFixedWidth(1);
}

void Rule::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), Theme::current().tokens().line);
}

IconView::IconView(QString name, int size, Token ink, QWidget *parent)
    : QWidget(parent), m_name(std::move(name)), m_size(Theme::current().scaled(size)), m_ink(ink)
{
    setFixedSize(m_size, m_size);
}

void IconView::set(const QString &name, Token ink)
{
    m_name = name;
    m_ink = ink;
    update();
}

void IconView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    paintIcon(painter, m_name, rect(), Theme::current().color(m_ink));
}

} // namespace parcelory
