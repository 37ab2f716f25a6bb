#include "app/records/RestoreReview.h"

#include "app/purchase/CarrierRefund.h"
#include "carrier/CarrierWords.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/Json.h"
#include "core/Text.h"

#include <QFile>

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The profiles of a JSON store; nothing if it cannot be read.
std::optional<Json> profilesIn(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    try {
        Json store = parseJson(file.readAll());
        if (store.is_object() && store.contains("profiles"))
            store = Json(store["profiles"]);
        return store.is_array() ? std::optional(store) : std::nullopt;
    } catch (const DecodeError &) {
        return std::nullopt;
    }
}

struct Profiles {
    int kept = 0;    ///< in the copy
    int changed = 0; ///< the copy lacks them as they are now
};

Profiles compareProfiles(const AppState &app, const QDir &copy, const QString &name)
{
    const std::optional<Json> kept = profilesIn(copy.filePath(name));
    if (!kept) // the present file stays
        return {};
    const Json present = profilesIn(app.platform.dataFolder.filePath(name)).value_or(Json::array());
    const auto isChanged = [&kept](const Json &profile) { return std::ranges::find(*kept, profile) == kept->end(); };
    return {.kept = int(kept->size()), .changed = int(std::ranges::count_if(present, isChanged))};
}

ShipmentRecord recordOf(const MasterEntry &entry)
{
    ShipmentRecord record{.createdAt = entry.date.value_or(QDateTime()), .service = entry.service};
    for (const CarrierInfo &carrier : carriers()) {
        if (!entry.service.startsWith(carrier.displayName + u' '))
            continue;
        record.carrier = carrier.displayName;
        record.service = entry.service.mid(carrier.displayName.size() + 1);
    }
    const auto known = [](const QString &text) { return text == u"—" ? QString() : text; };
    record.isIntl = !entry.country.isEmpty() && entry.country != u"US";
    record.recipient = joinPresent(
        {known(entry.recipient), known(entry.company), entry.place, record.isIntl ? entry.country : QString()},
        u", "_s);
    record.postage = entry.amount;
    record.tracking = entry.tracking;
    record.trackingURL = entry.trackingURL;
    record.transactionID = entry.id;
    record.labelURL = entry.labelURL;
    record.testMode = entry.test;
    if (const std::optional<RefundState> refund = refundStateOf(transactionStatusFrom(entry.status)))
        record.status = statusAfter(*refund, record.status);
    return record;
}

} // namespace

RestoreReview reviewOf(AppState &app, const RecordCopy &copy, const QDateTime &now)
{
    RestoreReview review{.copy = copy, .setAside = app.copies.setAsideName(now)};
    const QDir folder(app.copies.folder().filePath(copy.folder));
    const QString log = folder.filePath(u"mailing_log.sqlite"_s), book = folder.filePath(u"addresses.sqlite"_s);
    if (QFile::exists(log)) {
        const std::optional<LogMerge::Held> held = LogMerge::held(Database(log));
        if (!held)
            review.unreadable = u"The copy can't be read."_s;
        review.held = held.value_or(LogMerge::Held());
    }
    if (!folder.exists())
        review.unreadable = u"This copy no longer exists."_s;
    app.senders.flush();
    app.boxes.flush();
    const Profiles boxes = compareProfiles(app, folder, u"box_profiles.json"_s);
    const Profiles senders = compareProfiles(app, folder, u"sender_profiles.json"_s);
    review.boxes = boxes.kept;
    review.changedBoxes = boxes.changed;
    review.profiles = senders.kept;
    review.changedProfiles = senders.changed;
    review.added = LogMerge::addedSince(app.log.path(), review.held);
    review.addresses = LocalAddressStore::changedSince(app.addressBook.path(), book);
    return review;
}

QList<ShipmentRecord> unknownLabels(const QList<MasterEntry> &account, const RestoreReview &review,
                                    const QStringList &offices)
{
    QList<ShipmentRecord> labels;
    for (const MasterEntry &entry : account) {
        const bool isOurs = !entry.office.isEmpty() && offices.contains(entry.office);
        const bool isKnown = review.held.rows.contains(entry.id.toUtf8()) ||
                             std::ranges::any_of(review.added.labels, [&](const ShipmentRecord &label) {
                                 return label.transactionID == entry.id;
                             });
        if (isOurs && !isKnown && !entry.labelURL.isEmpty())
            labels.prepend(recordOf(entry)); // the account lists the newest first
    }
    return labels;
}

} // namespace parcelory
