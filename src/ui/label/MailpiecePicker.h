#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/ComboBox.h"
#include "ui/parts/RefreshScheduler.h"

namespace parcelory {

/// The grouped list of mailpieces: icon, name and a second line. Typing selects by name.
class MailpiecePicker : public ComboBox {
    Q_OBJECT
public:
    MailpiecePicker(AppState &app, LabelScreen &screen, QWidget *parent = nullptr);

private:
    void refresh();
    void refill(const QList<MailpieceGroup> &menu);
    void showCurrent();

    AppState &m_app;
    LabelScreen &m_screen;
    QList<MailpieceSelection> m_selections; ///< indexed by the number in a row's data
    QList<MailpieceGroup> m_listed;
    RefreshScheduler m_refresh;
};

} // namespace parcelory
