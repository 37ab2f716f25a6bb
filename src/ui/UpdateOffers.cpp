#include "ui/UpdateOffers.h"

#include "app/AppState.h"
#include "app/Screens.h"
#include "core/ports/Clock.h"
#include "ui/MainWindow.h"

#include <QApplication>
#include <QEvent>

#include <algorithm>
#include <chrono>

namespace parcelory {
using namespace std::chrono_literals;

UpdateOffers::UpdateOffers(MainWindow &window)
    : QObject(&window), m_window(window), m_shown(window.screens().updates.offers), m_refresh([this] { refresh(); })
{
    m_refresh.follow(window.screens().updates);
    qApp->installEventFilter(this);
}

UpdateOffers::~UpdateOffers()
{
    if (m_timer)
        m_window.app().platform.clock.cancel(*m_timer);
}

bool UpdateOffers::eventFilter(QObject *, QEvent *event)
{
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::InputMethod)
        m_lastTyping = m_window.app().platform.clock.steadyNow();
    return false;
}

std::chrono::milliseconds UpdateOffers::timeToQuiet() const
{
    if (QApplication::activeModalWidget())
        return quietTime;
    if (!m_lastTyping.isValid())
        return 0ms;
    const std::chrono::milliseconds quiet(m_lastTyping.msecsTo(m_window.app().platform.clock.steadyNow()));
    return std::max(0ms, quietTime - quiet);
}

void UpdateOffers::refresh()
{
    Screens &screens = m_window.screens();
    const int offers = screens.updates.offers;
    if (m_shown == offers || m_timer)
        return;
    if (!m_prompt && screens.updates.available.value()) {
        if (const auto wait = timeToQuiet(); wait > 0ms) {
            m_timer = m_window.app().platform.clock.after(wait, [this] {
                m_timer.reset();
                refresh();
            });
            return;
        }
        m_prompt = new UpdatePrompt(m_window.app(), screens, &m_window);
        m_prompt->setAttribute(Qt::WA_DeleteOnClose);
        m_prompt->open();
    }
    m_shown = offers;
}

} // namespace parcelory
