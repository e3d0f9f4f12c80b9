#include "sqlapi/engines/PostgresFaults.h"

#include <libpq-fe.h>

#include <charconv>

namespace {

constexpr std::string_view kConnectionFailure = "08006";

std::string WithoutLineEnd(std::string text)
{
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) text.pop_back();
    return text;
}

std::string FieldOf(const pg_result *result, int field)
{
    const char *text = result == nullptr ? nullptr : PQresultErrorField(result, field);
    return text == nullptr ? std::string() : WithoutLineEnd(text);
}

SAFault OfRelation(StatementKind::Subject subject)
{
    if (subject == StatementKind::Subject::Table) return SAFault::TableNotFound;
    if (subject == StatementKind::Subject::View) return SAFault::ViewNotFound;
    return SAFault::RelationNotFound;
}

SAFault FaultOf(std::string_view state, StatementKind::Subject subject)
{
    struct Entry {
        std::string_view state; ///< the whole code or its beginning
        SAFault fault;
    };
    constexpr Entry kFaults[] = {
        {"23505", SAFault::UniqueViolation},
        {"23503", SAFault::ForeignKeyViolation},
        {"23514", SAFault::CheckViolation},
        {"23502", SAFault::NotNullViolation},
        {"40001", SAFault::Busy},
        {"40P01", SAFault::Busy},
        {"55P03", SAFault::Busy},
        {"57P", SAFault::ConnectionLost},
        {"08", SAFault::ConnectionLost},
        {"53100", SAFault::DiskFull},
        {"25006", SAFault::ReadOnly},
        {"28", SAFault::CannotOpen},
        {"3D000", SAFault::CannotOpen},
        {"XX001", SAFault::Corrupt},
        {"XX002", SAFault::Corrupt},
    };
    // A missing schema is for the caller the same as a missing table in it.
    if (state == "42P01" || state == "3F000") return OfRelation(subject);
    for (const Entry &entry : kFaults)
        if (state.starts_with(entry.state)) return entry.fault;
    return SAFault::Other;
}

} // namespace

long PostgresNativeCode(std::string_view sqlstate)
{
    long code = 0;
    std::from_chars(sqlstate.data(), sqlstate.data() + sqlstate.size(), code, 36);
    return code;
}

SAException PostgresError(pg_conn *connection, pg_result *result, StatementKind::Subject subject)
{
    std::string state = FieldOf(result, PG_DIAG_SQLSTATE);
    std::string text = FieldOf(result, PG_DIAG_MESSAGE_PRIMARY);
    if (const std::string detail = FieldOf(result, PG_DIAG_MESSAGE_DETAIL); !detail.empty())
        text += " (" + detail + ")";
    if (text.empty()) text = WithoutLineEnd(PQerrorMessage(connection));
    // A connection that breaks is noticed by the client library, which has no code for it.
    const bool is_lost = PQstatus(connection) == CONNECTION_BAD;
    if (state.empty() && is_lost) state = kConnectionFailure;
    const SAFault fault = is_lost ? SAFault::ConnectionLost : FaultOf(state, subject);
    return {SA_DBMS_API_Error, PostgresNativeCode(state), text, fault};
}

SAException PostgresOpenError(pg_conn *connection, const std::string &password)
{
    std::string text = WithoutLineEnd(PQerrorMessage(connection));
    for (std::size_t at = 0; !password.empty() && (at = text.find(password, at)) != std::string::npos; at += 3)
        text.replace(at, password.size(), "***");
    return {SA_DBMS_API_Error, PostgresNativeCode("08001"), text, SAFault::CannotOpen};
}
