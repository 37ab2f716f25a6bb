#include "ui/settings/CustomBoxesPage.h"

#include "app/AppState.h"
#include "app/settings/SettingsScreen.h"
#include "core/Task.h"
#include "core/Text.h"
#include "records/BoxProfile.h"
#include "ui/parts/Binding.h"
#include "ui/parts/Button.h"
#include "ui/parts/IconView.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/TabOrder.h"
#include "ui/parts/TextLabel.h"
#include "ui/settings/SettingsPage.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

/// A carton: its name and its inside dimensions.
class BoxRow : public PanelFrame {
public:
    BoxRow(AppState &app, SettingsScreen &settings, const QUuid &id)
        : PanelFrame(&Tokens::sheet), m_app(app), m_settings(settings), m_id(id),
          m_name(makeField(u"Box name"_s, 0, &BoxProfile::name)),
          m_remove(new Button({}, Button::Kind::icon, u"ui_trash"_s))
    {
        m_name->setPlaceholderText(u"Name / SKU (e.g. ULINE S-4344)"_s);
        auto *row = new QHBoxLayout(this);
        row->setContentsMargins(0, 8, 0, 8);
        row->setSpacing(8);
        row->addWidget(new IconView(u"popup_package"_s, 20));
        row->addWidget(m_name, 1);
        const auto say = [row](const QString &text) {
            row->addWidget(new TextLabel(text, FontRole::body, &Tokens::muted));
        };
        say(u"Inside dims:"_s);
        row->addWidget(makeField(u"Length, inches"_s, 56, &BoxProfile::length));
        say(u"×"_s);
        row->addWidget(makeField(u"Width, inches"_s, 56, &BoxProfile::width));
        say(u"×"_s);
        row->addWidget(makeField(u"Height, inches"_s, 56, &BoxProfile::height));
        say(u"in"_s);
        row->addWidget(m_remove);
        connect(m_remove, &QPushButton::clicked, this,
                [this] { spawn([&settings = m_settings, id = m_id] { return settings.removeBox(id); }); });
    }

    void refresh() { m_remove->describe(u"Delete "_s + m_name->text()); }
    LineEdit *nameField() const { return m_name; }

private:
    LineEdit *makeField(const QString &name, int width, QString BoxProfile::*member)
    {
        auto *field = new LineEdit(name, width);
        const auto text = [this, member] { return m_app.boxes.find(m_id).value_or(BoxProfile{}).*member; };
        const bool isSize = member != &BoxProfile::name;
        bindText(field, m_app.boxes.profiles, text, [this, member, field, isSize](const QString &typed) {
            if (isSize && !typed.trimmed().isEmpty() && decimal(typed).value_or(0) <= 0)
                field->setFault(u"Type inches as a number, for example 8.5."_s);
            else
                m_settings.editBox(m_id, [&](BoxProfile &box) { box.*member = typed; });
        });
        connect(field, &QLineEdit::editingFinished, this, [field, text] {
            if (field->hasFault()) { // it was not stored
                field->setText(text());
                field->setFault({});
            }
        });
        return field;
    }

    AppState &m_app;
    SettingsScreen &m_settings;
    QUuid m_id;
    LineEdit *m_name;
    Button *m_remove;
};

CustomBoxesPage::CustomBoxesPage(AppState &app, SettingsScreen &settings, QWidget *parent)
    : SettingsPage(u"Custom Boxes (ULINE SKUs)"_s, parent), m_app(app), m_settings(settings), m_card(makeCard()),
      m_rows(column(m_card)), m_refresh([this] { refresh(); })
{
    auto *add = new Button(u"Add Box"_s, Button::Kind::standard, u"ui_plus"_s);
    head()->addWidget(add);
    connect(add, &QPushButton::clicked, this, &CustomBoxesPage::addBox);
    m_refresh.follow(settings);
    refresh();
}

PanelFrame *CustomBoxesPage::makeCard()
{
    appendCaption(u"Add the ULINE boxes you ship with — they appear in the Mailpiece menu and fill in their dimensions "
                  "automatically."_s);
    return appendListCard();
}

void CustomBoxesPage::refresh()
{
    QList<QUuid> ids;
    for (const BoxProfile &box : m_app.boxes.profiles.value())
        ids.append(box.id);
    if (m_rows.follow(ids, [this](const QUuid &id) { return new BoxRow(m_app, m_settings, id); }))
        orderTabsByLayout(this);
    m_rows.forEach([](BoxRow *row) { row->refresh(); });
    m_card->setVisible(!ids.isEmpty());
}

void CustomBoxesPage::addBox()
{
    const BoxProfile added = m_app.boxes.add();
    m_refresh.refreshNow();
    BoxRow *row = m_rows.find(added.id);
    row->nameField()->setFocus();
    row->nameField()->selectAll();
    reveal(row);
}

} // namespace parcelory
