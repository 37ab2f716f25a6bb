#pragma once

#include "records/RecordCopies.h"
#include "ui/log/LogTable.h"

namespace parcelory {

/// The copies of the records as a table, newest first.
class CopyTable : public LogTable {
    Q_OBJECT
public:
    explicit CopyTable(QWidget *parent = nullptr);

    void setCopies(const QList<RecordCopy> &copies);

signals:
    void restoreRequested(); ///< by Return or a double click

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    class Model;
    CopyTable(Model *model, QWidget *parent);

    Model *m_model;
    QList<RecordCopy> m_shown;
};

} // namespace parcelory
