#pragma once

#include "compose/LabelScreen.h"
#include "shell/UpdateChecker.h"
#include "shell/ui/parts/Dialog.h"
#include "shell/ui/parts/Follower.h"

namespace parcelory {

class ShareBar;

/// Offers a newer version: what is new in it, how far the download is, and the restart into it.
class UpdatePrompt : public Dialog {
    Q_OBJECT
public:
    UpdatePrompt(Clock &clock, UpdateChecker &updates, LabelScreen &label, QWidget *parent);

    /// The solid button takes the next step and leaves the dialog open.
    void done(int result) override;

private:
    QWidget *makeNotes(const QString &notes);
    void refresh();

    UpdateChecker &m_updates;
    LabelScreen &m_label;
    TextLabel *m_text;
    TextLabel *m_status;
    ShareBar *m_bar;
    Button *m_dismiss;
    Button *m_next;
    Follower m_follower;
};

} // namespace parcelory
