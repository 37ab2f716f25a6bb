#include "ui/endofday/DayPanels.h"

#include "app/endofday/DayTexts.h"
#include "app/endofday/EndOfDayScreen.h"
#include "core/Text.h"
#include "ui/endofday/CellTable.h"
#include "ui/parts/Button.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/IconView.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/Separator.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int leftWidth = 352, twoLines = 42;
using Kind = TableColumn::Kind;

/// A table, or a sentence in its place, in a card.
PanelFrame *framed(QWidget *inner)
{
    PanelFrame *card = PanelFrame::card();
    auto *rows = new QVBoxLayout(card);
    rows->setContentsMargins(1, 1, 1, 5); // below the table, the corners of the card are round
    rows->setSpacing(0);
    rows->addWidget(inner);
    return card;
}

TableRow spendRow(const ServiceSpend &spend)
{
    return {.id = spend.carrier + spend.service,
            .cells = {{spend.carrier},
                      {spend.service},
                      {QString::number(spend.labels)},
                      {DayTexts::dollars(spend.dollars)}},
            .name = joinPresent(
                {spend.carrier, spend.service, DayTexts::counted(spend.labels), DayTexts::dollars(spend.dollars)},
                u", "_s)};
}

TableRow totalRow(const DayOfLabels &labels)
{
    const QString count = QString::number(labels.counted), sum = DayTexts::dollars(labels.dollars);
    return {.id = u"total"_s,
            .cells = {{u"Total"_s, {}, true}, {}, {count, {}, true}, {sum, {}, true}},
            .name = u"Total, "_s + DayTexts::counted(labels.counted) + u", "_s + sum};
}

TableRow refundRow(const AskedRefund &refund)
{
    const ShipmentRecord &record = refund.record;
    const QString service = joinPresent({record.carrier, DayTexts::service(record.service)}, u" "_s),
                  sum = DayTexts::dollars(record.postage), asked = DayTexts::askedAt(refund);
    return {.id = record.transactionID,
            .cells = {{record.recipientName(), service}, {sum, asked}},
            .name = joinPresent({record.recipientName(), service, sum, asked}, u", "_s)};
}

/// A number that is longer than a USPS number takes two lines, because it is never elided.
TableCell numberCell(const QString &tracking)
{
    constexpr qsizetype longest = 27, firstLine = 19;
    const QString number = groupsOfFour(tracking);
    return number.size() <= longest ? TableCell{number} : TableCell{number.left(firstLine), number.mid(firstLine + 1)};
}

TableRow differenceRow(const AccountDifference &one)
{
    const QString what = DayTexts::difference(one.kind);
    const qsizetype comma = what.indexOf(u", "_s); // the rest goes into the second line
    const QString account = one.account ? u"account "_s + DayTexts::dollars(*one.account) : u"not in the account"_s;
    const QString here = one.here ? u"here "_s + DayTexts::dollars(*one.here) : u"not in this log"_s;
    return {.id = one.id,
            .cells = {{what.left(comma),
                       joinPresent({comma < 0 ? QString() : what.mid(comma + 2), DayTexts::time(one.time)}, u" · "_s),
                       true},
                      {one.recipient, DayTexts::service(one.service)},
                      numberCell(one.tracking),
                      {DayTexts::amount(one.account)},
                      {DayTexts::amount(one.here)}},
            .name = joinPresent({what, one.recipient, account, here}, u", "_s)};
}

} // namespace

SpendPanel::SpendPanel(EndOfDayScreen &screen, QWidget *parent)
    : QWidget(parent), m_screen(screen),
      m_spend(new CellTable(
          u"Spend"_s,
          {{u"Carrier"_s, 60}, {u"Service"_s}, {u"Labels"_s, 56, Kind::number}, {u"Spend"_s, 72, Kind::number}},
          RowTable::rowPixels)),
      m_refunds(new CellTable(u"Refunds asked"_s, {{u"Recipient"_s}, {u"Amount"_s, 150, Kind::number}}, twoLines)),
      m_pages(new QStackedWidget), m_none(new EmptyState(u"ui_document"_s, {})), m_frame(framed(m_pages)),
      m_refundTitle(new TextLabel({}, FontRole::h2)),
      m_refundNote(new TextLabel(u"not counted above"_s, FontRole::caption, &Tokens::muted))
{
    setFullWidth(false);
    m_pages->addWidget(m_spend);
    m_pages->addWidget(m_none);
    m_refunds->horizontalHeader()->hide();
    m_refunds->setMinimumHeight(Theme::current().scaled(twoLines));
    auto *refundHead = new QHBoxLayout;
    refundHead->addWidget(m_refundTitle, 1);
    refundHead->addWidget(m_refundNote);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(8);
    rows->addWidget(new TextLabel(u"Spend"_s, FontRole::h2));
    rows->addWidget(m_frame, 100); // the refunds have what it leaves
    rows->addLayout(refundHead);
    rows->addWidget(framed(m_refunds), 1);
}

void SpendPanel::setFullWidth(bool isFull)
{
    const int own = Theme::current().scaled(leftWidth);
    setMinimumWidth(own);
    setMaximumWidth(isFull ? QWIDGETSIZE_MAX : own);
}

void SpendPanel::refresh()
{
    const DayReport &report = m_screen.report.value();
    QList<TableRow> rows, refunds;
    for (const ServiceSpend &spend : report.labels.spend)
        rows += spendRow(spend);
    if (!rows.isEmpty())
        rows += totalRow(report.labels);
    for (const AskedRefund &refund : report.refunds)
        refunds += refundRow(refund);
    m_spend->setRows(rows);
    m_refunds->setRows(refunds);
    m_pages->setCurrentIndex(rows.isEmpty() ? 1 : 0);
    m_none->set(u"ui_document"_s, m_screen.isRead()          ? u"No labels bought on this day."_s
                                  : report.failure.isEmpty() ? QString()
                                                             : u"The mailing log can't be read now."_s);
    const int rowHeight = Theme::current().scaled(RowTable::rowPixels);
    constexpr int edges = 6;
    m_frame->setMaximumHeight(std::max(rows.isEmpty() ? 0 : m_spend->fullHeight() + edges, 5 * rowHeight));
    m_refundTitle->setText(m_screen.isToday() ? u"Refunds asked today"_s : u"Refunds asked that day"_s);
    m_refundNote->setVisible(!refunds.isEmpty());
}

DifferencePanel::DifferencePanel(EndOfDayScreen &screen, QWidget *parent)
    : QWidget(parent), m_screen(screen), m_table(new CellTable(u"Differs from the account"_s,
                                                               {{u"What"_s, 138},
                                                                {u"Recipient"_s},
                                                                {u"Tracking ID"_s, 212, Kind::tracking},
                                                                {u"Account"_s, 64, Kind::number},
                                                                {u"Here"_s, 60, Kind::number}},
                                                               twoLines)),
      m_pages(new QStackedWidget), m_count(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_explanation(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_show(new Button({}, Button::Kind::link)),
      m_same(new EmptyState(u"ui_success"_s, {}))
{
    auto *head = new QHBoxLayout;
    head->setSpacing(14);
    head->addWidget(new TextLabel(u"Differs from the account"_s, FontRole::h2));
    head->addWidget(m_count);
    head->addStretch(1);
    head->addWidget(m_show);
    m_show->setFixedHeight(Theme::current().scaled(18));
    m_explanation->setWordWrap(true);
    auto *line = new QHBoxLayout;
    line->setContentsMargins(12, 9, 12, 9);
    line->setSpacing(8);
    line->addWidget(new IconView(u"ui_info"_s, 16));
    line->addWidget(m_explanation, 1);
    auto *list = new QWidget;
    auto *listRows = new QVBoxLayout(list);
    listRows->setContentsMargins(0, 0, 0, 0);
    listRows->setSpacing(0);
    listRows->addWidget(m_table, 1);
    listRows->addWidget(new Separator);
    listRows->addLayout(line);
    m_pages->addWidget(list);
    m_pages->addWidget(m_same);
    connect(m_table, &RowTable::chosenChanged, this, [this] {
        if (const QVariant id = m_table->chosen(); id.isValid())
            m_screen.selected = id.toString();
    });
    connect(m_table, &CellTable::opened, this, &DifferencePanel::open);
    connect(m_show, &QPushButton::clicked, this, &DifferencePanel::open);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(8);
    rows->addLayout(head);
    rows->addWidget(framed(m_pages), 1);
}

void DifferencePanel::refresh()
{
    const QList<AccountDifference> &all = m_screen.report.value().differences;
    QList<TableRow> rows;
    for (const AccountDifference &one : all)
        rows += differenceRow(one);
    m_table->setRows(rows);
    const std::optional<AccountDifference> chosen = m_screen.selectedDifference();
    m_table->choose(chosen ? QVariant(chosen->id) : QVariant());
    m_count->setText(all.isEmpty() ? QString() : DayTexts::counted(all.size()));
    m_explanation->setText(chosen ? DayTexts::explanation(chosen->kind) : QString());
    m_show->setVisible(chosen.has_value());
    m_show->setText(chosen && chosen->row == 0 ? u"Show in Master Log"_s : u"Show in Log"_s);
    m_pages->setCurrentIndex(all.isEmpty() ? 1 : 0);
    const bool isCompared = m_screen.account == AccountState::compared && m_screen.isRead();
    m_same->set(isCompared ? u"ui_success"_s : u"ui_document"_s,
                isCompared ? u"This log and the account agree."_s : m_screen.accountText());
}

void DifferencePanel::open()
{
    if (const std::optional<AccountDifference> chosen = m_screen.selectedDifference())
        emit opened(*chosen);
}

} // namespace parcelory
