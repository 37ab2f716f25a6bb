#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/Dialog.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/RefreshScheduler.h"

class QButtonGroup;
class QCheckBox;

namespace parcelory {

/// "International Paperwork": the parcel's contents, for customs. Accepted means that rates are to be loaded. Edits go
/// into the draft at once and stay there if the dialog is canceled.
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
    void refresh();

    LabelScreen &m_screen;
    QButtonGroup *m_contents;
    LineEdit *m_value;
    Notice *m_difference;
    QCheckBox *m_print;
    RefreshScheduler m_refresh;
};

} // namespace parcelory
