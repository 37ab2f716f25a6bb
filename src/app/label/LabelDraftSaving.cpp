#include "app/label/LabelDraft.h"

#include "app/AppState.h"
#include "compose/Customs.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "records/DraftStore.h"

#include <algorithm>
#include <optional>
#include <variant>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

std::optional<BuiltinMailpiece> builtinFrom(const QString &id)
{
    const auto &table = builtinMailpieces();
    const auto found = std::ranges::find(table, id, &BuiltinMailpieceInfo::id);
    return found == table.end() ? std::nullopt : std::optional(found->mailpiece);
}

QString wordOf(const MailpieceSelection &selection)
{
    if (const auto *preset = std::get_if<PresetMailpiece>(&selection))
        return u"stock:"_s + preset->id;
    if (const auto *box = std::get_if<QUuid>(&selection))
        return u"box:"_s + box->toString();
    return u"carrier:"_s + builtinMailpieceInfo(std::get<BuiltinMailpiece>(selection)).id;
}

/// The offered mailpiece that wordOf() has named.
std::optional<MailpieceSelection> mailpieceOf(const QString &word, Carrier carrier, const QList<BoxProfile> &boxes)
{
    for (const MailpieceGroup &group : mailpieceMenu(carrier, boxes)) {
        for (const MailpieceEntry &entry : group.entries) {
            if (wordOf(entry.selection) == word)
                return entry.selection;
        }
    }
    return std::nullopt;
}

} // namespace

void LabelDraft::recallChoice()
{
    const DeskHabits::Choice last = m_habits.choice();
    carrier = carrierFrom(last.carrier).value_or(carrier.value());
    if (const auto packed = mailpieceOf(last.mailpiece, carrier, m_app.boxes.profiles))
        mailpiece = *packed;
    const std::optional<ServiceClass> known = serviceClassFrom(last.svcClass);
    if (known && offeredClasses().contains(*known))
        svcClass = *known;
}

/// A parcel that goes abroad does not change the class of the others.
void LabelDraft::noteChoice()
{
    const DeskHabits::Choice last = m_habits.choice();
    m_habits.note({.carrier = carrierInfo(carrier).rawValue,
                   .svcClass = isInternational() ? last.svcClass : serviceClassInfo(svcClass).rawValue,
                   .mailpiece = wordOf(mailpiece)});
}

void LabelDraft::noteHabits()
{
    m_habits.noteMailpiece(totalPounds() * 16, wordOf(mailpiece));
    if (const QString signer = customs.value().signer.trimmed(); isInternational() && !signer.isEmpty())
        m_habits.noteSigner(m_app.signedInUser, signer);
}

std::optional<MailpieceSelection> LabelDraft::usualMailpiece() const
{
    return mailpieceOf(m_habits.mailpieceFor(totalPounds() * 16), carrier, m_app.boxes.profiles);
}

CustomsInfo LabelDraft::freshCustoms() const
{
    return {.signer = m_habits.signerOf(m_app.signedInUser)};
}

SavedDraft LabelDraft::saved() const
{
    const CustomsInfo &declared = customs.value();
    SavedDraft draft{.recipient = recipient(),
                     .senderID = senderID,
                     .carrier = carrierInfo(carrier).rawValue,
                     .svcClass = serviceClassInfo(svcClass).rawValue,
                     .service = serviceOptionInfo(service).rawValue,
                     .presetMailpiece = {},
                     .builtinMailpiece = {},
                     .box = {},
                     .weightLb = weightLb,
                     .weightOz = weightOz,
                     .dimLength = dimLength,
                     .dimWidth = dimWidth,
                     .dimHeight = dimHeight,
                     .insuranceValue = insuranceValue,
                     .shipDate = shipDate.value().toString(Qt::ISODate),
                     .descriptionText = descriptionText,
                     .reference = reference,
                     .fedexResidential = fedexResidential,
                     .printInvoiceWithRates = printInvoiceWithRates,
                     .keepRecipient = keepRecipient,
                     .customsType = customsItem(declared.itemType).rawValue,
                     .customsQuantity = declared.quantity,
                     .customsValue = declared.value,
                     .customsSigner = declared.signer,
                     .invoiceTracking = invoiceTracking()};
    if (const auto *preset = std::get_if<PresetMailpiece>(&mailpiece.value()))
        draft.presetMailpiece = preset->id;
    else if (const auto *box = std::get_if<QUuid>(&mailpiece.value()))
        draft.box = *box;
    else
        draft.builtinMailpiece = builtinMailpieceInfo(std::get<BuiltinMailpiece>(mailpiece.value())).id;
    return draft;
}

void LabelDraft::restore(const SavedDraft &from)
{
    if (from.senderID && m_app.senders.find(*from.senderID))
        senderID = from.senderID;
    // The carrier and the destination change mailpiece, class and option; the mailpiece changes the size.
    carrier = carrierFrom(from.carrier).value_or(carrier.value());
    m_app.draftTo = from.recipient;
    if (from.presetMailpiece && presetBox(*from.presetMailpiece))
        mailpiece = PresetMailpiece{*from.presetMailpiece};
    else if (from.box && m_app.boxes.find(*from.box))
        mailpiece = *from.box;
    else if (const auto builtin = builtinFrom(from.builtinMailpiece.value_or(QString())))
        mailpiece = *builtin;
    svcClass = serviceClassFrom(from.svcClass).value_or(svcClass.value());
    service = serviceOptionFrom(from.service).value_or(service.value());
    setSize(from.dimLength, from.dimWidth, from.dimHeight);
    weightLb = from.weightLb;
    weightOz = from.weightOz;
    insuranceValue = from.insuranceValue;
    shipDate = std::max(shipDate.value(), QDate::fromString(from.shipDate, Qt::ISODate));
    descriptionText = from.descriptionText;
    reference = from.reference;
    fedexResidential = from.fedexResidential;
    printInvoiceWithRates = from.printInvoiceWithRates;
    keepRecipient = from.keepRecipient;
    customs = CustomsInfo{customsItemTypeFrom(from.customsType).value_or(customs.value().itemType),
                          from.customsQuantity, from.customsValue, from.customsSigner};
    m_filledCustoms = CustomsInfo{};
    m_restoredReference = from.reference.trimmed();
    m_restoredTracking = from.invoiceTracking.value_or(QString());
}

} // namespace parcelory
