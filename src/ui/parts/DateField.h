#pragma once

#include <QDateEdit>

namespace parcelory {

/// A date, typed or picked from a calendar.
class DateField : public QDateEdit {
public:
    explicit DateField(const QString &name, QWidget *parent = nullptr);

protected:
    bool focusNextPrevChild(bool next) override;
    void wheelEvent(QWheelEvent *event) override;
};

} // namespace parcelory
