#pragma once

#include "records/ShipmentRecord.h"
#include "ui/log/LogModel.h"
#include "ui/log/LogTable.h"

namespace parcelory {

class ShipmentModel : public RecordModel<ShipmentRecord> {
public:
    enum Column { time, postage, recipient, services, tracking, weight, balance, description, reference };

    explicit ShipmentModel(QObject *parent = nullptr);
};

/// The mailing log as a table.
class ShipmentTable : public LogTable {
    Q_OBJECT
public:
    explicit ShipmentTable(QWidget *parent = nullptr);

    void setRecords(const QList<ShipmentRecord> &records);

private:
    ShipmentTable(ShipmentModel *model, QWidget *parent);

    ShipmentModel *m_model;
};

} // namespace parcelory
