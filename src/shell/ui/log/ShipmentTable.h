#pragma once

#include "records/ShipmentRecord.h"
#include "shell/ui/parts/RowTable.h"

#include <QAbstractTableModel>
#include <QFont>

namespace parcelory {

/// The mailing log's rows, newest first.
class ShipmentModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { time, postage, recipient, services, tracking, weight, balance, description, reference, columnTotal };

    explicit ShipmentModel(QObject *parent = nullptr);

    void setRecords(const QList<ShipmentRecord> &records);
    const ShipmentRecord &at(int row) const { return m_records[row]; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QString text(const ShipmentRecord &record, int column) const;

    QList<ShipmentRecord> m_records;
    QFont m_numberFont;
};

/// The mailing log as a table. Its widths begin as the window allows; Services takes what the other columns leave.
class ShipmentTable : public RowTable {
    Q_OBJECT
public:
    explicit ShipmentTable(QWidget *parent = nullptr);

    void setRecords(const QList<ShipmentRecord> &records);
    QByteArray columnState() const;
    void restoreColumns(const QByteArray &state);

protected:
    void showEvent(QShowEvent *event) override;

private:
    void keepTrackingWhole();

    ShipmentModel *m_model;
    bool m_hasWidths = false;
    int m_longestTracking = 0; ///< pixels
};

} // namespace parcelory
