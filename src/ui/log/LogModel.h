#pragma once

#include "ui/parts/Badge.h"
#include "ui/parts/RowTable.h"

#include <QAbstractTableModel>
#include <QFont>

#include <vector>

namespace parcelory {

/// A highlighted word in a row.
struct RowBadge {
    QString word;
    BadgeKind kind;
    QString brief = {}; ///< the word where there is little room; empty if it has no shorter word

    bool operator==(const RowBadge &) const = default;
};

/// The width of badges, each with a gap.
int widthOf(const QList<RowBadge> &badges, FontRole role, int gap);
/// The badges that fit into `room` pixels: all, or shortened ones, or fewer of them; the first always stays.
QList<RowBadge> fitting(QList<RowBadge> badges, int room, FontRole role, int gap);
/// The words of badges, for a text.
QString wordsOf(const QList<RowBadge> &badges);

enum class ColumnKind { text, number, date, tracking };

/// The appearance of a log's column.
struct ColumnLook {
    QString title;
    int width;     ///< logical pixels; 0 takes the remaining width
    int least = 0; ///< the minimum width in a narrow window; 0: it never shrinks
    ColumnKind kind = ColumnKind::text;
};

/// Rows of a log, sorted by one column. Rows that are equal in that column keep the records' order.
class LogModel : public QAbstractTableModel {
    Q_OBJECT
public:
    static constexpr int badgesRole = RowTable::idRole + 1; ///< a QList<RowBadge>, for the cell's right end

    explicit LogModel(QObject *parent = nullptr);

    virtual const ColumnLook &look(int column) const = 0;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    void sort(int column, Qt::SortOrder order) override;

protected:
    // `record` is an index into the records that the log was given.
    virtual qsizetype recordCount() const = 0;
    virtual QVariant recordId(qsizetype record) const = 0;
    virtual QString text(qsizetype record, int column) const = 0;
    virtual QList<RowBadge> badges(qsizetype record, int column) const = 0;
    virtual bool sortsByNumber(int column) const = 0;
    virtual double number(qsizetype record, int column) const = 0;

    void sortRows();
    qsizetype recordAt(int row) const { return m_order[size_t(row)]; }

private:
    QVariant accessibleText(qsizetype record, int column) const;

    std::vector<qsizetype> m_order; ///< the record of every row
    int m_sortColumn = 0;
    Qt::SortOrder m_sortOrder = Qt::DescendingOrder;
    QFont m_numberFont;
};

template <class Record>
struct LogColumn {
    ColumnLook look;
    QString (*text)(const Record &record);
    double (*number)(const Record &record) = nullptr; ///< the sort key; null sorts by the text
    QList<RowBadge> (*badges)(const Record &record) = nullptr;
};

/// A LogModel of one type of record, whose `id` is its identity.
template <class Record>
class RecordModel : public LogModel {
public:
    using Columns = std::vector<LogColumn<Record>>;

    RecordModel(const Columns &columns, QObject *parent) : LogModel(parent), m_columns(columns) {}

    void setRecords(const QList<Record> &records)
    {
        beginResetModel();
        m_records = records;
        sortRows();
        endResetModel();
    }

    int columnCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_columns.size());
    }
    const ColumnLook &look(int column) const override { return at(column).look; }

protected:
    qsizetype recordCount() const override { return m_records.size(); }
    QVariant recordId(qsizetype record) const override { return QVariant::fromValue(m_records[record].id); }
    QString text(qsizetype record, int column) const override { return at(column).text(m_records[record]); }
    QList<RowBadge> badges(qsizetype record, int column) const override
    {
        return at(column).badges ? at(column).badges(m_records[record]) : QList<RowBadge>();
    }
    bool sortsByNumber(int column) const override { return at(column).number; }
    double number(qsizetype record, int column) const override { return at(column).number(m_records[record]); }

private:
    const LogColumn<Record> &at(int column) const { return m_columns[size_t(column)]; }

    const Columns &m_columns;
    QList<Record> m_records;
};

} // namespace parcelory
