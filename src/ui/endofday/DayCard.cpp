#include "ui/endofday/DayCard.h"

#include "ui/parts/Accessibility.h"
#include "ui/parts/BusyBar.h"
#include "ui/parts/IconView.h"
#include "ui/parts/Separator.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QScrollArea>
#include <QVBoxLayout>

namespace parcelory {

DayCard::DayCard(const QString &icon, const QString &title, QWidget *parent)
    : PanelFrame(&Tokens::sheet, parent), m_body(new QVBoxLayout),
      m_count(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_bar(new BusyBar)
{
    setCard();
    setAccessibleRole(this, QAccessible::Grouping);
    setFixedHeight(Theme::current().scaled(cardHeight));
    auto *head = new QHBoxLayout;
    head->setContentsMargins(0, 11, 0, 9);
    head->setSpacing(8);
    head->addWidget(new IconView(icon, 20));
    head->addWidget(new TextLabel(title, FontRole::strong));
    head->addStretch(1);
    head->addWidget(m_count);
    m_body->setContentsMargins(0, 8, 0, 13);
    m_body->setSpacing(6);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(16, 0, 16, 0);
    rows->setSpacing(0);
    rows->addLayout(head);
    rows->addWidget(new Separator);
    rows->addWidget(m_bar);
    rows->addLayout(m_body, 1);
}

void DayCard::setBusy(bool busy)
{
    m_bar->setBusy(busy);
}

QVBoxLayout *DayCard::addList()
{
    auto *rows = new QWidget;
    auto *list = new QVBoxLayout(rows);
    list->setContentsMargins(0, 0, 0, 0);
    list->setSpacing(8);
    list->addStretch(1);
    auto *area = new QScrollArea;
    area->setWidget(rows);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    area->viewport()->setAutoFillBackground(false);
    rows->setAutoFillBackground(false);
    m_body->addWidget(area, 1);
    return list;
}

CountLine::CountLine(const QString &what, bool isMain, QWidget *parent)
    : QWidget(parent), m_number(new TextLabel({}, isMain ? FontRole::total : FontRole::strong)),
      m_what(new TextLabel(what, isMain ? FontRole::strong : FontRole::body)),
      m_note(new ElidedLabel({}, FontRole::caption, &Tokens::muted)), m_row(new QHBoxLayout(this))
{
    constexpr int numberWidth = 24, gap = 8;
    m_number->setMinimumWidth(Theme::current().scaled(numberWidth) - (isMain ? gap : 0));
    m_row->setContentsMargins(0, 0, 0, 0);
    m_row->setSpacing(isMain ? gap : 0);
    m_row->addWidget(m_number);
    QBoxLayout *words = m_row;
    if (isMain) {
        words = new QVBoxLayout;
        words->setSpacing(0);
        m_row->addLayout(words, 1);
    }
    words->addWidget(m_what);
    if (!isMain)
        words->addSpacing(gap);
    m_note->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    words->addWidget(m_note, 1);
}

void CountLine::set(qsizetype count, const QString &note)
{
    m_number->setText(QString::number(count));
    m_note->setFullText(note);
}

void CountLine::append(QWidget *widget)
{
    m_row->addWidget(widget);
}

} // namespace parcelory
