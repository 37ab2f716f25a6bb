#include "ui/label/CustomsSection.h"

#include "app/label/LabelDraft.h"
#include "app/label/LabelScreen.h"
#include "app/label/LabelTexts.h"
#include "compose/Customs.h"
#include "core/Task.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Binding.h"
#include "ui/parts/Button.h"
#include "ui/parts/ComboBox.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QSignalBlocker>

namespace parcelory {
using namespace Qt::StringLiterals;

CustomsSection::CustomsSection(LabelScreen &screen, QWidget *parent)
    : FormSection(u"Customs Declaration (International)"_s.replace(u' ', u'\n'), parent), m_screen(screen),
      m_contents(new ComboBox(u"Contents"_s)), m_quantity(new LineEdit(u"Quantity"_s, 44)),
      m_value(new LineEdit(u"Declared value, US dollars"_s, 84)),
      m_hint(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_print(new Button(u"Print Invoice"_s)),
      m_refresh([this] { refresh(); })
{
    auto *signer = new LineEdit(u"Signer"_s);
    connect(m_print, &QPushButton::clicked, this, [this] { spawn([this] { return m_screen.printIntlInvoice(); }); });
    m_quantity->setPlaceholderText(u"1"_s);
    for (const CustomsItem &item : customsItems())
        m_contents->addItem(item.pickerText, int(item.type));
    addRow(u"Contents"_s)->add(m_contents, 1);
    addRow(u"Quantity"_s)
        ->add(m_quantity)
        ->say(u"Value  $"_s)
        ->add(m_value)
        ->say(u"Signer"_s)
        ->add(signer, 1)
        ->add(m_print);
    m_hint->setWordWrap(true);
    addBelowFields(m_hint);
    bindText(m_quantity, screen.customs, &CustomsInfo::quantity);
    bindText(m_value, screen.customs, &CustomsInfo::value);
    bindText(signer, screen.customs, &CustomsInfo::signer);
    connect(m_contents, &QComboBox::activated, this, [this](int at) {
        CustomsInfo info = m_screen.customs;
        info.itemType = CustomsItemType(m_contents->itemData(at).toInt());
        m_screen.customs = info;
    });
    m_refresh.follow(screen);
    refresh();
}

LineEdit *CustomsSection::field(DraftField which) const
{
    if (which == DraftField::quantity)
        return m_quantity;
    return which == DraftField::declaredValue ? m_value : nullptr;
}

void CustomsSection::refresh()
{
    const QSignalBlocker quiet(m_contents);
    m_contents->setCurrentIndex(m_contents->findData(int(m_screen.customs.value().itemType)));
    m_contents->setToolTip(customsItem(m_screen.customs.value().itemType).summary());
    const QString warning = m_screen.ruleAt(RuleField::declaredValue);
    m_hint->setText(warning.isEmpty() ? LabelTexts::customsHint(m_screen)
                                      : LabelTexts::customsHint(m_screen) + u'\n' + warning);
    enableUnless(m_screen.busy ? notWhileBusy : QString(), m_print, m_value);
    setVisible(m_screen.isInternational());
}

} // namespace parcelory
