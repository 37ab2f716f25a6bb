#pragma once

#include "core/Sqlite.h"  // IWYU pragma: export
#include "support/Test.h" // IWYU pragma: export

#include <sqlite3.h>

namespace parcelory::test {

/// SQLite's own file access, but waiting for a lock takes no time: it calls the test instead. Databases that are opened
/// while it exists use it.
struct WaitingRoom {
    sqlite3_vfs *system = sqlite3_vfs_find(nullptr);
    sqlite3_vfs files = *system;
    static inline std::mutex access;
    static inline std::function<void()> whenWaiting;
    static inline int patience = 0;            ///< microseconds of waiting after which `whenWaiting` is called, once
    static inline std::atomic<int> waited = 0; ///< microseconds that a caller would have slept

    explicit WaitingRoom(std::function<void()> action = {})
    {
        expect(0, std::move(action));
        files.zName = "waiting-room";
        files.xSleep = [](sqlite3_vfs *, int microseconds) {
            waited += microseconds;
            std::function<void()> due;
            {
                const std::lock_guard turn(access);
                if (waited >= patience)
                    due = std::exchange(whenWaiting, {});
            }
            if (due)
                due();
            return microseconds;
        };
        sqlite3_vfs_register(&files, 1);
    }
    ~WaitingRoom()
    {
        sqlite3_vfs_unregister(&files);
        sqlite3_vfs_register(system, 1);
    }
    /// Starts to count again.
    static void expect(int microseconds, std::function<void()> action)
    {
        const std::lock_guard turn(access);
        waited = 0;
        patience = microseconds;
        whenWaiting = std::move(action);
    }
};

/// Another program calls `restore` before `work` begins, or, if `isWaiting`, while `work` waits for the lock that it
/// has on the database. Needs a WaitingRoom.
inline void afterRestoring(const QString &database, bool isWaiting, const std::function<void()> &restore,
                           const std::function<void()> &work)
{
    Database other(database);
    if (isWaiting) {
        ASSERT_TRUE(other.exec("BEGIN EXCLUSIVE"));
        WaitingRoom::expect(0, [&] {
            restore();
            EXPECT_TRUE(other.exec("ROLLBACK"));
        });
    } else {
        restore();
    }
    work();
}

} // namespace parcelory::test
