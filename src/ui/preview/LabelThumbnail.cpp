#include "ui/preview/LabelThumbnail.h"

#include "app/purchase/LabelVerdictTexts.h"
#include "devices/LabelPicture.h"
#include "ui/parts/Accessibility.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QKeyEvent>
#include <QPainter>

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

using State = LabelSight::State;

constexpr int paperEdge = 3, slowAfter = 1000; // milliseconds

QString captionOf(State state)
{
    switch (state) {
    case State::nothing:
    case State::drawn:
        return {};
    case State::drawing:
        return u"Drawing…"_s;
    case State::noCopy:
        return u"No copy stored"_s;
    case State::unread:
        return u"Can't be read"_s;
    case State::undrawable:
        return u"Can't be drawn"_s;
    }
    return {};
}

} // namespace

LabelThumbnail::LabelThumbnail(LabelPreview &preview, QWidget *parent)
    : QAbstractButton(parent), m_preview(preview), m_refresh([this] { refresh(); })
{
    setFixedSize(sizeHint());
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setToolTip(u"Show the label (Space)"_s);
    connect(this, &QAbstractButton::clicked, this, [this] { m_preview.open(); });
    m_refresh.follow(preview);
    refresh();
}

QSize LabelThumbnail::sizeHint() const
{
    const Theme &theme = Theme::current();
    return {theme.scaled(thumbnailSize.width()), theme.scaled(thumbnailSize.height())};
}

QString LabelThumbnail::caption() const
{
    const State state = m_preview.sight.value().state;
    return state == State::drawing && !m_isSlow ? QString() : captionOf(state);
}

void LabelThumbnail::refresh()
{
    const std::optional<ShipmentRecord> label = m_preview.label;
    const LabelSight sight = m_preview.sight;
    nameWidget(this, u"Label picture, "_s + (label ? label->recipientName() : QString()));
    const QString verdict = sight.verdict ? LabelVerdictTexts::lineOf(sight.verdict) : captionOf(sight.state);
    setAccessibleDescription(verdict);
    const bool isDrawing = sight.state == State::drawing;
    if (isDrawing && m_timer == 0 && !m_isSlow)
        m_timer = startTimer(slowAfter);
    if (!isDrawing) {
        killTimer(std::exchange(m_timer, 0));
        m_isSlow = false;
    }
    update();
}

void LabelThumbnail::timerEvent(QTimerEvent *)
{
    killTimer(std::exchange(m_timer, 0));
    m_isSlow = true;
    update();
}

void LabelThumbnail::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && !event->isAutoRepeat())
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void LabelThumbnail::enterEvent(QEnterEvent *event)
{
    QAbstractButton::enterEvent(event);
    update();
}

void LabelThumbnail::leaveEvent(QEvent *event)
{
    QAbstractButton::leaveEvent(event);
    update();
}

void LabelThumbnail::paintEvent(QPaintEvent *)
{
    constexpr double radius = 3;
    const Theme &theme = Theme::current();
    const auto picture = m_preview.sight.value().picture;
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setPen(QPen(theme.color(&Tokens::control), 1));
    painter.setBrush(picture ? QColor(Qt::white) : theme.color(&Tokens::header));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    const QRect paper = rect().adjusted(paperEdge, paperEdge, -paperEdge, -paperEdge);
    if (picture) {
        QRect place(QPoint(), picture->thumbnail.size().scaled(paper.size(), Qt::KeepAspectRatio));
        place.moveCenter(paper.center());
        painter.drawImage(place, picture->thumbnail);
    } else if (const QString text = caption(); !text.isEmpty()) {
        const int size = theme.scaled(24);
        paintIcon(painter, u"ui_document"_s,
                  QRect(paper.center().x() - size / 2, paper.center().y() - size, size, size),
                  theme.color(&Tokens::muted));
        painter.setPen(theme.color(&Tokens::muted));
        painter.setFont(theme.font(FontRole::caption));
        painter.drawText(paper.adjusted(0, paper.height() / 2 + 4, 0, 0), Qt::AlignHCenter | Qt::TextWordWrap, text);
    }
    if (hasFocus() || underMouse())
        theme.drawFocusRing(painter, rect(), radius);
}

} // namespace parcelory
