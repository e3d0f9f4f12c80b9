#include "tarvolumera/archive/ArchiveCreation.h"

#include "tarvodlg/base/Files.h"
#include "tarvolumera/archive/Migrations.h"
#include "tarvolumera/archive/Resources.h"

#include <fmt/format.h>

namespace {

std::vector<std::string_view> Split(std::string_view line, char separator)
{
    std::vector<std::string_view> cells;
    for (;;) {
        const std::size_t end = line.find(separator);
        cells.push_back(line.substr(0, end));
        if (end == std::string_view::npos) return cells;
        line.remove_prefix(end + 1);
    }
}

/// "base/07_codiva.tsv" is loaded into admin.codiva.
std::string TableOfResource(std::string_view resource)
{
    const std::size_t start = resource.find('_') + 1;
    return "admin." + std::string(resource.substr(start, resource.rfind('.') - start));
}

void InsertRow(SACommand *cmd, const std::string &table, const std::vector<std::pair<std::string, std::string>> &row)
{
    std::string columns, values;
    for (const auto &[name, value] : row) {
        columns += (columns.empty() ? "" : ", ") + name;
        values += (values.empty() ? ":" : ", :") + name;
    }
    SACommand insert(cmd->Connection(), fmt::format("INSERT INTO {} ({}) VALUES ({})", table, columns, values));
    for (const auto &[name, value] : row) insert.Param(name).setAsString(value);
    insert.Execute();
}

void LoadCompany(SACommand *cmd, const NewArchive &wanted)
{
    const std::string year = std::to_string(wanted.year);
    if (wanted.demo) {
        LoadTable(cmd, "demo/01_ditte.tsv", {{"dit_codice", "1"}, {"dit_anno", year}});
        return;
    }
    DITTE company = wanted.company;
    company.dit_codice = 1;
    company.dit_anno = wanted.year;
    sqldit.SqlTransaction(cmd, kInsert, &company);
}

/// Settings point to the company, the company to the chart: base tables first, settings last.
void LoadTables(SACommand *cmd, const NewArchive &wanted)
{
    for (const std::string_view name : ResourceNames("base/")) {
        if (name.find("_flag.") == std::string_view::npos) LoadTable(cmd, name);
    }
    LoadCompany(cmd, wanted);
    for (const std::string_view name : ResourceNames("base/")) {
        if (name.find("_flag.") != std::string_view::npos) LoadTable(cmd, name, {{"flg_codice", "1"}});
    }
    if (!wanted.demo) return;
    for (const std::string_view name : ResourceNames("demo/")) {
        if (name.find("_ditte.") == std::string_view::npos) LoadTable(cmd, name);
    }
}

void BuildArchive(SACommand *cmd, const NewArchive &wanted)
{
    if (MigrateArchive(cmd) == 0)
        throw SAException(SA_UserGenerated_Error, 20072, "Il database contiene già un archivio.");
    SATransaction transaction(cmd);
    LoadTables(cmd, wanted);
    transaction.Commit();
}

void CreateOnPostgres(const NewArchive &wanted)
{
    SAConnection connection;
    connection.Connect(wanted.archive);
    SACommand command(&connection);
    SATransaction whole(&command);
    BuildArchive(&command, wanted);
    lumera_db_type = 1;
    lumera_db_target = wanted.archive;
    lumera_db_folder = wanted.data_folder;
    ReloadCompany(&command);
    if (wanted.fill) wanted.fill(&command);
    whole.Commit();
}

/// Removes the half-made folder unless it was given up to its place.
class FolderInTheMaking {
  public:
    explicit FolderInTheMaking(std::filesystem::path path) : path_(std::move(path))
    {
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~FolderInTheMaking()
    {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    FolderInTheMaking(const FolderInTheMaking &) = delete;
    FolderInTheMaking &operator=(const FolderInTheMaking &) = delete;
    const std::filesystem::path &Path() const { return path_; }
    void MoveTo(const std::filesystem::path &place)
    {
        std::filesystem::rename(path_, place);
        path_.clear();
    }

  private:
    std::filesystem::path path_;
};

void CreateInFolder(const NewArchive &wanted)
{
    const std::filesystem::path place = std::filesystem::absolute(wanted.archive).lexically_normal();
    const bool exists = std::filesystem::exists(place);
    if (std::filesystem::exists(ArchiveFile(place)))
        throw SAException(SA_UserGenerated_Error, 20072,
                          fmt::format("La cartella contiene già un archivio:\n{}", place.string()));
    if (exists && !(std::filesystem::is_directory(place) && std::filesystem::is_empty(place)))
        throw FileError(fmt::format("La cartella non è vuota:\n{}", place.string()));

    FolderInTheMaking folder(place.string() + ".nuovo");
    {
        const std::string file = ArchiveFile(folder.Path()).string();
        SAConnection connection;
        connection.Connect(file, SAOpenMode::Create);
        // Nobody sees the folder before it is whole, so the file need not be safe from a power cut meanwhile.
        connection.SetDurability(SADurability::Relaxed);
        SACommand command(&connection);
        BuildArchive(&command, wanted);
        lumera_db_type = 0;
        lumera_db_target = file;
        lumera_db_folder = folder.Path();
        ReloadCompany(&command);
        if (wanted.fill) wanted.fill(&command);
        connection.SetDurability(SADurability::Full);
    }
    SAConnection::ClosePool();
    if (exists) std::filesystem::remove(place);
    folder.MoveTo(place);
    lumera_db_target = ArchiveFile(place).string();
    lumera_db_folder = place;
}

} // namespace

long LoadTable(SACommand *cmd, std::string_view resource, const std::vector<std::pair<std::string, std::string>> &extra)
{
    std::string_view text = ResourceText(resource);
    const std::string table = TableOfResource(resource);
    std::vector<std::string_view> columns;
    long rows = 0;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.empty()) continue;
        const std::vector<std::string_view> cells = Split(line, '\t');
        if (columns.empty()) {
            columns = cells;
            continue;
        }
        std::vector<std::pair<std::string, std::string>> row = extra;
        for (std::size_t i = 0; i < cells.size() && i < columns.size(); ++i) {
            if (!cells[i].empty()) row.emplace_back(columns[i], cells[i]);
        }
        InsertRow(cmd, table, row);
        ++rows;
    }
    return rows;
}

void CreateArchive(const NewArchive &wanted)
{
    if (IsPostgresTarget(wanted.archive))
        CreateOnPostgres(wanted);
    else
        CreateInFolder(wanted);
}
