#pragma once

#include "ui/parts/RefreshScheduler.h"

#include <QStyledItemDelegate>
#include <QTableView>

namespace parcelory {

/// A table in the program's row height, in which at most one row is chosen. Its model returns a row's identity under
/// RowTable::idRole in column 0.
class RowTable : public QTableView {
    Q_OBJECT
public:
    static constexpr int idRole = Qt::UserRole;
    static constexpr int headPixels = 28, rowPixels = 28;

    /// `name` is the table's name for screen readers.
    explicit RowTable(const QString &name, QWidget *parent = nullptr);

    /// Wraps the texts and grows the rows instead of eliding.
    void wrapTexts();
    /// Makes a click on a column's header sort by that column; the next click reverses the order.
    void makeSortable();
    /// Does what that click does.
    void sortBy(int column);

    /// The chosen row's identity; invalid if no row is chosen.
    QVariant chosen() const;
    void choose(const QVariant &id);
    /// Runs `change`, which replaces the model's rows. The chosen row stays chosen and the visible rows stay in place
    /// if they still exist.
    void replaceRows(const std::function<void()> &change);

    /// Scrolls to the chosen row, or to the first row if no row is chosen. For a new set of rows, as after a search.
    void showStart();

signals:
    void chosenChanged();
    void viewRequested(); ///< by Space
    void copyRequested(); ///< replaces the default Copy, which would keep the spaces of grouped numbers

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    int rowOf(const QVariant &id) const;
    void sortAsMarked();

    RefreshScheduler m_heights; ///< resizes wrapped rows once the columns have their widths
};

/// Draws a row's cells: the text eight pixels from the edges, the chosen row with a bar at its left. The tooltip of an
/// elided cell shows the whole text, and what else the cell lacks room for.
class RowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

protected:
    static constexpr int padding = 8;

    /// The width that the text leaves free at the right end of a cell that is `width` wide.
    virtual int reserved(const QModelIndex &, [[maybe_unused]] int width) const { return 0; }
    /// What a cell that is `width` wide does not show there; empty if it shows all.
    virtual QString leftOut(const QModelIndex &, [[maybe_unused]] int width) const { return {}; }

private:
    QRect textPlace(const QRect &cell, const QModelIndex &index) const;
};

} // namespace parcelory
