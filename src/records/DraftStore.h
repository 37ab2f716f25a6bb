#pragma once

#include "core/JsonFile.h"
#include "core/RecordField.h"
#include "core/ShippoAddress.h"

#include <QDir>
#include <QUuid>

#include <optional>
#include <tuple>

namespace parcelory {

/// The New Label screen's draft as it is stored: texts as typed, choices by their raw values, dates as 2026-11-20. It
/// holds no key, no password and no price. A field that later versions add is optional, so that they read older files.
struct SavedDraft {
    ShippoAddress recipient;
    std::optional<QUuid> senderID;
    QString carrier, svcClass, service;
    std::optional<QString> presetMailpiece, builtinMailpiece; ///< the mailpiece is one of these three
    std::optional<QUuid> box;
    QString weightLb, weightOz, dimLength, dimWidth, dimHeight, insuranceValue, shipDate, descriptionText, reference;
    bool fedexResidential = false, printInvoiceWithRates = true, keepRecipient = true;
    QString customsType, customsQuantity, customsValue, customsSigner;
    std::optional<QString> invoiceTracking; ///< of the invoice that the reference names

    static constexpr auto fields()
    {
        using D = SavedDraft;
        return std::tuple{field("recipient", &D::recipient),
                          field("senderID", &D::senderID),
                          field("carrier", &D::carrier),
                          field("svcClass", &D::svcClass),
                          field("service", &D::service),
                          field("presetMailpiece", &D::presetMailpiece),
                          field("builtinMailpiece", &D::builtinMailpiece),
                          field("box", &D::box),
                          field("weightLb", &D::weightLb),
                          field("weightOz", &D::weightOz),
                          field("dimLength", &D::dimLength),
                          field("dimWidth", &D::dimWidth),
                          field("dimHeight", &D::dimHeight),
                          field("insuranceValue", &D::insuranceValue),
                          field("shipDate", &D::shipDate),
                          field("descriptionText", &D::descriptionText),
                          field("reference", &D::reference),
                          field("fedexResidential", &D::fedexResidential),
                          field("printInvoiceWithRates", &D::printInvoiceWithRates),
                          field("keepRecipient", &D::keepRecipient),
                          field("customsType", &D::customsType),
                          field("customsQuantity", &D::customsQuantity),
                          field("customsValue", &D::customsValue),
                          field("customsSigner", &D::customsSigner),
                          field("invoiceTracking", &D::invoiceTracking)};
    }
    bool operator==(const SavedDraft &) const = default;
};

/// The draft that the next start of the program takes over, in label_draft.json.
class DraftStore {
public:
    explicit DraftStore(const QDir &folder) : m_file(folder.filePath(QStringLiteral("label_draft.json"))) {}

    /// Empty if there is no stored draft or it is not readable; an unreadable file is set aside at the next write.
    std::optional<SavedDraft> saved();
    /// Replaces the stored draft; does not wait for the disk.
    void save(const SavedDraft &draft);
    void clear();

    void flush() { m_file.flush(); }

private:
    JsonFile m_file;
};

} // namespace parcelory
