#include "ui/settings/ContactsPage.h"
#include "app/AppState.h"
#include "core/Task.h"
#include "ui/parts/Button.h"
#include "ui/parts/TextLabel.h"
#include "ui/settings/SettingsPage.h"
#include "ui/theme/Theme.h"

#include <QPointer>
#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

ContactsPage::ContactsPage(AppState &app, QWidget *parent)
    : SettingsPage(u"Contacts Diagnostics"_s, parent), m_app(app), m_run(new Button(u"Run Diagnostics"_s)),
      m_report(new TextLabel({}, FontRole::mono))
{
    appendCaption(app.appleContacts.isAvailable()
                      ? u"Tests access to this computer's contacts step by step. A step that does not respond "
                        "times out."_s
                      : u"Parcelory cannot read contacts on this computer. Import the address book from Endicia "
                        "or from a vCard file."_s);
    QVBoxLayout *rows = column(appendCard());
    m_report->setWordWrap(true);
    m_report->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_report->setAccessibleName(u"Report"_s);
    m_report->hide();
    rows->addWidget(m_run, 0, Qt::AlignLeft);
    rows->addWidget(m_report);
    m_run->setEnabled(app.appleContacts.isAvailable());
    connect(m_run, &QPushButton::clicked, this, [this] { spawn([this] { return run(); }); });
}

Task<> ContactsPage::run()
{
    m_run->setEnabled(false);
    const QPointer<ContactsPage> self(this);
    const QString report = co_await m_app.appleContacts.diagnostics();
    if (!self)
        co_return;
    m_report->setText(report);
    m_report->show();
    m_run->setEnabled(true);
}

} // namespace parcelory
