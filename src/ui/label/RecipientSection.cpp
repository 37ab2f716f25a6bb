#include "ui/label/RecipientSection.h"

#include "app/AppState.h"
#include "app/addressbook/AddressBook.h"
#include "app/label/LabelDraft.h"
#include "app/label/LabelScreen.h"
#include "app/label/LabelTexts.h"
#include "core/AddressBlock.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Binding.h"
#include "ui/parts/Button.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QCheckBox>

#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int secondLabel = 74; ///< aligns the right-hand fields of two rows

} // namespace

RecipientSection::RecipientSection(AppState &app, AddressBook &book, LabelScreen &screen, QWidget *parent)
    : FormSection(u"To"_s, parent), m_app(app), m_book(book), m_screen(screen),
      m_name(new LineEdit(u"Recipient name"_s)), m_company(new LineEdit(u"Company"_s)),
      m_street(new LineEdit(u"Street"_s)), m_suite(new LineEdit(u"Apartment or suite"_s)),
      m_city(new LineEdit(u"City"_s)), m_state(new LineEdit(u"State"_s, 44)), m_zip(new LineEdit(u"ZIP"_s, 92)),
      m_country(new LineEdit(u"Country"_s, 44)), m_phone(new LineEdit(u"Phone"_s, 160)),
      m_email(new LineEdit(u"Email"_s)), m_validate(new Button(u"Validate"_s)),
      m_status(new TextLabel({}, FontRole::button, &Tokens::muted)), m_abroad(nullptr),
      m_marker(new Notice(u"ui_globe"_s, &Tokens::warn)),
      m_keep(new QCheckBox(u"Keep this recipient in Parcelory's address book"_s)),
      m_save(new Button(u"Save to Address Book"_s, Button::Kind::link)),
      m_outcome(new Notice(u"ui_success"_s, &Tokens::ok, FontRole::caption)), m_refresh([this] { refresh(); })
{
    addRow(u"Name"_s)->add(m_name, 5)->say(u"Company"_s, secondLabel)->add(m_company, 4);
    addRow(u"Street"_s)->add(m_street, 5)->say(u"Apt / Suite"_s, secondLabel)->add(m_suite, 4);
    addRow(u"City"_s)
        ->add(m_city, 1)
        ->say(u"State"_s)
        ->add(m_state)
        ->say(u"ZIP"_s)
        ->add(m_zip)
        ->say(u"Country"_s)
        ->add(m_country);
    addRow(u"Phone"_s)->add(m_phone)->say(u"Email"_s)->add(m_email, 1);
    m_status->setWordWrap(true);
    addRow()->add(m_validate)->add(m_status, 1);
    m_abroad = addRow();
    m_abroad->setMinimumHeight(0);
    m_abroad->add(m_marker, 1);
    addKeeping();
    m_country->setPlaceholderText(u"US"_s);

    const std::pair<LineEdit *, QString ShippoAddress::*> fields[] = {
        {m_name, &ShippoAddress::name},     {m_company, &ShippoAddress::company}, {m_street, &ShippoAddress::street1},
        {m_suite, &ShippoAddress::street2}, {m_city, &ShippoAddress::city},       {m_state, &ShippoAddress::state},
        {m_zip, &ShippoAddress::zip},       {m_country, &ShippoAddress::country}, {m_phone, &ShippoAddress::phone},
        {m_email, &ShippoAddress::email}};
    for (const auto &[field, member] : fields) {
        bindText(field, app.draftTo, member);
        field->takePaste = [this](const QString &text) { return takePaste(text); };
        field->takeUndo = [this] { return m_screen.undo(); };
        field->offersUndo = [this] { return m_screen.canUndo(); };
    }
    connect(m_country, &QLineEdit::editingFinished, this, [this] { m_screen.settleCountry(); });
    m_validate->setToolTip(u"Validate Address"_s);
    connect(m_validate, &QPushButton::clicked, this, &RecipientSection::validateRequested);
    m_refresh.follow(screen);
    m_refresh.follow(book);
    refresh();
}

/// True if the text is a whole address, which goes into all fields.
bool RecipientSection::takePaste(const QString &text)
{
    const std::optional<ShippoAddress> pasted = addressFromBlock(text);
    if (pasted)
        m_screen.takePastedAddress(*pasted);
    return pasted.has_value();
}

void RecipientSection::addKeeping()
{
    m_keep->setFont(Theme::current().font(FontRole::caption));
    addRow()->add(m_keep)->add(m_save)->fill();
    addBelowFields(m_outcome);
    connect(m_keep, &QCheckBox::toggled, this, [this](bool on) { m_screen.keepRecipient = on; });
    connect(m_save, &QPushButton::clicked, this,
            [this] { spawn([&book = m_book, recipient = m_app.draftTo.value()] { return book.keep(recipient); }); });
}

void RecipientSection::refresh()
{
    const QString status = m_screen.validationStatus;
    m_status->setText(status.isEmpty() ? u"Not checked yet"_s : status);
    // Without a verdict from the carrier, the color is neutral.
    const bool judged = !status.isEmpty() && !m_screen.isInternational();
    m_status->setInk(!judged ? &Tokens::muted : m_screen.validationOK ? &Tokens::ok : &Tokens::bad);
    m_validate->setText(m_screen.validating ? u"Validate Address"_s : u"Validate"_s);
    m_validate->setEnabled(!m_screen.busy);
    m_validate->setKind(m_screen.nextStep() == NextStep::validate ? Button::Kind::solid : Button::Kind::standard);
    m_marker->setText(LabelTexts::internationalHint(m_screen));
    m_abroad->setVisible(m_screen.isInternational());
    refreshKeeping();
}

void RecipientSection::refreshKeeping()
{
    const ShippoAddress recipient = m_app.draftTo;
    m_keep->setChecked(m_screen.keepRecipient);
    enable(m_save, !(recipient.name + recipient.street1).isEmpty(), m_keep);
    const std::optional<KeptRecipient> kept = m_book.kept;
    if (kept == m_shownKept)
        return;
    m_shownKept = kept;
    const bool isWritten = kept && kept->isWritten;
    m_outcome->setLook(isWritten ? u"ui_success"_s : u"ui_error"_s, isWritten ? &Tokens::ok : &Tokens::bad);
    m_outcome->setText(kept ? kept->text : QString());
    if (kept)
        announce(m_outcome);
}

LineEdit *RecipientSection::field(DraftField which) const
{
    switch (which) {
    case DraftField::name:
        return m_name;
    case DraftField::street:
        return m_street;
    case DraftField::city:
        return m_city;
    case DraftField::zip:
        return m_zip;
    case DraftField::phone:
        return m_phone;
    default:
        return nullptr;
    }
}

} // namespace parcelory
