#pragma once

#include "app/label/LabelScreen.h"
#include "app/settings/KeysScreen.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Follower.h"
#include "ui/parts/Surface.h"
#include "ui/parts/TextLabel.h"

class QTabBar;

namespace parcelory {

/// A striped band over the window that says: nothing here is real postage.
class ModeHatch : public QWidget {
public:
    explicit ModeHatch(QWidget *parent = nullptr);

    void setMode(PostageMode mode); ///< shown for test and practice only

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    PostageMode m_mode = PostageMode::none;
};

class Button;

/// The window's head: name, tabs, mode, the day's SCAN form, who is signed in and the way out.
class HeaderBar : public Surface {
    Q_OBJECT
public:
    HeaderBar(AppState &app, LabelScreen &label, KeysScreen &keys, QWidget *parent = nullptr);

    /// Asks for the form of the labels that the chosen return address has sent today.
    static void createScanForm(AppState &app, LabelScreen &label);

private:
    void refresh();

    AppState &m_app;
    LabelScreen &m_label;
    KeysScreen &m_keys;
    QTabBar *m_tabs;
    Badge *m_mode;
    ElidedLabel *m_scanStatus;
    Button *m_scanForm;
    Rule *m_userRule;
    ElidedLabel *m_user;
    QWidget *m_signOut;
    Follower m_follower;
};

} // namespace parcelory
