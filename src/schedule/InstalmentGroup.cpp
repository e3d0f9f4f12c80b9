#include "schedule/InstalmentGroup.h"

#include "tarvodlg/base/Numbers.h"

#include <cstdlib>

#include <fmt/format.h>

namespace {

std::string ConditionOf(const SCADENZE &member)
{
    if (member.sca_pno != 0) return "sca_pno = :pno";
    if (member.sca_fattura.empty() || member.sca_data_fattura == 0 || member.sca_rate == 0)
        return "sca_relaz = :rel AND sca_num = :num"; // nothing says what it belongs to
    return "sca_pno IS NULL AND sca_relaz = :rel AND sca_cli_for = :codclf AND sca_fattura = :numdoc"
           " AND sca_data_fattura = :datadoc AND sca_rate = :rate";
}

std::string Marks(const std::string &is_last)
{
    return fmt::format("sca_ultima = CASE WHEN {0} THEN 1 ELSE 0 END, sca_non_ultima = CASE WHEN {0} THEN 0 ELSE 1 END",
                       is_last);
}

} // namespace

void MarkByCount(SCADENZE *record)
{
    record->sca_ultima = record->sca_rate > 0 && record->sca_rata == record->sca_rate ? 1 : 0;
    record->sca_non_ultima = 1 - record->sca_ultima;
}

InstalmentGroup::InstalmentGroup(const SCADENZE &member) : member_(member), condition_(ConditionOf(member)) {}

void InstalmentGroup::Update(SACommand *cmd, const std::string &assignments) const
{
    SACommand update(cmd->Connection(), "UPDATE admin.scadenze SET " + assignments + " WHERE " + condition_);
    const bool of_entry = member_.sca_pno != 0, of_invoice = condition_.find(":numdoc") != std::string::npos;
    if (of_entry) {
        update.Param("pno").setAsLong(member_.sca_pno);
    } else {
        update.Param("rel").setAsLong(member_.sca_relaz);
        if (of_invoice) {
            update.Param("codclf").setAsLong(member_.sca_cli_for);
            update.Param("numdoc").setAsString(member_.sca_fattura);
            update.Param("datadoc").setAsDateTime(ToSqlDate(member_.sca_data_fattura));
            update.Param("rate").setAsLong(member_.sca_rate);
        } else {
            update.Param("num").setAsLong(member_.sca_num);
        }
    }
    if (assignments.find(":rata") != std::string::npos) update.Param("rata").setAsLong(member_.sca_rata);
    update.Execute();
}

void InstalmentGroup::CountAnew(SACommand *cmd, int step) const
{
    const std::string one = step > 0 ? " + 1" : " - 1";
    const std::string rata = "CASE WHEN sca_rata > :rata THEN sca_rata" + one + " ELSE sca_rata END";
    std::string assignments =
        "sca_rate = CASE WHEN sca_rate > 0 THEN sca_rate" + one + " ELSE 0 END, sca_rata = " + rata;
    if (member_.sca_pno == 0) assignments += ", " + Marks("sca_rate" + one + " = " + rata);
    Update(cmd, assignments);
}

void InstalmentGroup::MarkLast(SACommand *cmd) const
{
    if (member_.sca_pno == 0) return;
    Update(cmd, Marks("sca_data = (SELECT MAX(tutte.sca_data) FROM admin.scadenze AS tutte"
                      " WHERE tutte.sca_pno = :pno)"));
}

std::string InstalmentGroup::Imbalance(SACommand *cmd) const
{
    if (member_.sca_pno == 0) return {};
    SACommand query(cmd->Connection(), "SELECT sca_importo FROM admin.scadenze WHERE sca_pno = :pno");
    query.Param("pno").setAsLong(member_.sca_pno);
    query.Execute();
    long long sum = 0;
    while (query.FetchNext()) sum += ToCents(query.Field(1).asDouble());
    if (std::llabs(sum) == std::llabs(ToCents(member_.sca_tot_fat))) return {};
    return fmt::format("Le scadenze del movimento n. {} sommano {}, il documento è di {}.", member_.sca_pno,
                       FormatAmount(FromCents(sum)), FormatAmount(member_.sca_tot_fat));
}
