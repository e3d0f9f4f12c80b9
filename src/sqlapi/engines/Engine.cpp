#include "sqlapi/engines/Engine.h"

#include "sqlapi/engines/NamedParameters.h"
#include "sqlapi/engines/PostgresConnection.h"
#include "sqlapi/engines/SqliteConnection.h"

#include <filesystem>

namespace {

bool IsPostgres(const std::string &target)
{
    return target.starts_with("postgresql://") || target.starts_with("postgres://");
}

} // namespace

SAException LibraryError(std::string text)
{
    return {SA_Library_Error, 0, std::move(text)};
}

EngineStatement::EngineStatement(std::string sql, const StatementKind &kind)
    : sql_(std::move(sql)), kind_(kind), parameter_names_(::ParameterNames(sql_))
{
}

std::unique_ptr<EngineConnection> EngineConnection::Open(const std::string &target, SAOpenMode mode)
{
    if (IsPostgres(target)) return std::make_unique<PostgresConnection>(target);
    return std::make_unique<SqliteConnection>(PoolKey(target), mode);
}

std::string EngineConnection::PoolKey(const std::string &target)
{
    if (IsPostgres(target)) return target;
    if (target.empty()) throw SAException(SA_Library_Error, 0, "no archive was named", SAFault::CannotOpen);
    // Absolute, so that a change of the working folder does not lead to another file; it also keeps SQLite from giving
    // a meaning of its own to names like ":memory:" or "file:...".
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(target, error);
    return error ? target : path.lexically_normal().string();
}

std::shared_ptr<EngineStatement> EngineConnection::Statement(const std::string &text)
{
    if (auto cached = statements_.Find(text)) return cached;
    const StatementKind kind = StatementKind::Of(text);
    auto statement = Prepare(text, kind);
    if (kind.changes_session) changed_by_user_ = true;
    if (kind.IsRepeatable()) statements_.Add(statement);
    return statement;
}

StatementKind EngineConnection::Run(std::string_view text)
{
    const StatementKind kind = StatementKind::Of(text);
    if (kind.changes_session) changed_by_user_ = true;
    RunText(text, kind);
    return kind;
}

bool EngineConnection::PrepareForPool() noexcept
{
    try {
        if (IsLost()) return false;
        Rollback();
        if (durability_ != SADurability::Full) SetDurability(SADurability::Full);
        return !changed_by_user_ && !IsLost() && !InTransaction();
    } catch (const std::exception &) {
        return false;
    }
}
