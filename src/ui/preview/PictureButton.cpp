#include "ui/preview/PictureButton.h"

#include "ui/parts/Accessibility.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int edge = 4; ///< around the picture, in logical pixels

QRectF scaled(const QRect &place, double scale)
{
    return {QPointF(place.topLeft()) * scale, QSizeF(place.size()) * scale};
}

/// The place that the question is about has a tint behind the ink and a frame; in it, the words that differ are darker.
QPixmap drawn(const QuestionPicture &picture, QSize room)
{
    QImage image = QImage::fromData(picture.png).convertToFormat(QImage::Format_RGB32);
    const double sharpness = qApp->devicePixelRatio();
    const QSize pixels = image.size().scaled(room * sharpness, Qt::KeepAspectRatio);
    const double scale = double(pixels.width()) / image.width();
    image = image.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (!picture.mark.isEmpty()) {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setCompositionMode(QPainter::CompositionMode_Multiply);
        painter.setPen(QPen(lightTokens().warnEdge, 2.5 * sharpness));
        painter.setBrush(lightTokens().warnTint); // paper is white in dark mode, too
        painter.drawRoundedRect(
            scaled(picture.mark, scale).adjusted(-5 * sharpness, -3 * sharpness, 5 * sharpness, 3 * sharpness),
            4 * sharpness, 4 * sharpness);
        painter.setPen(Qt::NoPen);
        QColor darker = lightTokens().warnEdge;
        darker.setAlphaF(0.45F);
        painter.setBrush(darker);
        for (const QRect &word : picture.words)
            painter.drawRoundedRect(scaled(word, scale).adjusted(-3 * sharpness, 0, 3 * sharpness, 0), 3 * sharpness,
                                    3 * sharpness);
    }
    QPixmap pixmap = QPixmap::fromImage(image);
    pixmap.setDevicePixelRatio(sharpness);
    return pixmap;
}

} // namespace

PictureButton::PictureButton(const QList<QuestionPicture> &pictures, QSize room, QWidget *parent)
    : QAbstractButton(parent), m_pictures(pictures)
{
    for (const QuestionPicture &picture : pictures)
        m_drawn += drawn(picture, room);
    setFocusPolicy(Qt::TabFocus); // after a click, Return still presses the answer
    setCursor(Qt::PointingHandCursor);
    setToolTip(u"Show the label (Space)"_s);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    show(0);
}

QString PictureButton::caption() const
{
    const QString &text = m_pictures[m_at].caption;
    return m_pictures.size() < 2 ? text : u"%1 (%2 of %3)"_s.arg(text).arg(m_at + 1).arg(m_pictures.size());
}

QSize PictureButton::sizeHint() const
{
    QSizeF widest;
    for (const QPixmap &picture : m_drawn)
        widest = widest.expandedTo(picture.deviceIndependentSize());
    return widest.toSize() + QSize(2 * edge, 2 * edge);
}

void PictureButton::show(qsizetype at)
{
    m_at = at;
    nameWidget(this, m_pictures[at].name);
    setAccessibleDescription(caption());
    update();
}

void PictureButton::keyPressEvent(QKeyEvent *event)
{
    const int step = event->key() == Qt::Key_Right ? 1 : event->key() == Qt::Key_Left ? -1 : 0;
    const qsizetype next = std::clamp<qsizetype>(m_at + step, 0, m_pictures.size() - 1);
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
    } else if (step == 0) {
        QAbstractButton::keyPressEvent(event);
    } else if (next != m_at) {
        show(next);
        emit turned();
    }
}

void PictureButton::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::current();
    constexpr double radius = 4;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(theme.color(&Tokens::control), 1));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    const QPixmap &picture = m_drawn[m_at];
    QRectF place(QPointF(), picture.deviceIndependentSize());
    place.moveCenter(QRectF(rect()).center());
    painter.drawPixmap(place.topLeft(), picture);
    if (hasFocus() || underMouse())
        theme.drawFocusRing(painter, rect(), radius);
}

} // namespace parcelory
