#pragma once

#include <QLineEdit>

class QAction;

namespace parcelory {

/// screen readers; the next edit clears that.
class LineEdit : public QLineEdit {
public:
    /// `name` is what a screen reader calls it; `width` in logical pixels, 0 takes what there is.
    explicit LineEdit(const QString &name, int width = 0, QWidget *parent = nullptr);

    /// Why the text cannot stay as it is; empty when it can.
    void setFault(const QString &reason);
    bool hasFault() const { return property("fault").toBool(); }
    QSize minimumSizeHint() const override;

private:
    QAction *m_mark = nullptr;
};

} // namespace parcelory
