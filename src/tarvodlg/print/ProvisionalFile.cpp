#include "tarvodlg/print/ProvisionalFile.h"

#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Text.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::size_t kBufferBytes = 1 << 16;

std::filesystem::path NewName(const std::filesystem::path &target)
{
    static std::atomic<unsigned> counter = std::random_device()();
    const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
    return folder / fmt::format(".lumera-{}-{:08x}.tmp", ::getpid(), counter++);
}

/// What a link leads to: the rename must replace the file, not the link to it.
std::filesystem::path BehindLinks(const std::filesystem::path &target)
{
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(target, error);
    return error ? target : real;
}

/// Some mounted shares cannot sync; they write through instead. @return 0 or an errno
int Sync(int descriptor)
{
    return ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP ? 0 : errno;
}

} // namespace

void FailWriting(const std::filesystem::path &file, const std::string &reason)
{
    throw FileError(fmt::format("Impossibile scrivere il file \"{}\": {}", OnOneLine(file.string()), reason));
}

ProvisionalFile::ProvisionalFile(const std::filesystem::path &target)
    : target_(BehindLinks(target)), path_(NewName(target_))
{
    struct stat before = {};
    const bool exists = ::stat(target_.c_str(), &before) == 0;
    if (exists && S_ISDIR(before.st_mode)) Fail(EISDIR); // better now than after a long run
    // The rename would put a file in the place of a device or a pipe.
    if (exists && !S_ISREG(before.st_mode)) FailWriting(target_, "non è un file di dati");
    // The folder decides what may be renamed, so that a file protected by its owner would be lost without a word.
    if (exists && ::access(target_.c_str(), W_OK) != 0) Fail(errno);
    file_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (file_ < 0) Fail(errno);
    // Keeps what others may do with the file.
    if (exists) static_cast<void>(::fchmod(file_, before.st_mode & 07777));
    buffer_.reserve(kBufferBytes);
}

ProvisionalFile::~ProvisionalFile()
{
    if (file_ >= 0) ::close(file_);
    if (!in_place_) ::unlink(path_.c_str());
}

void ProvisionalFile::Fail(int error) const
{
    FailWriting(target_, SystemErrorText(error));
}

void ProvisionalFile::Write(std::string_view bytes)
{
    buffer_ += bytes;
    if (buffer_.size() >= kBufferBytes) Flush();
}

void ProvisionalFile::Flush()
{
    std::string_view rest = buffer_;
    while (!rest.empty()) {
        const ssize_t put = ::write(file_, rest.data(), rest.size());
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) Fail(errno);
        rest.remove_prefix(static_cast<std::size_t>(put));
    }
    flushed_ += buffer_.size();
    buffer_.clear();
}

void ProvisionalFile::Overwrite(std::uint64_t offset, std::string_view bytes)
{
    Flush();
    while (!bytes.empty()) {
        const ssize_t put = ::pwrite(file_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) Fail(errno);
        bytes.remove_prefix(static_cast<std::size_t>(put));
        offset += static_cast<std::uint64_t>(put);
    }
}

void ProvisionalFile::Close()
{
    if (file_ < 0) return;
    Flush();
    // Some file systems tell a full disk only now.
    if (::close(std::exchange(file_, -1)) != 0 && errno != EINTR) Fail(errno);
}

void ProvisionalFile::PutInPlace()
{
    Close();
    // Opened anew: another program may have put its own file under the provisional name.
    const int written = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (written < 0) Fail(errno);
    const int error = Sync(written);
    ::close(written);
    if (error != 0) Fail(error);
    if (::rename(path_.c_str(), target_.c_str()) != 0) Fail(errno);
    in_place_ = true;
    // The new name is an entry of the folder, which has to reach the disk as well.
    const int folder = ::open(path_.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return;
    const int folder_error = Sync(folder);
    ::close(folder);
    if (folder_error != 0) Fail(folder_error);
}
