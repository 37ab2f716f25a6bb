#pragma once

#include "app/Screens.h"
#include "support/CarrierDesk.h"

namespace parcelory::test {

inline ShippoRate rate(const QString &id, const QString &amount)
{
    return {.objectId = id,
            .amount = amount,
            .currency = u"USD"_s,
            .provider = u"USPS"_s,
            .servicelevel = {u"Priority Mail"_s, u"usps_priority"_s},
            .estimatedDays = 2,
            .durationTerms = {},
            .attributes = {}};
}

inline ShipmentRecord shipment(const QString &name)
{
    return {.createdAt = QDateTime(QDate(2026, 11, 20), QTime(12, 0)),
            .carrier = u"USPS"_s,
            .service = u"Priority Mail"_s,
            .postage = 9.85,
            .recipient = name + u", 88 Quarry Ln, Bend OR 97702"_s,
            .tracking = u"92055901755477"_s,
            .trackingURL = u"https://example.com/92055901755477"_s,
            .transactionID = u"t-"_s + name,
            .labelURL = u"https://example.com/label"_s,
            .testMode = true};
}

/// Another value than the given one, and one that makes a difference on the screen.
struct OtherValue {
    /// The record with another value in these fields.
    template <class Record, class... Fields>
    static Record with(Record record, Fields... fields)
    {
        ((record.*fields = of(record.*fields)), ...);
        return record;
    }
    static bool of(bool value) { return !value; }
    static int of(int value) { return value + 1; }
    static double of(double value) { return value + 0.25; }
    static qint64 of(qint64 value) { return value + 1; }
    static QString of(const QString &value)
    {
        bool isNumber = false;
        const double number = value.toDouble(&isNumber);
        return isNumber ? QString::number(number + 1) : value + u" else"_s;
    }
    static QByteArray of(const QByteArray &value) { return value + "%PDF"; }
    static QDate of(QDate value) { return value.addDays(1); }
    static QDateTime of(const QDateTime &value)
    {
        return value.isValid() ? value.addDays(1) : QDateTime(QDate(2026, 11, 20), QTime(12, 0));
    }
    static RecordCopy of(const RecordCopy &value) { return with(value, &RecordCopy::folder, &RecordCopy::madeAt); }
    static RestoreReview of(const RestoreReview &value) { return with(value, &RestoreReview::copy); }
    static LogChain::Report of(const LogChain::Report &value) { return with(value, &LogChain::Report::labels); }
    static RuleBook of(const RuleBook &value) { return with(value, &RuleBook::date); }
    static QUuid of(const QUuid &) { return QUuid::createUuid(); }
    static AppFlow of(AppFlow) { return AppFlow::login; }
    static MainTab of(MainTab) { return MainTab::mailingLog; }
    static Carrier of(Carrier) { return Carrier::fedex; }
    static ServiceClass of(ServiceClass) { return ServiceClass::express; }
    static ServiceOption of(ServiceOption) { return ServiceOption::signature; }
    static PostageMode of(PostageMode) { return PostageMode::none; }
    static UpdatePhase of(UpdatePhase) { return UpdatePhase::downloading; }
    static StatusKind of(StatusKind) { return StatusKind::failure; }
    static KeptRecipient of(const KeptRecipient &)
    {
        return {homeAddress(), true, u"Recipient saved to the address book."_s, {}};
    }
    static DraftField of(DraftField) { return DraftField::weight; }
    static MailpieceSelection of(const MailpieceSelection &) { return BuiltinMailpiece::mediumFlatRateBox; }
    static Banner of(const Banner &) { return {u"Something went wrong."_s, false}; }
    static PrinterMessage of(const PrinterMessage &) { return {u"The printer is off."_s, false}; }
    static UpdateInfo of(const UpdateInfo &) { return {.version = u"9.9"_s, .url = {}, .notes = {}}; }
    static KeyRow of(const KeyRow &) { return {u"Another key"_s, false, false}; }
    static ShippoRate of(const ShippoRate &) { return rate(u"r3"_s, u"30.00"_s); }
    static ShipmentRecord of(const ShipmentRecord &) { return shipment(u"Else"_s); }
    static LastLabel of(const LastLabel &) { return {u"Ana Ortiz · Bend OR"_s, shipment(u"Ana Ortiz"_s), {}}; }
    static LabelSight of(const LabelSight &)
    {
        const LabelFinding zip{LabelItem::zip, LabelMatch::different, u"28801"_s, u"28804"_s, {}};
        return {.state = LabelSight::State::undrawable,
                .verdict = LabelVerdict{.findings = {zip}, .addressOnLabel = {}}};
    }
    static DesklineInvoice of(const DesklineInvoice &)
    {
        return {.invoiceID = u"48213"_s, .buyerName = u"Ana Ortiz"_s};
    }
    static DayReport of(const DayReport &)
    {
        DayReport report{.day = QDate(2026, 11, 20)};
        report.labels = sortDay({{.record = shipment(u"Ana Ortiz"_s)}}, {.test = true});
        return report;
    }
    static AccountState of(AccountState) { return AccountState::unanswered; }
    static ScanForm of(const ScanForm &) { return {.id = 7, .askedAt = QDateTime(QDate(2026, 11, 20), QTime(12, 0))}; }
    static MasterEntry of(const MasterEntry &) { return {.id = u"m9"_s, .recipient = u"Ana Ortiz"_s}; }
    static PostalContact of(const PostalContact &) { return {.name = u"Ana Ortiz"_s}; }
    static BookChange of(const BookChange &) { return {.former = {.name = u"Ana Ortiz"_s}, .parcel = 1}; }
    static ShippoAddress of(const ShippoAddress &) { return londonAddress(); }
    static CustomsInfo of(const CustomsInfo &) { return {CustomsItemType::silver, u"2"_s, u"80"_s, u"Ana Ortiz"_s}; }
    static SenderProfile of(SenderProfile value)
    {
        value.address = {};
        return with(value, &SenderProfile::name);
    }
    static BoxProfile of(const BoxProfile &value) { return with(value, &BoxProfile::name); }
    /// Bought for the recipient of the draft, with a key that is gone: nothing is sent to the carrier.
    static UnresolvedPurchase of(const UnresolvedPurchase &)
    {
        return {.purchase = {.id = 7,
                             .rateId = u"r0"_s,
                             .keyName = u"gone"_s,
                             .recipient = homeAddress(),
                             .record = shipment(u"Eleanor"_s)},
                .text = u"No answer yet."_s};
    }
    static ResolvedPurchase of(const ResolvedPurchase &)
    {
        return {.recipient = {}, .record = shipment(u"Ana Ortiz"_s), .isBought = true, .text = u"It was bought."_s};
    }
};

template <class T>
inline T other(const T &value)
{
    return OtherValue::of(value);
}
template <class T>
inline std::optional<T> other(const std::optional<T> &value)
{
    return value ? std::nullopt : std::optional(other(T()));
}
/// Another first record, or the first record.
template <class T>
inline QList<T> other(QList<T> value)
{
    if (value.isEmpty())
        return {other(T())};
    value.first() = other(value.first());
    return value;
}

} // namespace parcelory::test
