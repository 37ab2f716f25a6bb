#pragma once

#include "records/OpenItems.h"
#include "ui/parts/RowTable.h"

#include <QPersistentModelIndex>

namespace parcelory {

/// The open items as a table in rows of two lines, each with the button of its next step.
class OpenItemsTable : public RowTable {
    Q_OBJECT
public:
    explicit OpenItemsTable(QWidget *parent = nullptr);

    void setItems(const QList<OpenItem> &items);
    /// While an operation runs, the buttons are off.
    void setBusy(bool busy);

signals:
    void stepRequested();    ///< of the chosen item, by its button or Space
    void showRequested();    ///< the chosen item's label among all labels, by Return or a double click
    void takeOffRequested(); ///< the chosen item, by Delete or the context menu

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    class Model;
    class Delegate;

    void fitName();
    bool isOnButton(const QPoint &place) const;

    Model *m_model;
    Delegate *m_delegate;
    int m_fitted = 0;                ///< the width of the names, unless the clerk has changed it
    QPersistentModelIndex m_pressed; ///< the button under a press of the mouse
};

} // namespace parcelory
