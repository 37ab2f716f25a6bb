#pragma once

#include <QLineEdit>

#include <functional>

class QAction;

namespace parcelory {

/// A one-line text field. It marks a fault, with the reason in its tooltip and in its description for screen readers;
/// the next edit clears the fault. A pasted text comes in without the blanks around it. A field without the focus shows
/// the beginning of its text.
class LineEdit : public QLineEdit {
    Q_OBJECT
public:
    /// `name` is the name for screen readers; `width` is in logical pixels, 0 takes the available width.
    explicit LineEdit(const QString &name, int width = 0, QWidget *parent = nullptr);

    /// `reason` is why the text is not valid; empty when it is.
    void setFault(const QString &reason);
    bool hasFault() const { return property("fault").toBool(); }
    QSize minimumSizeHint() const override;

    /// Called with a pasted text; true if the text went elsewhere and does not go into this field.
    std::function<bool(const QString &text)> takePaste;
    /// Called for the Undo keys; true if something else than this field's last edit was undone.
    std::function<bool()> takeUndo;
    /// True if takeUndo would undo something.
    std::function<bool()> offersUndo;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void pasteText(QString text);

    QAction *m_mark = nullptr;
};

} // namespace parcelory
