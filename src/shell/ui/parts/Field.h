#pragma once

#include <QComboBox>
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

    QSize minimumSizeHint() const override;

protected:
    void wheelEvent(QWheelEvent *event) override;
};

} // namespace parcelory
