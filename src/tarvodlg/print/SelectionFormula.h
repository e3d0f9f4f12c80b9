#pragma once

#include "tarvodlg/print/ReportError.h"
#include "tarvodlg/print/ReportValue.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// A selection formula, as the callers of reports write it:
///
///     {pnota.pno_codice} in 1 to 99 AND {pnota.pno_data} in Date(2026,1,1) to Date (2026,3,31) AND
///     ({scadenze.sca_pagato} = 0 or not ({clienti.cli_desc} = "O'Neil"))
///
/// Operands are {table.column}, {?parameter}, numbers, texts in double or single quotes (a doubled quote stands for
/// itself), Date(y,m,d); operators = <> < > <= >=, "in A to B" (both included), AND, OR, NOT, parentheses. Keywords in
/// any case. At most 400 comparisons, and 20 parentheses or NOTs one inside the other: as much as both engines take. It
/// becomes a condition with bound values, or is worked out over the values of a row; a text never becomes SQL.
class SelectionFormula {
  public:
    /// An empty formula selects everything.
    SelectionFormula();
    /// @param name  what messages call it, as "Formula di selezione"
    /// @throws ReportError naming the character where it cannot be understood
    static SelectionFormula Parse(std::string_view text, std::string_view name = "Formula di selezione");
    ~SelectionFormula();
    SelectionFormula(const SelectionFormula &);
    SelectionFormula &operator=(const SelectionFormula &);
    SelectionFormula(SelectionFormula &&) noexcept;
    SelectionFormula &operator=(SelectionFormula &&) noexcept;

    struct Column {
        std::string table, column; ///< lower case; letters, digits and '_' only
        std::size_t position;      ///< character in the formula, from 1
    };
    /// Every column named, in order, for checking them against the layout's tables.
    std::vector<Column> Columns() const;

    struct Parameter {
        std::string name; ///< as written: letters, digits and '_' only
        std::size_t position;
    };
    /// Every {?parameter}, in order.
    std::vector<Parameter> Parameters() const;

    /// The condition in SQL, without WHERE; "1 = 1" for the empty formula. Values become parameters named
    /// ":" + prefix + number. It stands in parentheses where an AND, OR or NOT before or behind it could tear it apart.
    struct Sql {
        std::string condition;
        /// Name without the colon, value; a date 0 comes as NULL.
        std::vector<std::pair<std::string, ReportValue>> parameters;
    };
    /// @param parameter  gives the value of {?name}; throws ReportError when there is none
    Sql ToSql(std::string_view prefix, const std::function<ReportValue(std::string_view name)> &parameter) const;

    /// True when the formula holds for the values. NULL and the date 0 compare as in SQL: neither true nor false, and
    /// NOT makes them no better. Texts compare by code point; a number or a date against a text compares as text (a
    /// date as "2026-12-31"), a date against a number is unknown.
    bool Holds(const std::function<ReportValue(std::string_view table, std::string_view column)> &column,
               const std::function<ReportValue(std::string_view name)> &parameter) const;

    bool IsEmpty() const;

    struct Node; ///< inner form, known to the source files only

  private:
    std::shared_ptr<const Node> root_;
    std::string name_;
};

/// A text as a formula writes it: in double quotes, with its own doubled. Whatever a user typed stays one value.
std::string FormulaText(std::string_view text);
