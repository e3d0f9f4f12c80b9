#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

/// A file that is written piece by piece under a provisional name beside its final one, since only in the same folder a
/// rename is one step. It is taken away again unless it was put in place. For what is too large to be handed to
/// WriteFileWhole in one piece. All functions throw FileError in plain words, naming the final file.
class ProvisionalFile {
  public:
    explicit ProvisionalFile(const std::filesystem::path &target);
    ~ProvisionalFile();
    ProvisionalFile(const ProvisionalFile &) = delete;
    ProvisionalFile &operator=(const ProvisionalFile &) = delete;

    void Write(std::string_view bytes);
    /// Replaces bytes written before. @param offset  of the first of them
    void Overwrite(std::uint64_t offset, std::string_view bytes);
    std::uint64_t Size() const { return flushed_ + buffer_.size(); } ///< bytes written so far

    /// Under this name it can be read, and replaced by another program's work, once it is closed.
    const std::filesystem::path &Path() const { return path_; }
    void Close();
    /// Closes, syncs and gives it its final name: only bytes that lie on the disk take the place of the old file.
    void PutInPlace();

  private:
    void Flush();
    [[noreturn]] void Fail(int error) const;

    std::filesystem::path target_, path_;
    int file_ = -1;
    std::string buffer_;
    std::uint64_t flushed_ = 0;
    bool in_place_ = false;
};

/// The error of a file that cannot be written, in the words of all of them.
[[noreturn]] void FailWriting(const std::filesystem::path &file, const std::string &reason);
