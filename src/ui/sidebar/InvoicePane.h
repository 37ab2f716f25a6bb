#pragma once

#include "app/AppState.h"
#include "ui/parts/BusyBar.h"
#include "ui/parts/Button.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/RefreshScheduler.h"

#include <QScrollArea>

class QVBoxLayout;

namespace parcelory {

/// Looks up an invoice of the back office by its number, and shows the last invoice, its warnings first.
class InvoicePane : public QScrollArea {
    Q_OBJECT
public:
    explicit InvoicePane(AppState &app, QWidget *parent = nullptr);

    void focusNumber();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void lookUp();
    void refresh();
    void showStatus();
    void showInvoice();
    void showWhose();

    AppState &m_app;
    LineEdit *m_number;
    Button *m_lookUp;
    Button *m_cancel; ///< not in the place of m_lookUp, where a double click would press it
    BusyBar *m_bar;
    Notice *m_status;
    EmptyState *m_empty;
    TextLabel *m_whose; ///< what the invoice has to do with the form
    QVBoxLayout *m_column;
    QWidget *m_cards = nullptr; ///< of m_shown
    std::optional<DesklineInvoice> m_shown;
    RefreshScheduler m_refresh;
};

} // namespace parcelory
