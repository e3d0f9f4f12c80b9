#include "demo/DemoJournal.h"

#include "tarvodlg/base/Dates.h"
#include "tarvolumera/archive/ArchiveCheck.h"
#include "tests/support/TestArchive.h"

#include <fmt/format.h>

namespace {

/// Everything that the same seed has to repeat, each row of the archive in a sum that weighs its place.
constexpr const char *kFingerprints[] = {
    "SELECT COUNT(*) FROM admin.pnota1",
    "SELECT CAST(ROUND(SUM(pno_codice * pno_tot_doc * 100)) AS BIGINT) FROM admin.pnota1",
    "SELECT SUM(pno_codice * pno_cau + COALESCE(pno_prot, 0)) FROM admin.pnota1",
    "SELECT CAST(ROUND(SUM((row_codice + row_idx * 7) * row_importo * 100)) AS BIGINT) FROM admin.pnotaro2",
    "SELECT CAST(ROUND(SUM((sca_num + sca_pagato * 3) * sca_importo * 100)) AS BIGINT) FROM admin.scadenze",
    "SELECT CAST(ROUND(SUM(pcc_pno * pcc_importo * 100)) AS BIGINT) FROM admin.pnotacdc",
    "SELECT MAX(pno_desc) FROM admin.pnota1",
    "SELECT MAX(pno_creato) FROM admin.pnota1"};

class DemoJournalTest : public ArchiveTest {
  protected:
    void Fill(long entries, unsigned seed) { FillDemoJournal(Cmd(), entries, seed); }
    /// Removes the journal, so that the same archive is filled again.
    void Clear()
    {
        for (const char *table : {"scadenze", "pnotacdc", "pnotaro2", "pnota1"})
            Run(fmt::format("DELETE FROM admin.{}", table));
    }
    std::string Fingerprint()
    {
        std::string all;
        for (const char *sql : kFingerprints) all += Value(sql) + "|";
        return all;
    }
    std::string Faults()
    {
        std::string text;
        for (const ArchiveFault &fault : CheckArchive(Cmd(), 5).faults)
            text += fmt::format("{}: {}: {}\n", fault.kind, fault.where, fault.text);
        return text;
    }
    long Count(const std::string &from_where) { return std::stol(Value("SELECT COUNT(*) FROM admin." + from_where)); }
};

INSTANTIATE_TEST_SUITE_P(Engines, DemoJournalTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(DemoJournalTest, MakesBooksWithoutFault)
{
    Fill(300, 1);
    EXPECT_EQ(Count("pnota1"), 300);
    EXPECT_EQ(Faults(), "");
    EXPECT_EQ(Count("pnota1 WHERE pno_tot_squ <> 0 OR pno_dare = 0"), 0);
    for (int vat_register = 1; vat_register <= 7; ++vat_register)
        EXPECT_GT(Count(fmt::format("pnota1 WHERE pno_reg = {}", vat_register)), 0) << "register " << vat_register;
}

TEST_P(DemoJournalTest, ProtocolsFollowTheDatesWithoutGap)
{
    Fill(300, 2);
    for (int vat_register = 2; vat_register <= 7; ++vat_register) {
        const std::string of_register = fmt::format("pnota1 WHERE pno_reg = {}", vat_register);
        EXPECT_EQ(Value("SELECT MAX(pno_prot) FROM admin." + of_register), std::to_string(Count(of_register)));
        EXPECT_EQ(Value("SELECT MIN(pno_prot) FROM admin." + of_register), "1");
    }
    EXPECT_EQ(Count("pnota1 AS earlier JOIN admin.pnota1 AS later ON later.pno_reg = earlier.pno_reg"
                    " AND later.pno_prot > earlier.pno_prot AND later.pno_data < earlier.pno_data"),
              0);
    EXPECT_EQ(Count("pnota1 AS earlier JOIN admin.pnota1 AS later ON later.pno_codice > earlier.pno_codice"
                    " AND later.pno_data < earlier.pno_data"),
              0);
    EXPECT_EQ(Count("pnota1 WHERE pno_data_doc > pno_data OR EXTRACT(YEAR FROM pno_data_doc) <> 2026"), 0);
}

TEST_P(DemoJournalTest, NumbersDocuments)
{
    Fill(300, 3);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM (SELECT pno_reg, pno_cli_for, pno_doc FROM admin.pnota1 WHERE pno_reg IN (2, "
                    "3, 5, 6, 7)"
                    " GROUP BY pno_reg, pno_cli_for, pno_doc HAVING COUNT(*) > 1) AS doppi"),
              "0");
    const std::string sales = "pnota1 WHERE pno_reg IN (3, 5, 7)";
    EXPECT_EQ(Value("SELECT MAX(CAST(pno_doc AS INTEGER)) FROM admin." + sales), std::to_string(Count(sales)));
}

TEST_P(DemoJournalTest, LeavesPaidAndOpenInstalments)
{
    Fill(300, 4);
    for (const int side : {0, 1}) {
        EXPECT_GT(Count(fmt::format("scadenze WHERE sca_relaz = {} AND sca_pagato = 1", side)), 10);
        EXPECT_GT(Count(fmt::format("scadenze WHERE sca_relaz = {} AND sca_pagato = 0", side)), 10);
    }
    EXPECT_EQ(Count("scadenze WHERE sca_pagato = 1 AND (sca_data_pag < sca_data OR sca_data_pag IS NULL)"), 0);
    // What was paid left the accounts of the counterparts, so the open instalments and the accounts tell the same.
    const std::string open = "SELECT CAST(ROUND(SUM(sca_importo) * 100) AS BIGINT) FROM admin.scadenze WHERE "
                             "sca_pagato = 0 AND sca_relaz = ";
    const std::string balance =
        "SELECT CAST(ROUND(SUM(CASE WHEN row_tipo = '{}' THEN row_importo ELSE -row_importo END) * 100) AS "
        "BIGINT) FROM admin.pnotaro2 WHERE row_rel = {}";
    EXPECT_EQ(Value(open + "0"), Value(fmt::format(fmt::runtime(balance), "D", 0)));
    EXPECT_EQ(Value(open + "1"), Value(fmt::format(fmt::runtime(balance), "A", 1)));
}

TEST_P(DemoJournalTest, ShowsWhatOnlySomeEntriesHave)
{
    Fill(300, 5);
    EXPECT_GT(Count("pnotacdc"), 0);
    EXPECT_GT(Count("pnota1 WHERE pno_desc LIKE '%à%' OR pno_desc LIKE '%ù%' OR pno_desc LIKE '%é%'"), 0);
    EXPECT_GT(Count("pnota1 WHERE pno_cau = 28 AND pno_impo_0 < 0 AND pno_data_ret <= pno_data_doc"), 0);
    EXPECT_GT(Count("pnota1 WHERE pno_cau = 3 AND pno_impo_0 < 0 AND pno_data_ret <= pno_data_doc"), 0);
    EXPECT_GT(Count("pnota1 WHERE pno_iva_1 IS NOT NULL"), 0);
    EXPECT_GT(Count("pnota1 WHERE pno_tip_0 = 8 AND pno_reg = 2"), 0);
    EXPECT_GT(Count("pnota1 WHERE pno_split_payment = 1"), 0);
    EXPECT_GT(Count("pnota1 WHERE pno_ind_0 > 0 AND pno_ind_0 < 100"), 0);
    // The counterparts that ceased are left in peace.
    EXPECT_EQ(Count("pnota1 WHERE (pno_rel = 0 AND pno_cli_for = 26) OR (pno_rel = 1 AND pno_cli_for = 11)"), 0);
}

TEST_P(DemoJournalTest, RepeatsTheBooksOfASeed)
{
    Fill(300, 6);
    const std::string first = Fingerprint();
    Clear();
    Fill(300, 6);
    EXPECT_EQ(Fingerprint(), first);
    Clear();
    Fill(300, 7);
    EXPECT_NE(Fingerprint(), first);
}

TEST_P(DemoJournalTest, StopsAtYesterdayInTheCurrentYear)
{
    struct {
        long today;
        const char *last_day;
    } const cases[] = {{DateToJulian(1, 1, 2026), "2026-01-01"},
                       {DateToJulian(13, 1, 2026), "2026-01-12"},
                       {DateToJulian(10, 3, 2027), "2026-12-31"}};
    for (const auto &one : cases) {
        Clear();
        user_.today = one.today;
        Fill(400, 8);
        EXPECT_EQ(Value("SELECT MAX(pno_data) FROM admin.pnota1"), one.last_day);
        EXPECT_EQ(Faults(), "") << one.last_day;
    }
}

TEST_P(DemoJournalTest, MakesNothingOfNothing)
{
    Fill(0, 1);
    EXPECT_EQ(Count("pnota1"), 0);
    Fill(1, 1);
    EXPECT_EQ(Count("pnota1"), 1);
}

TEST_P(DemoJournalTest, LeavesTheUserInPlaceAndShowsOneProgress)
{
    Fill(60, 9);
    EXPECT_EQ(&CurrentUserInterface(), &user_);
    EXPECT_EQ(user_.progress,
              (std::vector<std::string>{"Attendere...", "Creazione movimenti dimostrativi in corso..."}));
}

TEST_P(DemoJournalTest, GivesTheUserBackWhenItFails)
{
    // Without its causale the first purchase cannot be made; what went before in the group is undone with it.
    Run("UPDATE admin.fornito1 SET for_cau = NULL");
    Run("DELETE FROM admin.caucontr WHERE car_cau = 21");
    Run("DELETE FROM admin.flag");
    Run("DELETE FROM admin.caucont1 WHERE cac_codice = 21");
    EXPECT_THROW(Fill(100, 1), std::logic_error);
    EXPECT_EQ(&CurrentUserInterface(), &user_);
    EXPECT_EQ(Count("pnota1"), 0);
}

} // namespace
