#include "ledger/Renumbering.h"

#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/PSQLrow.h"
#include "tarvolumera/Protocols.h"

#include <algorithm>
#include <memory>
#include <unordered_map>

namespace {

/// A number that wants to change: where it is wanted to go, and who wants to come.
class Places {
  public:
    explicit Places(std::span<const long> numbers)
    {
        long target = 0;
        for (const long number : numbers) {
            spare_ = std::max(spare_, number + 1);
            if (number != ++target) comes_[target] = number;
        }
        spare_ = std::max(spare_, target + 1);
    }

    std::vector<NumberMove> Plan(std::span<const long> numbers)
    {
        std::vector<NumberMove> moves;
        moves.reserve(comes_.size() + 1);
        std::unordered_map<long, bool> taken;
        for (const long number : numbers) taken[number] = true;
        const auto last = static_cast<long>(numbers.size());
        for (long target = 1; target <= last; ++target)
            if (!taken.contains(target)) FillFrom(target, &moves);
        for (long target = 1; target <= last; ++target) // what is left turns in circles
            if (const auto source = comes_.find(target); source != comes_.end()) {
                moves.push_back({target, spare_});
                FillFrom(target, &moves);
                moves.back().from = spare_; // the last of the circle is the one that stepped aside
            }
        return moves;
    }

  private:
    /// Moves into a free number, then into the one that this sets free, and so on.
    void FillFrom(long free, std::vector<NumberMove> *moves)
    {
        for (auto source = comes_.find(free); source != comes_.end(); source = comes_.find(free)) {
            const long from = source->second;
            moves->push_back({from, free});
            comes_.erase(source);
            free = from;
        }
    }

    std::unordered_map<long, long> comes_; ///< target -> present number
    long spare_ = 1;
};

std::string Replaced(std::string text, const std::string &what, const std::string &with)
{
    const std::size_t at = text.find(what);
    return at == std::string::npos ? text : text.replace(at, what.size(), with);
}

/// The foreign keys are checked statement by statement, so an entry cannot just change its number: a copy takes the new
/// one, what refers to the entry goes over, and the old one is deleted.
class EntryMover {
  public:
    explicit EntryMover(SACommand *cmd)
    {
        const auto add = [&](const std::string &text) {
            statements_.push_back(std::make_unique<SACommand>(cmd->Connection(), text));
        };
        // Two entries cannot have one protocol even for a moment, so it comes last.
        add("INSERT INTO admin.pnota1 (" + sqlpno.ColumnList() + ") SELECT " +
            Replaced(Replaced(sqlpno.ColumnList(), "pno_codice", "CAST(:nuovo AS INTEGER)"), "pno_prot,",
                     "CAST(NULL AS INTEGER),") +
            " FROM admin.pnota1 WHERE pno_codice = :codice");
        add("INSERT INTO admin.pnotaro2 (" + sqlrow.ColumnList() + ") SELECT " +
            Replaced(sqlrow.ColumnList(), "row_codice", "CAST(:nuovo AS INTEGER)") +
            " FROM admin.pnotaro2 WHERE row_codice = :codice");
        for (const auto &[table, column] : {std::pair{"pnotacdc", "pcc_pno"},
                                            {"pnotacoi", "coi_pno"},
                                            {"pnotacor", "cor_pno"},
                                            {"pnotaall", "pat_pno"},
                                            {"pnotaim1", "pni_codice"},
                                            {"scadenze", "sca_pno"}})
            add(std::string("UPDATE admin.") + table + " SET " + column + " = :nuovo WHERE " + column + " = :codice");
        add("DELETE FROM admin.pnota1 WHERE pno_codice = :codice");
        add("UPDATE admin.pnota1 SET pno_prot = :prot WHERE pno_codice = :nuovo");
    }

    /// @param protocol  0 = the entry has none
    void Move(const NumberMove &move, long protocol)
    {
        for (const auto &statement : statements_) {
            for (int i = 1; i <= statement->ParamCount(); ++i) {
                SAParam &param = statement->Param(i);
                if (param.Name() == "prot") {
                    protocol == 0 ? param.setAsNull() : param.setAsLong(protocol);
                } else {
                    param.setAsLong(param.Name() == "nuovo" ? move.to : move.from);
                }
            }
            statement->Execute();
        }
    }

  private:
    std::vector<std::unique_ptr<SACommand>> statements_;
};

} // namespace

std::vector<NumberMove> PlanRenumbering(std::span<const long> numbers)
{
    return Places(numbers).Plan(numbers);
}

long RenumberEntries(SACommand *cmd, long *followed)
{
    CTarvoProgressDlg progress;
    CommandScope scope(cmd);
    SATransaction transaction(scope.get());
    LockNumbers(scope.get(), NumberSeries::Journal);
    std::vector<long> numbers;
    std::unordered_map<long, long> protocols;
    SACommand query(scope->Connection(), "SELECT pno_codice, pno_prot FROM admin.pnota1 ORDER BY pno_data, pno_codice");
    query.Execute();
    while (query.FetchNext()) {
        numbers.push_back(query.Field("pno_codice").asLong());
        protocols[numbers.back()] = query.Field("pno_prot").asLong();
    }
    query.Close();

    const std::vector<NumberMove> moves = PlanRenumbering(numbers);
    progress.SetRange(0, static_cast<long>(moves.size()));
    EntryMover mover(scope.get());
    for (const NumberMove &move : moves) {
        const long protocol = protocols[move.from];
        mover.Move(move, protocol);
        protocols[move.to] = protocol;
        progress.StepIt();
    }
    transaction.Commit();
    const auto open = followed ? std::find(numbers.begin(), numbers.end(), *followed) : numbers.end();
    if (open != numbers.end()) *followed = open - numbers.begin() + 1;
    return static_cast<long>(numbers.size()) -
           static_cast<long>(std::count_if(numbers.begin(), numbers.end(),
                                           [at = 0L](long number) mutable { return number == ++at; }));
}
