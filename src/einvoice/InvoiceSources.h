#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

/// One file offered for import.
struct OfferedFile {
    std::string origin; ///< where it lies, for messages: a path, or "archivio.zip: cartella/nome.xml"
    std::string name;   ///< its own name, made safe
    std::string bytes;
    std::string fault; ///< why it could not be read; bytes are then empty
};

/// Walks what the user named: files, folders with everything below them, .zip archives with everything in them. Every
/// file is handed over, so that a report can have one line for each; files that are plainly something else (system
/// files of archives, images, PDF) are left out.
/// @param each  false stops the walk
/// @throws FileError when the named path itself does not exist
void ForEachOfferedFile(const std::filesystem::path &path, const std::function<bool(const OfferedFile &)> &each);

/// The same for the files in the bytes of a .zip archive; files that are plainly something else are left out.
/// @param archive_name  for the origin of each
void ForEachArchivedFile(const std::string &archive, const std::string &archive_name,
                         const std::function<bool(const OfferedFile &)> &each);
