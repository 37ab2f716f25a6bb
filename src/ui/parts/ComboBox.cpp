#include "ui/parts/ComboBox.h"

#include "ui/theme/Theme.h"

#include <QStylePainter>
#include <QWheelEvent>

namespace parcelory {

ComboBox::ComboBox(const QString &name, QWidget *parent) : QComboBox(parent)
{
    setAccessibleName(name);
    setFixedHeight(Theme::current().scaled(Theme::fieldHeight));
    setIconSize({20, 20});
    setMaxVisibleItems(20);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(4);
}

QSize ComboBox::minimumSizeHint() const
{
    return {80, height()};
}

void ComboBox::setFace(const QString &text, const QIcon &icon)
{
    m_face = text;
    m_faceIcon = icon;
    update();
}

void ComboBox::paintEvent(QPaintEvent *)
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

void ComboBox::wheelEvent(QWheelEvent *event)
{
    event->ignore(); // scrolling the form must not change what is shipped
}

} // namespace parcelory
