#pragma once

#include "tarvodlg/print/SelectionFormula.h"

#include <variant>

/// A side of a comparison: a column, a parameter or a value written in the formula.
using FormulaOperand = std::variant<SelectionFormula::Column, SelectionFormula::Parameter, ReportValue>;

enum class FormulaComparison { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };

/// A condition. Chains of AND and OR are one node with many children, so only parentheses and NOT make the tree deep.
struct SelectionFormula::Node {
    enum class Kind { And, Or, Not, Compare, Between };

    Kind kind = Kind::Compare;
    FormulaComparison comparison = FormulaComparison::Equal; ///< of Compare
    std::vector<FormulaOperand> operands;                    ///< two of Compare; value, first and last of Between
    std::vector<Node> children;                              ///< of And, Or (two and more) and Not (one)
};
