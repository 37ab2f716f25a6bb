#include "ui/settings/ProfileRow.h"

#include "app/AppState.h"
#include "app/settings/SettingsScreen.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "core/Text.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Binding.h"
#include "ui/parts/Button.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QAbstractButton>
#include <QGridLayout>
#include <QPainter>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int glyph = 16, gap = 8;
const QString fromFallback = u"uses the fallback"_s;

TextLabel *fieldLabel(const QString &text, int width = 0)
{
    auto *label = new TextLabel(text, FontRole::body, &Tokens::muted);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setMinimumWidth(Theme::current().scaled(width));
    return label;
}

} // namespace

/// A profile's header line; pressing it shows or hides the fields.
class FoldHeader : public QAbstractButton {
public:
    FoldHeader() : m_name(new ElidedLabel({}, FontRole::strong)), m_address(new ElidedLabel({}, FontRole::caption))
    {
        setCheckable(true);
        setFocusPolicy(Qt::StrongFocus);
        setCursor(Qt::PointingHandCursor);
        m_address->setInk(&Tokens::muted);
        auto *lines = new QVBoxLayout(this);
        lines->setContentsMargins(glyph + 10, 5, 6, 5);
        lines->setSpacing(1);
        lines->addWidget(m_name);
        lines->addWidget(m_address);
    }

    void set(const QString &name, const QString &address)
    {
        m_name->setFullText(name);
        m_address->setFullText(address);
        nameWidget(this, name + u", "_s + address);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        const Theme &theme = Theme::current();
        QPainter painter(this);
        paintIcon(painter, isChecked() ? u"ui_chevron_down"_s : u"ui_chevron_right"_s,
                  {2, (height() - glyph) / 2, glyph, glyph}, theme.tokens().muted);
        if (hasFocus())
            theme.drawFocusRing(painter, rect(), Theme::radius);
    }

private:
    ElidedLabel *m_name, *m_address;
};

ProfileRow::ProfileRow(AppState &app, SettingsScreen &settings, const QUuid &id, QWidget *parent)
    : PanelFrame(&Tokens::sheet, parent), m_app(app), m_settings(settings), m_id(id), m_header(new FoldHeader),
      m_isDefault(new Badge(u"Default"_s, BadgeKind::chosen)), m_makeDefault(new Button(u"Make Default"_s)),
      m_remove(new Button({}, Button::Kind::icon, u"ui_trash"_s)), m_name(new LineEdit(u"Profile name"_s)),
      m_editor(makeEditor())
{
    auto *line = new QHBoxLayout;
    line->setSpacing(gap);
    line->addWidget(m_header, 1);
    line->addWidget(m_isDefault);
    line->addWidget(m_makeDefault);
    line->addWidget(m_remove);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 4, 0, 4);
    rows->setSpacing(6);
    rows->addLayout(line);
    rows->addWidget(m_editor);
    m_editor->setVisible(false);

    const auto name = [this] { return m_app.senders.find(m_id).value_or(SenderProfile{}).name; };
    bindText(m_name, app.senders.profiles, name, [this](const QString &typed) {
        m_settings.editProfile(m_id, [&typed](SenderProfile &profile) { profile.name = typed; });
    });
    connect(m_header, &QAbstractButton::toggled, m_editor, &QWidget::setVisible);
    connect(m_makeDefault, &QPushButton::clicked, this, [this] { m_app.senders.defaultID = m_id; });
    connect(m_remove, &QPushButton::clicked, this,
            [this] { spawn([&settings = m_settings, id = m_id] { return settings.removeProfile(id); }); });
}

LineEdit *ProfileRow::makeField(const QString &name, QString ShippoAddress::*member)
{
    auto *field = new LineEdit(name);
    const auto text = [this, member] { return m_app.senders.find(m_id).value_or(SenderProfile{}).address.*member; };
    bindText(field, m_app.senders.profiles, text, [this, member](const QString &typed) {
        m_settings.editProfile(m_id, [&](SenderProfile &profile) { profile.address.*member = typed; });
    });
    return field;
}

QWidget *ProfileRow::makeEditor()
{
    auto *editor = new QWidget;
    auto *grid = new QGridLayout(editor);
    grid->setContentsMargins(0, 0, 12, 8);
    grid->setSpacing(gap);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    const auto put = [&](int row, int column, const QString &label, QWidget *field) {
        grid->addWidget(fieldLabel(label, column == 0 ? 146 : 74), row, column);
        grid->addWidget(field, row, column + 1);
    };
    using A = ShippoAddress;
    const auto add = [&](int row, int column, const QString &name, QString A::*member) {
        LineEdit *field = makeField(name, member);
        put(row, column, name, field);
        return field;
    };
    put(0, 0, u"Profile name"_s, m_name);
    add(1, 0, u"Name"_s, &A::name);
    add(1, 2, u"Company"_s, &A::company);
    add(2, 0, u"Street"_s, &A::street1);
    add(2, 2, u"Suite"_s, &A::street2);
    add(3, 0, u"City"_s, &A::city);
    LineEdit *state = makeField(u"State"_s, &A::state), *zip = makeField(u"ZIP"_s, &A::zip);
    state->setFixedWidth(Theme::current().scaled(48));
    zip->setMaximumWidth(Theme::current().scaled(96));
    auto *place = new QWidget;
    auto *line = new QHBoxLayout(place);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(gap);
    line->addWidget(state);
    line->addWidget(fieldLabel(u"ZIP"_s));
    line->addWidget(zip, 1000);
    line->addStretch(1);
    put(3, 2, u"State"_s, place);
    add(4, 0, u"Phone"_s, &A::phone)->setPlaceholderText(fromFallback);
    add(4, 2, u"Email"_s, &A::email)->setPlaceholderText(fromFallback);
    return editor;
}

void ProfileRow::refresh()
{
    const std::optional<SenderProfile> profile = m_app.senders.find(m_id);
    if (!profile)
        return;
    const QString name = profile->name.isEmpty() ? u"Unnamed profile"_s : profile->name;
    const QString address = joinPresent({profile->address.company, profile->address.oneLine()}, u", "_s);
    m_header->set(name, address.isEmpty() ? u"No address yet"_s : address);
    const bool isDefault = m_settings.isDefaultProfile(m_id);
    m_isDefault->setVisible(isDefault);
    m_makeDefault->setVisible(!isDefault);
    nameWidget(m_makeDefault, u"Make Default: "_s + name);
    m_remove->setEnabled(m_settings.canRemoveProfile());
    m_remove->describe(u"Delete "_s + name);
    if (!m_settings.canRemoveProfile())
        m_remove->setToolTip(u"The last profile cannot be deleted"_s);
}

void ProfileRow::unfold()
{
    m_header->setChecked(true);
}

} // namespace parcelory
