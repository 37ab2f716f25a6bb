#include "app/endofday/DayExport.h"

#include "app/endofday/DayTexts.h"
#include "core/Csv.h"
#include "core/Text.h"
#include "records/ShipmentStatus.h"

#include <QLocale>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

using DayPage::Section;

QString formColumn(const DayLabel &label)
{
    return label.onForm ? dateTimeText(*label.onForm) : QString();
}

QString printColumn(const DayLabel &label)
{
    switch (label.print) {
    case PrintState::done:
        return u"Printed"_s;
    case PrintState::never:
    case PrintState::sent:
        return DayTexts::printState(label);
    case PrintState::unknown:
        break;
    }
    return {};
}

QString amountColumn(const std::optional<double> &amount)
{
    return amount ? fixed(*amount, 2) : QString();
}

Section formSection(const DayReport &report, KeyView key)
{
    const DayOfLabels &labels = report.labels;
    Section section{.title = u"USPS SCAN form"_s, .columns = {{40, true}, {130}, {322}}};
    const auto add = [&section](qsizetype count, const QString &what, const QString &note) {
        if (count > 0)
            section.rows += QStringList{QString::number(count), what, note};
    };
    add(labels.notOnForm.size(), u"not on a form"_s, DayTexts::names(labels.notOnForm));
    add(labels.onForm.size(), u"on a form"_s, DayTexts::formTime(labels));
    add(labels.exempt.size(), u"not meant for one"_s, DayTexts::exemptions(labels.exempt, key));
    return section;
}

Section fedexSection(const DayReport &report)
{
    Section section{.title = u"FedEx to hand over"_s, .columns = {{150}, {100}, {110}, {132}}};
    for (const DayLabel &label : report.labels.toHandOver)
        section.rows += QStringList{label.record.recipientName(), groupsOfFour(label.record.tracking),
                                    label.record.service, DayTexts::papers(label)};
    return section;
}

Section openSection(const DayReport &report, const QList<UnresolvedPurchase> &unresolved)
{
    Section section{.title = u"Not printed or unresolved"_s, .columns = {{150}, {180}, {162}}};
    for (const DayLabel &label : report.labels.unprinted)
        section.rows += QStringList{DayTexts::printState(label), label.record.recipientName(),
                                    DayTexts::time(label.record.createdAt)};
    for (const UnresolvedPurchase &open : unresolved)
        section.rows += QStringList{u"Not known if bought"_s, open.purchase.record.recipientName(),
                                    DayTexts::time(open.purchase.askedAt)};
    return section;
}

Section spendSection(const DayReport &report)
{
    Section section{.title = u"Spend"_s, .columns = {{80}, {272}, {60, true}, {80, true}}};
    for (const ServiceSpend &spend : report.labels.spend)
        section.rows +=
            QStringList{spend.carrier, spend.service, QString::number(spend.labels), DayTexts::dollars(spend.dollars)};
    if (!section.rows.isEmpty())
        section.rows += QStringList{u"Total"_s, QString(), QString::number(report.labels.counted),
                                    DayTexts::dollars(report.labels.dollars)};
    return section;
}

Section refundSection(const DayReport &report)
{
    Section section{.title = u"Refunds asked (not counted above)"_s, .columns = {{150}, {162}, {100}, {80, true}}};
    for (const AskedRefund &refund : report.refunds)
        section.rows += QStringList{refund.record.recipientName(), refund.record.carrier + u' ' + refund.record.service,
                                    DayTexts::askedAt(refund), DayTexts::dollars(refund.record.postage)};
    return section;
}

Section differenceSection(const DayReport &report)
{
    Section section{.title = u"Differs from the account"_s, .columns = {{122}, {130}, {130}, {55, true}, {55, true}}};
    for (const AccountDifference &one : report.differences)
        section.rows += QStringList{DayTexts::difference(one.kind), one.recipient, groupsOfFour(one.tracking),
                                    DayTexts::amount(one.account), DayTexts::amount(one.here)};
    if (!section.rows.isEmpty())
        section.rows.prepend({u"What"_s, u"Recipient"_s, u"Tracking ID"_s, u"Account"_s, u"Here"_s});
    return section;
}

} // namespace

QString dayCSV(const DayReport &report)
{
    QString text = u"Date,Time,Recipient,Carrier,Service,Tracking,Reference,Here,Account,SCAN Form,Print,Status,Test,"
                   "Differs\n"_s;
    const QString date = QLocale::c().toString(report.day, u"MM/dd/yy"_s);
    for (const DayLabel &label : report.labels.all) {
        const ShipmentRecord &record = label.record;
        const auto differs = std::ranges::find(report.differences, record.id, &AccountDifference::row);
        const bool isSame = differs == report.differences.end();
        text += csvRow({date, DayTexts::time(record.createdAt), record.recipient, record.carrier, record.service,
                        record.tracking, record.reference, fixed(record.postage, 2),
                        isSame ? QString() : amountColumn(differs->account), formColumn(label), printColumn(label),
                        friendlyStatus(record), record.testMode ? u"TEST"_s : QString(),
                        isSame ? QString() : DayTexts::difference(differs->kind)}) +
                u'\n';
    }
    for (const AccountDifference &one : report.differences) {
        if (one.row == 0)
            text += csvRow({date, DayTexts::time(one.time), one.recipient, QString(), one.service, one.tracking,
                            QString(), QString(), amountColumn(one.account), QString(), QString(), QString(), QString(),
                            DayTexts::difference(one.kind)}) +
                    u'\n';
    }
    return text;
}

DayPage::Data_ dayPage(const DayReport &report, KeyView key, const QList<UnresolvedPurchase> &unresolved,
                       const QString &compared)
{
    const QLocale english(QLocale::English, QLocale::UnitedStates);
    return {.title = u"End of Day — "_s + english.toString(report.day, u"dddd, MMMM d, yyyy"_s),
            .subtitle = DayTexts::summary(report) + u" — refunded and pending labels are listed, not counted."_s,
            .sections = {formSection(report, key), fedexSection(report), openSection(report, unresolved),
                         spendSection(report), refundSection(report), differenceSection(report)},
            .foot = compared};
}

} // namespace parcelory
