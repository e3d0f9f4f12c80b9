#include "tarvolumera/archive/ArchiveCopy.h"

#include "tarvodlg/base/Files.h"
#include "tarvolumera/archive/Migrations.h"
#include "tarvolumera/archive/SchemaText.h"

#include <fmt/format.h>

namespace {

/// The columns that can be written: generated ones come by themselves.
std::vector<std::string> WritableColumns(SACommand *cmd, const std::string &table)
{
    SACommand query(cmd->Connection(), "SELECT column_name FROM information_schema.columns"
                                       " WHERE table_schema = 'admin' AND table_name = :tabella"
                                       " AND is_generated = 'NEVER' ORDER BY ordinal_position");
    query.Param("tabella").setAsString(table.substr(table.find('.') + 1));
    query.Execute();
    std::vector<std::string> columns;
    while (query.FetchNext()) columns.push_back(query.Field(1).asString());
    return columns;
}

bool HoldsBytes(const std::string &column)
{
    return column.ends_with("_data") &&
           (column.starts_with("all") || column.starts_with("pat") || column.starts_with("pni"));
}

/// Texts carry every kind of value but bytes between the engines: the column's type reads them back.
long CopyTable(SACommand *from, SACommand *to, const std::string &table)
{
    std::string list, values;
    const std::vector<std::string> columns = WritableColumns(from, table);
    for (const std::string &column : columns) {
        list += (list.empty() ? "" : ", ") + column;
        values += (values.empty() ? ":" : ", :") + column;
    }
    SACommand read(from->Connection(), fmt::format("SELECT {} FROM {}", list, table));
    SACommand write(to->Connection(), fmt::format("INSERT INTO {} ({}) VALUES ({})", table, list, values));
    long rows = 0;
    read.Execute();
    while (read.FetchNext()) {
        for (int i = 1; i <= static_cast<int>(columns.size()); ++i) {
            const SAField &field = read.Field(i);
            if (field.isNull())
                write.Param(i).setAsNull();
            else if (HoldsBytes(field.Name()))
                write.Param(i).setAsBytes(field.asBytes());
            else
                write.Param(i).setAsString(field.asStringView());
        }
        write.Execute();
        ++rows;
    }
    return rows;
}

long CopyRows(SACommand *cmd, const std::filesystem::path &file)
{
    SAConnection target;
    target.Connect(file.string(), SAOpenMode::Create);
    target.SetDurability(SADurability::Relaxed);
    SACommand write(&target);
    MigrateArchive(&write);
    SATransaction picture(cmd, SATransactionKind::Read);
    SATransaction copying(&write);
    SACommand(&target, "DELETE FROM admin.versione").Execute();
    long rows = 0;
    for (const std::string &table : TablesInOrder()) rows += CopyTable(cmd, &write, table);
    copying.Commit();
    target.SetDurability(SADurability::Full);
    return rows;
}

} // namespace

long CopyArchive(SACommand *cmd, const std::filesystem::path &file)
{
    if (std::filesystem::exists(file))
        throw FileError(fmt::format("Il file esiste già e non viene sovrascritto:\n{}", file.string()));
    if (cmd->Connection()->Engine() == SAEngine::SQLite) {
        cmd->Connection()->CopyTo(file.string());
        return 0;
    }
    const std::filesystem::path temporary = file.string() + ".tmp";
    const auto remove_parts = [&] {
        std::error_code ignored;
        for (const char *suffix : {"", "-wal", "-shm"}) std::filesystem::remove(temporary.string() + suffix, ignored);
    };
    remove_parts();
    try {
        const long rows = CopyRows(cmd, temporary);
        SAConnection::ClosePool(); // the last connection folds the log into the file
        std::filesystem::rename(temporary, file);
        return rows;
    } catch (...) {
        remove_parts();
        throw;
    }
}
