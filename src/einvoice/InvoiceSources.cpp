#include "einvoice/InvoiceSources.h"

#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Text.h"
#include "tarvolumera/fatturapa/SignedEnvelope.h"

#include <zip.h>

#include <algorithm>
#include <fmt/format.h>
#include <memory>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr zip_int64_t kZipEntriesMax = 20'000;
/// What an archive may unfold to: a year of a large company's invoices, not a bomb.
constexpr std::size_t kZipBytesMax = 1'000'000'000;

std::string Extension(std::string_view name)
{
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos ? std::string{} : ToUpper(name.substr(dot));
}

/// In a folder or an archive only what may be an invoice is tried; a file named by itself always is.
bool MayBeInvoice(std::string_view name)
{
    const std::string extension = Extension(name);
    return extension == ".XML" || extension == ".P7M" || extension == ".TXT" || extension.empty();
}

bool IsZip(const fs::path &path)
{
    return Extension(path.filename().string()) == ".ZIP";
}

bool OfferFile(const fs::path &path, const std::function<bool(const OfferedFile &)> &each)
{
    OfferedFile file{path.string(), SafeFileName(path.filename().string()), {}, {}};
    try {
        file.bytes = ReadInvoiceFile(path.string());
    } catch (const InvoiceFileError &error) {
        file.fault = error.Detail().empty() ? error.what() : error.Detail();
    }
    return each(file);
}

/// Reads one member; the size that the archive claims is not trusted.
void ReadMember(zip_t *archive, zip_uint64_t index, OfferedFile *file)
{
    const std::unique_ptr<zip_file_t, int (*)(zip_file_t *)> member(zip_fopen_index(archive, index, 0), zip_fclose);
    if (!member) {
        file->fault = fmt::format("Impossibile leggere il file nell'archivio: {}", zip_strerror(archive));
        return;
    }
    std::vector<char> buffer(1 << 16);
    for (;;) {
        const zip_int64_t read = zip_fread(member.get(), buffer.data(), buffer.size());
        if (read == 0) return;
        if (read < 0)
            file->fault = "Il file nell'archivio compresso è danneggiato.";
        else if (file->bytes.size() + static_cast<std::size_t>(read) > kInvoiceFileBytesMax)
            file->fault = "Il file supera la dimensione massima di 50 MB.";
        if (!file->fault.empty()) {
            file->bytes.clear();
            return;
        }
        file->bytes.append(buffer.data(), static_cast<std::size_t>(read));
    }
}

using ZipPointer = std::unique_ptr<zip_t, void (*)(zip_t *)>;

/// @param origin  the archive itself, for faults   @param name  without folders, before the names of its files
bool OfferMembers(const ZipPointer &archive, const std::string &origin, const std::string &name,
                  const std::function<bool(const OfferedFile &)> &each)
{
    const auto refuse = [&](const char *fault) { return each({origin, SafeFileName(name), {}, fault}); };
    if (!archive) return refuse("Il file ZIP non può essere aperto o è danneggiato.");
    const zip_int64_t count = zip_get_num_entries(archive.get(), 0);
    if (count > kZipEntriesMax) return refuse("Il file ZIP contiene troppi file.");
    std::size_t unfolded = 0;
    for (zip_int64_t i = 0; i < count; ++i) {
        const char *claimed = zip_get_name(archive.get(), static_cast<zip_uint64_t>(i), 0);
        if (claimed == nullptr) continue;
        const std::string_view member = claimed;
        if (member.ends_with('/') || member.starts_with("__MACOSX/") || !MayBeInvoice(member)) continue;
        OfferedFile file{fmt::format("{}: {}", name, member), SafeFileName(member), {}, {}};
        ReadMember(archive.get(), static_cast<zip_uint64_t>(i), &file);
        unfolded += file.bytes.size();
        if (unfolded > kZipBytesMax) return refuse("Il file ZIP contiene più di 1 GB di dati: dividerlo.");
        if (!each(file)) return false;
    }
    return true;
}

bool OfferZip(const fs::path &path, const std::function<bool(const OfferedFile &)> &each)
{
    int code = 0;
    const ZipPointer archive(zip_open(path.c_str(), ZIP_RDONLY, &code), zip_discard);
    return OfferMembers(archive, path.string(), path.filename().string(), each);
}

std::vector<fs::path> FilesBelow(const fs::path &folder)
{
    std::vector<fs::path> files;
    try {
        for (const auto &item :
             fs::recursive_directory_iterator(folder, fs::directory_options::skip_permission_denied)) {
            if (item.is_regular_file() && (MayBeInvoice(item.path().filename().string()) || IsZip(item.path())))
                files.push_back(item.path());
        }
    } catch (const fs::filesystem_error &error) {
        throw FileError(
            fmt::format("Impossibile leggere la cartella:\n{} ({})", folder.string(), error.code().message()));
    }
    return files;
}

} // namespace

void ForEachOfferedFile(const fs::path &path, const std::function<bool(const OfferedFile &)> &each)
{
    std::error_code unreadable;
    if (!fs::exists(path, unreadable))
        throw FileError(fmt::format("Il file o la cartella non esiste:\n{}", path.string()));
    if (!fs::is_directory(path)) {
        if (IsZip(path))
            OfferZip(path, each);
        else
            OfferFile(path, each);
        return;
    }
    std::vector<fs::path> files = FilesBelow(path);
    std::sort(files.begin(), files.end());
    for (const fs::path &file : files) {
        if (!(IsZip(file) ? OfferZip(file, each) : OfferFile(file, each))) return;
    }
}

void ForEachArchivedFile(const std::string &archive, const std::string &archive_name,
                         const std::function<bool(const OfferedFile &)> &each)
{
    zip_source_t *source = zip_source_buffer_create(archive.data(), archive.size(), 0, nullptr);
    const ZipPointer opened(source == nullptr ? nullptr : zip_open_from_source(source, ZIP_RDONLY, nullptr),
                            zip_discard);
    if (!opened && source != nullptr) zip_source_free(source); // an opened archive owns it
    OfferMembers(opened, archive_name, archive_name, each);
}
