#include "schedule/PostalSlip.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/Words.h"
#include "tarvolumera/Company.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <fmt/printf.h>

namespace {

std::string TownOf(std::string_view town, std::string_view province)
{
    return province.empty() ? std::string(town) : fmt::format("{} ({})", town, province);
}

std::string CausaleOf(const SCADENZE &record)
{
    if (record.sca_data_fattura == 0)
        return fmt::sprintf("%-s N. %-s", record.sca_desc.str(), record.sca_fattura.str());
    int day = 0, month = 0, year = 0;
    JulianToDate(record.sca_data_fattura, &day, &month, &year);
    return fmt::sprintf("%-s N. %-s DEL %02d/%02d/%04d", record.sca_desc.str(), record.sca_fattura.str(), day, month,
                        year);
}

void SetPayer(SACommand *cmd, const SCADENZE &record, PostalSlip *slip)
{
    if (record.sca_relaz == kSupplier) {
        const DITTE &company = lumera_db_impo;
        slip->eseguito_da = company.dit_desc.str();
        slip->indirizzo = company.dit_indirizzo.str();
        slip->cap = company.dit_cap.str();
        slip->citta = TownOf(company.dit_citta, company.dit_prov);
        return;
    }
    CLIENTI customer;
    sqlcli.Search(cmd, record.sca_cli_for, &customer);
    slip->eseguito_da = customer.cli_desc.str();
    slip->indirizzo = customer.cli_indirizzo.str();
    slip->cap = customer.cli_cap.str();
    slip->citta = TownOf(customer.cli_citta, customer.cli_prov);
}

} // namespace

PostalSlip PostalSlipOf(SACommand *cmd, const SCADENZE &record)
{
    // Parted in cents: 99.999 is a hundred euro, not 99 with a hundred cents.
    const long long cents = ToCents(record.sca_importo);
    PostalSlip slip;
    slip.importo_cifre = fmt::sprintf("%.0f", static_cast<double>(cents / 100));
    slip.decimali_cifre = fmt::sprintf("%02.0f", static_cast<double>(cents % 100));
    slip.importo_lettere = AmountInWords(record.sca_importo);
    slip.causale = CausaleOf(record);
    SetPayer(cmd, record, &slip);
    return slip;
}

bool PrintPostalSlip(const SCADENZE &record, const std::optional<ReportDestination> &destination)
{
    if (ToCents(record.sca_importo) <= 0) {
        BeepRefused();
        AfxMessageBox(fmt::format("Il bollettino si stampa per un importo da versare.\n\nLa scadenza n. {} è di {}.",
                                  record.sca_num, FormatAmount(record.sca_importo)),
                      MB_OK | MB_ICONERROR);
        return false;
    }
    PostalSlip slip;
    if (!RunUnit(LUMERA_TAG, [&](SACommand *cmd) { slip = PostalSlipOf(cmd, record); })) return false;

    CCrystal cry;
    if (!cry.CryOpen("bollettino.rpt", "Stampa Bollettino C/C", 0, 0)) return false;
    cry.CrySetDnsLessConn(lumera_db_type, 0);
    cry.CrySetOrientation(kPortrait);
    cry.CrySelect(
        fmt::sprintf("{scadenze.sca_relaz} = %ld AND {scadenze.sca_num} = %ld", record.sca_relaz, record.sca_num), 0);
    cry.CryStringParam(0, "ImportoCifre", slip.importo_cifre);
    cry.CryStringParam(1, "DecimaliCifre", slip.decimali_cifre);
    cry.CryStringParam(2, "ImportoLettere", slip.importo_lettere);
    cry.CryStringParam(3, "Causale", slip.causale);
    cry.CryStringParam(4, "EseguitoDa", slip.eseguito_da);
    cry.CryStringParam(5, "Indirizzo", slip.indirizzo);
    cry.CryStringParam(6, "Cap", slip.cap);
    cry.CryStringParam(7, "Citta", slip.citta);
    if (destination) cry.CrySetDestination(*destination);
    const bool is_done = cry.CryEsegui();
    cry.CryClose();
    return is_done;
}
