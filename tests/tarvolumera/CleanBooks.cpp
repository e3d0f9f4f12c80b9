#include "tests/tarvolumera/CleanBooks.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvolumera/JournalTotals.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/ReceivedInvoices.h"
#include "tarvolumera/Schedule.h"
#include "tarvolumera/fatturapa/SignedEnvelope.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

struct RowSpec {
    long mas, con, sot;
    const char *side;
    double amount;
};

/// An entry as a bookkeeper would describe it; number and protocol are settled when it is stored.
struct EntrySpec {
    long causale, vat_register, relation, counterpart;
    long day;
    std::vector<PNOTA_IVA> lines;
    std::vector<RowSpec> rows;
    double rounding = 0; ///< posted with the entry, so the document total is that much higher
    long fixed_protocol = 0;
};

std::unique_ptr<PNOTA> MakeEntry(const EntrySpec &spec)
{
    auto entry = std::make_unique<PNOTA>();
    entry->pno_data = entry->pno_data_doc = spec.day;
    entry->pno_cau = spec.causale;
    entry->pno_doc = "77/A";
    entry->pno_rel = spec.relation;
    entry->pno_cli_for = spec.counterpart;
    entry->pno_sez = 1;
    entry->pno_reg = spec.vat_register;
    entry->pno_cau_iva = spec.lines.empty() ? 0 : 1;
    entry->pno_prot = spec.fixed_protocol;
    entry->pno_prot_fisso = spec.fixed_protocol != 0 ? 1 : 0;
    for (std::size_t i = 0; i < spec.lines.size(); ++i) entry->iva[i] = spec.lines[i];
    for (std::size_t i = 0; i < spec.rows.size(); ++i) {
        PNOTA_RIGA &row = entry->righe[i];
        row.row_mas = spec.rows[i].mas;
        row.row_con = spec.rows[i].con;
        row.row_sot = spec.rows[i].sot;
        row.row_tipo = spec.rows[i].side;
        row.row_importo = spec.rows[i].amount;
        row.row_cau = spec.causale;
    }
    RecalcTotals(entry.get(), lumera_db_impo, lumera_db_flag, kTotalsOnly);
    for (const PNOTA_IVA &line : entry->iva) entry->pno_tot_doc += OwedForLine(line);
    entry->pno_tot_doc += spec.rounding;
    return entry;
}

PNOTA_IVA Taxable(double amount, double tax)
{
    return {22, 1, 22, amount, tax, 0};
}

EntrySpec Purchase(long supplier, long day, double amount, double tax)
{
    return {21,
            2,
            1,
            supplier,
            day,
            {Taxable(amount, tax)},
            {{250, 1, supplier, "A", amount + tax}, {260, 1, 1, "D", tax}, {300, 1, 1, "D", amount}}};
}

EntrySpec Transfer(long day, double amount)
{
    return {61, 1, 2, 0, day, {}, {{170, 1, 1, "D", amount}, {175, 1, 1, "A", amount}}};
}

/// Entries 1 to 12 without 10: what clean books may hold, odd things included.
std::vector<EntrySpec> CleanEntries()
{
    const long march = DateToJulian(10, 3, kCleanBooksYear), last_year = DateToJulian(20, 11, kCleanBooksYear - 1);
    return {
        Purchase(1, march, 1000, 220),
        Purchase(1, march - 5, 100, 22.03), // a later protocol on an earlier day, a tax as the supplier rounded it
        {21,
         2,
         1,
         2,
         march,
         {Taxable(100, 22)},
         {{250, 1, 2, "A", 122.4}, {260, 1, 1, "D", 22}, {300, 1, 1, "D", 100}, {360, 1, 7, "D", 0.4}},
         0.4},
        {31,
         2,
         1,
         2,
         march,
         {{81, 8, 22, 200, 44, 0}}, // reverse charge: the tax is not the supplier's
         {{250, 1, 2, "A", 200}, {300, 1, 1, "D", 200}, {260, 1, 1, "D", 44}, {260, 1, 5, "A", 44}}},
        {28, 2, 1, 1, march, {Taxable(-50, -11)}, {{250, 1, 1, "D", 61}, {260, 1, 1, "A", 11}, {300, 1, 1, "A", 50}}},
        {1,
         3,
         0,
         1,
         march,
         {Taxable(500, 110)}, // the first year here began in March with protocol 57
         {{150, 1, 1, "D", 610}, {260, 1, 2, "A", 110}, {400, 1, 1, "A", 500}},
         0,
         57},
        {9, 7, 0, 2, march, {Taxable(100, 0)}, {{150, 2, 2, "D", 100}, {400, 1, 3, "A", 100}}}, // tax typed there
        {51, 1, 1, 1, march + 40, {}, {{250, 1, 1, "D", 400}, {170, 1, 1, "A", 400}}},
        Purchase(3, last_year, 10, 2.2),
        Transfer(march, 5),
        Transfer(march, 6),
        {21,
         2,
         1,
         3,
         march,
         {Taxable(100, 22),
          {10, 1, 10, 10, 1, 0},
          {71, 5, 22, 50, 11, 100},
          {400, 2, 0, 7, 0, 0},
          {355, 6, 0, 8, 0, 0},
          {100, 11, 0, 2, 0, 0},
          {82, 8, 10, 30, 3, 0}},
         {{250, 1, 3, "A", 211}, {260, 1, 1, "D", 26}, {300, 1, 1, "D", 188}, {260, 1, 5, "A", 3}}},
    };
}

struct InstalmentSpec {
    short side;
    long counterpart, entry, due;
    double amount, total;
    long number, count;
    bool is_last;
};

void StoreInstalment(SACommand *cmd, const InstalmentSpec &spec)
{
    SCADENZE instalment;
    sqlsca.Blank(cmd, &instalment, spec.side);
    instalment.sca_cli_for = spec.counterpart;
    instalment.sca_pno = spec.entry;
    instalment.sca_data = spec.due;
    instalment.sca_importo = spec.amount;
    instalment.sca_tot_fat = spec.total;
    instalment.sca_rata = spec.number;
    instalment.sca_rate = spec.count;
    instalment.sca_ultima = spec.is_last ? 1 : 0;
    instalment.sca_non_ultima = spec.is_last ? 0 : 1;
    sqlsca.SqlTransaction(cmd, kInsert, &instalment);
}

void StoreInstalments(SACommand *cmd)
{
    const long due = DateToJulian(10, 4, kCleanBooksYear);
    for (const InstalmentSpec &spec : {
             InstalmentSpec{1, 1, 1, due, 406.67, 1220, 1, 3, false},
             InstalmentSpec{1, 1, 1, due + 30, 406.67, 1220, 2, 3, false},
             InstalmentSpec{1, 1, 1, due + 60, 406.66, 1220, 3, 3, true},
             InstalmentSpec{1, 3, 9, due - 80, 6.1, 12.2, 2, 2, true}, // the first, paid last year, was purged
             InstalmentSpec{1, 2, 0, due, 33, 0, 0, 0, false},         // by hand
             InstalmentSpec{0, 1, 6, due, 600, 610, 1, 1, true},       // the user let the difference stand
         })
        StoreInstalment(cmd, spec);
}

void StoreDocument(SACommand *cmd, const char *file, bool has_digest)
{
    const std::string bytes =
        ReadWholeFile(std::filesystem::path(LUMERA_SOURCE_DIR) / "samples" / "fatture" / file, kInvoiceFileBytesMax);
    ALLEGATI document;
    document.all_anno = kCleanBooksYear;
    document.all_tab_tipo = kReceivedInvoices;
    document.all_fname = file;
    document.all_data = ToBytes(bytes);
    if (has_digest) document.all_impronta = ContentDigest(ExtractInvoiceXml(bytes, file).xml);
    sqlall.Store(cmd, &document);
    FATTURE summary;
    summary.fat_codice = document.all_codice;
    summary.fat_documento = 1;
    summary.fat_anno = document.all_anno;
    summary.fat_fname = document.all_fname;
    summary.fat_acquisita = document.all_date_time;
    sqlfat.SqlTransaction(cmd, kInsert, &summary);
}

} // namespace

void StoreCleanBooks(SACommand *cmd)
{
    long number = 0;
    for (const EntrySpec &spec : CleanEntries()) {
        const std::unique_ptr<PNOTA> entry = MakeEntry(spec);
        if (++number == 1) {
            entry->centri = {{0, 0, 3, 10, 600.1}, {0, 0, 3, 20, 399.9}};
            entry->allegati.emplace_back().pat_fname = "bolla.txt";
            entry->allegati.back().pat_data = ToBytes("bolla n. 7");
        }
        sqlpno.SqlTransaction(cmd, kInsert, entry.get());
        ASSERT_EQ(entry->pno_codice, number);
    }
    PNOTA deleted; // a gap in the entry numbers is none of the registers
    ASSERT_TRUE(sqlpno.Search(cmd, 10, &deleted));
    sqlpno.SqlTransaction(cmd, kDelete, &deleted);
    SACommand(cmd->Connection(), "UPDATE admin.pnotaro2 SET row_tipo = LOWER(row_tipo) WHERE row_codice = 11")
        .Execute();
    StoreInstalments(cmd);
    StoreDocument(cmd, "IT02565617350_00A24.xml", true);
    StoreDocument(cmd, "IT06186527153_E4187.xml.p7m", true);
    StoreDocument(cmd, "IT02565617350_00A31.xml", false);
}
