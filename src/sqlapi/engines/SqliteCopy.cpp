#include "sqlapi/engines/SqliteCopy.h"

#include "sqlapi/engines/SqliteFaults.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <memory>
#include <system_error>
#include <thread>

namespace {

namespace fs = std::filesystem;

struct CloseDatabase {
    void operator()(sqlite3 *database) const { sqlite3_close_v2(database); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;

SAException FileError(const std::string &what, const fs::path &file, int error_number)
{
    SAFault fault = SAFault::CannotOpen;
    if (error_number == ENOSPC || error_number == EDQUOT) fault = SAFault::DiskFull;
    if (error_number == EROFS) fault = SAFault::ReadOnly;
    const std::string reason = error_number == 0 ? "" : ": " + std::generic_category().message(error_number);
    return {SA_DBMS_API_Error, SQLITE_CANTOPEN, what + " " + file.string() + reason, fault};
}

/// Removes the half-made copy unless it got its final name.
class Temporary {
  public:
    explicit Temporary(const fs::path &target)
        : path_(target.parent_path() /
                (target.filename().string() + "." + std::to_string(getpid()) + "-" +
                 std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) + ".tmp"))
    {
    }
    ~Temporary()
    {
        std::error_code ignored;
        for (const char *suffix : {"", "-journal", "-wal", "-shm"}) fs::remove(path_.string() + suffix, ignored);
    }
    Temporary(const Temporary &) = delete;
    Temporary &operator=(const Temporary &) = delete;

    const fs::path &Path() const { return path_; }

  private:
    fs::path path_;
};

Database CreateFile(const fs::path &file)
{
    sqlite3 *opened = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    const int code = sqlite3_open_v2(file.c_str(), &opened, flags, nullptr);
    Database database(opened);
    if (code != SQLITE_OK) throw FileError("cannot create", file, sqlite3_system_errno(opened));
    // Until it is renamed nobody relies on the copy: no journal is needed, and one sync at the end is enough.
    sqlite3_exec(opened, "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF", nullptr, nullptr, nullptr);
    return database;
}

void CopyPages(sqlite3 *source, sqlite3 *copy)
{
    sqlite3_backup *backup = sqlite3_backup_init(copy, "main", source, "main");
    if (backup == nullptr) throw SqliteError(copy, sqlite3_errcode(copy));
    // All pages in one step are read from one state, so a writer cannot make the copy start over.
    constexpr int kAttempts = 600;
    int code = sqlite3_backup_step(backup, -1);
    for (int i = 0; i < kAttempts && ((code & 0xff) == SQLITE_BUSY || (code & 0xff) == SQLITE_LOCKED); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        code = sqlite3_backup_step(backup, -1);
    }
    const int finished = sqlite3_backup_finish(backup);
    if (code == SQLITE_DONE && finished == SQLITE_OK) return;
    throw SqliteError(copy, finished == SQLITE_OK ? code : finished);
}

void Sync(const fs::path &path)
{
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) throw FileError("cannot open", path, errno);
    const int error_number = fsync(descriptor) == 0 ? 0 : errno;
    close(descriptor);
    if (error_number != 0) throw FileError("cannot write", path, error_number);
}

// A log left over from an older file of that name would be replayed into the copy and ruin it.
void RequireFree(const fs::path &target)
{
    for (const char *suffix : {"", "-wal", "-journal"}) {
        std::error_code ignored;
        const fs::path file = target.string() + suffix;
        if (fs::symlink_status(file, ignored).type() != fs::file_type::not_found)
            throw FileError("the file already exists:", file, 0);
    }
}

} // namespace

void CopySqliteDatabase(sqlite3 *source, const std::string &path, const std::string &file)
{
    const fs::path target = fs::absolute(file);
    if (target.lexically_normal() == fs::path(path))
        throw FileError("an archive cannot be copied onto itself:", path, 0);
    RequireFree(target);

    const Temporary temporary(target);
    {
        const Database copy = CreateFile(temporary.Path());
        CopyPages(source, copy.get());
    }
    Sync(temporary.Path());
    RequireFree(target);
    std::error_code error;
    fs::rename(temporary.Path(), target, error);
    if (error) throw FileError("cannot create", target, error.value());
    Sync(target.parent_path());
}
