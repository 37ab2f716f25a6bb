#include "ui/parts/ComboBox.h"

#include "ui/theme/Icons.h"
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

void ComboBox::offer(const QList<Item> &items, const QVariant &chosen)
{
    bool same = count() == items.size();
    for (int at = 0; same && at < count(); ++at)
        same = itemText(at) == items[at].title && itemData(at) == items[at].id;
    if (!same) {
        clear();
        for (const Item &item : items)
            addItem(item.icon.isEmpty() ? QIcon() : themeIcon(item.icon), item.title, item.id);
    }
    setCurrentIndex(chosen.isValid() ? findData(chosen) : -1);
}

void ComboBox::setFace(const QString &text, const QIcon &icon)
{
    if (text == m_face && text.isEmpty())
        return;
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
