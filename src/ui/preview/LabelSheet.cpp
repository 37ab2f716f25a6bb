#include "ui/preview/LabelSheet.h"

#include "ui/parts/Accessibility.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int air = 14; ///< around the paper

} // namespace

LabelSheet::LabelSheet(QWidget *parent) : QAbstractScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setCursor(Qt::OpenHandCursor);
    arrange();
}

const QImage *LabelSheet::image() const
{
    return m_picture ? &m_picture->pages[m_page].image : nullptr;
}

double LabelSheet::scale() const
{
    if (!image())
        return 1;
    if (m_zoom)
        return *m_zoom / 100.0 / devicePixelRatioF();
    const QSizeF size = image()->size();
    const QSizeF room(maximumViewportSize().width() - 2 * air, maximumViewportSize().height() - 2 * air);
    return std::max(0.01, std::min(room.width() / size.width(), room.height() / size.height()));
}

int LabelSheet::percent() const
{
    return qRound(scale() * devicePixelRatioF() * 100);
}

QRectF LabelSheet::paper() const
{
    const QSizeF size = QSizeF(image()->size()) * scale();
    const auto begin = [](double room, double length, int scrolled) {
        return length + 2 * air <= room ? (room - length) / 2 : double(air - scrolled);
    };
    return {QPointF(begin(viewport()->width(), size.width(), horizontalScrollBar()->value()),
                    begin(viewport()->height(), size.height(), verticalScrollBar()->value())),
            size};
}

/// An area of the label in the viewport.
QRectF LabelSheet::placed(const QRect &dots) const
{
    QRectF area(dots);
    if (m_isTurned) {
        const QSize page = image()->size();
        area.moveTopLeft(QPointF(page.width() - area.right(), page.height() - area.bottom()));
    }
    const QRectF sheet = paper();
    return {sheet.topLeft() + area.topLeft() * scale(), area.size() * scale()};
}

void LabelSheet::arrange()
{
    const QSize size = image() ? (QSizeF(image()->size()) * scale()).toSize() + QSize(2 * air, 2 * air) : QSize();
    const QSize room = viewport()->size();
    const QSize over = m_zoom ? (size - room).expandedTo({0, 0}) : QSize(0, 0);
    horizontalScrollBar()->setRange(0, over.width());
    verticalScrollBar()->setRange(0, over.height());
    horizontalScrollBar()->setPageStep(room.width());
    verticalScrollBar()->setPageStep(room.height());
    for (QScrollBar *bar : {horizontalScrollBar(), verticalScrollBar()})
        bar->setSingleStep(3 * air);
    nameWidget(this,
               u"Label picture, %1 percent%2"_s.arg(percent()).arg(m_isTurned ? u", turned 180 degrees"_s : QString()));
    viewport()->update();
    emit zoomed();
}

void LabelSheet::setPicture(const std::shared_ptr<const LabelPicture> &picture)
{
    if (picture == m_picture)
        return;
    m_picture = picture;
    m_page = 0;
    m_mark = {};
    m_scaled = {};
    arrange();
}

void LabelSheet::setTurned(bool isTurned)
{
    if (std::exchange(m_isTurned, isTurned) != isTurned)
        arrange();
}

void LabelSheet::setZoom(std::optional<int> percent)
{
    if (percent)
        percent = std::clamp(*percent, least, most);
    if (std::exchange(m_zoom, percent) != percent)
        arrange();
}

void LabelSheet::zoomBy(int steps)
{
    const int now = percent();
    const int next = steps > 0 ? now / step + steps : (now + step - 1) / step + steps;
    setZoom(next * step);
}

void LabelSheet::mark(const LabelPlace &place)
{
    m_mark = place;
    if (image() && !place.area.isEmpty()) {
        if (std::exchange(m_page, place.page) != place.page)
            arrange();
        const QRectF seen = placed(place.area);
        if (!QRectF(viewport()->rect()).contains(seen)) {
            horizontalScrollBar()->setValue(horizontalScrollBar()->value() + int(seen.center().x()) -
                                            viewport()->width() / 2);
            verticalScrollBar()->setValue(verticalScrollBar()->value() + int(seen.center().y()) -
                                          viewport()->height() / 2);
        }
    }
    viewport()->update();
}

void LabelSheet::turnPage(int pages)
{
    const qsizetype last = m_picture ? m_picture->pages.size() - 1 : 0;
    const qsizetype page = std::clamp<qsizetype>(m_page + pages, 0, last);
    if (std::exchange(m_page, page) != page)
        arrange();
}

void LabelSheet::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::current();
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), theme.color(&Tokens::button));
    if (!image())
        return;
    const QRectF sheet = paper();
    const QSize pixels = (sheet.size() * devicePixelRatioF()).toSize();
    if (m_scaled.size() != pixels) { // dots stay square when they are enlarged
        const bool shrinks = pixels.width() < image()->width();
        m_scaled =
            image()->scaled(pixels, Qt::IgnoreAspectRatio, shrinks ? Qt::SmoothTransformation : Qt::FastTransformation);
    }
    painter.save();
    if (m_isTurned) {
        painter.translate(sheet.center());
        painter.rotate(180);
        painter.translate(-sheet.center());
    }
    painter.drawImage(sheet, m_scaled);
    painter.restore();
    painter.setPen(QPen(theme.color(&Tokens::control), 1));
    painter.drawRect(sheet.adjusted(-0.5, -0.5, 0.5, 0.5));
    if (m_mark.area.isEmpty() || m_mark.page != m_page)
        return;
    constexpr double round = 3, pen = 2;
    QColor tint = lightTokens().accent; // on paper, which is white in dark mode, too
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(tint, pen));
    tint.setAlphaF(0.12F);
    painter.setBrush(tint);
    painter.drawRoundedRect(placed(m_mark.area).adjusted(-4, -3, 4, 3), round, round);
}

void LabelSheet::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    arrange();
}

void LabelSheet::scrollContentsBy(int, int)
{
    viewport()->update();
}

void LabelSheet::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Space:
        emit closeRequested();
        break;
    case Qt::Key_PageUp:
        turnPage(-1);
        break;
    case Qt::Key_PageDown:
        turnPage(+1);
        break;
    default:
        QAbstractScrollArea::keyPressEvent(event); // the arrow keys scroll
    }
}

void LabelSheet::wheelEvent(QWheelEvent *event)
{
    if (event->modifiers() & Qt::ControlModifier)
        zoomBy(event->angleDelta().y() > 0 ? 1 : -1);
    else
        QAbstractScrollArea::wheelEvent(event);
}

void LabelSheet::mousePressEvent(QMouseEvent *event)
{
    m_dragged = event->pos();
}

void LabelSheet::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint moved = event->pos() - std::exchange(m_dragged, event->pos());
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - moved.x());
    verticalScrollBar()->setValue(verticalScrollBar()->value() - moved.y());
}

} // namespace parcelory
