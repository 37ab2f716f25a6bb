#include "ui/UpdatePrompt.h"

#include "app/AppState.h"
#include "app/Screens.h"
#include "app/update/UpdateChecker.h"
#include "core/Task.h"
#include "ui/parts/Button.h"
#include "ui/parts/Dialog.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/ProgressBar.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QScrollArea>
#include <QVBoxLayout>

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int promptWidth = 500, notesHeight = 120;
constexpr int longestNotes = 20'000; ///< characters; laying out very long notes would block the window for seconds

} // namespace

UpdatePrompt::UpdatePrompt(AppState &app, Screens &screens, QWidget *parent)
    : Dialog(app.platform.clock, u"Update Available"_s, u"parcelory_mark"_s, &Tokens::accent, promptWidth, parent),
      m_screens(screens), m_updates(screens.updates), m_text(new TextLabel),
      m_status(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_bar(new ProgressBar(u"Download"_s, 0)),
      m_refresh([this] { refresh(); })
{
    m_text->setWordWrap(true);
    m_status->setWordWrap(true);
    auto *advice = new TextLabel;
    advice->setTextFormat(Qt::RichText);
    advice->setText(u"It is <b>HIGHLY RECOMMENDED</b> that you stay up to date."_s);
    body()->addWidget(m_text);
    body()->addWidget(makeNotes(m_updates.available.value()->notes));
    body()->addWidget(advice);
    if (const QString note = m_updates.signatureNote(); !note.isEmpty()) {
        auto *unverified = new TextLabel(note, FontRole::caption, &Tokens::muted);
        unverified->setWordWrap(true);
        body()->addWidget(unverified);
    }
    body()->addWidget(m_status);
    body()->addWidget(m_bar);
    m_dismiss = addButton(u"Not Now"_s, Rejected, Button::Kind::standard);
    m_next = addButton(u"Download"_s, Accepted, Button::Kind::solid);
    m_refresh.follow(screens);
    refresh();
}

QWidget *UpdatePrompt::makeNotes(const QString &notes)
{
    const QString shown = notes.size() > longestNotes ? notes.left(longestNotes) + u'…' : notes;
    auto *text = new TextLabel(breakable(shown), FontRole::caption);
    text->setWordWrap(true);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *card = PanelFrame::card();
    card->setFill(&Tokens::panel);
    auto *rows = new QVBoxLayout(card);
    rows->setContentsMargins(12, 10, 12, 10);
    rows->addWidget(text);
    const int most = Theme::current().scaled(notesHeight);
    if (text->heightForWidth(Theme::current().scaled(promptWidth - 140)) <= most)
        return card;
    auto *area = new QScrollArea;
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setFixedHeight(most);
    area->setWidget(card);
    return area;
}

void UpdatePrompt::refresh()
{
    const QString version = m_updates.available.value() ? m_updates.available.value()->version : QString();
    const UpdatePhase phase = m_updates.phase;
    m_text->setText(phase == UpdatePhase::ready
                        ? u"Parcelory "_s + version + u" downloaded — ready to install."_s
                        : u"Parcelory "_s + version + u" is ready — you're on "_s + m_updates.installedVersion());
    const bool isReady = phase == UpdatePhase::ready, isHeldUp = isReady && !m_screens.mayRestart();
    m_status->setText(isHeldUp               ? u"Waiting for the carrier."_s
                      : m_screens.restarting ? u"Copying the records before the restart…"_s
                                             : m_updates.status.value());
    m_status->setVisible(!m_status->text().isEmpty());
    m_bar->setVisible(phase == UpdatePhase::downloading);
    m_bar->setProgress(m_updates.progress.value().value_or(0));
    m_dismiss->setText(isReady ? u"Later"_s : u"Not Now"_s);
    m_next->setText(isReady ? u"Update && Restart"_s : u"Download"_s);
    m_next->setEnabled(phase == UpdatePhase::idle || (isReady && !isHeldUp && !m_screens.restarting));
    if (std::exchange(m_shownPhase, phase) != phase)
        chooseDefault();
    if (isVisible())
        fitHeight();
}

/// Return must not restart the program: the clerk may be typing into the form behind the prompt.
void UpdatePrompt::chooseDefault()
{
    Button *safe = m_shownPhase == UpdatePhase::ready ? m_dismiss : m_next;
    safe->setDefault(true);
    safe->setFocus();
}

void UpdatePrompt::done(int result)
{
    if (result != Accepted) {
        m_screens.callOffRestart();
        Dialog::done(result);
    } else if (m_updates.phase == UpdatePhase::ready && m_screens.mayRestart())
        spawn([&screens = m_screens] { return screens.restartIntoUpdate(); });
    else if (m_updates.phase == UpdatePhase::idle)
        spawn([&updates = m_updates] { return updates.install(); });
}

} // namespace parcelory
