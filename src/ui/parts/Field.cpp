#include "ui/parts/Field.h"

#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"

#include <QAction>
#include <QStylePainter>
#include <QWheelEvent>

namespace parcelory {

Field::Field(const QString &name, int width, QWidget *parent) : QLineEdit(parent)
{
    const Theme &theme = Theme::current();
    setAccessibleName(name);
    setFixedHeight(theme.scaled(Theme::fieldHeight));
    setTextMargins(6, 0, 2, 0);
    if (width > 0)
        setFixedWidth(theme.scaled(width));
    connect(this, &QLineEdit::textEdited, this, [this] { setFault({}); });
}

void Field::setFault(const QString &reason)
{
    const bool faulty = !reason.isEmpty();
    if (!faulty && !hasFault())
        return;
    if (faulty && !m_mark && width() > 60)
        m_mark = addAction(themeIcon(QStringLiteral("ui_error"), &Tokens::bad), QLineEdit::TrailingPosition);
    if (!faulty) {
        delete m_mark;
        m_mark = nullptr;
    }
    setProperty("fault", faulty);
    setToolTip(reason);
    setAccessibleDescription(reason);
    update();
}

QSize Field::minimumSizeHint() const
{
    return {40, height()};
}

Choice::Choice(const QString &name, QWidget *parent) : QComboBox(parent)
{
    setAccessibleName(name);
    setFixedHeight(Theme::current().scaled(Theme::fieldHeight));
    setIconSize({20, 20});
    setMaxVisibleItems(20);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(4);
}

QSize Choice::minimumSizeHint() const
{
    return {80, height()};
}

void Choice::setFace(const QString &text, const QIcon &icon)
{
    m_face = text;
    m_faceIcon = icon;
    update();
}

void Choice::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    if (!m_face.isEmpty()) {
        option.currentText = m_face;
        option.currentIcon = m_faceIcon;
    }
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

void Choice::wheelEvent(QWheelEvent *event)
{
    event->ignore(); // scrolling the form must not change what is shipped
}

DateField::DateField(const QString &name, QWidget *parent) : QDateEdit(parent)
{
    setAccessibleName(name);
    lineEdit()->setAccessibleName(name);
    setCalendarPopup(true);
    setDisplayFormat(QStringLiteral("MM/dd/yy"));
    setFixedHeight(Theme::current().scaled(Theme::fieldHeight));
    setFixedWidth(Theme::current().scaled(112));
}

/// Tab leaves the field; month, day and year are reached by the arrow keys.
bool DateField::focusNextPrevChild(bool next)
{
    return QWidget::focusNextPrevChild(next);
}

void DateField::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

} // namespace parcelory
