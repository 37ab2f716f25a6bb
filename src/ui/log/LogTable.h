#pragma once

#include "ui/log/LogModel.h"
#include "ui/parts/RowTable.h"

#include <vector>

namespace parcelory {

/// A log as a table that is sorted by its headers. The initial column widths fit the window.
class LogTable : public RowTable {
    Q_OBJECT
public:
    /// The table owns the model.
    LogTable(const QString &name, LogModel *model, QWidget *parent = nullptr);

    /// The clerk's column widths and sorting; empty if the table was never shown, because it has no widths then.
    QByteArray columnState() const;
    void restoreColumns(const QByteArray &state);

protected:
    void showEvent(QShowEvent *event) override;

private:
    void measure();
    bool widen();
    void giveWay();

    const LogModel *m_model;
    bool m_isLaidOut = false; ///< the table has been shown, so that its width is known
    bool m_isRestored = false;
    std::vector<int> m_needed; ///< pixels that a column's longest text takes; 0 for a column that may be elided
};

} // namespace parcelory
