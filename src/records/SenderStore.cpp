#include "records/SenderStore.h"

#include "core/AppError.h"
#include "core/Json.h"
#include "core/ListMerge.h"
#include "core/Platform.h"
#include "core/RecordField.h"
#include "core/SettingsKeys.h"
#include "core/ShippoAddress.h"
#include "core/ports/Preferences.h"
#include "records/SenderProfile.h"

#include <algorithm>
#include <optional>
#include <tuple>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

template <class List>
struct Saved {
    List profiles;
    std::optional<QUuid> defaultID;

    static constexpr auto fields()
    {
        return std::tuple{field("profiles", &Saved::profiles), field("defaultID", &Saved::defaultID)};
    }
};

using SavedSenders = Saved<QList<SenderProfile>>;

SavedSenders sendersOf(const QByteArray &text)
{
    return text.isEmpty() ? SavedSenders() : decodeJson<SavedSenders>(text, Keys::asIs);
}

QStringList namesOf(const QList<SenderProfile> &profiles)
{
    QStringList names;
    for (const SenderProfile &profile : profiles)
        names += profile.name;
    return names;
}

/// The choice that was changed here, or else the other program's.
std::optional<QUuid> mergedDefault(const SavedSenders &base, const SavedSenders &ours, const SavedSenders &theirs)
{
    return ours.defaultID == base.defaultID ? theirs.defaultID : ours.defaultID;
}

ShippoAddress legacyAddress(const Preferences &preferences)
{
    ShippoAddress address{.name = read(preferences, settings::legacySenderName),
                          .company = read(preferences, settings::legacySenderCompany),
                          .street1 = read(preferences, settings::legacySenderStreet1),
                          .street2 = read(preferences, settings::legacySenderStreet2),
                          .city = read(preferences, settings::legacySenderCity),
                          .state = read(preferences, settings::legacySenderState),
                          .zip = read(preferences, settings::legacySenderZip),
                          .country = u"US"_s,
                          .phone = read(preferences, settings::legacySenderPhone),
                          .email = read(preferences, settings::legacySenderEmail)};
    return address;
}

} // namespace

SenderStore::SenderStore(Platform &platform)
    : m_file(platform.dataFolder.filePath(u"sender_profiles.json"_s),
             [this](const QByteArray &base, const QByteArray &ours, const QByteArray &theirs) {
                 return merged(base, ours, theirs);
             })
{
    const bool loaded = load();
    if (!loaded)
        seed(platform);
    m_profilesNotifier = profiles.addNotifier([this] { persist(); });
    m_defaultNotifier = defaultID.addNotifier([this] { persist(); });
    if (!loaded)
        persist();
}

/// May run on the pool; the main thread then takes the profiles over.
bool SenderStore::load()
{
    const std::optional<QByteArray> bytes = m_file.read();
    if (!bytes)
        return false;
    try {
        const auto saved = decodeJson<Saved<ReadableList<SenderProfile>>>(*bytes, Keys::asIs);
        if (saved.profiles.unreadable > 0)
            m_file.setAsideBeforeWrite();
        QMetaObject::invokeMethod(this, [this, saved] {
            profiles = saved.profiles.elements;
            defaultID = saved.defaultID;
        });
        return !saved.profiles.elements.isEmpty();
    } catch (const DecodeError &) {
        m_file.setAsideBeforeWrite();
        return false;
    }
}

void SenderStore::seed(Platform &platform)
{
    const ShippoAddress legacy = legacyAddress(platform.preferences);
    const SenderProfile first{.name = platform.deployment.officeLabel,
                              .address = legacy.isEmpty() ? platform.deployment.returnAddress : legacy};
    profiles = QList{first};
    defaultID = first.id;
}

std::optional<SenderProfile> SenderStore::find(const QUuid &id) const
{
    const QList<SenderProfile> &all = profiles.value();
    const auto found = std::ranges::find(all, id, &SenderProfile::id);
    return found == all.end() ? std::nullopt : std::optional(*found);
}

std::optional<SenderProfile> SenderStore::defaultProfile() const
{
    const std::optional<QUuid> id = defaultID;
    std::optional<SenderProfile> chosen = id ? find(*id) : std::nullopt;
    if (chosen || profiles.value().isEmpty())
        return chosen;
    return profiles.value().first();
}

SenderProfile SenderStore::add()
{
    SenderProfile profile{.name = u"New Profile"_s, .address = {.country = u"US"_s}};
    profiles = profiles.value() + QList{profile};
    return profile;
}

void SenderStore::remove(const QUuid &id)
{
    QList<SenderProfile> remaining = profiles;
    remaining.removeIf([&id](const SenderProfile &profile) { return profile.id == id; });
    if (remaining.isEmpty()) // a desk needs an address
        return;
    profiles = remaining;
    if (defaultID.value() == id)
        defaultID = remaining.first().id;
}

void SenderStore::insert(qsizetype place, const SenderProfile &profile)
{
    QList<SenderProfile> all = profiles;
    if (find(profile.id))
        return;
    all.insert(std::min(place, all.size()), profile);
    profiles = all;
}

void SenderStore::persist()
{
    m_file.write(encodeJson(SavedSenders{profiles, defaultID}, Keys::asIs));
}

/// Runs on the writer's thread.
std::optional<QByteArray> SenderStore::merged(const QByteArray &base, const QByteArray &ours, const QByteArray &theirs)
{
    try {
        const SavedSenders before = sendersOf(base), here = sendersOf(ours), there = sendersOf(theirs);
        ListMerge<SenderProfile> both = mergeLists(before.profiles, here.profiles, there.profiles);
        if (both.records.isEmpty()) // each program removed the other's last profile
            both.records = here.profiles;
        const SavedSenders merged{both.records, mergedDefault(before, here, there)};
        QMetaObject::invokeMethod(
            this,
            [this, here, merged, names = namesOf(both.overridden)] {
                const std::optional<QUuid> chosen = mergedDefault(here, {profiles, defaultID}, merged);
                profiles = mergeLists(here.profiles, profiles.value(), merged.profiles).records;
                defaultID = chosen;
                if (!names.isEmpty())
                    emit overridden(names);
            },
            Qt::QueuedConnection);
        return encodeJson(merged, Keys::asIs);
    } catch (const DecodeError &) {
        return std::nullopt;
    }
}

} // namespace parcelory
