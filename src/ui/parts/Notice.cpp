#include "ui/parts/Notice.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QStyle>
#include <QTimerEvent>
#include <QVBoxLayout>

namespace parcelory {

namespace {

constexpr int tick = 40;                ///< milliseconds
constexpr int quietTicks = 1000 / tick; ///< nothing is shown in the first second

} // namespace

Notice::Notice(const QString &icon, Token ink, FontRole role, QWidget *parent)
    : QWidget(parent), m_icon(new IconView(icon, 16, ink)), m_text(new TextLabel({}, role, ink))
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    row->addWidget(m_icon, 0, Qt::AlignTop);
    row->addWidget(m_text, 1);
    m_text->setWordWrap(true);
    setVisible(false);
}

void Notice::setText(const QString &text)
{
    m_text->setText(text);
    setAccessibleName(text);
    setVisible(!text.isEmpty());
}

void Notice::setLook(const QString &icon, Token ink)
{
    m_icon->set(icon, ink);
    m_text->setInk(ink);
}

EmptyState::EmptyState(const QString &icon, const QString &sentence, QWidget *parent)
    : QWidget(parent), m_icon(new IconView(icon, 36)),
      m_sentence(new TextLabel(sentence, FontRole::body, &Tokens::muted)), m_column(new QVBoxLayout(this))
{
    m_column->setSpacing(10);
    m_column->addStretch(2);
    m_column->addWidget(m_icon, 0, Qt::AlignHCenter);
    m_column->addWidget(m_sentence);
    m_sentence->setAlignment(Qt::AlignHCenter);
    m_sentence->setWordWrap(true);
    m_column->addStretch(3);
}

void EmptyState::set(const QString &icon, const QString &sentence)
{
    m_icon->set(icon, &Tokens::muted);
    m_sentence->setText(sentence);
}

void EmptyState::append(QWidget *widget, Qt::Alignment alignment)
{
    m_column->insertWidget(m_column->count() - 1, widget, 0, alignment);
}

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

void BusyBar::timerEvent(QTimerEvent *)
{
    if (++m_ticks >= quietTicks)
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
