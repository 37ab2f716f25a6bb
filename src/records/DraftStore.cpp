#include "records/DraftStore.h"

#include "core/AppError.h"
#include "core/Json.h"
#include "core/RecordField.h"

#include <optional>
#include <tuple>

namespace parcelory {

namespace {

struct DraftFile {
    std::optional<SavedDraft> draft;

    static constexpr auto fields() { return std::tuple{field("draft", &DraftFile::draft)}; }
};

} // namespace

std::optional<SavedDraft> DraftStore::saved()
{
    const std::optional<QByteArray> bytes = m_file.read();
    if (!bytes)
        return std::nullopt;
    try {
        return decodeJson<DraftFile>(*bytes, Keys::asIs).draft;
    } catch (const DecodeError &) {
        m_file.setAsideBeforeWrite();
        return std::nullopt;
    }
}

void DraftStore::save(const SavedDraft &draft)
{
    m_file.write(encodeJson(DraftFile{draft}, Keys::asIs));
}

void DraftStore::clear()
{
    m_file.write(encodeJson(DraftFile{}, Keys::asIs));
}

} // namespace parcelory
