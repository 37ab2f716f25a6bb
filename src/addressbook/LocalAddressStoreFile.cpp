// The book's file: it is checked, copied and replaced, also by another program.

#include "addressbook/LocalAddressStore.h"
#include "core/Progress.h"
#include "core/Sqlite.h"
#include "core/SqliteCheck.h"
#include "core/SqliteCopy.h"

#include <chrono>
#include <functional>
#include <mutex>
#include <shared_mutex>

namespace parcelory {

/// True if another program has put another file in the book's place since it was opened. The caller holds m_use.
bool LocalAddressStore::isReplaced() const
{
    const std::lock_guard opening(m_opening);
    return m_isReady && m_db.isReplaced();
}

/// For one operation: this program does not replace the file meanwhile. First follows another program that has replaced
/// it.
std::shared_lock<std::shared_mutex> LocalAddressStore::inUse() const
{
    std::shared_lock use(m_use);
    if (!isReplaced())
        return use;
    use.unlock();
    {
        const std::lock_guard alone(m_use);
        if (isReplaced()) { // otherwise another thread was first
            m_db.reopen();
            m_isReady = false;
        }
    }
    use.lock();
    return use;
}

QString LocalAddressStore::damage() const
{
    constexpr auto limit = std::chrono::seconds(3); // a writer waits for up to five
    return damageIn(m_path, limit);
}

QString LocalAddressStore::copyTo(const QString &path, const Progress &progress) const
{
    const auto use = inUse();
    const QString obstacle = whyNotReady();
    return obstacle.isEmpty() ? copyDatabase(m_db, path, progress,
                                             [this](const std::function<void()> &portion) {
                                                 const std::lock_guard writing(m_writing);
                                                 portion();
                                             })
                              : obstacle;
}

QString LocalAddressStore::replaceFile(const std::function<QString()> &replace)
{
    const std::lock_guard use(m_use);
    // Other programs must not be in the middle of a write. A damaged file cannot be locked or written.
    if (m_db.isOpen() && !Statement(m_db, "BEGIN EXCLUSIVE").execute() && m_db.isLocked())
        return reason();
    const QString failure = replace();
    m_db.reopen();
    m_isReady = false;
    if (whyNotReady().isEmpty())
        refreshCount();
    return failure;
}

} // namespace parcelory
