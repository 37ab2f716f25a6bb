#include "ui/parts/DateField.h"

#include "ui/theme/Theme.h"

#include <QLineEdit>
#include <QWheelEvent>

namespace parcelory {

DateField::DateField(const QString &name, QWidget *parent) : QDateEdit(parent)
{
    setAccessibleName(name);
    lineEdit()->setAccessibleName(name);
    setCalendarPopup(true);
    setDisplayFormat(QStringLiteral("MM/dd/yy"));
    setFixedHeight(Theme::current().scaled(Theme::fieldHeight));
    setFixedWidth(Theme::current().scaled(112));
}

void DateField::showDate(QDate date)
{
    if (date != this->date()) // otherwise a half-typed date would be lost
        setDate(date);
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
