#include "tarvodlg/print/ReportQuery.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Text.h"

#include <utility>

#include <fmt/format.h>

namespace {

constexpr const char *kSelectionPrefix = "selezione_";
constexpr const char *kCursor = "lumera_stampa";
constexpr int kPortion = 500;
constexpr std::size_t kReasonMax = 300; ///< characters of an engine's message, which may repeat the query

SADateTime CalendarDate(long day)
{
    return day == 0 ? SADateTime() : SADateTime(Year(day), Month(day), Day(day));
}

struct ValueBinder {
    SAParam *parameter;
    void operator()(std::monostate) const { parameter->setAsNull(); }
    void operator()(long long number) const { parameter->setAsInt64(number); }
    void operator()(double number) const { parameter->setAsDouble(number); }
    void operator()(const std::string &text) const { parameter->setAsString(text); }
    void operator()(ReportDate date) const { parameter->setAsDateTime(CalendarDate(date.day)); }
};

/// The query itself is wrong, as against an archive that is busy or gone: who wrote the layout has to mend it.
bool IsFaultOfText(const SAException &error)
{
    const bool is_of_text = error.Fault() == SAFault::Other || error.Fault() == SAFault::RelationNotFound;
    return is_of_text && error.ErrClass() == SA_DBMS_API_Error;
}

ReportValue ParameterValue(const ReportLayout &layout, const ReportValues &parameters, std::string_view name)
{
    for (const auto &[own, value] : parameters)
        if (EqualsIgnoreCase(own, name)) return value;
    throw ReportError(fmt::format("{}: la stampa non ha il parametro \"{}\"", layout.file, name));
}

} // namespace

void BindValue(SAParam *parameter, const ReportValue &value)
{
    std::visit(ValueBinder{parameter}, value);
}

ReportQuery::ReportQuery(SAConnection *connection, const ReportLayout &layout, const std::string &selection,
                         const std::map<std::string, std::string> &tables, Rows rows)
    : layout_(layout), formula_(SelectionFormula::Parse(selection)),
      in_portions_(rows == Rows::Portions && connection->Engine() == SAEngine::PostgreSQL), command_(connection, ""),
      fetch_(connection, "")
{
    for (const ReportTable &table : layout.tables) {
        const auto replaced = tables.find(table.name);
        const std::string &real = replaced == tables.end() ? table.from : replaced->second;
        if (!IsRealTableName(real))
            throw ReportError(
                fmt::format("{}: \"{}\" non è il nome di una tabella (per \"{}\")", layout.file, real, table.name));
        tables_[table.name] = real;
    }
    if (!formula_.IsEmpty() && layout.query.find("{selection}") == std::string::npos)
        throw ReportError(fmt::format("{}: la stampa non prevede una formula di selezione", layout.file));
    CheckFormula(connection);
}

ReportQuery::~ReportQuery()
{
    try {
        Close();
    } catch (const SAException &) {
        // The transaction has failed already, and takes its cursors with it.
    }
}

// The columns are read from the tables themselves: a failing query would end the transaction of the report, and its
// message would name the query instead of the formula.
void ReportQuery::CheckFormula(SAConnection *connection) const
{
    std::map<std::string, ReportColumns> known;
    for (const SelectionFormula::Column &used : formula_.Columns()) {
        const std::string where = fmt::format("Formula di selezione, carattere {}: ", used.position);
        const std::string &real = RealTable(used.table);
        if (real.empty()) throw ReportError(fmt::format("{}la stampa non ha la tabella \"{}\"", where, used.table));
        auto [entry, is_new] = known.try_emplace(used.table);
        if (is_new) {
            SACommand probe(connection, fmt::format("SELECT * FROM {} AS {} WHERE 1 = 0", real, used.table));
            probe.Execute();
            std::vector<std::string> names;
            for (int i = 1; i <= probe.FieldCount(); ++i) names.push_back(probe.Field(i).Name());
            entry->second.Assign(std::move(names));
        }
        if (entry->second.Find(used.column) == ReportColumns::kNone)
            throw ReportError(
                fmt::format("{}la tabella \"{}\" non ha la colonna \"{}\"", where, used.table, used.column));
    }
}

const std::string &ReportQuery::RealTable(std::string_view name) const
{
    static const std::string kNone;
    for (const auto &[own, real] : tables_)
        if (EqualsIgnoreCase(own, name)) return real;
    return kNone;
}

std::string ReportQuery::Text(const std::string &condition) const
{
    std::string text;
    const std::string_view query = layout_.query;
    std::size_t done = 0;
    for (std::size_t open = query.find('{'); open != std::string_view::npos; open = query.find('{', done)) {
        const std::size_t close = std::min(query.find('}', open), query.size());
        const std::string_view name = query.substr(open + 1, close - open - 1);
        text += query.substr(done, open - done);
        if (name == "selection")
            text += "(" + condition + ")";
        else if (const std::string &real = RealTable(name); !real.empty())
            text += fmt::format("{} AS {}", real, name);
        else
            throw ReportError(fmt::format("{}: l'interrogazione nomina {{{}}}, che non è una tabella della stampa",
                                          layout_.file, name));
        done = std::min(close + 1, query.size());
    }
    text += query.substr(done);
    return text;
}

void ReportQuery::Open(const ReportValues &parameters)
{
    Close();
    const SelectionFormula::Sql selection = formula_.ToSql(
        kSelectionPrefix, [&](std::string_view name) { return ParameterValue(layout_, parameters, name); });
    const std::string text = Text(selection.condition);
    command_.setCommandText(in_portions_ ? fmt::format("DECLARE {} NO SCROLL CURSOR FOR {}", kCursor, text) : text);
    Bind(parameters, selection);
    try {
        Execute();
    } catch (const SAException &error) {
        if (!IsFaultOfText(error)) throw;
        throw ReportError(fmt::format("{}: la query non si può eseguire: {}", layout_.Words(layout_.query_place),
                                      Utf8Prefix(OnOneLine(error.ErrText()), kReasonMax)));
    }
    ReadColumns();
}

void ReportQuery::Execute()
{
    command_.Execute();
    if (!in_portions_) return;
    is_cursor_open_ = true;
    fetch_.setCommandText(fmt::format("FETCH FORWARD {} FROM {}", kPortion, kCursor));
    fetch_.Execute();
}

void ReportQuery::Bind(const ReportValues &parameters, const SelectionFormula::Sql &selection)
{
    for (int i = 1; i <= command_.ParamCount(); ++i) {
        SAParam &parameter = command_.Param(i);
        const auto selected = std::find_if(selection.parameters.begin(), selection.parameters.end(),
                                           [&](const auto &one) { return one.first == parameter.Name(); });
        BindValue(&parameter, selected != selection.parameters.end()
                                  ? selected->second
                                  : ParameterValue(layout_, parameters, parameter.Name()));
    }
}

void ReportQuery::ReadColumns()
{
    SACommand &rows = in_portions_ ? fetch_ : command_;
    std::vector<std::string> names;
    for (int i = 1; i <= rows.FieldCount(); ++i) names.push_back(rows.Field(i).Name());
    columns_.Assign(std::move(names));
}

bool ReportQuery::Fetch(ReportRow *row)
{
    SACommand &rows = in_portions_ ? fetch_ : command_;
    bool there = rows.FetchNext();
    if (!there && in_portions_) {
        fetch_.Execute();
        there = fetch_.FetchNext();
    }
    if (!there) return false;
    row->Resize(columns_.Count());
    for (std::size_t i = 0; i < columns_.Count(); ++i) {
        const SAField &field = rows.Field(static_cast<int>(i) + 1);
        row->Set(i, field.isNull(), field.asStringView());
    }
    return true;
}

void ReportQuery::Close()
{
    command_.Close();
    fetch_.Close();
    if (!std::exchange(is_cursor_open_, false)) return;
    SACommand close(command_.Connection(), fmt::format("CLOSE {}", kCursor));
    close.Execute();
}

namespace {

const char *KindWords(ParameterType type)
{
    switch (type) {
    case ParameterType::String:
        return "un testo";
    case ParameterType::Long:
        return "un numero intero";
    case ParameterType::Double:
        return "un numero";
    case ParameterType::Date:
        return "una data";
    }
    return "";
}

bool IsOfType(const ReportValue &value, ParameterType type)
{
    switch (type) {
    case ParameterType::String:
        return std::holds_alternative<std::string>(value);
    case ParameterType::Long:
        return std::holds_alternative<long long>(value);
    case ParameterType::Double:
        return std::holds_alternative<double>(value);
    case ParameterType::Date:
        return std::holds_alternative<ReportDate>(value);
    }
    return false;
}

} // namespace

ReportValues CheckedParameters(const ReportLayout &layout, const ReportValues &given)
{
    const auto declared = [&](const std::string &name) {
        return std::any_of(layout.parameters.begin(), layout.parameters.end(),
                           [&](const ReportParameter &parameter) { return parameter.name == name; });
    };
    for (const auto &[name, value] : given)
        if (!declared(name))
            throw ReportError(fmt::format("{}: la stampa non ha il parametro \"{}\"", layout.file, name));
    ReportValues checked;
    for (const ReportParameter &parameter : layout.parameters) {
        const auto found = given.find(parameter.name);
        if (found == given.end())
            throw ReportError(fmt::format("{}: manca il parametro \"{}\"", layout.file, parameter.name));
        ReportValue value = found->second;
        if (parameter.type == ParameterType::Double && std::holds_alternative<long long>(value))
            value = static_cast<double>(std::get<long long>(value));
        if (!std::holds_alternative<std::monostate>(value) && !IsOfType(value, parameter.type))
            throw ReportError(fmt::format("{}: il parametro \"{}\" deve essere {}", layout.file, parameter.name,
                                          KindWords(parameter.type)));
        checked[parameter.name] = std::move(value);
    }
    return checked;
}
