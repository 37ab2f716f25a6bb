#pragma once

#include "app/records/RestoreScreen.h"
#include "app/records/RestoreTexts.h"
#include "ui/parts/Dialog.h"
#include "ui/parts/RefreshScheduler.h"

namespace parcelory {

class ProgressBar;

/// Asks whether to restore a copy of the records: what it holds, what would be lost, what comes back and what does not.
/// Stays open while the copy is restored.
class RestoreDialog : public Dialog {
    Q_OBJECT
public:
    RestoreDialog(Clock &clock, RestoreScreen &restore, QWidget *parent);

    void done(int result) override;

protected:
    bool event(QEvent *event) override;

private:
    void refresh();
    void showGroups(const QList<RestoreTexts::Group> &groups);
    static QWidget *makeGroup(const RestoreTexts::Group &group);

    RestoreScreen &m_restore;
    TextLabel *m_name;
    QVBoxLayout *m_box;
    QList<RestoreTexts::Group> m_shown;
    TextLabel *m_note;
    TextLabel *m_steps;
    ProgressBar *m_progress;
    Button *m_accept;
    Button *m_cancel;
    RefreshScheduler m_refresh;
};

} // namespace parcelory
