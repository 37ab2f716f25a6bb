#include "records/BoxStore.h"

#include "core/AppError.h"
#include "core/Json.h"
#include "core/ListMerge.h"
#include "core/Platform.h"
#include "records/BoxProfile.h"

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

using Boxes = QList<BoxProfile>;

Boxes boxesOf(const QByteArray &text)
{
    return text.isEmpty() ? Boxes() : decodeJson<Boxes>(text, Keys::asIs);
}

} // namespace

BoxStore::BoxStore(Platform &platform)
    : m_file(platform.dataFolder.filePath(u"box_profiles.json"_s),
             [this](const QByteArray &base, const QByteArray &ours, const QByteArray &theirs) {
                 return merged(base, ours, theirs);
             })
{
    load();
    m_notifier = profiles.addNotifier([this] { m_file.write(encodeJson(profiles.value(), Keys::asIs)); });
}

/// May run on the pool; the main thread then takes the boxes over.
void BoxStore::load()
{
    const std::optional<QByteArray> bytes = m_file.read();
    if (!bytes)
        return;
    try {
        const auto boxes = decodeJson<Boxes>(*bytes, Keys::asIs);
        QMetaObject::invokeMethod(this, [this, boxes] { profiles = boxes; });
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

/// Runs on the writer's thread.
std::optional<QByteArray> BoxStore::merged(const QByteArray &base, const QByteArray &ours, const QByteArray &theirs)
{
    try {
        const Boxes here = boxesOf(ours);
        const ListMerge<BoxProfile> both = mergeLists(boxesOf(base), here, boxesOf(theirs));
        QMetaObject::invokeMethod(
            this,
            [this, here, both] {
                profiles = mergeLists(here, profiles.value(), both.records).records;
                QStringList names;
                for (const BoxProfile &box : both.overridden)
                    names += box.title();
                if (!names.isEmpty())
                    emit overridden(names);
            },
            Qt::QueuedConnection);
        return encodeJson(both.records, Keys::asIs);
    } catch (const DecodeError &) {
        return std::nullopt;
    }
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

void BoxStore::insert(qsizetype place, const BoxProfile &box)
{
    QList<BoxProfile> all = profiles;
    if (find(box.id))
        return;
    all.insert(std::min(place, all.size()), box);
    profiles = all;
}

} // namespace parcelory
