#include "desk/NewCompany.h"

#include "demo/DemoJournal.h"
#include "desk/Companies.h"
#include "desk/UserFolders.h"
#include "tarvolumera/FiscalCodes.h"
#include "tarvolumera/archive/ArchiveCreation.h"

#include <fmt/format.h>

DITTE CompanyFrom(const CompanyDetails &details)
{
    DITTE company;
    company.dit_desc = Trimmed(details.name);
    company.dit_piva = NormalisedFiscalCode(details.vat_number);
    company.dit_codfis =
        Trimmed(details.fiscal_code).empty() ? company.dit_piva.str() : NormalisedFiscalCode(details.fiscal_code);
    company.dit_pers = HolderOf(company.dit_codfis) == FiscalCodeHolder::Person ? "F" : "G";
    company.dit_indirizzo = details.address;
    company.dit_cap = details.postcode;
    company.dit_citta = details.town;
    company.dit_prov = ToUpper(details.province);
    company.dit_naz = ToUpper(details.country);
    company.dit_periodicita = "T";
    company.dit_mas_cli = 150; // the masters of the base chart
    company.dit_con_cli = 1;
    company.dit_mas_for = 250;
    company.dit_con_for = 1;
    return company;
}

std::string CompanyCodeFault(const DITTE &company)
{
    if (company.dit_naz != "IT") return {};
    if (const FiscalCodeCheck check = CheckVatNumber(company.dit_piva); !check.ok())
        return fmt::format("Partita IVA della ditta non valida: {}.", check.text);
    if (const FiscalCodeCheck check = CheckFiscalCode(company.dit_codfis); !check.ok())
        return fmt::format("Codice fiscale della ditta non valido: {}.", check.text);
    return {};
}

namespace {

void Create(NewArchive wanted)
{
    if (IsPostgresTarget(wanted.archive)) wanted.data_folder = DataFolderOf(wanted.archive);
    const CurrentCompany before;
    try {
        CreateArchive(wanted);
    } catch (...) { // the new company was current while its tables were filled
        before.Restore();
        throw;
    }
}

} // namespace

void CreateCompany(const std::string &archive, const DITTE &company, long year)
{
    NewArchive wanted;
    wanted.archive = archive;
    wanted.company = company;
    wanted.year = year;
    Create(std::move(wanted));
}

void CreateDemoCompany(const std::string &archive, long year, long entries, unsigned seed)
{
    NewArchive wanted;
    wanted.archive = archive;
    wanted.year = year;
    wanted.demo = true;
    wanted.fill = [entries, seed](SACommand *cmd) { FillDemoJournal(cmd, entries, seed); };
    Create(std::move(wanted));
}

void ChangeFiscalYear(SACommand *cmd, long year)
{
    SATransaction transaction(cmd);
    DITTE company;
    sqldit.Search(cmd, lumera_db_impo.dit_codice, &company); // as it is now, whatever another station changed
    company.dit_anno = year;
    sqldit.SqlTransaction(cmd, kUpdate, &company);
    transaction.Commit();
    ReloadCompany(cmd);
}
