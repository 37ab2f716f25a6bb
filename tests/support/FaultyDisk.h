#pragma once

#include <QByteArray>
#include <QString>

#include <csignal>
#include <sqlite3.h>
#include <sys/resource.h>

namespace parcelory::test {

/// SQLite's own file access, but one read of the file with this name fails, as on a disk with a weak sector. Databases
/// that are opened while it exists use it.
class FaultyDisk {
public:
    /// `reads`: how many reads succeed first.
    FaultyDisk(const QString &name, int reads)
    {
        fileName = name.toUtf8();
        readsLeft = reads;
        m_files.zName = "faulty-disk";
        m_files.xOpen = &open;
        sqlite3_vfs_register(&m_files, 1);
    }
    ~FaultyDisk()
    {
        sqlite3_vfs_unregister(&m_files);
        sqlite3_vfs_register(m_system, 1);
    }
    FaultyDisk(const FaultyDisk &) = delete;
    FaultyDisk &operator=(const FaultyDisk &) = delete;

    bool hasFailed() const { return readsLeft < 0; }

private:
    static int open(sqlite3_vfs *own, const char *name, sqlite3_file *file, int flags, int *givenFlags)
    {
        const int result = sqlite3_vfs_find("unix")->xOpen(own, name, file, flags, givenFlags);
        if (result == SQLITE_OK && QByteArray(name).endsWith(fileName)) {
            system = file->pMethods;
            methods = *system;
            methods.xRead = &read;
            file->pMethods = &methods;
        }
        return result;
    }
    static int read(sqlite3_file *file, void *bytes, int count, sqlite3_int64 from)
    {
        if (readsLeft >= 0 && readsLeft-- == 0)
            return SQLITE_IOERR_READ;
        return system->xRead(file, bytes, count, from);
    }

    static inline QByteArray fileName;
    static inline int readsLeft = 0;
    static inline const sqlite3_io_methods *system = nullptr;
    static inline sqlite3_io_methods methods = {};
    sqlite3_vfs *m_system = sqlite3_vfs_find(nullptr);
    sqlite3_vfs m_files = *m_system;
};

/// Limits this process's files to `bytes`, like a full disk: a write beyond it fails or calls `atTheEnd`.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes, void (*atTheEnd)(int) = SIG_IGN)
    {
        m_handler = std::signal(SIGXFSZ, atTheEnd);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

} // namespace parcelory::test
