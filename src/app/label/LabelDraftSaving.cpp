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

namespace {

std::optional<BuiltinMailpiece> builtinFrom(const QString &id)
{
    const auto &table = builtinMailpieces();
    const auto found = std::ranges::find(table, id, &BuiltinMailpieceInfo::id);
    return found == table.end() ? std::nullopt : std::optional(found->mailpiece);
}

} // namespace

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
