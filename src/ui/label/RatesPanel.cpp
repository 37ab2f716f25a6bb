#include "ui/label/RatesPanel.h"

#include "app/label/LabelScreen.h"
#include "app/label/LabelTexts.h"
#include "app/purchase/LabelVerdictTexts.h"
#include "app/settings/KeysScreen.h"
#include "app/settings/SettingsScreen.h"
#include "compose/Services.h"
#include "core/Task.h"
#include "core/Text.h"
#include "ui/label/BuyBlock.h"
#include "ui/label/RateList.h"
#include "ui/log/ShipmentTexts.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/BusyBar.h"
#include "ui/parts/Button.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/TextLabel.h"
#include "ui/preview/LabelThumbnail.h"
#include "ui/preview/VerdictNotice.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

RatesPanel::RatesPanel(LabelScreen &screen, KeysScreen &keys, SettingsScreen &settings, QWidget *parent)
    : PanelFrame(&Tokens::panel, parent), m_screen(screen),
      m_count(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_getRates(new Button(u"Get Rates"_s, Button::Kind::standard, u"ui_refresh"_s)), m_bar(new BusyBar),
      m_lastLabel(nullptr), m_lastTitle(nullptr), m_lastPrice(nullptr), m_lastName(nullptr), m_lastPlace(nullptr),
      m_lastTracking(nullptr), m_lastService(nullptr), m_lastMessage(nullptr), m_lastVerdict(nullptr),
      m_reprint(nullptr), m_copy(nullptr), m_dismiss(nullptr),
      m_customs(new Button(u"Customs Docs"_s, Button::Kind::standard, u"ui_document"_s)), m_list(new RateList(screen)),
      m_empty(new EmptyState(u"popup_package"_s, {})), m_checks(new QWidget), m_senderCheck(nullptr),
      m_recipientCheck(nullptr), m_weightCheck(nullptr), m_rule(new RuleLine(screen)),
      m_block(new BuyBlock(screen, keys, settings)), m_refresh([this] { refresh(); })
{
    setLines(Qt::LeftEdge);
    auto *checks = new QVBoxLayout(m_checks);
    checks->setSpacing(8);
    checks->setContentsMargins(0, 0, 0, 0);
    addCheck(u"Sender address"_s, m_senderCheck);
    addCheck(u"Recipient name, street, city, ZIP"_s, m_recipientCheck);
    addCheck(u"Weight"_s, m_weightCheck);
    m_empty->append(m_checks);

    auto *column = new QVBoxLayout(this);
    setDense(false);
    m_head = makeHead();
    column->addWidget(m_head);
    column->addWidget(m_bar);
    column->addWidget(makeLastLabel());
    column->addWidget(m_list, 1);
    column->addWidget(m_empty, 1);
    column->addStretch(); // while neither list nor sentence is shown
    column->addWidget(m_rule);
    column->addWidget(m_block);

    m_getRates->setToolTip(QKeySequence(Qt::CTRL | Qt::Key_R).toString(QKeySequence::NativeText));
    connect(m_getRates, &QPushButton::clicked, this, &RatesPanel::getRatesRequested);
    connect(m_block, &BuyBlock::buyRequested, this, &RatesPanel::buyRequested);
    connect(m_rule, &RuleLine::rulesRequested, this, &RatesPanel::rulesRequested);
    m_refresh.follow(screen);
    refresh();
}

QWidget *RatesPanel::makeHead()
{
    auto *head = new QWidget;
    auto *row = new QHBoxLayout(head);
    row->setContentsMargins(0, 0, 0, 0);
    auto *words = new QVBoxLayout;
    words->setSpacing(0);
    words->addWidget(new TextLabel(u"Rates"_s, FontRole::h2));
    words->addWidget(m_count);
    row->addLayout(words, 1);
    row->addWidget(m_getRates);
    head->setFixedHeight(Theme::current().scaled(38));
    return head;
}

QWidget *RatesPanel::makeLastLabel()
{
    m_lastLabel = PanelFrame::card();
    m_lastLabel->setFill(&Tokens::okTint);
    m_lastLabel->setEdge(&Tokens::ok);
    m_lastTitle = new Notice(u"ui_success"_s, &Tokens::ok, FontRole::strong);
    m_lastTitle->setTextInk(&Tokens::text);
    m_lastPrice = new TextLabel({}, FontRole::h2);
    m_lastName = new ElidedLabel({}, FontRole::strong);
    m_lastPlace = new TextLabel({}, FontRole::caption);
    m_lastTracking = new TextLabel({}, FontRole::mono);
    m_lastTracking->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_lastService = new TextLabel({}, FontRole::caption);
    m_lastMessage = new TextLabel({}, FontRole::caption);
    for (TextLabel *label : {m_lastPlace, m_lastService, m_lastMessage})
        label->setWordWrap(true);
    m_lastVerdict = new VerdictNotice;
    m_reprint = new Button(u"Reprint"_s, Button::Kind::standard, u"ui_printer"_s);
    m_copy = new Button(u"Copy Tracking"_s, Button::Kind::standard, u"ui_copy"_s);
    connect(m_reprint, &QPushButton::clicked, this, &RatesPanel::reprintRequested);
    m_dismiss = new Button(u"Dismiss"_s, Button::Kind::link);
    connect(m_copy, &QPushButton::clicked, this, [this] { m_screen.last.copyTracking(); });
    connect(m_dismiss, &QPushButton::clicked, this, [this] {
        parentWidget()->setFocus(); // the hidden button would pass the focus on
        m_screen.last.dismiss();
    });

    auto *column = new QVBoxLayout(m_lastLabel);
    column->setContentsMargins(13, 10, 13, 10);
    column->setSpacing(3);
    auto *title = new QHBoxLayout;
    title->addWidget(m_lastTitle, 1);
    title->addWidget(m_lastPrice);
    auto *actions = new QHBoxLayout;
    actions->setContentsMargins(0, 5, 0, 0);
    actions->setSpacing(8);
    actions->addWidget(m_reprint);
    actions->addWidget(m_copy);
    actions->addWidget(m_dismiss);
    actions->addStretch(1);
    auto *words = new QVBoxLayout;
    words->setSpacing(3);
    words->addWidget(m_lastName);
    for (TextLabel *label : {m_lastPlace, m_lastTracking, m_lastService, m_lastMessage})
        words->addWidget(label);
    words->addStretch(1);
    auto *label = new QHBoxLayout;
    label->setContentsMargins(0, 3, 0, 3);
    label->setSpacing(12);
    m_thumbnail = new LabelThumbnail(m_screen.last.preview);
    label->addWidget(m_thumbnail, 0, Qt::AlignTop);
    label->addLayout(words, 1);
    m_verdictRow = new QWidget; // keeps its height until the verdict is there
    auto *verdict = new QVBoxLayout(m_verdictRow);
    verdict->setContentsMargins(0, 0, 0, 0);
    verdict->addWidget(m_lastVerdict);
    m_verdictRow->setMinimumHeight(Theme::current().scaled(18));
    column->addLayout(title);
    m_lastTitle->setText(u"Last label"_s); // a visible title without a parent is a window
    column->addLayout(label);
    column->addWidget(m_verdictRow);
    column->addLayout(actions);
    column->addWidget(m_customs, 0, Qt::AlignLeft);
    connect(m_customs, &QPushButton::clicked, this,
            [this] { spawn([&screen = m_screen] { return screen.last.reprintCustoms(); }); });
    return m_lastLabel;
}

void RatesPanel::resizeEvent(QResizeEvent *event)
{
    PanelFrame::resizeEvent(event);
    m_refresh.touch();
}

/// A label that differs from its parcel is looked at before it is printed again.
bool RatesPanel::isHeld() const
{
    const std::optional<LastLabel> last = m_screen.last.label;
    return last && !last->isPrinted && !last->verdict.faults().isEmpty();
}

QWidget *RatesPanel::lastLabelEntrance() const
{
    return isHeld() ? static_cast<QWidget *>(m_thumbnail) : m_reprint;
}

QWidget *RatesPanel::entrance() const
{
    if (!m_list->isHidden())
        return m_list;
    if (m_getRates->isEnabled())
        return m_getRates;
    return m_lastLabel->isHidden() || !m_reprint->isEnabled() ? nullptr : m_reprint;
}

void RatesPanel::addCheck(const QString &text, Notice *&row)
{
    row = new Notice(u"ui_pending"_s, &Tokens::muted, FontRole::caption);
    m_checks->layout()->addWidget(row); // before it has a text: a visible row without a parent is a window
    row->setUnwrapped();
    row->setText(text);
}

void RatesPanel::refresh()
{
    const qsizetype count = m_screen.rates.value().size();
    const bool loading = m_screen.rating;
    m_count->setVisible(count > 0);
    m_count->setText((count == 1 ? u"1 %2 rate"_s : u"%1 %2 rates, lowest first"_s.arg(count))
                         .arg(carrierInfo(m_screen.carrier).displayName));
    m_getRates->setEnabled(m_screen.formComplete() && !m_screen.busy);
    m_getRates->setKind(m_screen.nextStep() == NextStep::getRates ? Button::Kind::solid : Button::Kind::standard);
    m_bar->setBusy(m_screen.busy);
    if (count == 0 && m_list->hasFocus()) // a hidden list would pass the focus out of the screen
        (m_getRates->isEnabled() ? m_getRates : parentWidget())->setFocus();
    m_list->setVisible(count > 0);

    const bool complete = m_screen.formComplete();
    m_empty->set(complete ? u"ui_refresh"_s : u"popup_package"_s,
                 loading ? u"Loading rates…"_s : LabelTexts::ratesHint(m_screen));
    const auto tick = [](Notice *row, bool done) {
        row->setLook(done ? u"ui_success"_s : u"ui_pending"_s, done ? &Tokens::ok : &Tokens::muted);
        row->setTextInk(done ? &Tokens::text : &Tokens::muted);
        row->setAccessibleDescription(done ? u"done"_s : u"missing"_s);
    };
    tick(m_senderCheck, m_screen.senderFilled());
    tick(m_recipientCheck, m_screen.recipientFilled());
    tick(m_weightCheck, m_screen.totalPounds() > 0);
    refreshLastLabel();
    makeRoom();
}

int RatesPanel::heightOf(const QWidget *part) const
{
    if (part->layout())
        part->layout()->activate(); // its texts may have just changed
    const QMargins margins = layout()->contentsMargins();
    const int wrapped = part->heightForWidth(width() - margins.left() - margins.right());
    const int wanted = part->hasHeightForWidth() ? wrapped : part->sizeHint().height();
    return std::max(wanted, part->minimumHeight()) + layout()->spacing();
}

/// The height that the parts which always stay leave for the rates or for what is missing for them.
int RatesPanel::freeHeight() const
{
    int room = height() - layout()->contentsMargins().top() - layout()->contentsMargins().bottom();
    for (const QWidget *part :
         {m_head, static_cast<QWidget *>(m_bar), static_cast<QWidget *>(m_lastLabel), static_cast<QWidget *>(m_block)})
        room -= part->isHidden() ? 0 : heightOf(part);
    return room;
}

/// In a window that is too low, the checklist below the last label goes, then the sentence above it, and then the
/// label's picture; never the label. Above the Buy block, the line of the shipping rules goes before the last rate, and
/// so do the reason on the card of a label beside the next parcel and the last lines of the summary.
void RatesPanel::makeRoom()
{
    const bool isEmpty = m_screen.rates.value().isEmpty(), isListed = !m_screen.formComplete();
    const int least = isEmpty ? 0 : m_list->minimumSizeHint().height() + layout()->spacing();
    int lines = BuyBlock::lineTotal;
    m_block->setLines(lines);
    int room = freeHeight();
    const auto giveWay = [&](QWidget *part) {
        if (room >= least || part->isHidden())
            return;
        part->hide();
        room = freeHeight();
    };
    if (!isEmpty)
        giveWay(m_lastMessage);
    else if (!isHeld()) // its picture is to be looked at
        giveWay(m_thumbnail);
    while (!isEmpty && room < least && lines > 1) {
        m_block->setLines(--lines);
        room = freeHeight();
    }
    const int rule = m_rule->minimumHeight() + layout()->spacing();
    m_rule->setRoom(isEmpty || room >= rule + least);
    room -= m_rule->isHidden() ? 0 : rule;
    const int checks = m_checks->sizeHint().height() + m_empty->layout()->spacing();
    const int sentence = heightOf(m_empty) - (m_checks->isHidden() ? 0 : checks);
    const bool isFree = m_lastLabel->isHidden();
    m_empty->setVisible(isEmpty && (isFree || room >= sentence));
    m_checks->setVisible(isListed && (isFree || room >= sentence + checks));
}

void RatesPanel::setDense(bool dense)
{
    layout()->setContentsMargins(15, dense ? 6 : 10, 14, dense ? 8 : 14);
    layout()->setSpacing(dense ? 4 : 6);
}

void RatesPanel::refreshLastLabel()
{
    const std::optional<LastLabel> last = m_screen.last.label;
    m_lastLabel->setVisible(last.has_value());
    const QString obstacle = m_screen.busy ? notWhileBusy : QString();
    // Beside the next parcel, the card has only what brings the label out.
    const bool isWhole = !m_screen.last.isBesideParcel();
    for (Button *action : {m_reprint, m_customs})
        enableUnless(obstacle, action, isWhole ? m_copy : parentWidget());
    enableUnless(obstacle, m_dismiss, parentWidget(), u"My Mailing Log keeps the label. Reprint prints it there."_s);
    for (QWidget *part : {static_cast<QWidget *>(m_thumbnail), static_cast<QWidget *>(m_lastPlace),
                          static_cast<QWidget *>(m_lastTracking), static_cast<QWidget *>(m_lastService), m_verdictRow,
                          static_cast<QWidget *>(m_copy)})
        part->setVisible(isWhole);
    m_customs->setVisible(isWhole && m_screen.last.hasCustoms());
    m_dismiss->setVisible(m_screen.last.mayDismiss());
    if (!last) {
        nameWidget(m_lastLabel, {});
        return;
    }
    m_lastPrice->setText(u'$' + fixed(last->record.postage, 2));
    m_lastName->setFullText(last->recipient.section(u" · "_s, 0, 0));
    m_lastPlace->setText(last->recipient.section(u" · "_s, 1));
    m_lastTracking->setText(trackingLines(last->record.tracking));
    m_lastService->setText(last->record.service);
    const LabelSight sight = m_screen.last.preview.sight;
    const bool isPrinted = last->isPrinted;
    const bool differs = LabelVerdictTexts::outcomeOf(sight.verdict) == LabelOutcome::different;
    const QString waiting = m_screen.last.waiting();
    const bool isGood = isPrinted && !differs && waiting.isEmpty();
    const QString message = waiting.isEmpty() ? last->message : waiting;
    m_lastTitle->setLook(isGood ? u"ui_success"_s : u"ui_warning"_s, isGood ? &Tokens::ok : &Tokens::warn);
    m_lastTitle->setTextInk(&Tokens::text);
    m_lastTitle->setText(isPrinted ? u"Last label"_s : u"Bought, not printed"_s);
    m_lastLabel->setFill(isGood ? &Tokens::okTint : &Tokens::warnTint);
    m_lastLabel->setEdge(isGood ? &Tokens::ok : &Tokens::warnEdge);
    m_lastVerdict->setVerdict(sight.verdict);
    m_lastVerdict->setVisible(sight.state != LabelSight::State::drawing);
    const QString verdict = m_lastVerdict->isHidden() ? QString() : m_lastVerdict->text();
    nameWidget(m_lastLabel,
               joinPresent({m_lastTitle->text(), last->recipient, m_lastPrice->text(), message, verdict}, u", "_s));
    const bool isOut = isPrinted && waiting.isEmpty();
    m_lastMessage->setFont(Theme::current().font(isOut ? FontRole::caption : FontRole::captionStrong));
    m_lastMessage->setInk(isOut ? &Tokens::text : &Tokens::warn);
    m_lastMessage->setText(message);
    m_lastMessage->setVisible(!message.isEmpty());
    m_lastLabel->setToolTip(plainToolTip(message));
    m_reprint->setKind(!m_screen.last.comesFirst() || isHeld() ? Button::Kind::standard : Button::Kind::solid);
    m_reprint->setText(m_screen.last.printing && !isPrinted ? u"Printing…"_s : u"Reprint"_s);
}

} // namespace parcelory
