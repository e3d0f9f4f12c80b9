#pragma once

#include "tarvodlg/sheets/Sheet.h"

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// A sheet that is no list of opening balances; the text is Italian.
class OpeningBalancesError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// One row of the sheet. Texts are on one line and cut to what they are compared with.
struct OpeningBalanceRow {
    long row = 0;                        ///< in the sheet, from 1
    std::string side;                    ///< REL in capitals
    std::string code, name;              ///< CODICE, RAG_SOCIALE
    std::string vat_number, fiscal_code; ///< PIVA, CODFIS as they stand
    std::string amount_text, day_text;   ///< SALDO and DATA as they stand, for the log
    std::optional<double> amount;        ///< rounded to cents; nothing when it is no amount
    std::optional<long> day;             ///< day number; nothing when it is no date
};

/// Reads the first sheet of a workbook. Its first row that is not empty names the columns REL, CODICE, RAG_SOCIALE,
/// PIVA, CODFIS, SALDO and DATA in any order; other columns are left aside, and so are rows without any of these.
/// @throws FileError when the workbook cannot be read; OpeningBalancesError when a column is missing
std::vector<OpeningBalanceRow> ReadOpeningBalances(const std::filesystem::path &workbook);

/// What a person reads in the cell; a number without a needless ".0", a date as "31/12/2025".
std::string TextOfCell(const SheetCell &cell);

/// An amount, stored as a number or as text: "1.234,56", "1234.56", "€ 10,00", "10,00-", "(10,00)", "EUR 10".
std::optional<double> AmountOfCell(const SheetCell &cell);

/// A day, stored as a date or as text: "31/12/2025", "2025-12-31", "31-12-25", "20251231", with an hour behind it or
/// not. Years of two digits are those from 1980 to 2079. Nothing before 1970 or after 2199, where no balance is due.
std::optional<long> DayOfCell(const SheetCell &cell);
