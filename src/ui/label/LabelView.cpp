#include "ui/label/LabelView.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/settings/KeysScreen.h"
#include "app/settings/SettingsScreen.h"
#include "core/Task.h"
#include "ui/label/CustomsSection.h"
#include "ui/label/MessageLine.h"
#include "ui/label/PackageSection.h"
#include "ui/label/PaperworkDialog.h"
#include "ui/label/RatesPanel.h"
#include "ui/label/RecipientSection.h"
#include "ui/label/SenderSection.h"
#include "ui/label/ServiceSection.h"
#include "ui/label/UnresolvedPurchasesBar.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/Separator.h"
#include "ui/parts/TabOrder.h"
#include "ui/sidebar/AddressBookView.h"
#include "ui/sidebar/Sidebar.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int ratesWidth = 344, widestRates = 400, sidebarWidth = 280, widestSidebar = 340, widestForm = 792;
constexpr int wideWindow = 1500, narrowWindow = 1276; ///< below it, form, rates and sidebar do not fit side by side
constexpr int lowView = 740;                          ///< below it, the longest form does not fit

constexpr DraftField allFields[] = {
    DraftField::profile,       DraftField::name,      DraftField::street, DraftField::city,     DraftField::zip,
    DraftField::phone,         DraftField::weight,    DraftField::length, DraftField::width,    DraftField::height,
    DraftField::declaredValue, DraftField::insurance, DraftField::ounces, DraftField::quantity, DraftField::reference};

} // namespace

LabelView::LabelView(AppState &app, LabelScreen &screen, AddressBook &book, KeysScreen &keys, SettingsScreen &settings,
                     QWidget *parent)
    : QWidget(parent), m_app(app), m_screen(screen), m_settings(settings), m_scroll(new QScrollArea),
      m_recipient(new RecipientSection(app, book, screen)), m_package(new PackageSection(app, screen)),
      m_extras(new ExtrasSection(screen)), m_customs(new CustomsSection(screen)), m_customsRule(new Separator),
      m_rates(new RatesPanel(screen, keys, settings)), m_sidebar(new Sidebar(app, book)),
      m_message(new MessageLine(screen)), m_unresolved(new UnresolvedPurchasesBar(screen)),
      m_refresh([this] { refresh(); })
{
    auto *columns = new QHBoxLayout;
    columns->setSpacing(0);
    columns->addWidget(makeForm(), 1);
    columns->addWidget(m_rates);
    columns->addWidget(m_sidebar);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(m_message);
    rows->addWidget(m_unresolved);
    rows->addLayout(columns, 1);
    orderTabsByLayout(this);
    setTabOrder(m_rates->list(), m_rates->ruleLink());

    setAccessibleName(u"New Label"_s);
    connect(m_message, &MessageLine::clearRequested, this, &LabelView::clear);
    connect(m_message, &MessageLine::sidebarToggled, this, &LabelView::toggleSidebar);
    connect(m_message, &MessageLine::offerTaken, this, [this] {
        m_screen.takeOffer();
        focusRecipient();
    });
    connect(&app, &AppState::recipientTaken, this, &LabelView::takeRecipient);
    connect(m_recipient, &RecipientSection::validateRequested, this, &LabelView::validate);
    connect(m_rates, &RatesPanel::getRatesRequested, this, &LabelView::getRates);
    connect(m_rates, &RatesPanel::buyRequested, this, &LabelView::buy);
    connect(m_rates, &RatesPanel::reprintRequested, this, &LabelView::reprint);
    connect(m_rates, &RatesPanel::rulesRequested, this, &LabelView::rulesRequested);
    for (LineEdit *field : findChildren<LineEdit *>())
        connect(field, &QLineEdit::textEdited, this, &LabelView::noteTyping);
    m_refresh.follow(screen, settings);
    refresh();
}

QWidget *LabelView::makeForm()
{
    auto *form = new PanelFrame(&Tokens::sheet);
    form->setMaximumWidth(Theme::current().scaled(widestForm));
    auto *rows = new QVBoxLayout(form);
    auto *sender = new SenderSection(m_app, m_screen);
    auto *service = new ServiceSection(m_app, m_screen);
    m_sections = {sender, m_recipient, m_package, service, m_extras, m_customs};
    rows->addWidget(sender);
    rows->addWidget(new Separator);
    rows->addWidget(m_recipient);
    rows->addWidget(new Separator);
    rows->addWidget(m_package);
    rows->addWidget(new Separator);
    rows->addWidget(service);
    rows->addWidget(new Separator);
    rows->addWidget(m_extras);
    rows->addWidget(m_customsRule);
    rows->addWidget(m_customs);
    rows->addStretch(1);
    m_scroll->setWidget(form);
    m_scroll->setWidgetResizable(true);
    m_scroll->setAlignment(Qt::AlignHCenter | Qt::AlignTop); // in a wide window
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setBackgroundRole(QPalette::Base);
    m_scroll->setFocusPolicy(Qt::NoFocus);
    return m_scroll;
}

void LabelView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    const int extra = std::max(0, width() - wideWindow) / 4;
    m_rates->setFixedWidth(Theme::current().scaled(std::min(ratesWidth + extra, widestRates)));
    m_sidebar->setFixedWidth(Theme::current().scaled(std::min(sidebarWidth + extra, widestSidebar)));
    m_peeking = m_peeking && isNarrow();
    setDense(height() < Theme::current().scaled(lowView));
    arrange();
}

/// Less space in form and rates, so that the longest form, an insured parcel abroad with FedEx, fits a window on a
/// screen of 800 lines with its menu bar and title bar.
void LabelView::setDense(bool dense)
{
    QLayout *rows = m_scroll->widget()->layout();
    const int margin = dense ? 3 : 7;
    rows->setContentsMargins(16, margin, 16, margin);
    rows->setSpacing(dense ? 3 : 6);
    for (FormSection *section : m_sections)
        section->setDense(dense);
    m_rates->setDense(dense);
}

/// Checks the window, which this screen fills, because a hidden screen keeps its old size.
bool LabelView::isNarrow() const
{
    return window()->width() < Theme::current().scaled(narrowWindow);
}

void LabelView::arrange()
{
    const bool shown = isNarrow() ? m_peeking : m_settings.showAddressSidebar;
    const QWidget *hidden = shown ? nullptr : m_sidebar;
    if (m_peeking)
        hidden = m_rates;
    const bool focusGoes = hidden && !hidden->isHidden() && hidden->isAncestorOf(focusWidget());
    m_rates->setVisible(!m_peeking);
    m_sidebar->setVisible(shown);
    m_message->setSidebarShown(shown);
    if (focusGoes)
        focusRecipient();
}

void LabelView::showSidebar(bool shown)
{
    m_peeking = isNarrow() && shown;
    if (!isNarrow())
        m_settings.showAddressSidebar = shown;
    arrange();
}

void LabelView::toggleSidebar()
{
    showSidebar(m_sidebar->isHidden());
}

void LabelView::focusAddressSearch()
{
    showSidebar(true);
    m_sidebar->focusSearch();
}

AddressBookView &LabelView::addressBook()
{
    return m_sidebar->addressBook();
}

void LabelView::focusInvoiceNumber()
{
    showSidebar(true);
    m_sidebar->focusInvoiceNumber();
}

LineEdit *LabelView::field(DraftField which) const
{
    for (LineEdit *found :
         {m_recipient->field(which), m_package->field(which), m_extras->field(which), m_customs->field(which)}) {
        if (found)
            return found;
    }
    return nullptr;
}

void LabelView::start(std::function<Task<>()> operation)
{
    m_typedMeanwhile = false;
    m_keepsField = false;
    m_peeking = false; // the rates panel shows the result
    arrange();
    m_pressed = QApplication::focusWidget();
    if (const auto *search = qobject_cast<QLineEdit *>(m_pressed.data())) // the clerk may go on in the address book
        connect(search, &QLineEdit::textEdited, this, &LabelView::noteTyping, Qt::UniqueConnection);
    // A focused button that becomes disabled would pass the focus to the next widget.
    if (qobject_cast<QAbstractButton *>(m_pressed.data()) && isAncestorOf(m_pressed))
        setFocus();
    spawn([self = QPointer(this), operation = std::move(operation)]() -> Task<> {
        co_await operation();
        if (self) // after the views have refreshed, so that re-enabled controls can take the focus
            QMetaObject::invokeMethod(self, &LabelView::settleFocus, Qt::QueuedConnection);
    });
}

void LabelView::validate()
{
    start([this] { return m_screen.validate(); });
}

void LabelView::getRates()
{
    start([this] { return m_screen.fetchRates(); });
}

void LabelView::buy()
{
    if (m_rates->isHidden()) { // show the price before a purchase
        showSidebar(false);
        return;
    }
    start([this] { return m_screen.buyAndPrint(); });
}

void LabelView::reprint()
{
    start([this] { return m_screen.last.reprint(); });
}

void LabelView::clear()
{
    m_screen.clearDraft();
    focusRecipient();
}

void LabelView::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == 0; // excludes the Buy shortcut
    if (isReturn && plain && !event->isAutoRepeat())
        pressDefault();
    else
        QWidget::keyPressEvent(event);
}

/// Return takes the next step, but never buys.
void LabelView::pressDefault()
{
    switch (m_screen.nextStep()) {
    case NextStep::validate:
        validate();
        break;
    case NextStep::getRates:
        getRates();
        break;
    case NextStep::buy:
        break;
    case NextStep::none:
        if (!m_screen.busy && m_screen.rates.value().isEmpty())
            focusNextPrevChild(true);
        break;
    }
}

void LabelView::refresh()
{
    const std::optional<DraftField> faulty = m_screen.faultyField;
    const std::optional<Banner> banner = m_screen.banner;
    const QString reason = banner ? banner->text : m_screen.validationStatus.value();
    for (const DraftField which : allFields) {
        if (LineEdit *input = field(which))
            input->setFault(faulty == which ? reason : QString());
    }
    arrange();
    m_customsRule->setVisible(m_screen.isInternational());
    checkWaitingFill();
    if (m_screen.showIntlPaperwork)
        showPaperwork();
    else if (m_paperwork)
        m_paperwork->reject();
}

void LabelView::showPaperwork()
{
    if (m_paperwork)
        return;
    m_paperwork = new PaperworkDialog(m_app, m_screen, window());
    connect(m_paperwork, &QDialog::finished, this, [this](int result) {
        m_paperwork = nullptr;
        m_screen.showIntlPaperwork = false;
        if (result == QDialog::Accepted)
            start([this] { return m_screen.fetchRates(true); });
    });
    m_paperwork->open();
}

} // namespace parcelory
