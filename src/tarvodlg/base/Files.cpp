#include "tarvodlg/base/Files.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include <fmt/format.h>

#include "tarvodlg/base/Text.h"

std::string SystemErrorText(int error)
{
    switch (error) {
    case ENOENT:
        return "file o cartella inesistente";
    case EACCES:
    case EPERM:
        return "permesso negato";
    case ENOSPC:
        return "disco pieno";
    case EDQUOT:
        return "spazio su disco concesso all'utente esaurito";
    case EROFS:
        return "disco in sola lettura";
    case EFBIG:
        return "file troppo grande per il disco";
    case EIO:
        return "errore del disco";
    case ENAMETOOLONG:
        return "nome troppo lungo";
    case ENOTDIR:
        return "una parte del percorso non è una cartella";
    case EISDIR:
        return "è una cartella";
    case ELOOP:
        return "troppi collegamenti nel percorso";
    case EBUSY:
    case ETXTBSY:
        return "file in uso";
    case EMFILE:
    case ENFILE:
        return "troppi file aperti";
    case ENOMEM:
        return "memoria esaurita";
    default:
        return fmt::format("errore di sistema n. {}", error);
    }
}

namespace {

[[noreturn]] void Fail(const char *what, const std::filesystem::path &path, const std::string &reason)
{
    throw FileError(fmt::format("{} \"{}\": {}", what, OnOneLine(path.string()), reason));
}

/// An open file; closes itself when an error takes the short way out.
class Descriptor {
  public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor()
    {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int get() const { return descriptor_; }
    bool is_open() const { return descriptor_ >= 0; }
    /// Some file systems tell a full disk only now. @return 0 or an errno
    int Close() { return ::close(std::exchange(descriptor_, -1)) == 0 || errno == EINTR ? 0 : errno; }

  private:
    int descriptor_;
};

constexpr const char *kCannotRead = "Impossibile leggere il file";
constexpr const char *kCannotWrite = "Impossibile scrivere il file";

} // namespace

std::string ReadWholeFile(const std::filesystem::path &path, std::size_t max_bytes)
{
    // A pipe would keep a plain open waiting for its writer for ever.
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.is_open()) Fail(kCannotRead, path, SystemErrorText(errno));
    struct stat about = {};
    if (::fstat(file.get(), &about) != 0) Fail(kCannotRead, path, SystemErrorText(errno));
    if (S_ISDIR(about.st_mode)) Fail(kCannotRead, path, SystemErrorText(EISDIR));
    if (!S_ISREG(about.st_mode)) Fail(kCannotRead, path, "non è un file di dati");
    const auto too_large = [&] { Fail(kCannotRead, path, fmt::format("supera il limite di {} byte", max_bytes)); };
    if (static_cast<std::uintmax_t>(about.st_size) > max_bytes) too_large();

    std::string bytes(static_cast<std::size_t>(about.st_size) + 1, '\0'); // one more, to see the end at once
    std::size_t length = 0;
    for (;;) {
        const ssize_t got = ::read(file.get(), bytes.data() + length, bytes.size() - length);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) Fail(kCannotRead, path, SystemErrorText(errno));
        if (got == 0) break;
        length += static_cast<std::size_t>(got);
        if (length > max_bytes) too_large(); // it grew while it was read
        if (length == bytes.size()) bytes.resize(bytes.size() * 2);
    }
    bytes.resize(length);
    return bytes;
}

namespace {

/// The file under its provisional name, in the folder of its final one, since only there a rename is one step. Takes
/// the file away again unless it was renamed.
class ProvisionalFile {
  public:
    explicit ProvisionalFile(const std::filesystem::path &target)
        : target_(target), path_(NewName(target)),
          file_(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666))
    {
        if (!file_.is_open()) Fail(kCannotWrite, target_, SystemErrorText(errno));
        struct stat before = {};
        if (::stat(target_.c_str(), &before) == 0 && S_ISREG(before.st_mode))
            static_cast<void>(::fchmod(file_.get(), before.st_mode & 07777)); // keeps what others may do with the file
    }
    ~ProvisionalFile()
    {
        if (!renamed_) ::unlink(path_.c_str());
    }
    ProvisionalFile(const ProvisionalFile &) = delete;
    ProvisionalFile &operator=(const ProvisionalFile &) = delete;

    void Write(std::string_view bytes)
    {
        while (!bytes.empty()) {
            const ssize_t put = ::write(file_.get(), bytes.data(), bytes.size());
            if (put < 0 && errno == EINTR) continue;
            if (put < 0) Fail(kCannotWrite, target_, SystemErrorText(errno));
            bytes.remove_prefix(static_cast<std::size_t>(put));
        }
    }

    /// Only bytes that lie on the disk may take the place of the old file.
    void PutInPlace()
    {
        Sync(file_.get());
        if (const int error = file_.Close(); error != 0) Fail(kCannotWrite, target_, SystemErrorText(error));
        if (::rename(path_.c_str(), target_.c_str()) != 0) Fail(kCannotWrite, target_, SystemErrorText(errno));
        renamed_ = true;
        // The new name is an entry of the folder, which has to reach the disk as well.
        const Descriptor folder(::open(path_.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder.is_open()) Sync(folder.get());
    }

  private:
    static std::filesystem::path NewName(const std::filesystem::path &target)
    {
        static std::atomic<unsigned> counter = std::random_device()();
        const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
        return folder / fmt::format(".lumera-{}-{:08x}.tmp", ::getpid(), counter++);
    }

    void Sync(int descriptor) const
    {
        if (::fsync(descriptor) == 0) return;
        // Some mounted shares cannot sync; they write through instead.
        if (errno != EINVAL && errno != ENOTSUP) Fail(kCannotWrite, target_, SystemErrorText(errno));
    }

    std::filesystem::path target_;
    std::filesystem::path path_;
    Descriptor file_;
    bool renamed_ = false;
};

} // namespace

void WriteFileWhole(const std::filesystem::path &path, std::string_view bytes)
{
    ProvisionalFile file(path);
    file.Write(bytes);
    file.PutInPlace();
}

namespace {

constexpr std::size_t kNameCharacters = 120;
/// File systems count bytes, 255 of them; the rest is room for what is put before or behind the name.
constexpr std::size_t kNameBytes = 240;
constexpr std::size_t kExtensionCharacters = 16;

bool IsLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

std::string_view LastPart(std::string_view claimed)
{
    claimed = claimed.substr(claimed.find_last_of("/\\") + 1); // npos + 1 is 0
    if (claimed.size() >= 2 && claimed[1] == ':' && IsLetter(claimed[0])) claimed.remove_prefix(2);
    return claimed;
}

/// Names that mean a device on some stations whatever the extension: a shared folder is seen from them too.
bool IsDeviceName(std::string_view name)
{
    constexpr std::array<std::string_view, 4> kDevices = {"con", "prn", "aux", "nul"};
    const std::string_view stem = Trimmed(name.substr(0, name.find('.')));
    for (const std::string_view device : kDevices)
        if (EqualsIgnoreCase(stem, device)) return true;
    const bool is_port = EqualsIgnoreCase(stem.substr(0, 3), "com") || EqualsIgnoreCase(stem.substr(0, 3), "lpt");
    return is_port && stem.size() == 4 && stem[3] >= '0' && stem[3] <= '9';
}

std::string WithoutRefusedCharacters(std::string_view name)
{
    constexpr std::u32string_view kRefused = U"<>:\"|?*";
    std::string clean;
    for (std::size_t position = 0; position < name.size();) {
        const char32_t character = DecodeUtf8(name, &position);
        const bool refused = IsControlCharacter(character) || kRefused.find(character) != std::u32string_view::npos;
        AppendUtf8(clean, refused ? U'_' : character);
    }
    return clean;
}

/// At most so many characters and bytes.
std::string_view Cut(std::string_view text, std::size_t characters, std::size_t bytes)
{
    std::string_view cut = Utf8Prefix(text, characters);
    while (cut.size() > bytes) cut = Utf8Prefix(text, --characters);
    return cut;
}

std::string Shortened(std::string_view name)
{
    if (Cut(name, kNameCharacters, kNameBytes).size() == name.size()) return std::string(name);
    const std::size_t point = name.rfind('.');
    std::string_view extension = point == std::string_view::npos ? std::string_view() : name.substr(point);
    if (Utf8Length(extension) > kExtensionCharacters) extension = {};
    const std::string_view stem = name.substr(0, name.size() - extension.size());
    return std::string(Cut(stem, kNameCharacters - Utf8Length(extension), kNameBytes - extension.size()))
        .append(extension);
}

} // namespace

std::string SafeFileName(std::string_view claimed)
{
    std::string name = WithoutRefusedCharacters(ToValidUtf8(LastPart(claimed)));
    name.erase(0, std::min(name.find_first_not_of(". "), name.size())); // no hidden file, no "."
    if (IsDeviceName(name)) name.insert(0, 1, '_');
    name = Shortened(name);
    name.resize(name.find_last_not_of(". ") + 1); // dropped silently by some stations, which then miss the file
    return name.empty() ? "senza_nome" : name;
}

std::string FileNameFrom(std::string title)
{
    std::ranges::replace(title, '/', '-');
    std::ranges::replace(title, '\\', '-');
    return SafeFileName(title);
}
