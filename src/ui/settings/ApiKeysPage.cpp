#include "ui/settings/ApiKeysPage.h"

#include "app/openitems/TrackingWatch.h"
#include "app/settings/KeysScreen.h"
#include "core/Task.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Button.h"
#include "ui/parts/IconView.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/TabOrder.h"
#include "ui/parts/TextLabel.h"
#include "ui/settings/SettingsPage.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QPointer>
#include <QRadioButton>

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

struct StatusLook {
    Token fill, edge, ink;
    QString word;
    BadgeKind badge;
};

StatusLook lookOf(PostageMode mode)
{
    switch (mode) {
    case PostageMode::test:
        return {&Tokens::warnTint, &Tokens::warnEdge, &Tokens::text, u"TEST"_s, BadgeKind::test};
    case PostageMode::live:
        return {&Tokens::sheet, &Tokens::ok, &Tokens::text, u"LIVE"_s, BadgeKind::live};
    case PostageMode::practice:
        return {&Tokens::practiceTint, &Tokens::practice, &Tokens::text, u"PRACTICE"_s, BadgeKind::practice};
    case PostageMode::unknown:
        return {&Tokens::sheet, &Tokens::line, &Tokens::muted, {}, BadgeKind::plain};
    case PostageMode::none:
        break;
    }
    return {&Tokens::warnTint, &Tokens::warnEdge, &Tokens::warn, {}, BadgeKind::plain};
}

QString storageNote(bool practice)
{
    if (practice)
        return u"Practice keys are deleted when the practice desk closes."_s;
#ifdef Q_OS_MACOS
    return u"Keys are stored in the macOS Keychain, never in a file."_s;
#else
    return u"Keys are stored in the system's key ring, never in a file."_s;
#endif
}

} // namespace

/// A key's row: choosing the key makes it active.
class KeyRowView : public PanelFrame {
public:
    KeyRowView(KeysScreen &keys, const QString &name, QButtonGroup &choice)
        : PanelFrame(&Tokens::sheet), m_name(name), m_choose(new QRadioButton), m_mode(new Badge({}, BadgeKind::plain)),
          m_active(new TextLabel(u"Active"_s, FontRole::caption, &Tokens::muted))
    {
        QString shown = m_choose->fontMetrics().elidedText(name, Qt::ElideMiddle, Theme::current().scaled(300));
        m_choose->setText(shown.replace(u'&', u"&&"_s)); // a name has no mnemonic
        m_choose->setToolTip(plainToolTip(name));
        choice.addButton(m_choose);
        auto *remove = new Button(u"Remove this key"_s, Button::Kind::danger, u"ui_trash"_s);
        remove->setAccessibleName(u"Remove this key: "_s + name);
        auto *row = new QHBoxLayout(this);
        row->setContentsMargins(0, 9, 0, 9);
        row->setSpacing(12);
        row->addWidget(m_choose);
        row->addWidget(m_mode);
        row->addStretch(1);
        row->addWidget(m_active);
        row->addWidget(remove);
        connect(m_choose, &QRadioButton::clicked, this,
                [&keys, name] { spawn([&keys, name] { return keys.makeActive(name); }); });
        connect(remove, &QPushButton::clicked, this,
                [&keys, name] { spawn([&keys, name] { return keys.remove(name); }); });
    }

    void refresh(const KeyRow &key)
    {
        const QString word = key.test ? u"TEST"_s : u"LIVE"_s;
        m_mode->set(word, key.test ? BadgeKind::test : BadgeKind::live);
        nameWidget(m_choose, m_name + u", "_s + word + u" key"_s);
        m_choose->setChecked(key.active);
        m_active->setVisible(key.active);
    }

private:
    QString m_name;
    QRadioButton *m_choose;
    Badge *m_mode;
    TextLabel *m_active;
};

ApiKeysPage::ApiKeysPage(KeysScreen &keys, TrackingWatch &tracking, QWidget *parent)
    : SettingsPage(u"Carrier API Keys"_s, parent), m_keys(keys), m_status(appendCard()), m_list(appendListCard()),
      m_mode(new Badge({}, BadgeKind::plain)), m_warning(new IconView(u"ui_warning"_s, 16, &Tokens::warn)),
      m_text(new TextLabel({}, FontRole::strong)), m_name(new LineEdit(u"Key name"_s, 220)),
      m_token(new LineEdit(u"Token"_s)), m_add(new Button(u"Add Key"_s, Button::Kind::solid)),
      m_refusal(new Notice(u"ui_warning"_s, &Tokens::warn)),
      m_note(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_rows(column(m_list)),
      m_refresh([this] { refresh(); })
{
    fillStatus();
    appendEntry();
    QVBoxLayout *background = column(appendCard());
    background->addWidget(makeSwitch(u"Check tracking in the background"_s, tracking.isOn));
    background->addWidget(
        new TextLabel(u"Parcelory checks labels of the last 30 days and lists problems in My Mailing Log."_s,
                      FontRole::caption, &Tokens::muted));
    m_refresh.follow(keys);
    refresh();
}

void ApiKeysPage::fillStatus()
{
    auto *line = new QHBoxLayout;
    line->setSpacing(10);
    line->addWidget(m_warning);
    line->addWidget(m_mode);
    line->addWidget(m_text, 1);
    m_text->setWordWrap(true);
    column(m_status)->addLayout(line);
}

void ApiKeysPage::appendEntry()
{
    QVBoxLayout *rows = column(appendCard());
    rows->addWidget(new TextLabel(u"Add a key"_s, FontRole::strong));
    m_name->setPlaceholderText(u"Name (e.g. Live Mode)"_s);
    m_token->setPlaceholderText(u"shippo_test_… or shippo_live_…"_s);
    m_token->setEchoMode(QLineEdit::Password);
    auto *line = new QHBoxLayout;
    line->setSpacing(8);
    line->addWidget(m_name);
    line->addWidget(m_token, 1);
    line->addWidget(m_add);
    rows->addLayout(line);
    rows->addWidget(m_refusal);
    auto *note = new QHBoxLayout;
    note->setSpacing(6);
    note->addWidget(new IconView(u"ui_lock"_s, 14));
    note->addWidget(m_note, 1);
    rows->addLayout(note);
    for (LineEdit *field : {m_name, m_token}) {
        connect(field, &QLineEdit::textChanged, this, &ApiKeysPage::refreshEntry);
        connect(field, &QLineEdit::returnPressed, m_add, &QPushButton::click);
    }
    connect(m_add, &QPushButton::clicked, this, &ApiKeysPage::add);
}

void ApiKeysPage::refresh()
{
    refreshStatus();
    refreshEntry();
    offerRemoved();
    QStringList names;
    for (const KeyRow &key : m_keys.keys.value())
        names.append(key.name);
    if (m_rows.follow(names, [this](const QString &name) { return new KeyRowView(m_keys, name, m_choice); }))
        orderTabsByLayout(this);
    m_choice.setExclusive(false); // possibly no key is active
    for (const KeyRow &key : m_keys.keys.value())
        m_rows.find(key.name)->refresh(key);
    m_choice.setExclusive(true);
    m_list->setVisible(!names.isEmpty());
}

void ApiKeysPage::refreshStatus()
{
    const StatusLook look = lookOf(m_keys.mode);
    m_status->setFill(look.fill);
    m_status->setEdge(look.edge);
    m_status->setVisible(!m_keys.settingsText.value().isEmpty());
    m_warning->setVisible(look.word.isEmpty());
    m_mode->setVisible(!look.word.isEmpty());
    m_mode->set(look.word, look.badge);
    m_text->setInk(look.ink);
    m_text->setText(m_keys.settingsText);
}

void ApiKeysPage::refreshEntry()
{
    const bool filled = !m_name->text().trimmed().isEmpty() && !m_token->text().trimmed().isEmpty();
    m_name->setEnabled(!m_adding);
    m_token->setEnabled(!m_adding);
    m_add->setEnabled(filled && !m_adding);
    m_refusal->setText(m_keys.message);
    m_note->setText(storageNote(m_keys.mode == PostageMode::practice));
}

/// Undo of a removed key: the clerk enters its token again.
void ApiKeysPage::offerRemoved()
{
    const QString name = m_keys.removedName, former = std::exchange(m_offered, name);
    if (name == former || m_adding || m_name->text() != former) // the clerk has typed another name
        return;
    m_name->setText(name);
    if (!name.isEmpty())
        m_token->setFocus();
}

void ApiKeysPage::add()
{
    m_adding = true;
    refreshEntry();
    spawn([self = QPointer(this), &keys = m_keys, name = m_name->text(), token = m_token->text()]() -> Task<> {
        co_await keys.add(name, token);
        if (self)
            self->finishAdding();
    });
}

/// A rejected key stays in the fields for another try.
void ApiKeysPage::finishAdding()
{
    m_adding = false;
    const bool taken = m_keys.message.value().isEmpty();
    if (taken) {
        m_name->clear();
        m_token->clear();
    }
    refreshEntry();
    (taken ? m_name : m_token)->setFocus();
}

} // namespace parcelory
