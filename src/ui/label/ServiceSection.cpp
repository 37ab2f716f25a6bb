#include "ui/label/ServiceSection.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/label/LabelTexts.h"
#include "compose/Services.h"
#include "core/Text.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Binding.h"
#include "ui/parts/ComboBox.h"
#include "ui/parts/DateField.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QSignalBlocker>

namespace parcelory {
using namespace Qt::StringLiterals;

ServiceSection::ServiceSection(AppState &app, LabelScreen &screen, QWidget *parent)
    : FormSection(u"Service"_s, parent), m_app(app), m_screen(screen), m_class(new ComboBox(u"Class"_s)),
      m_date(new DateField(u"Ship date"_s)), m_residentialRow(nullptr),
      m_residential(new QCheckBox(u"Residential address"_s)), m_rule(new Notice(u"ui_warning"_s, &Tokens::warn)),
      m_refresh([this] { refresh(); })
{
    addRow(u"Class"_s)->add(m_class, 1)->say(u"Ship date"_s)->add(m_date);
    m_residentialRow = addRow();
    m_residentialRow->add(m_residential)->fill();
    addBelowFields(m_rule);
    m_residential->setToolTip(u"FedEx ships to homes via Home Delivery and to businesses via Ground — this flag "
                              "decides which services rate."_s);
    connect(m_class, &QComboBox::activated, this,
            [this](int at) { m_screen.svcClass = ServiceClass(m_class->itemData(at).toInt()); });
    connect(m_date, &DateField::dateChosen, this, [this](QDate date) { m_screen.shipDate = date; });
    connect(m_date, &DateField::refused, this, [this](const QString &reason) { m_screen.refuseDate(reason); });
    connect(m_residential, &QCheckBox::toggled, this, [this](bool on) { m_screen.fedexResidential = on; });
    m_refresh.follow(screen);
    refresh();
}

void ServiceSection::refresh()
{
    const QSignalBlocker quietClass(m_class), quietFlag(m_residential);
    QList<ComboBox::Item> classes;
    for (const ServiceClass offered : m_screen.offeredClasses())
        classes.append({serviceClassInfo(offered).displayName, int(offered)});
    m_class->offer(classes, int(m_screen.effectiveClass()));
    const bool locked = m_screen.flatRateLocked();
    m_class->setEnabled(!locked);
    m_class->setFace(LabelTexts::classHint(m_screen), themeIcon(u"ui_lock"_s));
    m_date->setMinimumDate(m_app.platform.clock.now().date());
    m_date->showDate(m_screen.shipDate);
    m_rule->setText(m_screen.ruleAt(RuleField::shipDate));
    m_residential->setChecked(m_screen.fedexResidential);
    m_residentialRow->setVisible(m_screen.carrier == Carrier::fedex);
}

ExtrasSection::ExtrasSection(LabelScreen &screen, QWidget *parent)
    : FormSection(u"Extras"_s, parent), m_screen(screen), m_option(new ComboBox(u"Option"_s)),
      m_insurance(new LineEdit(u"Insured value, US dollars"_s, 112)),
      m_reference(new LineEdit(u"Reference number"_s, 96)), m_offerRow(nullptr),
      m_offer(new Button({}, Button::Kind::tint, u"ui_shield"_s)),
      m_covered(new TextLabel({}, FontRole::caption, &Tokens::ok)),
      m_warning(new Notice(u"ui_warning"_s, &Tokens::warn)), m_refresh([this] { refresh(); })
{
    auto *description = new LineEdit(u"Description"_s);
    description->setPlaceholderText(u"Local log only"_s);
    addRow(u"Option"_s)->add(m_option, 1)->say(u"Insure  $"_s)->add(m_insurance);
    m_offerRow = addRow();
    m_offerRow->setMinimumHeight(0);
    m_offerRow->fill()->add(m_offer)->add(m_covered);
    m_offer->setFixedHeight(Theme::current().scaled(24));
    m_offer->setFont(Theme::current().font(FontRole::caption));
    m_offer->setToolTip(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_I).toString(QKeySequence::NativeText));
    connect(m_offer, &QPushButton::clicked, this, [this] {
        m_insurance->setFocus(); // the button goes
        m_screen.insureForInvoice();
    });
    addBelowFields(m_warning);
    addRow(u"Ref #"_s)->add(m_reference)->say(u"Description"_s)->add(description, 1);
    bindText(m_insurance, screen.insuranceValue);
    bindText(m_reference, screen.reference);
    bindText(description, screen.descriptionText);
    connect(m_option, &QComboBox::activated, this,
            [this](int at) { m_screen.service = ServiceOption(m_option->itemData(at).toInt()); });
    m_refresh.follow(screen);
    refresh();
}

void ExtrasSection::refresh()
{
    const QSignalBlocker quiet(m_option);
    QList<ComboBox::Item> options;
    for (const ServiceOption offered : m_screen.offeredOptions()) {
        const ServiceOptionInfo &info = serviceOptionInfo(offered);
        options.append({info.label, int(offered), info.icon});
    }
    m_option->offer(options, int(m_screen.service.value()));
    m_warning->setText(
        joinPresent({LabelTexts::signatureWarning(m_screen), m_screen.ruleAt(RuleField::insurance)}, u"\n"_s));
    const QString offer = LabelTexts::insuranceOffer(m_screen);
    const bool isOffered = m_screen.isInsurable();
    m_offer->setText(offer);
    nameWidget(m_offer, u"Insure for the invoice amount, $"_s + LabelTexts::invoiceAmount(m_screen));
    enable(m_offer, !m_screen.buying, m_insurance); // the label that is being bought cannot be insured any more
    m_covered->setText(offer);
    m_offer->setVisible(isOffered);
    m_covered->setVisible(!isOffered);
    m_offerRow->setVisible(!offer.isEmpty());
}

} // namespace parcelory
