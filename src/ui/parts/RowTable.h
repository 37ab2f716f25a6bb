#pragma once

#include "ui/parts/RefreshScheduler.h"

#include <QStyledItemDelegate>
#include <QTableView>

namespace parcelory {

/// A table of whole rows in the program's measures, at most one of them chosen. Its model gives every row's identity
/// under RowTable::idRole in column 0.
class RowTable : public QTableView {
    Q_OBJECT
public:
    static constexpr int idRole = Qt::UserRole;
    static constexpr int headPixels = 28, rowPixels = 28;

    /// `name` is what a screen reader calls the table.
    explicit RowTable(const QString &name, QWidget *parent = nullptr);

    /// Rows grow until every text has room, instead of cutting it.
    void wrapTexts();
    /// A click on a column's head lets the model sort by it, another one the other way round.
    void makeSortable();
    /// As that click does.
    void sortBy(int column);

    /// The chosen row's identity; invalid when none is.
    QVariant chosen() const;
    void choose(const QVariant &id);
    /// Runs `change`, which puts other rows into the model; the chosen row stays chosen and the rows in sight stay
    /// where they are, as far as they are still there.
    void replaceRows(const std::function<void()> &change);

    /// Scrolls to the chosen row or, when none is, to the first: for rows that have little to do with the last ones.
    void showStart();

signals:
    void chosenChanged();
    void copyRequested(); ///< the system's Copy keys: cells show numbers in groups, which nobody wants to paste

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    int rowOf(const QVariant &id) const;
    void sortAsMarked();

    RefreshScheduler m_heights; ///< of rows that wrap, set when the columns have found their widths
};

/// Draws a row's cells: the text at eight pixels from the edges, the chosen row with a bar at its left. The tooltip of
/// a cell that is cut shows the whole text.
class RowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

protected:
    static constexpr int padding = 8;

    /// How much of a cell's right end its text leaves free.
    virtual int reserved(const QModelIndex &) const { return 0; }

private:
    QRect textPlace(const QRect &cell, const QModelIndex &index) const;
};

} // namespace parcelory
