#pragma once

#include <QComboBox>
#include <QDateEdit>
#include <QLineEdit>

class QAction;

namespace parcelory {

/// A one-line text field. While it is at fault it shows so, with the reason in its tooltip and its description for
/// screen readers; the next edit clears that.
class Field : public QLineEdit {
public:
    /// `name` is what a screen reader calls it; `width` in logical pixels, 0 takes what there is.
    explicit Field(const QString &name, int width = 0, QWidget *parent = nullptr);

    /// Why the text cannot stay as it is; empty when it can.
    void setFault(const QString &reason);
    bool hasFault() const { return property("fault").toBool(); }
    QSize minimumSizeHint() const override;

private:
    QAction *m_mark = nullptr;
};

/// A pop-up list of the program's height.
class Choice : public QComboBox {
public:
    explicit Choice(const QString &name, QWidget *parent = nullptr);

    /// What the closed list shows in the place of its current row; an empty text shows the row again.
    void setFace(const QString &text, const QIcon &icon);
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    QString m_face;
    QIcon m_faceIcon;
};

/// A date, typed or picked from a calendar.
class DateField : public QDateEdit {
public:
    explicit DateField(const QString &name, QWidget *parent = nullptr);

protected:
    bool focusNextPrevChild(bool next) override;
    void wheelEvent(QWheelEvent *event) override;
};

} // namespace parcelory
