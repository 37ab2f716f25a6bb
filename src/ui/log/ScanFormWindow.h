#pragma once

#include "app/scanform/ScanFormScreen.h"
#include "ui/log/LogModel.h"
#include "ui/parts/ComboBox.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"

class QStackedWidget;

namespace parcelory {

class Button;
class ComboBox;
class DocumentPages;
class LogTable;

/// The secondary window "SCAN Form": the day's form to print and hand to the carrier, the labels on it, and the earlier
/// forms.
class ScanFormWindow : public QWidget {
    Q_OBJECT
public:
    explicit ScanFormWindow(AppState &app, ScanFormScreen &screen, QWidget *parent = nullptr);

private:
    QWidget *makeToolbar();
    QWidget *makeLabels();
    void addShortcuts();
    void load();
    void refresh();
    void refreshHistory();
    void refreshContents();

    AppState &m_app;
    ScanFormScreen &m_screen;
    ComboBox *m_history;
    ElidedLabel *m_outcome;
    Button *m_save;
    Button *m_print;
    DocumentPages *m_pages;
    QStackedWidget *m_sheets; ///< the form, or why the form is missing
    TextLabel *m_count;
    RecordModel<ShipmentRecord> *m_model;
    LogTable *m_labels;
    bool m_hasBegun = false; ///< a form has been shown
    QList<ScanForm> m_listed;
    QList<ShipmentRecord> m_shownLabels;
    QList<QByteArray> m_drawn;
    std::optional<QByteArray> m_last; ///< AppState::scanFormPDF when the history was read
    RefreshScheduler m_refresh;
};

} // namespace parcelory
