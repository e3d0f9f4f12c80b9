#include "tarvodlg/print/SelectionFormula.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Text.h"
#include "tarvodlg/print/FormulaLexer.h"
#include "tarvodlg/print/FormulaParser.h"

#include <algorithm>
#include <array>
#include <compare>
#include <fmt/format.h>
#include <limits>
#include <optional>

namespace {

using Node = SelectionFormula::Node;
using ParameterFunction = std::function<ReportValue(std::string_view)>;

/// SQL's three values, in the order that makes AND the smallest and OR the largest.
enum class Truth { No, Unknown, Yes };

bool IsNumber(const ReportValue &value)
{
    return std::holds_alternative<long long>(value) || std::holds_alternative<double>(value);
}

/// Holds every long long and every double exactly.
long double AsNumber(const ReportValue &value)
{
    const long long *whole = std::get_if<long long>(&value);
    return whole != nullptr ? static_cast<long double>(*whole) : static_cast<long double>(std::get<double>(value));
}

std::string AsText(const ReportValue &value)
{
    if (const auto *whole = std::get_if<long long>(&value)) return fmt::format("{}", *whole);
    if (const auto *number = std::get_if<double>(&value)) return fmt::format("{}", *number);
    if (const auto *date = std::get_if<ReportDate>(&value)) return FormatIsoDate(date->day);
    return std::get<std::string>(value);
}

/// An empty date is SQL's NULL.
ReportValue WithoutEmptyDate(ReportValue value)
{
    const auto *date = std::get_if<ReportDate>(&value);
    return date != nullptr && date->day == 0 ? ReportValue() : value;
}

/// Unordered where SQL would answer NULL.
std::partial_ordering Order(const ReportValue &a, const ReportValue &b)
{
    const auto is_null = [](const ReportValue &value) { return std::holds_alternative<std::monostate>(value); };
    if (is_null(a) || is_null(b)) return std::partial_ordering::unordered;
    if (IsNumber(a) && IsNumber(b)) return AsNumber(a) <=> AsNumber(b);
    const auto *first_day = std::get_if<ReportDate>(&a), *second_day = std::get_if<ReportDate>(&b);
    if (first_day != nullptr && second_day != nullptr) return *first_day <=> *second_day;
    const bool has_text = std::holds_alternative<std::string>(a) || std::holds_alternative<std::string>(b);
    if (!has_text) return std::partial_ordering::unordered;
    return AsText(a) <=> AsText(b); // bytes of UTF-8 stand in the order of the code points
}

Truth Compare(FormulaComparison comparison, const ReportValue &a, const ReportValue &b)
{
    const std::partial_ordering order = Order(a, b);
    if (order == std::partial_ordering::unordered) return Truth::Unknown;
    const auto answer = [](bool holds) { return holds ? Truth::Yes : Truth::No; };
    switch (comparison) {
    case FormulaComparison::Equal:
        return answer(order == 0);
    case FormulaComparison::NotEqual:
        return answer(order != 0);
    case FormulaComparison::Less:
        return answer(order < 0);
    case FormulaComparison::LessOrEqual:
        return answer(order <= 0);
    case FormulaComparison::Greater:
        return answer(order > 0);
    case FormulaComparison::GreaterOrEqual:
        break;
    }
    return answer(order >= 0);
}

/// Writes the condition and gathers the values.
class SqlWriter {
  public:
    SqlWriter(std::string_view prefix, std::function<ReportValue(const SelectionFormula::Parameter &)> parameter)
        : prefix_(prefix), parameter_(std::move(parameter))
    {
    }

    std::string Condition(const Node &node)
    {
        switch (node.kind) {
        case Node::Kind::And:
            return Joined(node, " AND ");
        case Node::Kind::Or:
            return Joined(node, " OR ");
        case Node::Kind::Not: {
            const Node &child = node.children.front();
            const bool stands_alone = child.kind != Node::Kind::Compare && child.kind != Node::Kind::Between;
            const std::string inner = Condition(child);
            return stands_alone ? "(NOT " + inner + ")" : "(NOT (" + inner + "))";
        }
        case Node::Kind::Compare:
            return Comparison(node.comparison, node.operands[0], node.operands[1]);
        case Node::Kind::Between:
            break;
        }
        return Range(node);
    }

    std::vector<std::pair<std::string, ReportValue>> parameters;

  private:
    std::string Joined(const Node &node, const char *word)
    {
        std::string joined = "(";
        for (std::size_t i = 0; i < node.children.size(); ++i) {
            if (i > 0) joined += word;
            joined += Condition(node.children[i]);
        }
        return joined + ")";
    }

    static bool IsColumn(const FormulaOperand &operand)
    {
        return std::holds_alternative<SelectionFormula::Column>(operand);
    }

    ReportValue ValueOf(const FormulaOperand &operand) const
    {
        if (const auto *parameter = std::get_if<SelectionFormula::Parameter>(&operand))
            return WithoutEmptyDate(parameter_(*parameter));
        return std::get<ReportValue>(operand);
    }

    std::string Comparison(FormulaComparison comparison, const FormulaOperand &a, const FormulaOperand &b)
    {
        // Two values are compared here: a server cannot tell of which kind two bound values are without a column.
        if (!IsColumn(a) && !IsColumn(b)) {
            static constexpr std::array<const char *, 3> kAnswers = {"1 = 0", "1 = NULL", "1 = 1"};
            return kAnswers[static_cast<std::size_t>(Compare(comparison, ValueOf(a), ValueOf(b)))];
        }
        static constexpr std::array<const char *, 6> kSigns = {" = ", " <> ", " < ", " <= ", " > ", " >= "};
        const std::string left = Operand(a);
        return left + kSigns[static_cast<std::size_t>(comparison)] + Operand(b);
    }

    std::string Range(const Node &node)
    {
        const FormulaOperand &value = node.operands[0], &first = node.operands[1], &last = node.operands[2];
        if (!IsColumn(value)) {
            const std::string from = Comparison(FormulaComparison::GreaterOrEqual, value, first);
            return "(" + from + " AND " + Comparison(FormulaComparison::LessOrEqual, value, last) + ")";
        }
        const std::string from = Operand(value) + " BETWEEN " + Operand(first);
        return from + " AND " + Operand(last);
    }

    std::string Operand(const FormulaOperand &operand)
    {
        if (const auto *column = std::get_if<SelectionFormula::Column>(&operand))
            return column->table + "." + column->column;
        return Bound(ValueOf(operand));
    }

    /// A server takes a bound value to be of the column's kind, and would refuse one that the kind cannot hold.
    std::string Bound(const ReportValue &value)
    {
        const std::string name = fmt::format("{}{}", prefix_, parameters.size() + 1);
        parameters.emplace_back(name, value);
        if (std::holds_alternative<double>(value)) return fmt::format("CAST(:{} AS DOUBLE PRECISION)", name);
        const long long *whole = std::get_if<long long>(&value);
        const bool is_long = whole != nullptr && (*whole < std::numeric_limits<std::int32_t>::min() ||
                                                  *whole > std::numeric_limits<std::int32_t>::max());
        return is_long ? fmt::format("CAST(:{} AS BIGINT)", name) : ":" + name;
    }

    std::string prefix_;
    std::function<ReportValue(const SelectionFormula::Parameter &)> parameter_;
};

/// Works a condition out over a row.
struct Evaluation {
    const std::function<ReportValue(std::string_view, std::string_view)> &column;
    std::function<ReportValue(const SelectionFormula::Parameter &)> parameter;

    ReportValue ValueOf(const FormulaOperand &operand) const
    {
        if (const auto *named = std::get_if<SelectionFormula::Column>(&operand))
            return WithoutEmptyDate(column(named->table, named->column));
        if (const auto *asked = std::get_if<SelectionFormula::Parameter>(&operand))
            return WithoutEmptyDate(parameter(*asked));
        return std::get<ReportValue>(operand);
    }

    Truth Of(const Node &node) const
    {
        switch (node.kind) {
        case Node::Kind::And: {
            Truth all = Truth::Yes;
            for (const Node &child : node.children)
                if (all != Truth::No) all = std::min(all, Of(child));
            return all;
        }
        case Node::Kind::Or: {
            Truth any = Truth::No;
            for (const Node &child : node.children)
                if (any != Truth::Yes) any = std::max(any, Of(child));
            return any;
        }
        case Node::Kind::Not:
            return static_cast<Truth>(static_cast<int>(Truth::Yes) - static_cast<int>(Of(node.children.front())));
        case Node::Kind::Compare:
            return Compare(node.comparison, ValueOf(node.operands[0]), ValueOf(node.operands[1]));
        case Node::Kind::Between:
            break;
        }
        const ReportValue value = ValueOf(node.operands[0]);
        return std::min(Compare(FormulaComparison::GreaterOrEqual, value, ValueOf(node.operands[1])),
                        Compare(FormulaComparison::LessOrEqual, value, ValueOf(node.operands[2])));
    }
};

/// All operands of one kind, in the order of the formula.
template <class Wanted>
void Gather(const Node &node, std::vector<Wanted> &found)
{
    for (const FormulaOperand &operand : node.operands)
        if (const auto *wanted = std::get_if<Wanted>(&operand)) found.push_back(*wanted);
    for (const Node &child : node.children) Gather(child, found);
}

/// The caller's values of parameters; without a caller for them a formula cannot ask for any.
std::function<ReportValue(const SelectionFormula::Parameter &)> Asking(const ParameterFunction &parameter,
                                                                       const std::string &name)
{
    return [&parameter, &name](const SelectionFormula::Parameter &asked) {
        if (!parameter) FailFormula(name, asked.position, "parametro sconosciuto {?" + asked.name + "}");
        return parameter(asked.name);
    };
}

} // namespace

SelectionFormula::SelectionFormula() = default;
SelectionFormula::~SelectionFormula() = default;
SelectionFormula::SelectionFormula(const SelectionFormula &) = default;
SelectionFormula &SelectionFormula::operator=(const SelectionFormula &) = default;
SelectionFormula::SelectionFormula(SelectionFormula &&) noexcept = default;
SelectionFormula &SelectionFormula::operator=(SelectionFormula &&) noexcept = default;

SelectionFormula SelectionFormula::Parse(std::string_view text, std::string_view name)
{
    SelectionFormula formula;
    formula.name_ = name;
    if (!Trimmed(text).empty()) formula.root_ = std::make_shared<const Node>(ParseFormula(text, name));
    return formula;
}

std::vector<SelectionFormula::Column> SelectionFormula::Columns() const
{
    std::vector<Column> columns;
    if (root_) Gather(*root_, columns);
    return columns;
}

std::vector<SelectionFormula::Parameter> SelectionFormula::Parameters() const
{
    std::vector<Parameter> parameters;
    if (root_) Gather(*root_, parameters);
    return parameters;
}

SelectionFormula::Sql SelectionFormula::ToSql(std::string_view prefix, const ParameterFunction &parameter) const
{
    if (!root_) return {"1 = 1", {}};
    SqlWriter writer(prefix, Asking(parameter, name_));
    Sql sql;
    sql.condition = writer.Condition(*root_);
    sql.parameters = std::move(writer.parameters);
    return sql;
}

bool SelectionFormula::Holds(const std::function<ReportValue(std::string_view table, std::string_view column)> &column,
                             const ParameterFunction &parameter) const
{
    return !root_ || Evaluation{column, Asking(parameter, name_)}.Of(*root_) == Truth::Yes;
}

bool SelectionFormula::IsEmpty() const
{
    return !root_;
}

std::string FormulaText(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') quoted += c;
        quoted += c;
    }
    return quoted + "\"";
}
