#include "ledger/EntryValidation.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/PSQLpno.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

constexpr int kDateOutsideYear = 20024, kUnbalanced = 20025;
constexpr int kFirstYear = 1980;

bool Ask(const char *text)
{
    return AfxMessageBox(text, MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES;
}

/// The year of the registration: outside the fiscal year only where the company allows it, and after a question.
/// @param told  set when the refusal has beeped and was shown
bool YearAccepted(const PNOTA &entry, bool *told)
{
    const int year = Year(entry.pno_data);
    const bool outside = year != lumera_db_impo.dit_anno;
    if (lumera_db_impo.dit_fuori_anno != 0 && year >= kFirstYear)
        return !outside || Ask("Data esterna all' esercizio corrente !\n\nVuoi Continuare ?");
    if (lumera_db_impo.dit_fuori_anno == 0 && !outside) return true;
    Beep(1000, 10);
    DBISAM(kDateOutsideYear, LUMERA_TAG);
    *told = true;
    return false;
}

bool CustomerAccepted(SACommand *cmd, const PNOTA &entry)
{
    if (entry.pno_rel != kCustomer) return true;
    CLIENTI customer;
    if (!sqlcli.Search(cmd, entry.pno_cli_for, &customer) || customer.cli_data_cessazione == 0) return true;
    return Ask("Il cliente selezionato risulta cessato !\n\nVuoi Continuare ?");
}

EntryFault CheckVatLines(const PNOTA &entry)
{
    if (entry.pno_cau_iva != 1) return {};
    for (std::size_t i = 0; i < kVatLines; ++i) {
        const PNOTA_IVA &line = entry.iva[i];
        if (line.iva == 0 && (!TestIfZero(line.impo) || !TestIfZero(line.imposta))) return {EntryField::VatCode, i};
    }
    const bool any =
        std::any_of(entry.iva.begin(), entry.iva.end(), [](const PNOTA_IVA &line) { return line.iva != 0; });
    return any ? EntryFault{} : EntryFault{EntryField::VatCode, 0};
}

EntryFault CheckRows(const PNOTA &entry)
{
    for (std::size_t i = 0; i < kEntryRows; ++i) {
        const PNOTA_RIGA &row = entry.righe[i];
        if (!row.InUse()) continue;
        if (row.row_con == 0) return {EntryField::RowAccount, i};
        if (row.row_sot == 0) return {EntryField::RowSubAccount, i};
        if (!row.IsDare() && !row.IsAvere()) return {EntryField::RowSide, i};
    }
    return {};
}

EntryFault Check(SACommand *cmd, PNOTA *entry, bool *told)
{
    if (entry->pno_cau == 0) return {EntryField::Causale};
    if (entry->pno_sez == 0) return {EntryField::Section};
    if (entry->pno_data == 0 || entry->pno_data < entry->pno_data_doc) return {EntryField::Date};
    if (!YearAccepted(*entry, told)) return {EntryField::Date};
    if ((entry->pno_rel == kCustomer || entry->pno_rel == kSupplier) && entry->pno_cli_for == 0)
        return {EntryField::Counterpart};
    if (!CustomerAccepted(cmd, *entry)) return {EntryField::Counterpart};
    if (const EntryFault fault = CheckVatLines(*entry)) return fault;
    if (const EntryFault fault = CheckRows(*entry)) return fault;
    if (sqlpno.Squadratura(cmd, entry)) {
        Beep(1000, 10);
        *told = true;
        if (DBISAM(kUnbalanced, LUMERA_TAG, MB_YESNO | MB_ICONSTOP | MB_DEFBUTTON2) != IDYES)
            return {EntryField::Balance};
    }
    return {};
}

} // namespace

EntryFault ValidateEntry(SACommand *cmd, PNOTA *entry)
{
    CommandScope scope(cmd);
    bool told = false;
    const EntryFault fault = Check(scope.get(), entry, &told);
    if (fault && !told) Beep(1000, 10);
    return fault;
}

std::string DescribeFault(const EntryFault &fault)
{
    switch (fault.field) {
    case EntryField::None:
        return {};
    case EntryField::Causale:
        return "Causale mancante o inesistente.";
    case EntryField::Section:
        return "Sezione IVA mancante o inesistente.";
    case EntryField::Date:
        return "Data di registrazione mancante, fuori esercizio o anteriore alla data del documento.";
    case EntryField::Counterpart:
        return "Cliente o fornitore mancante, inesistente o cessato.";
    case EntryField::VatCode:
        return fmt::format("Codice IVA mancante alla riga IVA n. {}.", fault.index + 1);
    case EntryField::RowAccount:
        return fmt::format("Conto mancante alla riga n. {}.", fault.index + 1);
    case EntryField::RowSubAccount:
        return fmt::format("Sottoconto mancante alla riga n. {}.", fault.index + 1);
    case EntryField::RowSide:
        return fmt::format("Segno Dare o Avere mancante alla riga n. {}.", fault.index + 1);
    case EntryField::Balance:
        return "Il movimento non quadra.";
    }
    return {};
}
