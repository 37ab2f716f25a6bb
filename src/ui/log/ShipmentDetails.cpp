#include "ui/log/ShipmentDetails.h"

#include "app/logs/MailingLogScreen.h"
#include "app/logs/TrackPage.h"
#include "app/openitems/OpenItemTexts.h"
#include "app/purchase/LabelVerdictTexts.h"
#include "core/Task.h"
#include "core/Text.h"
#include "records/LabelChecks.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"
#include "ui/log/LogModel.h"
#include "ui/log/ShipmentTexts.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Button.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/TextLabel.h"
#include "ui/preview/LabelThumbnail.h"
#include "ui/preview/VerdictNotice.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QScrollArea>
#include <QStackedLayout>

#include <cstddef>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int labelWidth = 106, columnTotal = 3;
constexpr int margin = 16, headGap = 10, refundGap = 12, leastName = 90;
constexpr int sideWidth = 174, leastForPicture = 1080, leastForSide = 1180;
constexpr int columnStretch[columnTotal] = {3, 4, 4};
const QString customsToolTip =
    u"Reprint the customs paperwork — the commercial invoice (USPS) or FedEx's trade documents"_s;

/// A number shown in groups; Copy omits the spaces between them.
class NumberLabel : public TextLabel {
public:
    using TextLabel::TextLabel;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->matches(QKeySequence::Copy))
            QGuiApplication::clipboard()->setText(selectedText().remove(u' '));
        else
            TextLabel::keyPressEvent(event);
    }
    void contextMenuEvent(QContextMenuEvent *) override {} // its Copy would keep the spaces
};

QString statusText(const ShipmentRecord &record)
{
    return friendlyStatus(record) + (record.testMode ? u" (TEST)"_s : QString());
}

QString declaredText(const ShipmentRecord &record)
{
    // An imported log may contain any text here.
    return decimal(record.declaredValue) ? u'$' + record.declaredValue : record.declaredValue;
}

QString addressText(const ShipmentRecord &record)
{
    return joinPresent({recipientName(record), recipientAddress(record)}, u"\n"_s);
}

struct LineInfo {
    int column;
    QString label;
    QString (*text)(const ShipmentRecord &);
    bool isNumber = false;
};

const LineInfo lines[] = {
    {0, u"Date/Time:"_s, timeText},
    {0, u"Postage Class:"_s, [](const ShipmentRecord &record) { return record.service; }},
    {0, u"Postage Amount:"_s, postageText},
    {0, u"Services:"_s, [](const ShipmentRecord &record) { return record.services; }},
    {0, u"Weight:"_s, [](const ShipmentRecord &record) { return record.weight; }},
    {1, u"Status:"_s, statusText},
    {1, u"Tracking ID:"_s, [](const ShipmentRecord &record) { return groupsOfFour(record.tracking); }, true},
    {1, u"Transaction ID:"_s, [](const ShipmentRecord &record) { return record.transactionID; }, true},
    {1, u"Reference:"_s, [](const ShipmentRecord &record) { return record.reference; }},
    {1, u"Declared Value:"_s, declaredText},
    {2, u"Address:"_s, addressText},
    {2, u"Description:"_s, [](const ShipmentRecord &record) { return record.descriptionText; }},
};

Token inkOf(RefundState refund)
{
    switch (refund) {
    case RefundState::pending:
        return &Tokens::warn;
    case RefundState::granted:
        return &Tokens::ok;
    case RefundState::failed:
        return &Tokens::bad;
    case RefundState::none:
        break;
    }
    return &Tokens::text;
}

} // namespace

ShipmentDetails::ShipmentDetails(MailingLogScreen &screen, QWidget *list, QWidget *parent)
    : PanelFrame(&Tokens::sheet, parent), m_screen(screen), m_list(list), m_pages(new QStackedLayout(this)),
      m_name(new ElidedLabel({}, FontRole::h2)),
      m_badges{new Badge({}, BadgeKind::plain), new Badge({}, BadgeKind::plain)},
      m_reprint(new Button(u"Reprint"_s, Button::Kind::tint, u"ui_printer"_s)),
      m_customs(new Button(u"Customs Docs"_s, Button::Kind::standard, u"ui_document"_s)),
      m_check(new Button(u"Check Status"_s, Button::Kind::standard, u"ui_status"_s)),
      m_copy(new Button(u"Copy Tracking"_s, Button::Kind::standard, u"ui_copy"_s)),
      m_track(new Button(u"Track Online"_s, Button::Kind::standard, u"ui_external"_s)),
      m_refund(new Button(u"Refund"_s, Button::Kind::danger, u"ui_refund"_s)),
      m_thumbnail(new LabelThumbnail(screen.preview)), m_verdict(new VerdictNotice),
      m_compared(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_unchecked(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_showLabel(new Button(u"Show Label"_s, Button::Kind::link))
{
    auto *nothing = new TextLabel(u"Choose a shipment to see its details."_s, FontRole::body, &Tokens::muted);
    nothing->setAlignment(Qt::AlignCenter);
    m_pages->addWidget(nothing);
    auto *page = new QWidget;
    auto *rows = new QVBoxLayout(page);
    rows->setContentsMargins(margin, 10, margin, 6);
    rows->setSpacing(8);
    rows->addWidget(makeHead());
    m_body = new QHBoxLayout;
    m_body->setSpacing(12);
    m_body->addWidget(makeLines(), 1);
    m_body->addWidget(makeLabelSide());
    m_body->addWidget(m_thumbnail, 0, Qt::AlignTop);
    rows->addLayout(m_body, 1);
    m_pages->addWidget(page);
    refresh({});
}

void ShipmentDetails::connectButton(Button *button, Operation operation)
{
    connect(button, &QPushButton::clicked, this, [this, operation] {
        if (const auto record = m_screen.selectedRecord())
            spawn([this, operation, record] { return (m_screen.*operation)(*record); });
    });
}

QWidget *ShipmentDetails::makeHead()
{
    connectButton(m_reprint, &MailingLogScreen::reprint);
    connectButton(m_customs, &MailingLogScreen::reprintCustoms);
    connectButton(m_check, &MailingLogScreen::checkStatus);
    connectButton(m_track, &MailingLogScreen::trackOnline);
    connectButton(m_refund, &MailingLogScreen::refund);
    connect(m_copy, &QPushButton::clicked, this, [this] {
        if (const auto record = m_screen.selectedRecord())
            m_screen.copyTracking(*record);
    });
    auto *head = new QWidget;
    auto *row = new QHBoxLayout(head);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(headGap);
    row->addWidget(m_name);
    for (Badge *badge : m_badges)
        row->addWidget(badge);
    row->addStretch(1);
    for (Button *button : {m_reprint, m_customs, m_check, m_copy, m_track})
        row->addWidget(button);
    row->addSpacing(refundGap); // apart from the everyday buttons
    row->addWidget(m_refund);
    return head;
}

QWidget *ShipmentDetails::makeLines()
{
    auto *area = new QScrollArea; // long services or a narrow window may need more lines than fit
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    auto *body = new PanelFrame(&Tokens::sheet);
    auto *columns = new QHBoxLayout(body);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(16);
    QGridLayout *grids[columnTotal] = {};
    for (int column = 0; column < columnTotal; ++column) {
        grids[column] = new QGridLayout;
        grids[column]->setHorizontalSpacing(10);
        grids[column]->setVerticalSpacing(5);
        grids[column]->setColumnStretch(1, 1);
        columns->addLayout(grids[column], columnStretch[column]);
    }
    for (const LineInfo &line : lines) {
        TextLabel *value = line.isNumber ? new NumberLabel({}, FontRole::mono) : new TextLabel;
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        value->setWordWrap(!line.isNumber); // a number is never elided or wrapped
        auto *label = new TextLabel(line.label, FontRole::body, &Tokens::muted);
        label->setFixedWidth(Theme::current().scaled(labelWidth));
        label->setAlignment(Qt::AlignRight | Qt::AlignTop);
        label->setBuddy(value);
        QGridLayout *grid = grids[line.column];
        const int row = grid->rowCount();
        grid->addWidget(label, row, 0, Qt::AlignTop);
        grid->addWidget(value, row, 1, Qt::AlignTop);
        m_values.push_back(value);
    }
    m_lastColumn = grids[columnTotal - 1];
    m_rowBelow = m_lastColumn->rowCount();
    for (QGridLayout *grid : grids)
        grid->setRowStretch(grid->rowCount() + 1, 1);
    area->setWidget(body);
    return area;
}

/// What was found when the label was compared with its parcel.
QWidget *ShipmentDetails::makeLabelSide()
{
    m_side = new PanelFrame(&Tokens::sheet);
    m_side->setLines(Qt::LeftEdge);
    m_side->setFixedWidth(Theme::current().scaled(sideWidth));
    auto *rows = new QVBoxLayout(m_side);
    rows->setContentsMargins(13, 0, 0, 0);
    rows->setSpacing(6);
    for (TextLabel *label : {m_compared, m_unchecked})
        label->setWordWrap(true);
    rows->addWidget(m_verdict);
    rows->addWidget(m_compared);
    rows->addWidget(m_unchecked);
    rows->addStretch(1);
    rows->addWidget(m_showLabel, 0, Qt::AlignLeft);
    connect(m_showLabel, &QPushButton::clicked, &m_screen.preview, &LabelPreview::open);
    return m_side;
}

void ShipmentDetails::resizeEvent(QResizeEvent *event)
{
    PanelFrame::resizeEvent(event);
    fitLabel();
    fitBadges();
}

/// In a narrow window, a part of the name stays, and the tool tip of the badges tells the rest of them.
void ShipmentDetails::fitBadges()
{
    const int name = std::min(m_name->sizeHint().width(), Theme::current().scaled(leastName));
    int room = width() - 2 * margin - refundGap - name;
    for (const Button *button : {m_reprint, m_customs, m_check, m_copy, m_track, m_refund})
        room -= button->sizeHint().width() + headGap;
    const QList<RowBadge> shown = fitting(m_allBadges, room, FontRole::badge, headGap);
    for (size_t at = 0; at < m_badges.size(); ++at) {
        Badge *badge = m_badges[at];
        const bool used = qsizetype(at) < shown.size();
        badge->setVisible(used);
        if (!used)
            continue;
        badge->set(shown[qsizetype(at)].word, shown[qsizetype(at)].kind);
        badge->setToolTip(shown == m_allBadges ? QString() : plainToolTip(wordsOf(m_allBadges)));
    }
}

/// A narrow window keeps the three columns of texts and shows less of the label. Checks the window, which this pane
/// spans, because a hidden pane keeps its old size.
void ShipmentDetails::fitLabel()
{
    const Theme &theme = Theme::current();
    const bool hasCopy = m_screen.preview.sight.value().state != LabelSight::State::noCopy;
    m_thumbnail->setVisible(hasCopy && window()->width() >= theme.scaled(leastForPicture));
    const bool isBelow = window()->width() < theme.scaled(leastForSide);
    for (TextLabel *label : {m_compared, m_unchecked})
        label->setVisible(!isBelow && !label->text().isEmpty());
    if (std::exchange(m_isSideBelow, isBelow) == isBelow)
        return;
    if (isBelow) // under the description
        m_lastColumn->addWidget(m_side, m_rowBelow, 1);
    else
        m_body->insertWidget(1, m_side);
    m_side->setLines(isBelow ? Qt::Edges() : Qt::LeftEdge);
    m_side->layout()->setContentsMargins(isBelow ? 0 : 13, 0, 0, 0);
}

void ShipmentDetails::refreshLabel()
{
    const LabelSight sight = m_screen.preview.sight;
    const LabelVerdict verdict = sight.verdict.value_or(LabelVerdict());
    const bool hasCopy = sight.state != LabelSight::State::noCopy;
    m_verdict->setVerdict(hasCopy ? sight.verdict : std::nullopt);
    if (!hasCopy)
        m_verdict->setText(u"No copy of this label is stored."_s);
    m_verdict->setVisible(sight.state != LabelSight::State::drawing);
    const QString same = LabelVerdictTexts::itemsWith(verdict, LabelMatch::same),
                  unchecked = LabelVerdictTexts::itemsWith(verdict, LabelMatch::unchecked);
    m_compared->setText(same);
    m_unchecked->setText(same.isEmpty() || unchecked.isEmpty() ? QString() : u"Cannot be checked: "_s + unchecked);
    enable(m_showLabel, hasCopy, m_list);
    fitLabel();
}

void ShipmentDetails::refresh(const std::optional<OpenItem> &open)
{
    const std::optional<ShipmentRecord> record = m_screen.selectedRecord();
    m_pages->setCurrentIndex(record ? 1 : 0);
    if (record)
        show(*record, open);
}

void ShipmentDetails::refreshButtons(const ShipmentRecord &record)
{
    const QString busy = m_screen.busy ? notWhileBusy : QString();
    const auto blocker = [&](LabelUse use) {
        const QString obstacle = labelBlocker(use, record);
        return obstacle.isEmpty() ? busy : obstacle;
    };
    enableUnless(blocker(LabelUse::reprint), m_reprint, m_list);
    m_customs->setToolTip(customsToolTip);
    if (record.isIntl)
        enableUnless(busy, m_customs, m_list, customsToolTip);
    else
        enable(m_customs, false, m_list);
    enableUnless(blocker(LabelUse::checkStatus), m_check, m_list);
    enable(m_copy, !record.tracking.isEmpty(), m_list);
    enable(m_track, !trackingPageOf(record).isEmpty(), m_list);
    enableUnless(blocker(LabelUse::refund), m_refund, m_list);
}

void ShipmentDetails::show(const ShipmentRecord &record, const std::optional<OpenItem> &open)
{
    refreshButtons(record);
    refreshLabel();
    m_name->setFullText(recipientName(record));
    m_allBadges = badgesOf(record);
    fitBadges();
    for (size_t at = 0; at < m_values.size(); ++at) {
        TextLabel *value = m_values[at];
        const bool isStatus = lines[at].text == statusText;
        const QString unused = isStatus && open ? OpenItemTexts::status(*open) : QString();
        const QString text = unused.isEmpty() ? lines[at].text(record) : unused;
        if (const QString shown = text.isEmpty() ? u"—"_s : text; shown != value->text())
            value->setText(shown); // only on a change, to keep the clerk's text selection
        if (isStatus) {
            const RefundState refund = refundState(record);
            const bool isPlain = refund == RefundState::none && unused.isEmpty();
            value->setInk(!unused.isEmpty() && OpenItemTexts::isUrgent(open->reason) ? &Tokens::bad : inkOf(refund));
            value->setFont(Theme::current().font(isPlain ? FontRole::body : FontRole::strong));
        }
    }
}

} // namespace parcelory
