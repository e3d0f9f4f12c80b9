#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

/// A file that cannot be read or written; the text is Italian and names the file.
class FileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What an errno of the system means, in plain Italian: "disco pieno", "permesso negato".
std::string SystemErrorText(int error);

/// The whole file. @throws FileError when it cannot be read, is no regular file, or is larger than max_bytes
std::string ReadWholeFile(const std::filesystem::path &path, std::size_t max_bytes);

/// Writes beside its place, syncs, renames: readers see the old file or the new one, never half of it. The temporary
/// file does not survive a failure. @throws FileError with the reason in plain words (full disk, no permission ...)
void WriteFileWhole(const std::filesystem::path &path, std::string_view bytes);

/// The last part of a name that came from outside, safe to create in a folder of ours: path parts ('/', '\\', drive
/// letters) dropped, control characters and characters that file systems refuse replaced by '_', leading and trailing
/// dots and blanks dropped, device names ("nul.xml") with a '_' before them, at most 120 characters and 240 bytes
/// keeping the extension; "senza_nome" when nothing is left.
std::string SafeFileName(std::string_view claimed);
/// A name for a file from a title, where "24/2026" is a number and no folder: "24-2026".
std::string FileNameFrom(std::string title);
