#include "ui/settings/SenderProfilesPage.h"

#include "app/AppState.h"
#include "app/settings/SettingsScreen.h"
#include "records/SenderProfile.h"
#include "ui/parts/Binding.h"
#include "ui/parts/Button.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/TabOrder.h"
#include "ui/parts/TextLabel.h"
#include "ui/settings/SettingsPage.h"
#include "ui/theme/Theme.h"

#include <QHBoxLayout>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

SenderProfilesPage::SenderProfilesPage(AppState &app, SettingsScreen &settings, QWidget *parent)
    : SettingsPage(u"Sender Profiles"_s, parent), m_app(app), m_settings(settings), m_rows(column(appendListCard())),
      m_refresh([this] { refresh(); })
{
    auto *add = new Button(u"Add Profile"_s, Button::Kind::standard, u"ui_plus"_s);
    head()->addWidget(add);
    appendFallbacks();
    column(appendCard())
        ->addWidget(makeSwitch(u"Show the address book beside the label form"_s, settings.showAddressSidebar));
    appendCaption(u"Changes are saved automatically."_s);
    connect(add, &QPushButton::clicked, this, &SenderProfilesPage::addProfile);
    m_refresh.follow(settings);
    refresh();
    if (const std::optional<SenderProfile> first = app.senders.defaultProfile())
        m_rows.find(first->id)->unfold();
}

void SenderProfilesPage::appendFallbacks()
{
    QVBoxLayout *rows = column(appendCard());
    auto *title =
        new TextLabel(u"Fallbacks for outgoing packages (used when a profile leaves these blank):"_s, FontRole::strong);
    title->setWordWrap(true);
    rows->addWidget(title);
    const auto add = [rows](const QString &label, const QString &name, QProperty<QString> &property) {
        auto *field = new LineEdit(name);
        field->setMaximumWidth(Theme::current().scaled(260));
        bindText(field, property);
        auto *row = new FormRow(label, 146);
        row->add(field, 1000)->fill();
        rows->addWidget(row);
    };
    add(u"Phone"_s, u"Fallback phone"_s, m_settings.fallbackPhone);
    add(u"Email"_s, u"Fallback email"_s, m_settings.fallbackEmail);
}

void SenderProfilesPage::refresh()
{
    QList<QUuid> ids;
    for (const SenderProfile &profile : m_app.senders.profiles.value())
        ids.append(profile.id);
    if (m_rows.follow(ids, [this](const QUuid &id) { return new ProfileRow(m_app, m_settings, id); }))
        orderTabsByLayout(this);
    m_rows.forEach([](ProfileRow *row) { row->refresh(); });
}

void SenderProfilesPage::addProfile()
{
    const SenderProfile added = m_app.senders.add();
    m_refresh.refreshNow();
    ProfileRow *row = m_rows.find(added.id);
    row->unfold();
    row->nameField()->setFocus();
    row->nameField()->selectAll();
    reveal(row);
}

} // namespace parcelory
