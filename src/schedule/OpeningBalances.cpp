#include "schedule/OpeningBalances.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvolumera/FiscalCodes.h"
#include "tarvolumera/Protocols.h"
#include "tarvolumera/Schedule.h"

#include <fmt/format.h>
#include <fmt/printf.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>

namespace {

constexpr const char *kDescription = "SALDO INIZIALE";
constexpr double kAmountMax = 1e11; ///< below it the log's and the reports' columns hold the amount

// --- who it is -------------------------------------------------------------------------------------------------------

/// How the counterparts of a side are looked up. On ties the highest code, which is the record made last, comes first.
struct SideQueries {
    const char *by_vat_number, *by_fiscal_code, *by_name, *by_code, *code_column, *word;
};

constexpr SideQueries kCustomers = {
    "SELECT * FROM admin.clienti1 WHERE cli_piva = :piva ORDER BY cli_piva, cli_codice DESC",
    "SELECT * FROM admin.clienti1 WHERE cli_codfis = :piva ORDER BY cli_piva, cli_codice DESC",
    "SELECT * FROM admin.clienti1 WHERE cli_desc = :piva ORDER BY cli_desc, cli_codice DESC",
    "SELECT * FROM admin.clienti1 WHERE cli_codice = :codice",
    "cli_codice",
    "cliente"};
constexpr SideQueries kSuppliers = {
    "SELECT * FROM admin.fornito1 WHERE for_piva = :piva ORDER BY for_piva, for_codice DESC",
    "SELECT * FROM admin.fornito1 WHERE for_codfis = :piva ORDER BY for_codfis, for_codice DESC",
    "SELECT * FROM admin.fornito1 WHERE for_desc = :piva ORDER BY for_desc, for_codice DESC",
    "SELECT * FROM admin.fornito1 WHERE for_codice = :codice",
    "for_codice",
    "fornitore"};

const SideQueries &QueriesOf(short side)
{
    return side == kCustomer ? kCustomers : kSuppliers;
}

/// The spellings under which a VAT number or fiscal code may be stored, the one of the sheet first. A number cell has
/// lost the zeros in front; a foreign number may bring its country, which is stored apart.
std::vector<std::string> SpellingsOf(const std::string &text)
{
    std::vector<std::string> spellings;
    const auto add = [&](std::string spelling) {
        if (!spelling.empty() && std::find(spellings.begin(), spellings.end(), spelling) == spellings.end())
            spellings.push_back(std::move(spelling));
    };
    constexpr std::size_t kDigits = 11, kCountry = 2;
    const std::string code = NormalisedFiscalCode(text);
    add(text);
    add(code);
    if (code.size() < kDigits && code.find_first_not_of("0123456789") == std::string::npos && !code.empty())
        add(std::string(kDigits - code.size(), '0') + code);
    const auto is_letter = [](char c) { return c >= 'A' && c <= 'Z'; };
    if (code.size() > kCountry && is_letter(code[0]) && is_letter(code[1]) && !is_letter(code[2]))
        add(code.substr(kCountry));
    return spellings;
}

/// The code of the first record of a query; 0 when there is none.
long FirstCode(SACommand *cmd, const char *sql, const std::string &value, const char *code_column)
{
    SACommand query(cmd->Connection(), sql);
    query.Param("piva").setAsString(value);
    query.Execute();
    return query.FetchNext() ? query.Field(code_column).asLong() : 0;
}

long FindByCode(SACommand *cmd, const SideQueries &queries, const std::string &text)
{
    const std::optional<double> code = ParseDecimal(text);
    if (!code || *code < 1 || *code > 2147483647 || *code != static_cast<double>(static_cast<long>(*code))) return 0;
    SACommand query(cmd->Connection(), queries.by_code);
    query.Param("codice").setAsLong(static_cast<long>(*code));
    query.Execute();
    return query.FetchNext() ? query.Field(queries.code_column).asLong() : 0;
}

/// @return 0 when nobody is found
long FindCounterpart(SACommand *cmd, const SideQueries &queries, const OpeningBalanceRow &row)
{
    for (const std::string &spelling : SpellingsOf(row.vat_number))
        if (const long code = FirstCode(cmd, queries.by_vat_number, spelling, queries.code_column)) return code;
    for (const std::string &spelling : SpellingsOf(row.fiscal_code))
        if (const long code = FirstCode(cmd, queries.by_fiscal_code, spelling, queries.code_column)) return code;
    if (!row.name.empty())
        if (const long code = FirstCode(cmd, queries.by_name, row.name, queries.code_column)) return code;
    // Codes mostly are those of the program that wrote the sheet: one must not lead to somebody else's account.
    const bool has_identity = !row.vat_number.empty() || !row.fiscal_code.empty() || !row.name.empty();
    return has_identity ? 0 : FindByCode(cmd, queries, row.code);
}

// --- what is there already -------------------------------------------------------------------------------------------

/// What makes two balances the same.
struct BalanceKey {
    short side;
    long counterpart, day;
    long long cents;
    auto operator<=>(const BalanceKey &) const = default;
};

/// The numbers of the instalments that are this balance, whatever became of them since.
std::vector<long> StoredBalances(SACommand *cmd, const BalanceKey &key)
{
    SACommand query(cmd->Connection(), "SELECT sca_num, sca_importo FROM admin.scadenze WHERE sca_relaz = :rel"
                                       " AND sca_cli_for = :codclf AND sca_data = :data AND sca_desc = :descr"
                                       " ORDER BY sca_num DESC");
    query.Param("rel").setAsLong(key.side);
    query.Param("codclf").setAsLong(key.counterpart);
    query.Param("data").setAsDateTime(ToSqlDate(key.day));
    query.Param("descr").setAsString(kDescription);
    query.Execute();
    std::vector<long> numbers;
    while (query.FetchNext())
        if (ToCents(query.Field("sca_importo").asDouble()) == key.cents)
            numbers.push_back(query.Field("sca_num").asLong());
    return numbers;
}

// --- the log ---------------------------------------------------------------------------------------------------------

/// Is opened before anything is stored, so that nothing is discarded without a trace. Goes away again unless it is
/// kept.
class DiscardLog {
  public:
    DiscardLog()
    {
        UserInterface &user = CurrentUserInterface();
        const long today = user.Today(), second = user.SecondOfDay();
        try {
            path_ =
                CompanyFolder("log") / fmt::sprintf("scadlog_%04d%02d%02d_%02d%02d%02d.txt", Year(today), Month(today),
                                                    Day(today), second / 3600, second / 60 % 60, second % 60);
        } catch (const std::filesystem::filesystem_error &error) {
            Fail(error.code().value());
        }
        file_ = std::fopen(path_.c_str(), "w+b");
        if (file_ == nullptr) Fail(errno);
    }
    ~DiscardLog()
    {
        if (file_ != nullptr) std::fclose(file_);
        std::error_code ignored;
        if (!is_kept_) std::filesystem::remove(path_, ignored);
    }
    DiscardLog(const DiscardLog &) = delete;
    DiscardLog &operator=(const DiscardLog &) = delete;

    void Write(const std::vector<DiscardedBalance> &discarded)
    {
        for (const DiscardedBalance &balance : discarded) {
            const OpeningBalanceRow &row = balance.row;
            const std::string line =
                fmt::sprintf(" Riga %05ld - %-10s - %10.2f - %-s\r\n", row.row, row.side, row.amount.value_or(0),
                             row.name.empty() ? balance.reason : row.name + ": " + balance.reason);
            if (std::fwrite(line.data(), 1, line.size(), file_) != line.size()) Fail(errno);
        }
        const int closed = std::fclose(file_);
        file_ = nullptr;
        if (closed != 0) Fail(errno);
    }
    const std::filesystem::path &Keep()
    {
        is_kept_ = true;
        return path_;
    }

  private:
    [[noreturn]] void Fail(int error) const
    {
        throw FileError(
            fmt::format("Impossibile aprire il file di log\n\n{}\n{}", path_.string(), SystemErrorText(error)));
    }

    std::filesystem::path path_;
    std::FILE *file_ = nullptr;
    bool is_kept_ = false;
};

// --- the run ---------------------------------------------------------------------------------------------------------

/// What can be said of a row without the archive; empty when it is in order.
std::string FaultOf(const OpeningBalanceRow &row)
{
    if (row.side.empty()) return "REL mancante";
    if (row.side != "CLIENTE" && row.side != "FORNITORE")
        return fmt::format("REL sconosciuta «{}»: deve essere CLIENTE o FORNITORE", row.side);
    if (row.amount_text.empty()) return "SALDO mancante";
    if (!row.amount) return fmt::format("SALDO «{}» non è un importo", row.amount_text);
    if (TestIfZero(*row.amount)) return "SALDO a zero";
    if (!(std::abs(*row.amount) < kAmountMax)) return fmt::format("SALDO «{}» troppo grande", row.amount_text);
    if (row.day_text.empty()) return "DATA mancante";
    if (!row.day) return fmt::format("DATA «{}» impossibile", row.day_text);
    return {};
}

/// Takes the rows one by one inside the transaction of its caller.
class BalanceTaker {
  public:
    BalanceTaker(SACommand *cmd, bool trial) : cmd_(cmd), trial_(trial)
    {
        for (const short side : {short{kCustomer}, short{kSupplier}})
            sqlsca.Blank(cmd_, &blanks_[static_cast<std::size_t>(side)], side);
    }

    void Take(const OpeningBalanceRow &row)
    {
        const std::string reason = TryToTake(row);
        if (!reason.empty()) outcome_.discarded.push_back({row, reason});
    }

    OpeningBalancesOutcome Outcome()
    {
        outcome_.customers = FromCents(cents_[kCustomer]);
        outcome_.suppliers = FromCents(cents_[kSupplier]);
        return std::move(outcome_);
    }

  private:
    /// @return why the row is not taken; empty when it is
    std::string TryToTake(const OpeningBalanceRow &row)
    {
        if (std::string fault = FaultOf(row); !fault.empty()) return fault;
        const short side = row.side == "CLIENTE" ? kCustomer : kSupplier;
        const SideQueries &queries = QueriesOf(side);
        const long counterpart = FindCounterpart(cmd_, queries, row);
        if (counterpart == 0)
            return fmt::format("{} non trovato per partita IVA, codice fiscale o ragione sociale", queries.word);

        const BalanceKey key{side, counterpart, *row.day, ToCents(*row.amount)};
        const auto [there, is_new] = there_.try_emplace(key);
        if (is_new) there->second = StoredBalances(cmd_, key);
        if (!there->second.empty()) { // each of those there stands for one row of the sheet
            const long number = there->second.back();
            there->second.pop_back();
            return fmt::format("già importata: è la scadenza n. {}", number);
        }
        if (!trial_) Store(key);
        cents_[static_cast<std::size_t>(side)] += key.cents;
        ++outcome_.stored;
        return {};
    }

    void Store(const BalanceKey &key)
    {
        SCADENZE record = blanks_[static_cast<std::size_t>(key.side)];
        record.sca_cli_for = key.counterpart;
        record.sca_data = key.day;
        record.sca_importo = FromCents(key.cents);
        record.sca_desc = kDescription;
        sqlsca.SqlTransaction(cmd_, kInsert, &record);
    }

    SACommand *cmd_;
    bool trial_;
    std::array<SCADENZE, 2> blanks_;
    std::array<long long, 2> cents_{};
    std::map<BalanceKey, std::vector<long>> there_; ///< stored before, and not met again yet
    OpeningBalancesOutcome outcome_;
};

} // namespace

OpeningBalancesOutcome ImportOpeningBalances(SACommand *cmd, const std::filesystem::path &workbook, bool trial)
{
    CTarvoProgressDlg progress("Importazione Scadenze");
    progress.SetStatus("Importazione Scadenze in corso...");
    const std::vector<OpeningBalanceRow> rows = ReadOpeningBalances(workbook);
    progress.SetRange(0, static_cast<long>(rows.size()));

    std::optional<DiscardLog> log;
    if (!trial) log.emplace();
    CommandScope scope(cmd);
    SATransaction transaction(scope.get(), trial ? SATransactionKind::Read : SATransactionKind::Write);
    if (!trial) LockNumbers(scope.get(), NumberSeries::Schedule);
    BalanceTaker taker(scope.get(), trial);
    for (const OpeningBalanceRow &row : rows) {
        taker.Take(row);
        progress.StepIt();
    }
    OpeningBalancesOutcome outcome = taker.Outcome();
    if (log) log->Write(outcome.discarded);
    transaction.Commit();
    if (log && !outcome.discarded.empty()) outcome.log = log->Keep();
    return outcome;
}
