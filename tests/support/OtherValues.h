#pragma once

#include "app/Screens.h"
#include "support/CarrierDesk.h"

#include <optional>

namespace parcelory::test {
using namespace Qt::StringLiterals;

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
            .testMode = true};
}

// Another value than the given one, and one that makes a difference on the screen.

inline bool other(bool value)
{
    return !value;
}
inline int other(int value)
{
    return value + 1;
}
inline double other(double value)
{
    return value + 0.25;
}
inline qint64 other(qint64 value)
{
    return value + 1;
}
inline QString other(const QString &value)
{
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    return isNumber ? QString::number(number + 1) : value + u" else"_s;
}
inline QByteArray other(const QByteArray &value)
{
    return value + "%PDF";
}
inline QDate other(QDate value)
{
    return value.addDays(1);
}
inline QUuid other(const QUuid &)
{
    return QUuid::createUuid();
}
inline AppFlow other(AppFlow)
{
    return AppFlow::login;
}
inline MainTab other(MainTab)
{
    return MainTab::mailingLog;
}
inline Carrier other(Carrier)
{
    return Carrier::fedex;
}
inline ServiceClass other(ServiceClass)
{
    return ServiceClass::express;
}
inline ServiceOption other(ServiceOption)
{
    return ServiceOption::signature;
}
inline PostageMode other(PostageMode)
{
    return PostageMode::none;
}
inline UpdatePhase other(UpdatePhase)
{
    return UpdatePhase::downloading;
}
inline StatusKind other(StatusKind)
{
    return StatusKind::failure;
}
inline KeptRecipient other(const KeptRecipient &)
{
    return {homeAddress(), true, u"Recipient saved to the address book."_s};
}
inline DraftField other(DraftField)
{
    return DraftField::weight;
}
inline MailpieceSelection other(const MailpieceSelection &)
{
    return BuiltinMailpiece::mediumFlatRateBox;
}
inline Banner other(const Banner &)
{
    return {u"Something went wrong."_s, false};
}
inline PrinterMessage other(const PrinterMessage &)
{
    return {u"The printer is off."_s, false};
}
inline UpdateInfo other(const UpdateInfo &)
{
    return {.version = u"9.9"_s, .url = {}, .notes = {}};
}
inline KeyRow other(const KeyRow &)
{
    return {u"Another key"_s, false, false};
}
inline ShippoRate other(const ShippoRate &)
{
    return rate(u"r3"_s, u"30.00"_s);
}
inline ShipmentRecord other(const ShipmentRecord &)
{
    return shipment(u"Else"_s);
}
inline LastLabel other(const LastLabel &)
{
    return {u"Ana Ortiz · Bend OR"_s, shipment(u"Ana Ortiz"_s), {}};
}
inline DesklineInvoice other(const DesklineInvoice &)
{
    return {.invoiceID = u"48213"_s, .buyerName = u"Ana Ortiz"_s};
}
inline ScanForm other(const ScanForm &)
{
    return {.id = 7, .askedAt = QDateTime(QDate(2026, 11, 20), QTime(12, 0))};
}
inline MasterEntry other(const MasterEntry &)
{
    return {.id = u"m9"_s, .recipient = u"Ana Ortiz"_s};
}
inline PostalContact other(const PostalContact &)
{
    return {.name = u"Ana Ortiz"_s};
}
inline ShippoAddress other(const ShippoAddress &)
{
    return londonAddress();
}
inline CustomsInfo other(const CustomsInfo &)
{
    return {CustomsItemType::silver, u"2"_s, u"80"_s, u"Ana Ortiz"_s};
}
inline SenderProfile other(SenderProfile value)
{
    value.name += u" else"_s;
    value.address = {};
    return value;
}
inline BoxProfile other(BoxProfile value)
{
    value.name += u" else"_s;
    return value;
}
/// Bought for the recipient of the draft, with a key that is gone: nothing is sent to the carrier.
inline UnresolvedPurchase other(const UnresolvedPurchase &)
{
    return {.purchase = {.id = 7,
                         .rateId = u"r0"_s,
                         .keyName = u"gone"_s,
                         .recipient = homeAddress(),
                         .record = shipment(u"Eleanor"_s)},
            .text = u"No answer yet."_s};
}
inline ResolvedPurchase other(const ResolvedPurchase &)
{
    return {.recipient = {}, .record = shipment(u"Ana Ortiz"_s), .isBought = true, .text = u"It was bought."_s};
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
