#include "tarvolumera/TarvoPostgreSQL.h"

#include "tarvolumera/Company.h"
#include "tarvolumera/MasterRecords.h"
#include "tarvolumera/archive/SchemaText.h"

#include <fmt/format.h>

namespace {

/// CONVERT(VARCHAR(n), x) becomes CAST(x AS VARCHAR(n)).
std::string ReplaceConvert(std::string text)
{
    constexpr std::string_view kConvert = "CONVERT(VARCHAR(";
    for (std::size_t at = text.find(kConvert); at != std::string::npos; at = text.find(kConvert, at + 1)) {
        const std::size_t width = at + kConvert.size();
        const std::size_t width_end = text.find(')', width);
        const std::size_t comma = text.find(',', width_end);
        if (comma == std::string::npos) break;
        std::size_t end = comma + 1;
        for (int depth = 1; end < text.size(); ++end) {
            if (text[end] == '(') ++depth;
            if (text[end] == ')' && --depth == 0) break;
        }
        const std::string_view operand = Trimmed(std::string_view(text).substr(comma + 1, end - comma - 1));
        text = text.substr(0, at) +
               fmt::format("CAST({} AS VARCHAR({}))", operand, text.substr(width, width_end - width)) +
               text.substr(end + 1);
    }
    return text;
}

std::string ReplaceAll(std::string text, std::string_view from, std::string_view to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

/// Asks the catalogue: a failing query would end the transaction that the caller may be in.
bool Exists(SACommand *cmd, const std::string &table)
{
    SACommand query(cmd->Connection(), cmd->Connection()->Engine() == SAEngine::PostgreSQL
                                           ? "SELECT COUNT(*) AS numrec FROM information_schema.tables"
                                             " WHERE table_schema = 'admin' AND table_name = :nome"
                                           : "SELECT COUNT(*) AS numrec FROM admin.sqlite_master WHERE name = :nome");
    query.Param("nome").setAsString(table.substr(table.find('.') + 1));
    query.Execute();
    return query.FetchNext() && query.Field("numrec").asLong() > 0;
}

} // namespace

bool CTarvoPostgreSQL::OpenConnection(SAConnection *connection, SACommand *command, bool read_only, long company) const
{
    if (company != 0 && company != lumera_db_impo.dit_codice)
        throw SAException(SA_Library_Error, 0, fmt::format("La ditta {} non è quella dell'archivio aperto.", company));
    connection->Connect(lumera_db_target);
    if (read_only) connection->Begin(SATransactionKind::Read);
    command->setConnection(connection);
    return true;
}

long CTarvoPostgreSQL::GetDbType() const
{
    return lumera_db_type;
}

std::string CTarvoPostgreSQL::QueryAdapt(std::string_view text, long first, long second, long third) const
{
    std::string adapted(text);
    for (const long number : {first, second, third}) {
        const std::size_t at = adapted.find("%ld");
        if (at == std::string::npos) break;
        adapted.replace(at, 3, std::to_string(number));
    }
    if (GetDbType() == 0) return adapted;
    adapted = ReplaceConvert(std::move(adapted));
    return ReplaceAll(std::move(adapted), ") + LPAD(", ") || LPAD(");
}

bool CTarvoPostgreSQL::IsTableNotExistErr(const SAException &error)
{
    return error.Fault() == SAFault::RelationNotFound || error.Fault() == SAFault::TableNotFound;
}

bool CTarvoPostgreSQL::IsViewNotExistErr(const SAException &error)
{
    return error.Fault() == SAFault::RelationNotFound || error.Fault() == SAFault::ViewNotFound;
}

void CTarvoPostgreSQL::Create(SACommand *cmd) const
{
    CommandScope scope(cmd);
    if (Exists(scope.get(), TableName())) return;
    SATransaction transaction(scope.get());
    for (const std::string &statement : StatementsOfTable(TableName())) {
        SACommand create(scope->Connection(), statement);
        create.Execute();
    }
    transaction.Commit();
}

bool CTarvoPostgreSQL::FetchRecord(SACommand *query, void *record) const
{
    MasterRecords *known = MasterRecords::Of(query->Connection(), description_);
    if (known != nullptr && known->Take(query, description_, record)) return true;
    query->Execute();
    if (!query->FetchNext()) return false;
    description_.Read(query, record);
    query->Close();
    if (known != nullptr) known->Keep(query, description_, record);
    return true;
}

void CTarvoPostgreSQL::Transact(SACommand *cmd, int operation, const void *record) const
{
    const std::string &text = operation == kInsert   ? description_.InsertText()
                              : operation == kUpdate ? description_.UpdateText()
                                                     : description_.DeleteText();
    MasterRecords::Forget(cmd->Connection());
    SACommand write(cmd->Connection(), text);
    description_.Bind(&write, record);
    write.Execute();
    if (operation != kInsert && write.RowsAffected() == 0)
        throw SAException(SA_UserGenerated_Error, 20060,
                          "Il record non esiste più: è stato eliminato da un'altra stazione.", SAFault::Changed);
}

CommandScope::CommandScope(SACommand *cmd) : cmd_(cmd)
{
    if (cmd_ != nullptr) return;
    connection_ = std::make_unique<SAConnection>();
    connection_->Connect(lumera_db_target);
    own_ = std::make_unique<SACommand>(connection_.get());
    cmd_ = own_.get();
}
