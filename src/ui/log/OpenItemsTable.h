#pragma once

#include "core/Task.h"
#include "records/OpenItems.h"
#include "ui/parts/RowTable.h"

#include <optional>

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
    std::optional<qint64> buttonAt(const QPoint &place) const;
    Task<> arrange(bool showsStart);

    Model *m_model;
    Delegate *m_delegate;
    QList<OpenItem> m_items;         ///< oldest first
    int m_arrangements = 0;          ///< asked for; only the last one counts
    int m_fitted = 0;                ///< the width of the names, unless the clerk has changed it
    std::optional<qint64> m_pressed; ///< the item whose button is under a press of the mouse
};

} // namespace parcelory
