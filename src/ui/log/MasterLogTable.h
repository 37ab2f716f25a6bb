#pragma once

#include "carrier/MasterEntry.h"
#include "ui/log/LogModel.h"
#include "ui/log/LogTable.h"

namespace parcelory {

using MasterLogModel = RecordModel<MasterEntry>;

/// The carrier account's labels as a table.
class MasterLogTable : public LogTable {
    Q_OBJECT
public:
    explicit MasterLogTable(QWidget *parent = nullptr);

    void setEntries(const QList<MasterEntry> &entries);

private:
    MasterLogTable(MasterLogModel *model, QWidget *parent);

    MasterLogModel *m_model;
};

} // namespace parcelory
