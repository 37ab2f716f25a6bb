#include "ui/parts/SegmentedControl.h"

#include "ui/parts/Accessibility.h"
#include "ui/parts/Badge.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QRadioButton>

#include <utility>

namespace parcelory {

namespace {

constexpr int glyph = 16, gap = 6, padding = 12;

class Segment : public QRadioButton { // which screen readers know
public:
    Segment(const QString &text, QString icon) : m_icon(std::move(icon))
    {
        setText(text);
        setFont(Theme::current().font(FontRole::strong));
        setAttribute(Qt::WA_Hover);
    }

    void setCount(const QString &count)
    {
        m_count = count;
        updateGeometry();
        update();
    }

    QSize sizeHint() const override
    {
        const int drawn = m_icon.isEmpty() ? 0 : glyph + gap;
        return {fontMetrics().horizontalAdvance(text()) + drawn + countWidth() + 2 * padding,
                Theme::current().scaled(Theme::fieldHeight) - 4};
    }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool hitButton(const QPoint &place) const override { return rect().contains(place); }
    void paintEvent(QPaintEvent *) override
    {
        const Theme &theme = Theme::current();
        const Tokens &t = theme.tokens();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        if (isChecked()) {
            painter.setPen(QPen(t.control, 1));
            painter.setBrush(t.segOn);
            painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
        }
        const QColor ink = isEnabled() ? t.text : t.disabledText;
        painter.setFont(theme.font(isChecked() ? FontRole::strong : FontRole::button));
        painter.setPen(ink);
        const int words = painter.fontMetrics().horizontalAdvance(text());
        int x = (width() - words - countWidth() - (m_icon.isEmpty() ? 0 : glyph + gap)) / 2;
        if (!m_icon.isEmpty()) {
            paintIcon(painter, m_icon, {x, (height() - glyph) / 2, glyph, glyph}, ink);
            x += glyph + gap;
        }
        painter.drawText(QRect(x, 0, words + 2, height()), Qt::AlignVCenter | Qt::AlignLeft, text());
        if (!m_count.isEmpty()) {
            const int high = theme.scaled(18);
            paintBadge(painter, {x + words + gap, (height() - high) / 2, countWidth() - gap, high}, m_count,
                       BadgeKind::pending, FontRole::badge);
        }
        if (hasFocus())
            theme.drawFocusRing(painter, rect(), 4);
    }

private:
    int countWidth() const { return m_count.isEmpty() ? 0 : gap + badgeWidth(m_count, FontRole::badge); }

    QString m_icon;
    QString m_count; ///< empty if the segment has no count
};

} // namespace

SegmentedControl::SegmentedControl(const QString &name, QWidget *parent) : QWidget(parent), m_name(name)
{
    setAccessibleName(name);
    setAccessibleRole(this, QAccessible::Grouping);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(2, 2, 2, 2);
    row->setSpacing(2);
    connect(&m_group, &QButtonGroup::idClicked, this, &SegmentedControl::chosenByUser);
    connect(&m_group, &QButtonGroup::idToggled, this, &SegmentedControl::shareFocus);
}

void SegmentedControl::add(int id, const QString &text, const QString &icon)
{
    auto *segment = new Segment(text, icon);
    segment->setAccessibleName(m_name + QStringLiteral(": ") + text);
    segment->setFocusPolicy(Qt::StrongFocus);
    m_group.addButton(segment, id);
    layout()->addWidget(segment);
}

void SegmentedControl::addUnavailable(const QString &text, const QString &icon, const QString &badge)
{
    auto *segment = new Segment(text, icon);
    segment->setAccessibleName(text + QStringLiteral(" – ") + badge);
    segment->setEnabled(false);
    layout()->addWidget(segment);
    layout()->addWidget(new Badge(badge, BadgeKind::plain));
    layout()->setContentsMargins(2, 2, 8, 2);
}

void SegmentedControl::setCount(int id, int count)
{
    auto *segment = static_cast<Segment *>(m_group.button(id));
    const QString number = count > 0 ? QString::number(count) : QString();
    segment->setCount(number);
    nameWidget(segment, m_name + QStringLiteral(": ") + segment->text() +
                            (number.isEmpty() ? QString() : QStringLiteral(", ") + number));
}

void SegmentedControl::choose(int id)
{
    const bool hasFocus = isAncestorOf(window()->focusWidget());
    if (QAbstractButton *button = m_group.button(id); button && !button->isChecked()) {
        button->setChecked(true);
        if (hasFocus)
            button->setFocus();
    }
    shareFocus();
}

void SegmentedControl::chooseNone()
{
    m_group.setExclusive(false);
    if (QAbstractButton *button = m_group.checkedButton())
        button->setChecked(false);
    m_group.setExclusive(true);
    shareFocus();
}

/// Tab stops only at the chosen segment, or at the first one; arrow keys continue from there.
void SegmentedControl::shareFocus()
{
    const QAbstractButton *stop = m_group.checkedButton() ? m_group.checkedButton() : m_group.buttons().value(0);
    for (QAbstractButton *button : m_group.buttons())
        button->setFocusPolicy(button == stop ? Qt::StrongFocus : Qt::ClickFocus);
}

void SegmentedControl::paintEvent(QPaintEvent *)
{
    const Tokens &t = Theme::current().tokens();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(t.button, 1));
    painter.setBrush(t.segBg);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), Theme::radius, Theme::radius);
}

} // namespace parcelory
