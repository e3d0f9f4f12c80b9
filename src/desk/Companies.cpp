#include "desk/Companies.h"

#include "desk/ArchiveAddress.h"
#include "desk/UserFolders.h"
#include "tarvodlg/base/Files.h"

#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace {

constexpr std::size_t kFileMax = 1 << 20;
constexpr std::size_t kCompaniesMax = 100; ///< more than anybody works on from one station

/// The name under which a company is known, so that "demo" and "/home/anna/demo/" are one.
std::string KeyOf(const std::string &archive)
{
    if (IsPostgresTarget(archive)) return WithoutPassword(archive);
    std::string path = std::filesystem::absolute(archive).lexically_normal().string();
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

std::string TextOf(const nlohmann::json &item, const char *key)
{
    const auto found = item.find(key);
    return found != item.end() && found->is_string() ? found->get<std::string>() : std::string{};
}

} // namespace

std::filesystem::path Companies::UserFile()
{
    return UserConfigFolder() / "ditte.json";
}

Companies::Companies(std::filesystem::path file) : file_(std::move(file))
{
    Read();
}

void Companies::Read()
{
    list_.clear();
    fault_.clear();
    is_damaged_ = false;
    std::error_code ignored;
    if (!std::filesystem::exists(file_, ignored)) return;
    std::string text;
    try {
        text = ReadWholeFile(file_, kFileMax);
    } catch (const FileError &error) {
        fault_ = error.what();
        is_damaged_ = std::filesystem::is_regular_file(file_, ignored);
        return;
    }
    const nlohmann::json document = nlohmann::json::parse(text, nullptr, false);
    if (document.is_discarded() || !document.is_object() || !document.contains("ditte") ||
        !document["ditte"].is_array()) {
        fault_ = fmt::format("L'elenco delle aziende è danneggiato:\n{}", file_.string());
        is_damaged_ = true;
        return;
    }
    for (const nlohmann::json &item : document["ditte"]) {
        KnownCompany company;
        if (!item.is_object()) continue;
        company.archive = WithoutPassword(TextOf(item, "archivio")); // someone may have edited the file
        company.name = TextOf(item, "nome");
        company.opened = TextOf(item, "aperta");
        company.is_missing = item.value("mancante", nlohmann::json(false)) == true;
        if (!company.archive.empty()) list_.push_back(std::move(company));
    }
}

void Companies::Write() const
{
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const KnownCompany &company : list_) {
        nlohmann::ordered_json item = {
            {"archivio", company.archive}, {"nome", company.name}, {"aperta", company.opened}};
        if (company.is_missing) item["mancante"] = true;
        list.push_back(std::move(item));
    }
    try {
        std::filesystem::create_directories(file_.parent_path());
        if (is_damaged_) SetDamagedFileAside();
    } catch (const std::filesystem::filesystem_error &error) {
        throw FileError(fmt::format("Impossibile scrivere l'elenco delle aziende:\n{}\n{}", file_.string(),
                                    SystemErrorText(error.code().value())));
    }
    WriteFileWhole(file_, nlohmann::ordered_json{{"ditte", list}}.dump(
                              2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
                              "\n");
}

void Companies::SetDamagedFileAside() const
{
    std::filesystem::path aside = file_;
    aside += ".danneggiato";
    for (int number = 2; std::filesystem::exists(aside); ++number)
        aside = fmt::format("{}.danneggiato{}", file_.string(), number);
    std::filesystem::rename(file_, aside);
}

void Companies::Remember(const std::string &archive, const std::string &name, const std::string &moment)
{
    Read();
    const std::string key = KeyOf(archive);
    std::erase_if(list_, [&](const KnownCompany &known) { return known.archive == key; });
    list_.insert(list_.begin(), KnownCompany{key, name, moment, false});
    if (list_.size() > kCompaniesMax) list_.resize(kCompaniesMax);
    Write();
    is_damaged_ = false;
    fault_.clear();
}

void Companies::MarkMissing(const std::string &archive)
{
    Read();
    const std::string key = KeyOf(archive);
    const auto found =
        std::find_if(list_.begin(), list_.end(), [&](const auto &known) { return known.archive == key; });
    if (found == list_.end() || found->is_missing) return;
    found->is_missing = true;
    Write();
}

void Companies::Forget(const std::string &archive)
{
    Read();
    const std::string key = KeyOf(archive);
    if (std::erase_if(list_, [&](const KnownCompany &known) { return known.archive == key; }) > 0) Write();
}

bool IsReachable(const KnownCompany &company)
{
    if (IsPostgresTarget(company.archive)) return !company.is_missing;
    std::error_code ignored;
    return std::filesystem::is_regular_file(company.archive, ignored) ||
           std::filesystem::is_regular_file(ArchiveFile(company.archive), ignored);
}

void CurrentCompany::Restore() const
{
    lumera_db_impo = company_;
    lumera_db_flag = settings_;
    lumera_db_type = type_;
    lumera_db_target = target_;
    lumera_db_folder = folder_;
}

void OpenOrKeep(const std::string &archive)
{
    const CurrentCompany before;
    try {
        OpenCompany(archive, IsPostgresTarget(archive) ? DataFolderOf(archive) : std::filesystem::path{});
    } catch (...) {
        before.Restore();
        throw;
    }
}
