#include "ui/endofday/DayCards.h"

#include "app/AppState.h"
#include "app/Screens.h"
#include "app/endofday/DayTexts.h"
#include "app/endofday/EndOfDayScreen.h"
#include "core/Task.h"
#include "core/Text.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Button.h"
#include "ui/parts/IconView.h"
#include "ui/parts/Separator.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

Button::Kind solidOf(PostageMode mode)
{
    switch (mode) {
    case PostageMode::test:
        return Button::Kind::test;
    case PostageMode::practice:
        return Button::Kind::practice;
    default:
        return Button::Kind::solid;
    }
}

/// Removes the rows and keeps the stretch at the end.
void clearList(QVBoxLayout *list)
{
    while (list->count() > 1) {
        QLayoutItem *item = list->takeAt(0);
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
}

void append(QVBoxLayout *list, QWidget *row)
{
    list->insertWidget(list->count() - 1, row);
}

} // namespace

ScanFormCard::ScanFormCard(Screens &screens, QWidget *refuge, QWidget *parent)
    : DayCard(u"ship_usps"_s, u"USPS SCAN form"_s, parent), m_screens(screens), m_screen(screens.endOfDay),
      m_refuge(refuge), m_missing(new CountLine(u"not on a form"_s, true)),
      m_done(new CountLine(u"on a form"_s, false)), m_exempt(new CountLine(u"not meant for one"_s, false)),
      m_again(new Button(u"Print Again"_s, Button::Kind::link)),
      m_step(new Button({}, Button::Kind::standard, u"ui_scanform"_s)),
      m_failure(new ElidedLabel({}, FontRole::caption, &Tokens::warn)), m_failureRow(new QWidget)
{
    m_step->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_again->setFixedHeight(Theme::current().scaled(24));
    m_done->append(m_again);
    m_done->setFixedHeight(Theme::current().scaled(24));
    m_failure->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    setAccessibleRole(m_failure, QAccessible::Notification);
    auto *failure = new QHBoxLayout(m_failureRow);
    failure->setContentsMargins(0, 0, 0, 0);
    failure->setSpacing(6);
    failure->addWidget(new IconView(u"ui_warning"_s, 14, &Tokens::warn));
    failure->addWidget(m_failure, 1);
    body()->setSpacing(1);
    body()->addWidget(m_missing);
    body()->addWidget(m_done);
    body()->addWidget(m_exempt);
    body()->addStretch(1);
    body()->addWidget(m_failureRow);
    body()->addSpacing(3);
    body()->addWidget(m_step);
    connect(m_again, &QPushButton::clicked, this,
            [this] { spawn([this] { return m_screen.printForms(EndOfDayScreen::Forms::all); }); });
    connect(m_step, &QPushButton::clicked, this, &ScanFormCard::take);
}

void ScanFormCard::take()
{
    if (!m_screen.formObstacle().isEmpty()) // the state may have changed since the button was drawn
        return;
    if (m_screen.formStep() == FormStep::make)
        spawn([this] { return m_screens.createScanForm(ScanFormScope::missing); });
    else
        spawn([this] {
            return m_screen.printForms(m_screen.isFormStepNext() ? EndOfDayScreen::Forms::unprinted
                                                                 : EndOfDayScreen::Forms::all);
        });
}

void ScanFormCard::refresh()
{
    const DayReport &report = m_screen.report.value();
    const DayOfLabels &labels = report.labels;
    const QString missing = QString::number(labels.notOnForm.size()), done = QString::number(labels.onForm.size()),
                  exempt = QString::number(labels.exempt.size());
    setCount(DayTexts::counted(labels.uspsLabels()));
    nameWidget(this,
               u"USPS SCAN form, %1 not on a form, %2 on a form, %3 not meant for one"_s.arg(missing, done, exempt));
    m_missing->set(labels.notOnForm.size(), DayTexts::names(labels.notOnForm));
    m_missing->setInk(labels.notOnForm.isEmpty() ? &Tokens::text : &Tokens::warn);
    m_done->set(labels.onForm.size(), DayTexts::formTime(labels));
    m_exempt->set(labels.exempt.size(), DayTexts::exemptions(labels.exempt, m_screen.key()));
    m_again->setVisible(!report.forms.isEmpty());
    enable(m_again, !m_screen.busy, m_step);
    const QString failure = m_screen.formFailure();
    m_failureRow->setVisible(!failure.isEmpty());
    if (failure != m_failure->fullText()) {
        m_failure->setFullText(failure);
        announce(m_failure);
    }
    m_step->setText(m_screen.formStep() == FormStep::make ? u"Make SCAN Form"_s : u"Print SCAN Form"_s);
    m_step->setKind(m_screen.isFormStepNext() ? solidOf(m_screens.keys.mode) : Button::Kind::standard);
    enableUnless(m_screen.formObstacle(), m_step, m_refuge);
    setBusy(m_screens.endOfDay.isFormUnderWay());
}

FedexCard::FedexCard(EndOfDayScreen &screen, QWidget *parent)
    : DayCard(u"ship_fedex"_s, u"FedEx to hand over"_s, parent), m_screen(screen),
      m_count(new CountLine(u"to hand over"_s, true)), m_list(nullptr)
{
    body()->addWidget(m_count);
    body()->addWidget(new Separator);
    m_list = addList();
    refresh();
}

void FedexCard::refresh()
{
    const QList<DayLabel> &labels = m_screen.report.value().labels.toHandOver;
    setCount(DayTexts::counted(labels.size()));
    m_count->set(labels.size(), !m_screen.isRead()   ? QString()
                                : labels.isEmpty()   ? u"No FedEx label was bought on this day."_s
                                : labels.size() == 1 ? u"No form — give the box to the driver."_s
                                                     : u"No form — give the boxes to the driver."_s);
    nameWidget(this, u"FedEx to hand over, %1"_s.arg(DayTexts::counted(labels.size())));
    if (labels == m_shown)
        return;
    m_shown = labels;
    clearList(m_list);
    for (const DayLabel &label : labels) {
        const ShipmentRecord &record = label.record;
        auto *row = new QWidget;
        auto *lines = new QVBoxLayout(row);
        lines->setContentsMargins(24, 0, 0, 0);
        lines->setSpacing(2);
        auto *name = new ElidedLabel;
        name->setFullText(joinPresent({record.recipientName(), DayTexts::place(record)}, u", "_s));
        auto *numbers = new QHBoxLayout;
        auto *service = new ElidedLabel({}, FontRole::caption, &Tokens::muted);
        service->setFullText(DayTexts::service(record.service));
        service->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        service->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        numbers->addWidget(new TextLabel(groupsOfFour(record.tracking), FontRole::mono));
        numbers->addWidget(service, 1);
        lines->addWidget(name);
        lines->addLayout(numbers);
        if (const QString papers = DayTexts::papers(label); !papers.isEmpty()) {
            auto *note = new QHBoxLayout;
            note->setSpacing(6);
            note->addWidget(new IconView(u"ui_document"_s, 16));
            auto *text = new TextLabel(papers, FontRole::caption, &Tokens::muted);
            text->setWordWrap(true);
            note->addWidget(text, 1);
            lines->addLayout(note);
        }
        append(m_list, row);
    }
}

OpenLabelsCard::OpenLabelsCard(Screens &screens, QWidget *refuge, QWidget *parent)
    : DayCard(u"ui_printer"_s, u"Not printed or unresolved"_s, parent), m_screens(screens), m_screen(screens.endOfDay),
      m_refuge(refuge), m_list(nullptr),
      m_nothing(new TextLabel(u"All labels printed. No open purchases."_s, FontRole::body, &Tokens::muted))
{
    m_nothing->setWordWrap(true);
    body()->addWidget(m_nothing);
    m_list = addList();
    fill();
}

void OpenLabelsCard::refresh()
{
    const Shown now{m_screen.report.value().labels.unprinted, m_screen.unresolved()};
    if (now != m_shown) {
        m_shown = now;
        fill();
    }
    m_nothing->setVisible(m_screen.isRead() && now == Shown());
    for (Button *reprint : m_reprints)
        enableUnless(m_screen.busy || m_screens.mailingLog.busy ? notWhileBusy : QString(), reprint, m_refuge);
    for (Button *check : m_checks)
        enableUnless(m_screens.label.purchases.checking ? notWhileBusy : QString(), check, m_refuge);
}

void OpenLabelsCard::fill()
{
    const bool hadFocus = isAncestorOf(window()->focusWidget());
    const qsizetype open = m_shown.labels.size() + m_shown.purchases.size();
    setCount(u"%1 open"_s.arg(open));
    nameWidget(this, u"Not printed or unresolved, %1 open"_s.arg(open));
    clearList(m_list);
    m_reprints.clear();
    m_checks.clear();
    for (const DayLabel &label : m_shown.labels) {
        const ShipmentRecord &record = label.record;
        auto *reprint = new Button(u"Reprint"_s);
        reprint->setAccessibleName(u"Reprint the label of %1"_s.arg(record.recipientName()));
        connect(reprint, &QPushButton::clicked, this,
                [this, record] { spawn([this, record] { return m_screen.reprint(record); }); });
        m_reprints += reprint;
        append(m_list, rowOf(u"ui_warning"_s, &Tokens::warn, DayTexts::printState(label),
                             record.recipientName() + u" · "_s + DayTexts::time(record.createdAt), reprint));
    }
    for (const UnresolvedPurchase &pending : m_shown.purchases) {
        auto *check = new Button(u"Check again"_s);
        connect(check, &QPushButton::clicked, this,
                [this] { spawn([this] { return m_screens.label.purchases.checkAgain(); }); });
        m_checks += check;
        append(m_list,
               rowOf(u"ui_pending"_s, &Tokens::warn, u"Not known if bought"_s,
                     pending.purchase.record.recipientName() + u" · "_s + DayTexts::time(pending.purchase.askedAt),
                     check));
    }
    if (!m_shown.purchases.isEmpty()) {
        auto *note = new TextLabel(u"Parcelory keeps checking."_s, FontRole::caption, &Tokens::muted);
        note->setContentsMargins(24, 0, 0, 0);
        append(m_list, note);
    }
    if (hadFocus)
        m_refuge->setFocus();
}

QWidget *OpenLabelsCard::rowOf(const QString &icon, Token ink, const QString &title, const QString &about,
                               Button *button)
{
    auto *row = new QWidget;
    auto *columns = new QHBoxLayout(row);
    columns->setContentsMargins(0, 0, 2, 0);
    columns->setSpacing(8);
    columns->addWidget(new IconView(icon, 16, ink), 0, Qt::AlignTop);
    auto *lines = new QVBoxLayout;
    lines->setSpacing(0);
    auto *second = new ElidedLabel({}, FontRole::caption, &Tokens::muted);
    second->setFullText(about);
    auto *first = new TextLabel(title, FontRole::strong);
    first->setWordWrap(true);
    lines->addWidget(first);
    lines->addWidget(second);
    columns->addLayout(lines, 1);
    constexpr int buttonWidth = 92;
    button->setMinimumWidth(Theme::current().scaled(buttonWidth));
    columns->addWidget(button);
    return row;
}

} // namespace parcelory
