#pragma once

#include "core/ports/Desktop.h"
#include "shell/ErrorLog.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/RowTable.h"
#include "ui/parts/TextLabel.h"

#include <QAbstractTableModel>

class QStackedLayout;

namespace parcelory {

/// The error log's entries as rows: Time, Where, Error.
class ErrorLogModel : public QAbstractTableModel {
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;

    void setEntries(const QList<APIErrorEntry> &entries);
    const APIErrorEntry &entryAt(int row) const { return m_entries[row]; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QList<APIErrorEntry> m_entries;
};

/// The secondary window "Error Log": every recorded error, updated while it is open.
class ErrorLogWindow : public QWidget {
    Q_OBJECT
public:
    ErrorLogWindow(ErrorLog &errors, Desktop &desktop, QWidget *parent = nullptr);

private:
    QWidget *makeToolbar();
    QWidget *makeTable();
    void refresh();
    void copyChosen();

    ErrorLog &m_errors;
    Desktop &m_desktop;
    ErrorLogModel *m_model;
    TextLabel *m_count;
    RowTable *m_table;
    QStackedLayout *m_pages;
    RefreshScheduler m_refresh;
};

} // namespace parcelory
