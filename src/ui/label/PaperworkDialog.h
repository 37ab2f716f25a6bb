#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/Dialog.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/RefreshScheduler.h"

class QButtonGroup;

namespace parcelory {

/// "International Paperwork": what is in the parcel, for customs. Ends accepted when rates are to be loaded. What is
/// typed goes into the draft at once and stays there when the sheet is cancelled.
class PaperworkDialog : public Dialog {
    Q_OBJECT
public:
    PaperworkDialog(AppState &app, LabelScreen &screen, QWidget *parent);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QWidget *makeContents();
    void addInvoiceLine();
    void choose(int type);

    LabelScreen &m_screen;
    QButtonGroup *m_contents;
    LineEdit *m_value;
};

} // namespace parcelory
