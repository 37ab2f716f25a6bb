#pragma once

#include "ui/parts/LineEdit.h"

#include <QDate>

namespace parcelory {

/// A date, typed in any usual form or picked from a calendar. Every date that the text gives counts at once; a text
/// that is no date becomes the former date again when the clerk leaves the field or presses Return, and is reported.
class DateField : public LineEdit {
    Q_OBJECT
public:
    explicit DateField(const QString &name, QWidget *parent = nullptr);

    QDate date() const { return m_date; }
    /// Leaves the field alone if it has this date, because the clerk may be typing in it.
    void showDate(QDate date);
    /// An earlier date is not accepted.
    void setMinimumDate(QDate date) { m_minimum = date; }

signals:
    /// By the clerk.
    void dateChosen(QDate date);
    /// The typed text was not taken; `reason` says why, and which date stays.
    void refused(const QString &reason);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QDate readDate(const QString &text) const;
    QDate dateIn(const QString &text) const;
    QString reasonAgainst(const QString &text) const;
    void choose(QDate date);
    void settle();
    void step(int days);
    void openCalendar();

    QDate m_date, m_minimum;
    QDate m_settled; ///< before the clerk began to type
};

} // namespace parcelory
