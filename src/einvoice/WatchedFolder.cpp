#include "einvoice/WatchedFolder.h"

#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Text.h"
#include "tarvolumera/Company.h"
#include "tarvolumera/Sincro.h"
#include "tarvolumera/fatturapa/SignedEnvelope.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace {

namespace fs = std::filesystem;

constexpr int kDepthMax = 16;
/// The monthly archive of a portal; a single invoice has a bound of its own.
constexpr std::uintmax_t kZipFileBytesMax = 200'000'000;

bool EndsWithAny(std::string_view upper_name, std::initializer_list<std::string_view> endings)
{
    return std::ranges::any_of(endings, [&](std::string_view ending) { return upper_name.ends_with(ending); });
}

bool IsWanted(std::string_view upper_name)
{
    return EndsWithAny(upper_name, {".XML", ".P7M", ".ZIP", ".PDF"});
}

/// The names that browsers and transfer programs give to what they are still fetching.
bool IsUnfinishedName(std::string_view upper_name)
{
    return EndsWithAny(upper_name, {".PART", ".TMP", ".CRDOWNLOAD", ".PARTIAL", ".FILEPART", ".DOWNLOAD"});
}

std::string VersionOf(std::uintmax_t size, fs::file_time_type written)
{
    return fmt::format("{}-{}", size, written.time_since_epoch().count());
}

bool IsTooLarge(std::string_view upper_name, std::uintmax_t size)
{
    return size > (upper_name.ends_with(".ZIP") ? kZipFileBytesMax : kInvoiceFileBytesMax);
}

} // namespace

WatchedFolder::WatchedFolder(fs::path folder, Clock now) : folder_(std::move(folder)), now_(std::move(now))
{
    if (!now_) now_ = [] { return fs::file_time_type::clock::now(); };
}

std::vector<ProvidedFile> WatchedFolder::ListNew(const KnownFile &is_known)
{
    std::error_code error;
    if (!fs::is_directory(folder_, error))
        throw FileError(
            fmt::format("La cartella delle fatture ricevute non esiste o non è raggiungibile:\n{}", folder_.string()));
    std::vector<ProvidedFile> files;
    List(folder_, 0, is_known, &files);
    std::ranges::sort(files, {}, &ProvidedFile::name);
    return files;
}

void WatchedFolder::List(const fs::path &folder, int depth, const KnownFile &is_known, std::vector<ProvidedFile> *files)
{
    std::error_code error;
    fs::directory_iterator item(folder, error);
    for (; !error && item != fs::directory_iterator(); item.increment(error)) {
        if (item->path().filename().string().starts_with('.')) continue; // what programs keep for themselves
        std::error_code unreadable;
        const fs::file_status status = item->symlink_status(unreadable);
        if (fs::is_symlink(status))
            LookAtLink(item->path(), is_known, files);
        else if (fs::is_regular_file(status))
            Look(*item, is_known, files);
        else if (fs::is_directory(status) && depth < kDepthMax)
            List(item->path(), depth + 1, is_known, files);
    }
    if (!error) return;
    const std::string fault = fmt::format("Impossibile leggere la cartella ({}).", SystemErrorText(error.value()));
    if (depth == 0) throw FileError(fmt::format("{}\n{}", fault, folder.string()));
    files->push_back({NameOf(folder), {}, fault});
}

void WatchedFolder::Look(const fs::directory_entry &item, const KnownFile &is_known, std::vector<ProvidedFile> *files)
{
    const std::string upper = ToUpper(item.path().filename().string());
    ProvidedFile file{NameOf(item.path()), {}, {}};
    if (IsUnfinishedName(upper)) {
        file.is_ready = false;
        files->push_back(std::move(file));
        return;
    }
    if (!IsWanted(upper)) return;
    std::error_code gone;
    const std::uintmax_t size = fs::file_size(item.path(), gone);
    if (gone) return;
    const fs::file_time_type written = fs::last_write_time(item.path(), gone);
    if (gone) return;
    file.version = VersionOf(size, written);
    if (is_known(file.name, file.version)) return;
    if (!IsValidUtf8(item.path().string())) {
        file.fault = "Il nome contiene caratteri non validi: rinominare il file.";
    } else if (Utf8Length(file.name) > SINCRO{}.syn_nome.MaxLength()) {
        file.fault = "Il nome con le sue cartelle è troppo lungo.";
        file.version.clear(); // cut to what the archive holds it could be taken for another
    } else if (IsTooLarge(upper, size)) {
        file.fault = fmt::format("Il file è troppo grande ({} MB).", size / 1'000'000);
    }
    // A time ahead of ours comes from a machine whose clock is wrong, and must not hold the file back for ever.
    const auto age = now_() - written;
    file.is_ready = age > kQuiet || age < -kQuiet;
    file.is_settled = age > kSettled || age < -kSettled;
    files->push_back(std::move(file));
}

void WatchedFolder::LookAtLink(const fs::path &link, const KnownFile &is_known, std::vector<ProvidedFile> *files)
{
    std::error_code error;
    const fs::path target = fs::canonical(link, error), root = fs::canonical(folder_, error);
    const auto [end, stop] = std::mismatch(root.begin(), root.end(), target.begin(), target.end());
    if (!error && end == root.end()) return; // what it leads to is listed itself
    const ProvidedFile file{NameOf(link), "collegamento", "È un collegamento a un file fuori dalla cartella."};
    if (!is_known(file.name, file.version)) files->push_back(file);
}

std::string WatchedFolder::NameOf(const fs::path &path) const
{
    return ToValidUtf8(path.lexically_relative(folder_).generic_string());
}

std::string WatchedFolder::Read(const ProvidedFile &file)
{
    const fs::path path = folder_ / file.name;
    if (fs::is_symlink(fs::symlink_status(path))) throw FileError("È un collegamento a un altro file.");
    return ReadWholeFile(path, kZipFileBytesMax);
}

bool WatchedFolder::IsUnchanged(const ProvidedFile &file)
{
    std::error_code gone;
    const fs::path path = folder_ / file.name;
    const std::uintmax_t size = fs::file_size(path, gone);
    if (gone) return false;
    const fs::file_time_type written = fs::last_write_time(path, gone);
    return !gone && VersionOf(size, written) == file.version;
}

fs::path ReceivedInvoicesFolder()
{
    if (lumera_db_flag.flg_sdi_cartella.empty())
        throw FileError("Cartella delle fatture ricevute non impostata sulla ditta!\n\nSi sceglie nelle impostazioni "
                        "dell'azienda, pagina Automatismi.");
    return lumera_db_flag.flg_sdi_cartella.str();
}
