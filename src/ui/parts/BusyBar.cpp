#include "ui/parts/BusyBar.h"

#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <QTimerEvent>

#include <utility>

namespace parcelory {

namespace {

constexpr int tick = 40;                ///< milliseconds
constexpr int quietTicks = 1000 / tick; ///< nothing is shown in the first second

} // namespace

BusyBar::BusyBar(QWidget *parent) : QWidget(parent)
{
    setFixedHeight(2);
}

void BusyBar::setBusy(bool busy)
{
    if (busy == (m_timer != 0))
        return;
    if (busy) {
        m_ticks = 0;
        m_timer = startTimer(tick);
    } else {
        killTimer(std::exchange(m_timer, 0));
        update();
    }
}

/// While a dialog or a file panel waits for the clerk, the program does not work.
void BusyBar::timerEvent(QTimerEvent *)
{
    const QWidget *dialog = QApplication::activeModalWidget();
    const bool waits = dialog && !dialog->isAncestorOf(this);
    const bool wasShown = m_ticks >= quietTicks;
    m_ticks = waits ? 0 : m_ticks + 1;
    if (wasShown || m_ticks >= quietTicks)
        update();
}

void BusyBar::paintEvent(QPaintEvent *)
{
    if (!m_timer || m_ticks < quietTicks)
        return;
    QPainter painter(this);
    const Tokens &t = Theme::current().tokens();
    painter.fillRect(rect(), t.line);
    const int piece = width() / 4;
    const bool moves = style()->styleHint(QStyle::SH_Widget_Animate, nullptr, this) != 0;
    const int at = moves ? (m_ticks * 12) % (width() + piece) - piece : (width() - piece) / 2;
    painter.fillRect(at, 0, piece, height(), t.accent);
}

} // namespace parcelory
