#pragma once

#include <QLineEdit>

class QAction;

namespace parcelory {

/// A one-line text field. It marks a fault, with the reason in its tooltip and in its description for screen readers;
/// the next edit clears the fault.
class LineEdit : public QLineEdit {
public:
    /// `name` is the name for screen readers; `width` is in logical pixels, 0 takes the available width.
    explicit LineEdit(const QString &name, int width = 0, QWidget *parent = nullptr);

    /// `reason` is why the text is not valid; empty when it is.
    void setFault(const QString &reason);
    bool hasFault() const { return property("fault").toBool(); }
    QSize minimumSizeHint() const override;

private:
    QAction *m_mark = nullptr;
};

} // namespace parcelory
