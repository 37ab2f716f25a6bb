#pragma once

#include "app/label/LabelScreen.h"
#include "app/settings/KeysScreen.h"
#include "app/settings/SettingsScreen.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/RefreshScheduler.h"

#include <QPointer>

class QScrollArea;

namespace parcelory {

class AddressBook;
class AddressBookView;
class CustomsSection;
class ExtrasSection;
class FormSection;
class MessageLine;
class PackageSection;
class PaperworkDialog;
class RatesPanel;
class RecipientSection;
class Sidebar;
class UnresolvedPurchasesBar;

/// The New Label screen: the form, the rates with the Buy block, and the sidebar. Decides where the focus goes between
/// them.
class LabelView : public QWidget {
    Q_OBJECT
public:
    LabelView(AppState &app, LabelScreen &screen, AddressBook &book, KeysScreen &keys, SettingsScreen &settings,
              QWidget *parent = nullptr);

    AddressBookView &addressBook();
    void validate();
    void getRates();
    void buy();
    void focusRecipient();
    void reprint();
    void clear();
    /// Focuses what the clerk does first: the recipient, or the reprint of a label that did not come out.
    void focusStart();
    /// These show the sidebar, in a narrow window only temporarily, and focus its search or its invoice number.
    void focusAddressSearch();
    void focusInvoiceNumber();
    /// In a window with room for the sidebar, the state is kept for the next start.
    void toggleSidebar();
    /// Cycles the focus through form, rates and sidebar; `step` is +1 or -1.
    void focusRegion(int step);

signals:
    void rulesRequested();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QWidget *makeForm();
    void setDense(bool dense);
    LineEdit *field(DraftField which) const;
    bool isNarrow() const;
    void showSidebar(bool shown);
    void arrange();
    void takeRecipient();
    void checkFill();
    void checkWaitingFill();
    /// Runs an operation of the screen model, then moves the focus to where the clerk continues.
    void start(std::function<Task<>()> operation);
    void noteTyping();
    void settleFocus();
    void pressDefault();
    void refresh();
    void showPaperwork();

    AppState &m_app;
    LabelScreen &m_screen;
    SettingsScreen &m_settings;
    QScrollArea *m_scroll;
    QList<FormSection *> m_sections;
    RecipientSection *m_recipient;
    PackageSection *m_package;
    ExtrasSection *m_extras;
    CustomsSection *m_customs;
    QWidget *m_customsRule;
    RatesPanel *m_rates;
    Sidebar *m_sidebar;
    MessageLine *m_message;
    UnresolvedPurchasesBar *m_unresolved;
    bool m_peeking = false; ///< the sidebar replaces the rates in a window too narrow for both
    QPointer<PaperworkDialog> m_paperwork;
    bool m_typedMeanwhile = false; ///< since the operation began: the focus stays where the clerk types
    bool m_fillWaits = false;      ///< a recipient was filled in while the carrier was busy, and nothing typed since
    bool m_keepsField = false;     ///< the operation began by itself: the focus stays in a field of the form
    QPointer<QWidget> m_pressed;   ///< had the focus when the operation began
    RefreshScheduler m_refresh;
};

} // namespace parcelory
