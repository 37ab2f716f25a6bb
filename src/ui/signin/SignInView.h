#pragma once

#include "app/signin/SignInScreen.h"
#include "ui/parts/Button.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RefreshScheduler.h"

class QCheckBox;

namespace parcelory {

/// The sign-in page: name and password of the back office.
class SignInView : public PanelFrame {
    Q_OBJECT
public:
    /// `note` is an extra line below the form; usually empty.
    SignInView(AppState &app, SignInScreen &screen, const QString &note, QWidget *parent = nullptr);

protected:
    void showEvent(QShowEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QWidget *makeCard(const QString &note);
    void refresh();
    void showError();
    void placeFocus();
    void signIn();

    AppState &m_app;
    SignInScreen &m_screen;
    LineEdit *m_name, *m_password;
    QCheckBox *m_remember;
    Button *m_signIn, *m_cancel;
    Notice *m_error;
    TextLabel *m_wait; ///< how long a sign-in may take
    RefreshScheduler m_refresh;
};

} // namespace parcelory
