#include "desk/ArchiveAddress.h"

#include "tarvodlg/base/Text.h"
#include "tarvolumera/Company.h"

#include <cctype>
#include <fmt/format.h>

namespace {

/// "host=%2Fvar" -> "host=/var", as the client library reads names and values of the options.
std::string PercentDecoded(std::string_view text)
{
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && std::isxdigit(static_cast<unsigned char>(text[i + 1])) != 0 &&
            std::isxdigit(static_cast<unsigned char>(text[i + 2])) != 0) {
            decoded += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            decoded += text[i];
        }
    }
    return decoded;
}

std::string PercentEncoded(std::string_view text)
{
    std::string encoded;
    for (const char c : text) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0)
            encoded += c;
        else
            encoded += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return encoded;
}

bool IsPort(std::string_view text)
{
    return text.find_first_not_of("0123456789,") == std::string_view::npos;
}

/// Where the user's name and password end: the '@' before the host. npos when the address names none.
std::size_t EndOfUser(std::string_view rest)
{
    const std::size_t slash = std::min(rest.find('/'), rest.size());
    const std::size_t at = rest.substr(0, slash).rfind('@');
    if (at != std::string_view::npos) return at;
    // "user:a/b@host" is not what its author meant: the client library takes "user" for the host and "a" for its port.
    const std::size_t colon = rest.find(':');
    if (colon < slash && !IsPort(rest.substr(colon + 1, slash - colon - 1))) return rest.rfind('@');
    return std::string_view::npos;
}

bool IsSecret(std::string_view option)
{
    const std::string name = ToUpper(PercentDecoded(option.substr(0, option.find('='))));
    return name == "PASSWORD" || name == "SSLPASSWORD";
}

std::string WithoutSecrets(std::string_view options)
{
    std::string kept;
    while (!options.empty()) {
        const std::size_t end = options.find('&');
        const std::string_view option = options.substr(0, end);
        options.remove_prefix(end == std::string_view::npos ? options.size() : end + 1);
        if (!IsSecret(option)) kept += (kept.empty() ? "?" : "&") + std::string(option);
    }
    return kept;
}

} // namespace

std::string WithoutPassword(std::string_view archive)
{
    if (!IsPostgresTarget(std::string(archive))) return std::string(archive);
    const std::size_t start = archive.find("://") + 3;
    std::string address(archive.substr(0, start));
    std::string_view rest = archive.substr(start);
    if (const std::size_t at = EndOfUser(rest); at != std::string_view::npos) {
        address += rest.substr(0, std::min(rest.find(':'), at));
        rest.remove_prefix(at);
    }
    const std::size_t query = rest.find('?');
    address += rest.substr(0, query);
    if (query != std::string_view::npos) address += WithoutSecrets(rest.substr(query + 1));
    return address;
}

bool HasPassword(std::string_view archive)
{
    return WithoutPassword(archive) != archive;
}

std::string WithPassword(std::string_view archive, std::string_view password)
{
    std::string address = WithoutPassword(archive);
    if (!IsPostgresTarget(address) || password.empty()) return address;
    address += address.find('?') == std::string::npos ? '?' : '&';
    return address + "password=" + PercentEncoded(password);
}

bool AsksForPassword(std::string_view error_text)
{
    return error_text.find("fe_sendauth") != std::string_view::npos; // the client library never translates this word
}

std::string ArchivePlace(const std::string &archive)
{
    if (!IsPostgresTarget(archive)) return archive;
    const std::string address = WithoutPassword(archive);
    std::size_t start = address.find("://") + 3;
    if (address.compare(start, 1, "/") == 0) ++start; // the host stands among the options
    return address.substr(start, std::min(address.find('?'), address.size()) - start);
}
