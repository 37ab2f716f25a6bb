#include "app/purchase/PurchaseTexts.h"

#include "app/purchase/CustomsPapers.h"
#include "app/purchase/PurchaseFlow.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/ShippoAddress.h"
#include "core/Text.h"
#include "records/PurchaseJournal.h"
#include "records/ShipmentRecord.h"

namespace parcelory::PurchaseTexts {
using namespace Qt::StringLiterals;

namespace {

QString postage(const ShipmentRecord &record)
{
    return u'$' + fixed(record.postage, 2);
}

/// "Commercial invoice" or "FedEx commercial invoice", by its place in the sentence.
QString invoiceName(const ShipmentRecord &record)
{
    return record.carrier == carrierInfo(Carrier::fedex).displayName ? u"FedEx commercial invoice"_s
                                                                     : u"commercial invoice"_s;
}

/// What stands in parentheses behind the success line; empty if there is nothing to know.
QString papersNote(const PapersResult &papers, const QString &name, bool isFedex)
{
    switch (papers.outcome) {
    case PapersOutcome::opened:
        return name + u" opened in Preview — set a document printer in Settings"_s;
    case PapersOutcome::downloadFailed:
        return name + u" download failed: "_s + papers.text;
    case PapersOutcome::notDrawn:
    case PapersOutcome::printFailed:
        return isFedex ? name + u" print failed: "_s + papers.text.trimmed() + u" — it's needed in the doc pouch"_s
                       : u"Invoice print failed: "_s + papers.text.trimmed();
    case PapersOutcome::none:
    case PapersOutcome::kept:
    case PapersOutcome::printed:
        break;
    }
    return {};
}

QString sentTo(const PapersResult &papers)
{
    return u"Commercial invoice sent to "_s + papers.text + u'.';
}

} // namespace

QString title(const ShipmentRecord &record)
{
    if (record.recipient.isEmpty() && record.service.isEmpty())
        return u"A label whose details cannot be read"_s;
    return u"%1 %2 to %3, %4"_s.arg(record.carrier, record.service, isolated(record.recipientName()), postage(record));
}

QString summary(const OpenPurchase &purchase)
{
    const ShippoAddress &to = purchase.recipient;
    const ShipmentRecord &record = purchase.record;
    const Carrier carrier = record.carrier == carrierInfo(Carrier::fedex).displayName ? Carrier::fedex : Carrier::usps;
    const QString place = trimBlanks(to.city + u' ' + to.state);
    return joinPresent({carrierAndService(carrier, record.service),
                        joinPresent({isolated(to.name), isolated(place)}, u", "_s), postage(record), record.tracking},
                       u" · "_s);
}

QString successLine(const PurchaseResult &result)
{
    const ShipmentRecord &record = result.entry.record;
    const bool isFedex = record.carrier == carrierInfo(Carrier::fedex).displayName;
    QString line =
        u"Success! %1 to %2, %3"_s.arg(record.service, isolated(result.entry.recipient.name), postage(record));
    line += result.label.isPrinted
                ? u". "_s + result.label.text
                : u" (print failed: "_s + result.label.text.trimmed() + u" — use Reprint from the log)"_s;
    if (result.papers.outcome == PapersOutcome::printed && !isFedex)
        line += u' ' + sentTo(result.papers);
    if (const QString note = papersNote(result.papers, invoiceName(record), isFedex); !note.isEmpty())
        line += u" ("_s + note + u')';
    if (const QString letters = writeByHand(result.papers); !letters.isEmpty())
        line += u" ("_s + letters + u')';
    if (!result.isLogged)
        line += u" (the mailing log could not be written — note the tracking number "_s + record.tracking + u')';
    return line;
}

QString papersLine(const PapersResult &papers)
{
    const QString line =
        papers.outcome == PapersOutcome::printed ? sentTo(papers) : papersNote(papers, u"Commercial invoice"_s, false);
    const QString letters = writeByHand(papers);
    return letters.isEmpty() ? line : line + u" ("_s + letters + u')';
}

QString writeByHand(const PapersResult &papers)
{
    if (papers.missingLetters.isEmpty())
        return {};
    return u"no font on this computer has “%1”, so the commercial invoice shows boxes — write it by hand"_s.arg(
        papers.missingLetters);
}

QString foundLater(const PurchaseResult &result)
{
    const ShipmentRecord &record = result.entry.record;
    const QString label =
        result.entry.printed ? u", and its label went to the printer."_s : u". Check whether the label printed."_s;
    const QString papers =
        record.isIntl ? u" Check whether the customs papers printed. Customs Docs prints them again."_s : QString();
    return u"%1 was bought %2. It is in the mailing log%3%4"_s.arg(
        title(record), record.createdAt.toLocalTime().toString(u"MMM d, h:mm AP"_s), label, papers);
}

QString stillUnknown(const QString &reason)
{
    return reason + u" We don't know yet if this label was bought. Don't buy it again — Parcelory keeps checking."_s;
}

QString identifiers(const OpenPurchase &purchase)
{
    const QString transaction = purchase.record.transactionID;
    const QStringList known = {purchase.record.recipient, u"rate "_s + purchase.rateId,
                               transaction.isEmpty() ? QString() : u"transaction "_s + transaction};
    return joinPresent(known, u", "_s);
}

QString notLogged(const ShipmentRecord &record)
{
    return u"The label was bought, but it is not in the mailing log. Tracking %1."_s.arg(record.tracking);
}

QString boughtTwice(const ShipmentRecord &record)
{
    return u"The carrier sold a second label for this package: %1, tracking %2. Don't use it. Request a refund for it."_s
        .arg(title(record), record.tracking);
}

AppError secondError(const ShipmentRecord &record)
{
    return AppError(boughtTwice(record) + u" It is in the mailing log (transaction %1)."_s.arg(record.transactionID));
}

AppError notLoggedError(const ShipmentRecord &record, const QString &reason)
{
    return AppError(u"Bought but not logged: %1, %2, tracking %3, transaction %4, label %5 (%6)"_s.arg(
        record.recipient, record.service, record.tracking, record.transactionID, record.labelURL, reason));
}

} // namespace parcelory::PurchaseTexts
