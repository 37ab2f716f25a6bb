#pragma once

#include "ui/parts/LineEdit.h"

namespace parcelory {

/// A field that narrows a list while one types. Escape and the mark at its right clear it, Down goes to the list.
class SearchField : public LineEdit {
    Q_OBJECT
public:
    /// `prompt` stands in the empty field and names it.
    explicit SearchField(const QString &prompt, int width = 0, QWidget *parent = nullptr);

    void focusAll();

signals:
    void listRequested();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void clearByUser();
};

} // namespace parcelory
