#pragma once

#include "ui/parts/LineEdit.h"

namespace parcelory {

/// A field that filters a list as the clerk types. Escape and the button at its right clear it; Down moves to the list.
class SearchField : public LineEdit {
    Q_OBJECT
public:
    /// `prompt` is the placeholder text and the name for screen readers. `width` is what the field takes where it has
    /// the room, in logical pixels; 0 takes what its layout gives.
    explicit SearchField(const QString &prompt, int width = 0, QWidget *parent = nullptr);

    void focusAll();
    QSize sizeHint() const override;

signals:
    void listRequested();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void clearByUser();
};

} // namespace parcelory
