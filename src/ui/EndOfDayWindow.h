#pragma once

#include "app/Screens.h"
#include "ui/parts/RefreshScheduler.h"

#include <QWidget>

class QBoxLayout;

namespace parcelory {

class Badge;
class Button;
class DateField;
class DifferencePanel;
class ElidedLabel;
class FedexCard;
class LogFoot;
class ModeStripe;
class Notice;
class OpenLabelsCard;
class ScanFormCard;
class SpendPanel;
class TextLabel;

/// The secondary window "End of Day": what is left to do about one day's labels, what they cost, and how the carrier's
/// account differs from the mailing log.
class EndOfDayWindow : public QWidget {
    Q_OBJECT
public:
    EndOfDayWindow(AppState &app, Screens &screens, QWidget *parent = nullptr);
    ~EndOfDayWindow() override;

signals:
    /// The main window shows the chosen label.
    void labelShown();

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QWidget *makeToolbar();
    QWidget *makePage();
    QWidget *makeCards();
    QWidget *makeFoot();
    void arrange();
    void orderTabs();
    void addShortcuts();
    void refresh();
    void refreshToolbar();
    void refreshFoot();

    AppState &m_app;
    Screens &m_screens;
    EndOfDayScreen &m_screen;
    ModeStripe *m_stripe;
    DateField *m_day;
    Button *m_before, *m_after, *m_today, *m_print, *m_export;
    Badge *m_mode;
    ElidedLabel *m_headline;
    ScanFormCard *m_scanForm;
    FedexCard *m_fedex;
    OpenLabelsCard *m_open;
    SpendPanel *m_spend;
    DifferencePanel *m_differences;
    QBoxLayout *m_lower; ///< the spend and the differences
    LogFoot *m_foot;
    TextLabel *m_summary;
    Notice *m_note, *m_account;
    Button *m_askAgain;
    bool m_hasBegun = false; ///< a day has been shown
    RefreshScheduler m_refresh;
};

} // namespace parcelory
