#include "records/SenderStore.h"

#include "core/AppError.h"
#include "core/Json.h"
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

SenderStore::SenderStore(Platform &platform) : m_file(platform.dataFolder.filePath(u"sender_profiles.json"_s))
{
    const bool loaded = load();
    if (!loaded)
        seed(platform);
    m_profilesNotifier = profiles.addNotifier([this] { persist(); });
    m_defaultNotifier = defaultID.addNotifier([this] { persist(); });
    if (!loaded)
        persist();
}

bool SenderStore::load()
{
    const std::optional<QByteArray> bytes = m_file.read();
    if (!bytes)
        return false;
    try {
        const auto saved = decodeJson<Saved<ReadableList<SenderProfile>>>(*bytes, Keys::asIs);
        if (saved.profiles.unreadable > 0)
            m_file.setAsideBeforeWrite();
        profiles = saved.profiles.elements;
        defaultID = saved.defaultID;
    } catch (const DecodeError &) {
        m_file.setAsideBeforeWrite();
        return false;
    }
    return !profiles.value().isEmpty();
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

void SenderStore::persist()
{
    m_file.write(encodeJson(Saved<QList<SenderProfile>>{profiles, defaultID}, Keys::asIs));
}

} // namespace parcelory
