#include "tarvolumera/MasterRecords.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace {

constexpr std::size_t kAnswersMax = 1000; ///< a pass over ten thousand suppliers is no reason to hold them all

thread_local MasterRecords *innermost = nullptr;

bool IsMaster(const TableDescription &table)
{
    static constexpr std::array<std::string_view, 9> kTables = {"admin.clienti1", "admin.fornito1", "admin.mastri",
                                                                "admin.conti",    "admin.sotcon",   "admin.caucont1",
                                                                "admin.codiva",   "admin.pagament", "admin.banche1"};
    return std::find(kTables.begin(), kTables.end(), table.Table()) != kTables.end();
}

/// Text and parameters: what makes two questions the same one.
std::string QuestionOf(SACommand *query)
{
    std::string question = query->CommandText();
    for (int i = 1; i <= query->ParamCount(); ++i) {
        const SAParam::Value &value = query->Param(i).Get();
        question += '\x1f';
        if (const auto *whole = std::get_if<long long>(&value))
            question += std::to_string(*whole);
        else if (const auto *real = std::get_if<double>(&value))
            question += fmt::format("{:a}", *real);
        else if (const auto *text = std::get_if<std::string>(&value))
            question += *text;
        else
            return {}; // no table here is searched by a date, and NULL finds nothing
    }
    return question;
}

} // namespace

MasterRecords::MasterRecords(SACommand *cmd) : connection_(cmd->Connection()), outer_(innermost), shared_(this)
{
    if (MasterRecords *around = Innermost(connection_)) shared_ = around->shared_;
    innermost = this;
}

MasterRecords::~MasterRecords()
{
    innermost = outer_;
}

MasterRecords *MasterRecords::Innermost(const SAConnection *connection)
{
    MasterRecords *scope = innermost;
    while (scope != nullptr && scope->connection_ != connection) scope = scope->outer_;
    return scope;
}

MasterRecords *MasterRecords::Of(const SAConnection *connection, const TableDescription &table)
{
    const MasterRecords *scope = Innermost(connection);
    return scope != nullptr && IsMaster(table) && !connection->InTransaction() ? scope->shared_ : nullptr;
}

void MasterRecords::Forget(const SAConnection *connection)
{
    if (const MasterRecords *scope = Innermost(connection)) scope->shared_->answers_.clear();
}

bool MasterRecords::Take(SACommand *query, const TableDescription &table, void *record) const
{
    const auto found = answers_.find(QuestionOf(query));
    if (found == answers_.end()) return false;
    for (std::size_t i = 0; i < found->second.size(); ++i) {
        const ColumnDescription &column = table.Columns()[i];
        const Value &value = found->second[i];
        void *member = column.member(record);
        if (column.kind == ColumnKind::Double)
            *static_cast<double *>(member) = std::get<double>(value);
        else if (column.kind == ColumnKind::Text)
            static_cast<BoundedText *>(member)->Assign(std::get<std::string>(value));
        else
            *static_cast<long *>(member) = std::get<long>(value);
    }
    return true;
}

void MasterRecords::Keep(SACommand *query, const TableDescription &table, void *record)
{
    std::string question = QuestionOf(query);
    if (question.empty()) return;
    std::vector<Value> values;
    values.reserve(table.Columns().size());
    for (const ColumnDescription &column : table.Columns()) {
        void *member = column.member(record);
        switch (column.kind) {
        case ColumnKind::Long:
        case ColumnKind::Date:
            values.emplace_back(*static_cast<long *>(member));
            break;
        case ColumnKind::Double:
            values.emplace_back(*static_cast<double *>(member));
            break;
        case ColumnKind::Text:
            values.emplace_back(static_cast<BoundedText *>(member)->str());
            break;
        case ColumnKind::Moment:
        case ColumnKind::Bytes:
            return; // no such column in these tables
        }
    }
    if (answers_.size() >= kAnswersMax) answers_.clear();
    answers_.insert_or_assign(std::move(question), std::move(values));
}
