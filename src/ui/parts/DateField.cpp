#include "ui/parts/DateField.h"

#include "core/Text.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QAction>
#include <QCalendarWidget>
#include <QKeyEvent>
#include <QRegularExpression>
#include <QScreen>
#include <QShortcut>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

DateField::DateField(const QString &name, QWidget *parent) : LineEdit(name, 112, parent)
{
    QAction *calendar = addAction(themeIcon(u"ui_calendar"_s, &Tokens::muted), TrailingPosition);
    calendar->setText(u"Calendar"_s);
    const QKeySequence keys(Qt::ALT | Qt::Key_Down);
    calendar->setToolTip(u"Calendar (%1)"_s.arg(keys.toString(QKeySequence::NativeText)));
    connect(calendar, &QAction::triggered, this, &DateField::openCalendar);
    connect(this, &QLineEdit::textEdited, this, [this](const QString &typed) {
        if (const QDate date = dateIn(typed); date.isValid())
            choose(date);
    });
    connect(this, &QLineEdit::editingFinished, this, &DateField::settle);
}

void DateField::showDate(QDate date)
{
    if (date == m_date && !text().isEmpty()) // otherwise a half-typed date would be lost
        return;
    m_date = m_settled = date;
    setText(QLocale::c().toString(date, u"MM/dd/yy"_s));
}

/// Reads 11/24/26, 11-24-2026, 2026-11-24, 112426, and 11/24 as the next such day. Not valid for any other text.
QDate DateField::readDate(const QString &text) const
{
    static const QRegularExpression usual(u"^([0-9]{1,2})[/.\\- ]([0-9]{1,2})(?:[/.\\- ]([0-9]{2}|[0-9]{4}))?$"_s);
    static const QRegularExpression digits(u"^([0-9]{2})([0-9]{2})([0-9]{2}|[0-9]{4})$"_s);
    static const QRegularExpression iso(u"^([0-9]{4})-([0-9]{2})-([0-9]{2})$"_s);
    constexpr int century = 2000;
    const QString typed = text.trimmed();
    QDate date;
    if (const auto found = iso.match(typed); found.hasMatch()) {
        date = QDate(found.captured(1).toInt(), found.captured(2).toInt(), found.captured(3).toInt());
    } else {
        auto parts = usual.match(typed);
        if (!parts.hasMatch())
            parts = digits.match(typed);
        if (!parts.hasMatch())
            return {};
        const int month = parts.captured(1).toInt(), day = parts.captured(2).toInt(), year = parts.captured(3).toInt();
        if (parts.captured(3).isEmpty()) {
            date = QDate(m_settled.year(), month, day);
            if (m_minimum.isValid() && date.isValid() && date < m_minimum)
                date = QDate(m_settled.year() + 1, month, day);
        } else {
            date = QDate(year < 100 ? century + year : year, month, day);
        }
    }
    return date;
}

/// Not valid if the date is too early, too.
QDate DateField::dateIn(const QString &text) const
{
    const QDate date = readDate(text);
    return m_minimum.isValid() && date.isValid() && date < m_minimum ? QDate() : date;
}

/// Empty if the text is a date of this field, or nothing.
QString DateField::reasonAgainst(const QString &text) const
{
    const QString typed = text.trimmed();
    if (typed.isEmpty() || dateIn(typed).isValid())
        return {};
    return (readDate(typed).isValid() ? u"%1 is too early."_s : u"“%1” is not a date."_s)
        .arg(firstCharacters(typed, 20));
}

void DateField::choose(QDate date)
{
    if (date == m_date)
        return;
    m_date = date;
    emit dateChosen(date);
}

/// The clerk has finished typing.
void DateField::settle()
{
    const QDate typed = dateIn(text());
    const QString reason = reasonAgainst(text());
    const QDate date = typed.isValid() ? typed : m_settled;
    m_settled = date;
    setText(QLocale::c().toString(date, u"MM/dd/yy"_s));
    choose(date);
    if (!reason.isEmpty())
        emit refused(u"%1 %2 stays %3."_s.arg(reason, accessibleName(), this->text()));
}

void DateField::step(int days)
{
    settle();
    const QDate date = m_date.addDays(days);
    m_settled = m_minimum.isValid() ? std::max(date, m_minimum) : date;
    setText(QLocale::c().toString(m_settled, u"MM/dd/yy"_s));
    selectAll();
    choose(m_settled);
}

void DateField::keyPressEvent(QKeyEvent *event)
{
    if (!isModified() && cursorPosition() == 0 && !event->text().isEmpty() && event->text().at(0).isDigit())
        selectAll(); // a date typed before the old one replaces it
    const bool isVertical = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && !reasonAgainst(text()).isEmpty()) { // the next step would use another date than the typed one
        settle();
        selectAll();
    } else if (!isVertical || isReadOnly())
        LineEdit::keyPressEvent(event);
    else if (event->modifiers() & Qt::AltModifier)
        openCalendar();
    else
        step(event->key() == Qt::Key_Up ? 1 : -1);
}

void DateField::openCalendar()
{
    if (isReadOnly())
        return;
    settle();
    auto *calendar = new QCalendarWidget(this);
    calendar->setWindowFlags(Qt::Popup);
    calendar->setAttribute(Qt::WA_DeleteOnClose);
    if (m_minimum.isValid())
        calendar->setMinimumDate(m_minimum);
    calendar->setSelectedDate(m_date);
    const auto pick = [this, calendar](QDate date) {
        m_settled = date;
        setText(QLocale::c().toString(date, u"MM/dd/yy"_s));
        choose(date);
        calendar->close();
    };
    connect(calendar, &QCalendarWidget::clicked, this, pick);
    connect(calendar, &QCalendarWidget::activated, this, pick);
    connect(new QShortcut(Qt::Key_Escape, calendar), &QShortcut::activated, calendar, &QWidget::close);
    calendar->adjustSize();
    const QRect room = screen()->availableGeometry();
    QPoint place = mapToGlobal(rect().bottomLeft());
    place.setX(std::min(place.x(), room.right() - calendar->width()));
    place.setY(std::min(place.y(), room.bottom() - calendar->height()));
    calendar->move(place);
    calendar->show();
    calendar->setFocus();
}

} // namespace parcelory
