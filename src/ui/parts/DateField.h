#pragma once

#include <QDateEdit>

namespace parcelory {

/// A date, typed or picked from a calendar.
class DateField : public QDateEdit {
public:
    explicit DateField(const QString &name, QWidget *parent = nullptr);

    /// Leaves the field alone if it has this date, because the clerk may be typing in it.
    void showDate(QDate date);

protected:
    bool focusNextPrevChild(bool next) override;
    void wheelEvent(QWheelEvent *event) override;
};

} // namespace parcelory
