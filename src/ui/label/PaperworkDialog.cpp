#include "ui/label/PaperworkDialog.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/label/LabelTexts.h"
#include "backoffice/DesklineInvoice.h"
#include "compose/Customs.h"
#include "compose/Services.h"
#include "core/CountryCode.h"
#include "core/ShippoAddress.h"
#include "core/Text.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Binding.h"
#include "ui/parts/Button.h"
#include "ui/parts/Dialog.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/Separator.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QRadioButton>
#include <QShortcut>
#include <QVBoxLayout>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

PaperworkDialog::PaperworkDialog(AppState &app, LabelScreen &screen, QWidget *parent)
    : Dialog(app.platform.clock, u"International Paperwork"_s, u"ui_document"_s, &Tokens::accentText, 640, parent),
      m_screen(screen), m_contents(new QButtonGroup(this)), m_value(new LineEdit(u"Declared value, US dollars"_s, 104)),
      m_difference(new Notice(u"ui_warning"_s, &Tokens::warn)),
      m_print(new QCheckBox(u"Print the commercial invoice with the label"_s)), m_refresh([this] { refresh(); })
{
    auto *text = new TextLabel(LabelTexts::paperworkText(screen), FontRole::body, &Tokens::muted);
    text->setWordWrap(true);
    body()->addWidget(text);
    body()->addWidget(
        new TextLabel(CountryCode::displayName(screen.recipient().country), FontRole::body, &Tokens::muted));
    body()->addWidget(makeContents());

    auto *quantity = new LineEdit(u"Quantity"_s, 56), *signer = new LineEdit(u"Signer"_s);
    quantity->setPlaceholderText(u"1"_s);
    bindText(quantity, screen.customs, &CustomsInfo::quantity);
    bindText(m_value, screen.customs, &CustomsInfo::value);
    bindText(signer, screen.customs, &CustomsInfo::signer);
    auto *row = new FormRow(u"Quantity"_s);
    row->add(quantity)->say(u"Value  $"_s)->add(m_value)->say(u"Signer"_s)->add(signer, 1);
    body()->addWidget(row);
    body()->addWidget(m_difference);
    addInvoiceLine();
    body()->addWidget(m_print);
    connect(m_print, &QCheckBox::toggled, this, [this](bool on) { m_screen.printInvoiceWithRates = on; });

    addButton(u"Cancel"_s, Rejected, Button::Kind::standard);
    addButton(u"Get Rates"_s, Accepted, Button::Kind::solid);
    m_contents->button(int(screen.customs.value().itemType))->setFocus();
    m_refresh.follow(screen);
    refresh();
}

void PaperworkDialog::refresh()
{
    m_contents->button(int(m_screen.customs.value().itemType))->setChecked(true);
    m_print->setChecked(m_screen.printInvoiceWithRates);
    m_print->setVisible(m_screen.carrier == Carrier::usps); // FedEx supplies its own customs documents
    if (const QString warning = LabelTexts::declaredValueWarning(m_screen); warning != m_difference->text()) {
        m_difference->setText(warning);
        fitHeight();
    }
}

/// Adds a line with the scanned invoice's number and subtotal.
void PaperworkDialog::addInvoiceLine()
{
    const std::optional<DesklineInvoice> invoice = m_screen.draftInvoice();
    if (!invoice)
        return;
    const std::optional<double> subtotal = invoice->subtotal();
    auto *line = new Notice(u"ui_invoice"_s, &Tokens::muted, FontRole::caption);
    line->setTextInk(&Tokens::text);
    body()->addWidget(line);
    line->setText(u"Invoice "_s + invoice->invoiceID +
                  (subtotal ? u" · Subtotal: $"_s + fixed(*subtotal, 2) : QString()));
}

QWidget *PaperworkDialog::makeContents()
{
    const std::optional<DesklineInvoice> invoice = m_screen.draftInvoice();
    const std::optional<CustomsItemType> suggested = invoice ? invoice->suggestedCustomsType() : std::nullopt;
    auto *list = PanelFrame::card();
    list->setFill(&Tokens::panel);
    auto *rows = new QVBoxLayout(list);
    rows->setContentsMargins(12, 4, 12, 4);
    rows->setSpacing(0);
    for (const CustomsItem &item : customsItems()) {
        const int number = int(item.type) + 1;
        auto *choice = new QRadioButton(item.pickerText);
        choice->setMinimumHeight(Theme::current().scaled(31));
        m_contents->addButton(choice, int(item.type));
        auto *line = new QHBoxLayout;
        line->addWidget(choice, 1);
        if (item.type == suggested) {
            const QString origin = u"From invoice items"_s;
            choice->setAccessibleName(item.pickerText + u", "_s + origin);
            line->addWidget(new Badge(origin, BadgeKind::chosen));
            line->addSpacing(8);
        }
        auto *keys = new TextLabel(QString::number(number), FontRole::caption, &Tokens::muted);
        const QKeySequence inField(Qt::ALT | Qt::Key(Qt::Key_0 + number));
        keys->setToolTip(u"%1, or %2 in a field"_s.arg(number).arg(inField.toString(QKeySequence::NativeText)));
        line->addWidget(keys);
        if (number > 1)
            rows->addWidget(new Separator);
        rows->addLayout(line);
    }
    connect(m_contents, &QButtonGroup::idClicked, this, &PaperworkDialog::choose);
    for (const CustomsItem &item : customsItems()) { // in a field, digits are text; there the shortcut needs Alt
        const auto number = Qt::Key(Qt::Key_1 + int(item.type));
        connect(new QShortcut(Qt::ALT | number, this), &QShortcut::activated, this,
                [this, type = int(item.type)] { choose(type); });
    }
    return list;
}

void PaperworkDialog::choose(int type)
{
    CustomsInfo info = m_screen.customs;
    info.itemType = CustomsItemType(type);
    m_screen.customs = info;
    if (m_contents->buttons().contains(focusWidget()))
        m_contents->button(type)->setFocus();
}

void PaperworkDialog::keyPressEvent(QKeyEvent *event)
{
    const int type = event->key() - Qt::Key_1;
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier; // Ctrl+2 is meant for a tab
    if (isPlain && type >= 0 && type < customsItems().size())
        choose(type);
    else
        Dialog::keyPressEvent(event);
}

} // namespace parcelory
