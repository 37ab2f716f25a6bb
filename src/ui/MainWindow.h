#pragma once

#include "app/Screens.h"
#include "ui/parts/RefreshScheduler.h"

#include <QHash>
#include <QMainWindow>
#include <QPointer>

#include <optional>

class QStackedWidget;

namespace parcelory {

class LabelView;
class MailingLogView;
class MasterLogView;
class ModeStripe;
class SettingsView;

/// The program's window: the sign-in, or the four tabs with header bar and status strip. It defers a close during a
/// purchase or while a SCAN form is being created until that is complete.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    /// `signInNote` is an extra line on the sign-in page; usually empty.
    MainWindow(AppState &app, Screens &screens, const QString &signInNote = {});
    ~MainWindow() override; ///< deletes the secondary windows, which show the same models

    // The views of the tabs. A start makes them once the sign-in page is painted, or when the first caller asks.
    LabelView &labelView() { return *made(m_label); }
    MailingLogView &mailingLogView() { return *made(m_mailingLog); }
    MasterLogView &masterLogView() { return *made(m_masterLog); }
    SettingsView &settingsView() { return *made(m_settings); }
    AppState &app() { return m_app; }
    Screens &screens() { return m_screens; }

    /// The size of the first window on a screen with this much room: the frame of the window has to fit, too.
    static QSize firstSize(QSize room);
    /// Shows a tab at once, so that the caller can act in it.
    void showTab(MainTab tab);
    /// Opens a secondary window, or brings it to the front. Known: "addressbook", "endofday", "errorlog", "label",
    /// "scanform".
    void openWindow(const QString &identifier);
    void comeToFront() { bringToFront(this); }

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void makeMain();
    template <class View>
    View *made(View *const &view)
    {
        makeMain();
        return view;
    }
    QWidget *makeWindow(const QString &identifier);
    QWidget *makeAddressBook();
    QWidget *makeEndOfDay();
    void bringToFront(QWidget *window);
    void closeWindowsOfSession();
    void refreshStart();
    void refresh();
    void noteReasons();
    void finishClosing();
    void restoreLayout();

    AppState &m_app;
    Screens &m_screens;
    QStackedWidget *m_flows;
    QStackedWidget *m_tabs = nullptr;
    ModeStripe *m_stripe = nullptr;
    LabelView *m_label = nullptr;
    MailingLogView *m_mailingLog = nullptr;
    MasterLogView *m_masterLog = nullptr;
    SettingsView *m_settings = nullptr;
    QHash<QString, QPointer<QWidget>> m_windows; ///< the secondary windows, by identifier
    /// What a deferred close waits for.
    struct Closing {
        bool afterPurchase = false, afterForm = false;
    };
    std::optional<Closing> m_closing;
    int m_formsOpened;                         ///< AppState::scanFormOpenTick at the last opening
    int m_labelsOpened;                        ///< Screens::labelsOpened at the last opening
    RefreshScheduler m_start;                  ///< what the sign-in page needs, too
    std::optional<RefreshScheduler> m_refresh; ///< follows after the views: it acts on what they show
};

} // namespace parcelory
