#include "desk/UserFolders.h"

#include <cstdlib>

namespace {

std::filesystem::path XdgFolder(const char *variable, const char *below_home)
{
    // The rules of XDG: a relative path is to be ignored.
    const std::filesystem::path named = Environment(variable);
    if (named.is_absolute()) return named / "lumera";
    const std::string home = Environment("HOME");
    return std::filesystem::path(home.empty() ? "." : home) / below_home / "lumera";
}

} // namespace

std::string Environment(const char *name)
{
    const char *value = std::getenv(name);
    return value == nullptr ? std::string{} : value;
}

std::filesystem::path UserDataFolder()
{
    return XdgFolder("XDG_DATA_HOME", ".local/share");
}

std::filesystem::path UserConfigFolder()
{
    return XdgFolder("XDG_CONFIG_HOME", ".config");
}

std::filesystem::path DataFolderOf(const std::string &archive)
{
    const std::size_t query = archive.find('?');
    const std::string address = archive.substr(0, query);
    const std::string database = address.substr(address.rfind('/') + 1);
    return UserDataFolder() / (database.empty() ? "postgres" : database);
}

std::string DefaultArchive()
{
    const std::string named = Environment("LUMERA_ARCHIVIO");
    return named.empty() ? (UserDataFolder() / "archivio").string() : named;
}
