#pragma once

#include "ui/log/LogModel.h"
#include "ui/parts/RowTable.h"

namespace parcelory {

/// A log as a table that is sorted by its headers. The initial column widths fit the window.
class LogTable : public RowTable {
    Q_OBJECT
public:
    /// The table owns the model.
    LogTable(const QString &name, LogModel *model, QWidget *parent = nullptr);

    /// The clerk's column widths and sorting.
    QByteArray columnState() const;
    void restoreColumns(const QByteArray &state);

protected:
    void showEvent(QShowEvent *event) override;

private:
    void measureTracking();
    void keepTrackingWhole();
    void giveWay();

    const LogModel *m_model;
    bool m_hasWidths = false;
    int m_tracking = 0;        ///< the column
    int m_longestTracking = 0; ///< pixels
};

} // namespace parcelory
