#pragma once

#include "ui/parts/RowTable.h"

#include <QList>
#include <QString>

namespace parcelory {

/// One cell: a line, and a second, smaller one below it.
struct TableCell {
    QString text;
    QString second = {};
    bool isStrong = false;

    bool operator==(const TableCell &) const = default;
};

struct TableRow {
    QString id;
    QList<TableCell> cells;
    QString name; ///< for screen readers

    bool operator==(const TableRow &) const = default;
};

struct TableColumn {
    enum class Kind { text, number, tracking };
    QString title;
    int width = 0; ///< logical pixels; 0 takes the remaining width
    Kind kind = Kind::text;
};

/// A short table of cells with one or two lines, in the order of its rows. Return and a double click open a row.
class CellTable : public RowTable {
    Q_OBJECT
public:
    CellTable(const QString &name, const QList<TableColumn> &columns, int rowPixels, QWidget *parent = nullptr);

    /// Leaves the table alone if it shows these rows.
    void setRows(const QList<TableRow> &rows);
    /// What all rows and the head need.
    int fullHeight() const;

signals:
    void opened();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void measure();
    class Model;
    class Delegate;

    QList<TableColumn> m_columns;
    Model *m_model;
};

} // namespace parcelory
