#include "records/BoxStore.h"

#include "core/AppError.h"
#include "core/Json.h"
#include "core/Platform.h"
#include "records/BoxProfile.h"

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

BoxStore::BoxStore(Platform &platform) : m_file(platform.dataFolder.filePath(u"box_profiles.json"_s))
{
    load();
    m_notifier = profiles.addNotifier([this] { m_file.write(encodeJson(profiles.value(), Keys::asIs)); });
}

void BoxStore::load()
{
    const std::optional<QByteArray> bytes = m_file.read();
    if (!bytes)
        return;
    try {
        profiles = decodeJson<QList<BoxProfile>>(*bytes, Keys::asIs);
    } catch (const DecodeError &) {
        m_file.setAsideBeforeWrite();
    }
}

std::optional<BoxProfile> BoxStore::find(const QUuid &id) const
{
    const QList<BoxProfile> &all = profiles.value();
    const auto found = std::ranges::find(all, id, &BoxProfile::id);
    return found == all.end() ? std::nullopt : std::optional(*found);
}

BoxProfile BoxStore::add()
{
    BoxProfile box{.name = u"New Box"_s};
    profiles = profiles.value() + QList{box};
    return box;
}

void BoxStore::remove(const QUuid &id)
{
    QList<BoxProfile> remaining = profiles;
    remaining.removeIf([&id](const BoxProfile &box) { return box.id == id; });
    profiles = remaining;
}

} // namespace parcelory
