#pragma once

#include "core/JsonFile.h"
#include "core/OwnerLock.h"
#include "core/RecordField.h"
#include "core/ShippoAddress.h"

#include <QDateTime>
#include <QDir>
#include <QUuid>

#include <mutex>
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

/// A draft and when it was stored.
struct StoredDraft {
    SavedDraft draft;
    QDateTime storedAt;
    QString version; ///< of the program that stored it
};

/// The draft on the New Label screen as the next start of the program finds it, in label_draft.json. It belongs to one
/// running program: the draft of a program that still runs is not another program's.
class DraftStore {
public:
    explicit DraftStore(const QDir &folder);

    /// What the last program has left; nothing if there is no draft, if it is not readable, or if that program still
    /// runs. An unreadable file is set aside at the next write. Waits for the disk; call before the first save().
    std::optional<StoredDraft> read();
    /// What the file holds or is about to hold.
    std::optional<StoredDraft> stored() const;
    /// Replaces the stored draft, unless another program has it; does not wait for the disk.
    void save(const SavedDraft &draft, const QDateTime &now, const QString &version);
    void clear();
    /// Waits until the disk has the last change.
    void flush() { m_file.flush(); }

private:
    void write(const std::optional<StoredDraft> &draft);

    const QDir m_folder;
    mutable std::mutex m_access;
    OwnerLock m_owner; ///< tells another program that this one has the draft
    std::optional<StoredDraft> m_stored;
    JsonFile m_file;
};

} // namespace parcelory
