#include "ui/parts/Button.h"

#include "ui/parts/TextLabel.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QKeyEvent>
#include <QPainter>

#include <utility>

namespace parcelory {

namespace {

constexpr int padding = 12, glyph = 16, iconGap = 6;

} // namespace

Button::Button(const QString &text, Kind kind, const QString &icon, QWidget *parent)
    : QPushButton(text, parent), m_kind(kind), m_icon(icon)
{
    setFont(Theme::current().font(FontRole::button));
    setFixedHeight(Theme::current().scaled(Theme::fieldHeight));
    setAutoDefault(false); // otherwise Return in a dialog's field would press the first button
    setAttribute(Qt::WA_Hover);
    if (kind == Kind::icon)
        setFixedWidth(height());
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    if (text.contains(QLatin1Char('&'))) { // is drawn as it is, and marks no key
        setShortcut({});
        setAccessibleName(text);
    }
}

void Button::setKind(Kind kind)
{
    if (std::exchange(m_kind, kind) != kind)
        update();
}

void Button::describe(const QString &name, const QString &keys)
{
    setAccessibleName(name);
    setToolTip(plainToolTip(keys.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, keys)));
}

void Button::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == 0; // with Control it is another shortcut
    if (!isReturn || !plain)
        QPushButton::keyPressEvent(event);
    else if (!m_ignoresReturn && !event->isAutoRepeat())
        click();
}

QSize Button::sizeHint() const
{
    const int drawn = m_icon.isEmpty() ? 0 : glyph;
    if (m_kind == Kind::icon)
        return {height(), height()};
    QFont widest = font();
    widest.setWeight(QFont::DemiBold); // the width stays the same when the button turns solid
    const int words = text().isEmpty() ? 0 : QFontMetrics(widest).horizontalAdvance(text());
    return {words + drawn + (drawn && words ? iconGap : 0) + 2 * (m_kind == Kind::link ? 9 : padding), height()};
}

Button::Colors Button::colors() const
{
    const Tokens &t = Theme::current().tokens();
    const bool flat = m_kind == Kind::link || m_kind == Kind::icon;
    if (!isEnabled())
        return flat ? Colors{Qt::transparent, Qt::transparent, t.disabledText}
                    : Colors{t.disabledFill, t.line, t.disabledText};
    const bool hover = underMouse() || isDown();
    switch (m_kind) {
    case Kind::solid:
        return {hover ? t.accentHover : t.accent, Qt::transparent, t.onAccent};
    case Kind::test:
        return {hover ? t.test.darker(106) : t.test, Qt::transparent, t.onTest};
    case Kind::practice:
        return {hover ? t.practice.darker(106) : t.practice, Qt::transparent, t.onPractice};
    case Kind::tint:
        return {t.accentTint, t.accent, t.accentText};
    case Kind::danger:
        return {hover ? t.badTint : t.sheet, t.button, t.bad};
    case Kind::link:
        return {hover ? t.accentTint : QColor(Qt::transparent), Qt::transparent, t.accentText};
    case Kind::icon:
        if (isCheckable() && isChecked())
            return {t.accentTint, t.accent, t.accentText};
        return {hover ? t.header : QColor(Qt::transparent), Qt::transparent, t.muted};
    case Kind::standard:
        break;
    }
    return {hover ? t.header : t.sheet, t.button, t.text};
}

void Button::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Colors c = colors();
    const bool strong = m_kind == Kind::solid || m_kind == Kind::test || m_kind == Kind::practice;
    const qreal corner = height() > 36 ? 7 : Theme::radius;
    painter.setPen(c.edge.alpha() ? QPen(c.edge, 1) : QPen(Qt::NoPen));
    painter.setBrush(c.fill);
    const qreal inset = c.edge.alpha() ? 0.5 : 0;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), corner, corner);

    QFont face = font();
    if (strong)
        face.setWeight(QFont::DemiBold);
    painter.setFont(face);
    const int words = text().isEmpty() ? 0 : QFontMetrics(face).horizontalAdvance(text());
    const int drawn = m_icon.isEmpty() ? 0 : glyph + (words ? iconGap : 0);
    int x = (width() - words - drawn) / 2;
    if (!m_icon.isEmpty()) {
        paintIcon(painter, m_icon, {x, (height() - glyph) / 2, glyph, glyph}, c.text);
        x += drawn;
    }
    painter.setPen(c.text);
    painter.drawText(QRect(x, 0, words + 1, height()), Qt::AlignVCenter | Qt::AlignLeft, text());
    if (hasFocus()) {
        // The accent ring would not be visible inside a filled button.
        painter.setPen(QPen(strong ? c.text : Theme::current().tokens().accent, 2));
        painter.setBrush(Qt::NoBrush);
        const qreal in = strong ? 3 : 1;
        painter.drawRoundedRect(QRectF(rect()).adjusted(in, in, -in, -in), corner - 1, corner - 1);
    }
}

} // namespace parcelory
