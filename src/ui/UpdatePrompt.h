#pragma once

#include "app/Screens.h"
#include "ui/parts/Button.h"
#include "ui/parts/Dialog.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"

namespace parcelory {

class ProgressBar;

/// Offers a newer version: release notes, download progress, and the restart into it. Return downloads, but it does not
/// restart.
class UpdatePrompt : public Dialog {
    Q_OBJECT
public:
    UpdatePrompt(AppState &app, Screens &screens, QWidget *parent);

    /// The solid button takes the next step and leaves the dialog open.
    void done(int result) override;

private:
    QWidget *makeNotes(const QString &notes);
    void refresh();
    void chooseDefault();

    Screens &m_screens;
    UpdateChecker &m_updates;
    UpdatePhase m_shownPhase = UpdatePhase::idle;
    TextLabel *m_text;
    TextLabel *m_status;
    ProgressBar *m_bar;
    Button *m_dismiss;
    Button *m_next;
    RefreshScheduler m_refresh;
};

} // namespace parcelory
