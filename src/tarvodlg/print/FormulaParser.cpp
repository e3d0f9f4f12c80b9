#include "tarvodlg/print/FormulaParser.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/print/FormulaLexer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fmt/format.h>
#include <limits>
#include <utility>

namespace {

using Node = SelectionFormula::Node;
using Kind = FormulaTokenKind;

constexpr std::size_t kBytesMax = 65'536;
/// Parentheses and NOTs one inside the other. SQLite's parser has room for 100 things begun and not finished, up to
/// three for each of them, and the query around the condition needs some too.
constexpr int kDepthMax = 20;
/// SQLite refuses conditions deeper than 1000, and a chain of ANDs is as deep as it is long.
constexpr int kComparisonsMax = 400;

class Parser {
  public:
    Parser(std::string_view text, std::string_view name) : name_(name), lexer_(text, name) { Advance(); }

    Node Whole()
    {
        Node node = Chain(Node::Kind::Or);
        if (token_.kind != Kind::End) Expected("atteso \"and\" o \"or\"");
        return node;
    }

  private:
    /// Conditions joined by OR, each of them one of conditions joined by AND.
    Node Chain(Node::Kind kind);
    Node Negated();
    Node Parenthesised();
    Node Comparison();
    FormulaOperand Operand(const char *expected);
    ReportValue Number(bool negative);
    ReportDate Date();
    long long DatePart();

    bool Accept(std::string_view symbol_or_word);
    void Require(std::string_view symbol_or_word, const char *expected);
    void Advance();
    void Descend();
    [[noreturn]] void Expected(const std::string &what) const;
    [[noreturn]] void Fail(std::size_t position, const std::string &what) const { FailFormula(name_, position, what); }

    std::string_view name_;
    FormulaLexer lexer_;
    FormulaToken token_, previous_;
    int depth_ = 0, comparisons_ = 0;
};

void Parser::Advance()
{
    previous_ = std::move(token_);
    token_ = lexer_.Next();
}

bool Parser::Accept(std::string_view symbol_or_word)
{
    if (!token_.IsSymbol(symbol_or_word) && !token_.IsWord(symbol_or_word)) return false;
    Advance();
    return true;
}

void Parser::Require(std::string_view symbol_or_word, const char *expected)
{
    if (!Accept(symbol_or_word)) Expected(expected);
}

void Parser::Expected(const std::string &what) const
{
    std::string message = what;
    if (previous_.kind != Kind::End) message += " dopo " + previous_.Described();
    if (token_.kind != Kind::End) message += ", trovato " + token_.Described();
    Fail(token_.position, message);
}

void Parser::Descend()
{
    if (++depth_ > kDepthMax)
        Fail(token_.position, fmt::format("più di {} parentesi o \"not\" una dentro l'altra", kDepthMax));
}

Node Parser::Chain(Node::Kind kind)
{
    const bool is_or = kind == Node::Kind::Or;
    const auto link = [&] { return is_or ? Chain(Node::Kind::And) : Negated(); };
    Node first = link();
    if (!token_.IsWord(is_or ? "or" : "and")) return first;
    Node node;
    node.kind = kind;
    node.children.push_back(std::move(first));
    while (Accept(is_or ? "or" : "and")) node.children.push_back(link());
    return node;
}

Node Parser::Negated()
{
    if (token_.IsSymbol("(")) return Parenthesised();
    if (!token_.IsWord("not")) return Comparison();
    Descend();
    Advance();
    Node node;
    node.kind = Node::Kind::Not;
    node.children.push_back(Negated());
    --depth_;
    return node;
}

Node Parser::Parenthesised()
{
    Descend();
    Advance();
    Node node = Chain(Node::Kind::Or);
    Require(")", "atteso \"and\", \"or\" o \")\"");
    --depth_;
    return node;
}

Node Parser::Comparison()
{
    static constexpr std::array<std::pair<std::string_view, FormulaComparison>, 6> kSigns = {
        {{"=", FormulaComparison::Equal},
         {"<>", FormulaComparison::NotEqual},
         {"<", FormulaComparison::Less},
         {"<=", FormulaComparison::LessOrEqual},
         {">", FormulaComparison::Greater},
         {">=", FormulaComparison::GreaterOrEqual}}};

    if (++comparisons_ > kComparisonsMax) Fail(token_.position, fmt::format("più di {} confronti", kComparisonsMax));
    Node node;
    node.operands.push_back(Operand("attesa una condizione"));
    if (Accept("in")) {
        node.kind = Node::Kind::Between;
        node.operands.push_back(Operand("atteso un valore"));
        Require("to", "atteso \"to\"");
        node.operands.push_back(Operand("atteso un valore"));
        return node;
    }
    const auto sign =
        std::find_if(kSigns.begin(), kSigns.end(), [this](const auto &known) { return token_.IsSymbol(known.first); });
    if (sign == kSigns.end()) Expected("atteso un confronto (=, <>, <, >, <=, >=, in)");
    Advance();
    node.comparison = sign->second;
    node.operands.push_back(Operand("atteso un valore"));
    return node;
}

FormulaOperand Parser::Operand(const char *expected)
{
    switch (token_.kind) {
    case Kind::Column: {
        const std::size_t dot = token_.value.find('.');
        const SelectionFormula::Column column{token_.value.substr(0, dot), token_.value.substr(dot + 1),
                                              token_.position};
        Advance();
        return column;
    }
    case Kind::Parameter: {
        const SelectionFormula::Parameter parameter{token_.value, token_.position};
        Advance();
        return parameter;
    }
    case Kind::Text: {
        ReportValue text = token_.value;
        Advance();
        return text;
    }
    case Kind::Number:
        return Number(false);
    default:
        break;
    }
    if (Accept("-")) {
        if (token_.kind != Kind::Number) Expected("atteso un numero");
        return Number(true);
    }
    if (token_.IsWord("date")) return ReportValue(Date());
    Expected(expected);
}

ReportValue Parser::Number(bool negative)
{
    const std::string text = (negative ? "-" : "") + std::string(token_.text);
    const char *end = text.data() + text.size();
    const auto read = [&](auto value) -> ReportValue {
        if (std::from_chars(text.data(), end, value).ec != std::errc()) Fail(token_.position, "numero troppo grande");
        Advance();
        return value;
    };
    if (text.find('.') == std::string::npos) return read(0LL);
    return read(0.0);
}

ReportDate Parser::Date()
{
    const std::size_t position = token_.position;
    Advance();
    Require("(", "attesa \"(\"");
    const long long year = DatePart();
    Require(",", "attesa \",\"");
    const long long month = DatePart();
    Require(",", "attesa \",\"");
    const long long day = DatePart();
    Require(")", "attesa \")\"");
    if (year == 0 && month == 0 && day == 0)
        Fail(position, "Date(0,0,0) vuol dire nessuna data, che non si può confrontare");
    const auto fits = [](long long part) { return part <= std::numeric_limits<int>::max(); };
    const bool all_fit = fits(year) && fits(month) && fits(day);
    const ReportDate date{all_fit ? DateToJulian(static_cast<int>(day), static_cast<int>(month), static_cast<int>(year))
                                  : 0};
    if (date.day == 0) Fail(position, fmt::format("la data Date({},{},{}) non esiste", year, month, day));
    return date;
}

long long Parser::DatePart()
{
    if (token_.kind != Kind::Number) Expected("atteso un numero intero");
    const FormulaToken token = token_;
    const ReportValue value = Number(false);
    if (const long long *whole = std::get_if<long long>(&value)) return *whole;
    Fail(token.position, "atteso un numero intero, trovato " + token.Described());
}

} // namespace

SelectionFormula::Node ParseFormula(std::string_view text, std::string_view name)
{
    if (text.size() > kBytesMax) FailFormula(name, 1, fmt::format("formula più lunga di {} byte", kBytesMax));
    return Parser(text, name).Whole();
}
