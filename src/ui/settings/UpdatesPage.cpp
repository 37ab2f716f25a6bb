#include "ui/settings/UpdatesPage.h"
#include "app/update/UpdateChecker.h"
#include "core/Task.h"
#include "ui/parts/Button.h"
#include "ui/parts/TextLabel.h"
#include "ui/settings/SettingsPage.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

UpdatesPage::UpdatesPage(UpdateChecker &updates, QWidget *parent)
    : SettingsPage(u"Updates"_s, parent), m_updates(updates), m_check(new Button(u"Check for Updates…"_s)),
      m_status(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_refresh([this] { refresh(); })
{
    appendCaption(
        u"Parcelory looks for a newer version at every start and offers it; it never installs without asking."_s);
    QVBoxLayout *rows = column(appendCard());
    rows->addWidget(new TextLabel(u"Parcelory %1 is installed."_s.arg(updates.installedVersion())));
    if (const QString note = updates.signatureNote(); !note.isEmpty()) {
        auto *unverified = new TextLabel(note, FontRole::caption, &Tokens::muted);
        unverified->setWordWrap(true);
        rows->addWidget(unverified);
    }
    m_status->setWordWrap(true);
    rows->addWidget(m_status);
    rows->addWidget(m_check, 0, Qt::AlignLeft);
    connect(m_check, &QPushButton::clicked, this,
            [this] { spawn([&checker = m_updates] { return checker.checkNow(); }); });
    m_refresh.follow(updates);
    refresh();
}

void UpdatesPage::refresh()
{
    m_check->setEnabled(!m_updates.busy);
    m_status->setText(m_updates.status);
    m_status->setVisible(!m_status->text().isEmpty());
}

} // namespace parcelory
