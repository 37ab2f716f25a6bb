#include "ui/label/SenderSection.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/label/LabelTexts.h"
#include "records/SenderProfile.h"
#include "ui/parts/Button.h"
#include "ui/parts/ComboBox.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/Notice.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QSignalBlocker>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

SenderSection::SenderSection(AppState &app, LabelScreen &screen, QWidget *parent)
    : FormSection(u"From"_s, parent), m_app(app), m_screen(screen), m_profile(new ComboBox(u"Sender profile"_s)),
      m_address(new ElidedLabel({}, FontRole::caption, &Tokens::muted)), m_missing(nullptr),
      m_hint(new Notice(u"ui_warning"_s, &Tokens::warn)), m_refresh([this] { refresh(); })
{
    m_profile->setFixedWidth(Theme::current().scaled(140));
    addRow(u"Profile"_s)->add(m_profile)->add(m_address, 1);
    auto *settings = new Button(u"Open Settings"_s, Button::Kind::link);
    m_missing = addRow();
    m_missing->add(m_hint)->add(settings)->fill();
    connect(settings, &QPushButton::clicked, this, [this] { m_app.tab = MainTab::settings; });
    connect(m_profile, &QComboBox::activated, this,
            [this](int at) { m_screen.senderID = m_profile->itemData(at).toUuid(); });
    m_refresh.follow(screen);
    refresh();
}

void SenderSection::refresh()
{
    const QSignalBlocker quiet(m_profile);
    const std::optional<SenderProfile> current = m_screen.sender();
    QList<ComboBox::Item> profiles;
    for (const SenderProfile &profile : m_app.senders.profiles.value()) {
        const QString name = profile.name.trimmed();
        profiles.append({name.isEmpty() ? u"Unnamed — "_s + profile.address.oneLine() : name, profile.id});
    }
    m_profile->offer(profiles, current ? QVariant(current->id) : QVariant());
    m_address->setFullText(current ? current->address.oneLine() : QString());
    const QString hint = LabelTexts::senderHint(m_screen);
    m_hint->setText(hint);
    m_missing->setVisible(!hint.isEmpty());
}

} // namespace parcelory
