#include "records/DraftStore.h"

#include "core/AppError.h"
#include "core/Json.h"
#include "core/PrivateFiles.h"
#include "core/RecordField.h"

#include <mutex>
#include <optional>
#include <tuple>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

struct DraftFile {
    std::optional<SavedDraft> draft;
    std::optional<QDateTime> storedAt; ///< no earlier version has written it
    std::optional<QString> version;

    static constexpr auto fields()
    {
        return std::tuple{field("draft", &DraftFile::draft), field("storedAt", &DraftFile::storedAt),
                          field("version", &DraftFile::version)};
    }
};

} // namespace

DraftStore::DraftStore(const QDir &folder)
    : m_folder(folder), m_owner(folder.filePath(u"label_draft.lock"_s)), m_file(folder.filePath(u"label_draft.json"_s))
{
}

std::optional<StoredDraft> DraftStore::read()
{
    const std::lock_guard access(m_access);
    createPrivateFolder(m_folder);
    if (!m_owner.isLocked() && !m_owner.tryLock(0))
        return std::nullopt;
    makePrivate(m_owner.fileName());
    m_stored = std::nullopt;
    const std::optional<QByteArray> bytes = m_file.read();
    if (!bytes)
        return std::nullopt;
    try {
        const auto file = decodeJson<DraftFile>(*bytes, Keys::asIs);
        if (file.draft)
            m_stored = StoredDraft{*file.draft, file.storedAt.value_or(QDateTime::fromSecsSinceEpoch(0)),
                                   file.version.value_or(QString())};
    } catch (const DecodeError &) {
        m_file.setAsideBeforeWrite();
    }
    return m_stored;
}

std::optional<StoredDraft> DraftStore::stored() const
{
    const std::lock_guard access(m_access);
    return m_stored;
}

void DraftStore::save(const SavedDraft &draft, const QDateTime &now, const QString &version)
{
    write(StoredDraft{draft, now, version});
}

void DraftStore::clear()
{
    write(std::nullopt);
}

void DraftStore::write(const std::optional<StoredDraft> &draft)
{
    const std::lock_guard access(m_access);
    if (!m_owner.isLocked())
        return;
    m_stored = draft;
    m_file.write(
        encodeJson(draft ? DraftFile{draft->draft, draft->storedAt, draft->version} : DraftFile{}, Keys::asIs));
}

} // namespace parcelory
