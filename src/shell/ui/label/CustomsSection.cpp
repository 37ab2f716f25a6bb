#include "shell/ui/label/CustomsSection.h"

#include "shell/ui/parts/Binding.h"

#include <QSignalBlocker>

namespace parcelory {
using namespace Qt::StringLiterals;

CustomsSection::CustomsSection(AppState &app, LabelScreen &screen, QWidget *parent)
    : FormSection(u"Customs Declaration (International)"_s.replace(u' ', u'\n'), parent), m_screen(screen),
      m_contents(new Choice(u"Contents"_s)), m_value(new Field(u"Declared value, US dollars"_s, 84)),
      m_hint(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_follower([this] { refresh(); })
{
    auto *quantity = new Field(u"Quantity"_s, 44), *signer = new Field(u"Signer"_s);
    quantity->setPlaceholderText(u"1"_s);
    for (const CustomsItem &item : customsItems())
        m_contents->addItem(item.pickerText, int(item.type));
    addRow(u"Contents"_s)->add(m_contents, 1);
    addRow(u"Quantity"_s)->add(quantity)->say(u"Value  $"_s)->add(m_value)->say(u"Signer"_s)->add(signer, 1);
    m_hint->setWordWrap(true);
    addBelowFields(m_hint);
    bindText(quantity, screen.customs, &CustomsInfo::quantity);
    bindText(m_value, screen.customs, &CustomsInfo::value);
    bindText(signer, screen.customs, &CustomsInfo::signer);
    connect(m_contents, &QComboBox::activated, this, [this](int at) {
        CustomsInfo info = m_screen.customs;
        info.itemType = CustomsItemType(m_contents->itemData(at).toInt());
        m_screen.customs = info;
    });
    m_follower.follow(app.draftTo, screen.customs);
    refresh();
}

void CustomsSection::refresh()
{
    const QSignalBlocker quiet(m_contents);
    m_contents->setCurrentIndex(m_contents->findData(int(m_screen.customs.value().itemType)));
    m_hint->setText(m_screen.customsHint());
    setVisible(m_screen.isInternational());
}

} // namespace parcelory
