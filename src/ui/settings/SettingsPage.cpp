#include "ui/settings/SettingsPage.h"

#include "ui/parts/PanelFrame.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QPropertyNotifier>
#include <QVBoxLayout>

#include <memory>

namespace parcelory {

SettingsPage::SettingsPage(const QString &title, QWidget *parent)
    : QScrollArea(parent), m_head(new QHBoxLayout), m_column(new QVBoxLayout)
{
    const Theme &theme = Theme::current();
    auto *heading = new TextLabel(title, FontRole::h1);
    heading->setMinimumHeight(theme.scaled(Theme::fieldHeight));
    m_head->addWidget(heading, 1);

    auto *cards = new QWidget;
    cards->setMaximumWidth(theme.scaled(widestCard));
    cards->setLayout(m_column);
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(14);
    m_column->addLayout(m_head);
    m_column->addStretch(1);

    auto *ground = new PanelFrame(&Tokens::panel);
    auto *columns = new QHBoxLayout(ground);
    columns->setContentsMargins(28, 20, 28, 20);
    columns->addWidget(cards, 1000); // the available width, up to the maximum
    columns->addStretch(1);
    setWidget(ground);
    setWidgetResizable(true);
    setFrameShape(NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
}

void SettingsPage::append(QWidget *widget)
{
    m_column->insertWidget(m_column->count() - 1, widget);
}

PanelFrame *SettingsPage::appendCard()
{
    PanelFrame *card = PanelFrame::card();
    auto *rows = new QVBoxLayout(card);
    rows->setContentsMargins(16, 14, 16, 14);
    rows->setSpacing(8);
    append(card);
    return card;
}

PanelFrame *SettingsPage::appendListCard()
{
    PanelFrame *card = appendCard();
    column(card)->setContentsMargins(16, 7, 16, 7);
    column(card)->setSpacing(0);
    return card;
}

QVBoxLayout *SettingsPage::column(PanelFrame *card) const
{
    return static_cast<QVBoxLayout *>(card->layout());
}

void SettingsPage::appendCaption(const QString &text)
{
    auto *caption = new TextLabel(text, FontRole::caption, &Tokens::muted);
    caption->setWordWrap(true);
    append(caption);
}

QWidget *SettingsPage::makeSwitch(const QString &text, QProperty<bool> &property)
{
    auto *box = new QCheckBox(text);
    box->setMinimumHeight(Theme::current().scaled(24));
    connect(box, &QCheckBox::clicked, box, [&property](bool on) { property = on; });
    const auto show = [box, &property] { box->setChecked(property); };
    show();
    auto notifier = std::make_shared<QPropertyNotifier>(property.addNotifier(show));
    connect(box, &QObject::destroyed, [notifier] {}); // lives as long as the box
    return box;
}

void SettingsPage::setBusy(QWidget *button, bool busy)
{
    if (busy && window()->focusWidget() == button) {
        m_waiting = button;
        setFocus();
    }
    button->setEnabled(!busy);
    if (busy || m_waiting != button)
        return;
    m_waiting = nullptr;
    if (window()->focusWidget() == this)
        button->setFocus();
}

void SettingsPage::reveal(QWidget *widget)
{
    // The widget's position is known only after the layouts have run.
    QMetaObject::invokeMethod(
        this,
        [this, target = QPointer(widget)] {
            if (target)
                ensureWidgetVisible(target, 0, 60);
        },
        Qt::QueuedConnection);
}

} // namespace parcelory
