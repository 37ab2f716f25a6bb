#include "ui/parts/Badge.h"

#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QPainter>

namespace parcelory {

namespace {

struct Look {
    Token fill, edge, text;
};

Look lookOf(BadgeKind kind)
{
    switch (kind) {
    case BadgeKind::live:
    case BadgeKind::granted:
        return {&Tokens::okTint, &Tokens::ok, &Tokens::ok};
    case BadgeKind::test:
        return {&Tokens::test, &Tokens::test, &Tokens::onTest};
    case BadgeKind::practice:
        return {&Tokens::practice, &Tokens::practice, &Tokens::onPractice};
    case BadgeKind::pending:
        return {&Tokens::warnTint, &Tokens::warnEdge, &Tokens::warn};
    case BadgeKind::failed:
        return {&Tokens::badTint, &Tokens::bad, &Tokens::bad};
    case BadgeKind::chosen:
        return {&Tokens::accentTint, &Tokens::accentTint, &Tokens::accentText};
    case BadgeKind::plain:
        break;
    }
    return {&Tokens::header, &Tokens::header, &Tokens::muted};
}

} // namespace

int badgeWidth(const QString &word, FontRole role)
{
    return QFontMetrics(Theme::current().font(role)).horizontalAdvance(word) + 12;
}

void paintBadge(QPainter &painter, const QRect &place, const QString &word, BadgeKind kind, FontRole role)
{
    const Theme &theme = Theme::current();
    const Look look = lookOf(kind);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(theme.color(look.edge), 1));
    painter.setBrush(theme.color(look.fill));
    painter.drawRoundedRect(QRectF(place).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    painter.setFont(theme.font(role));
    painter.setPen(theme.color(look.text));
    painter.drawText(place, Qt::AlignCenter, word);
    painter.restore();
}

Badge::Badge(const QString &word, BadgeKind kind, QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    set(word, kind);
}

void Badge::set(const QString &word, BadgeKind kind)
{
    if (word == m_word && kind == m_kind)
        return;
    m_word = word;
    m_kind = kind;
    setAccessibleName(word);
    updateGeometry();
    update();
}

void Badge::setTall(int height)
{
    m_height = height;
    updateGeometry();
}

QSize Badge::sizeHint() const
{
    return {badgeWidth(m_word, FontRole::badge), Theme::current().scaled(m_height)};
}

void Badge::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    paintBadge(painter, rect(), m_word, m_kind, FontRole::badge);
}

} // namespace parcelory
