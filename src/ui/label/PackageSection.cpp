#include "ui/label/PackageSection.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/label/LabelTexts.h"
#include "compose/Services.h"
#include "core/Text.h"
#include "ui/label/MailpiecePicker.h"
#include "ui/parts/Binding.h"
#include "ui/parts/Button.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/SegmentedControl.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

namespace parcelory {
using namespace Qt::StringLiterals;

PackageSection::PackageSection(AppState &app, LabelScreen &screen, QWidget *parent)
    : FormSection(u"Package"_s, parent), m_app(app), m_screen(screen), m_carrier(new SegmentedControl(u"Carrier"_s)),
      m_pounds(new LineEdit(u"Weight, pounds"_s, 44)), m_ounces(new LineEdit(u"Weight, ounces"_s, 52)),
      m_length(new LineEdit(u"Length, inches"_s, 56)), m_width(new LineEdit(u"Width, inches"_s, 56)),
      m_height(new LineEdit(u"Height, inches"_s, 56)), m_size(nullptr),
      m_sizeHint(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_weigh(new Button(u"Weigh"_s, Button::Kind::standard, u"ui_scale"_s)),
      m_reading(new TextLabel({}, FontRole::caption)), m_settling(new TextLabel({}, FontRole::captionStrong)),
      m_rule(new Notice(u"ui_warning"_s, &Tokens::warn)), m_refresh([this] { refresh(); })
{
    for (const CarrierInfo &info : carriers())
        m_carrier->add(int(info.carrier), info.displayName, info.icon);
    m_carrier->addUnavailable(u"DHL"_s, u"ship_dhl"_s, u"Not offered"_s);
    connect(m_carrier, &SegmentedControl::chosenByUser, this, [this](int id) { m_screen.carrier = Carrier(id); });
    addRow(u"Carrier"_s)->add(m_carrier)->fill();
    addRow(u"Mailpiece"_s)->add(new MailpiecePicker(app, screen), 1);

    auto *row = addRow(u"Weight"_s);
    row->add(m_pounds)
        ->say(u"lb"_s)
        ->add(m_ounces)
        ->say(u"oz"_s)
        ->add(m_weigh)
        ->add(m_reading)
        ->add(m_settling)
        ->fill();
    m_weigh->setToolTip(QKeySequence(Qt::CTRL | Qt::Key_G).toString(QKeySequence::NativeText));
    connect(m_weigh, &QPushButton::clicked, this, [this] { m_screen.weigh(); });
    m_size = addRow(u"Size"_s);
    m_size->add(m_length)->say(u"×"_s)->add(m_width)->say(u"×"_s)->add(m_height)->add(m_sizeHint, 1);
    addBelowFields(m_rule);

    bindText(m_pounds, screen.weightLb);
    bindText(m_ounces, screen.weightOz);
    bindText(m_length, screen.dimLength);
    bindText(m_width, screen.dimWidth);
    bindText(m_height, screen.dimHeight);
    m_refresh.follow(screen);
    refresh();
}

void PackageSection::refreshScale()
{
    const USBScale &scale = m_app.scale;
    const QString fault = scale.fault;
    m_weigh->setEnabled(scale.connected && !m_screen.busy);
    const bool faulty = scale.connected && !fault.isEmpty(); // the last weight is then meaningless
    m_reading->setText(!scale.connected ? u"No scale detected"_s : faulty ? fault : u"Scale "_s + scale.display());
    m_reading->setInk(!scale.connected ? &Tokens::muted : faulty ? &Tokens::warn : &Tokens::text);
    m_settling->setVisible(scale.connected && !faulty && scale.ounces.value().has_value());
    m_settling->setText(scale.stable ? u"✓ steady"_s : u"moving…"_s);
    m_settling->setInk(scale.stable ? &Tokens::ok : &Tokens::muted);
}

void PackageSection::refresh()
{
    m_carrier->choose(int(m_screen.carrier.value()));
    m_size->setVisible(m_screen.sendsOwnDimensions());
    m_sizeHint->setText(LabelTexts::sizeHint(m_screen));
    m_rule->setText(joinPresent({m_screen.ruleAt(RuleField::weight), m_screen.ruleAt(RuleField::size)}, u"\n"_s));
    refreshScale();
}

LineEdit *PackageSection::field(DraftField which) const
{
    switch (which) {
    case DraftField::weight:
        return m_pounds;
    case DraftField::ounces:
        return m_ounces;
    case DraftField::length:
        return m_length;
    case DraftField::width:
        return m_width;
    case DraftField::height:
        return m_height;
    default:
        return nullptr;
    }
}

} // namespace parcelory
