#include "tables/TableStorage.h"

#include "tarvodlg/base/Dates.h"
#include "tests/support/TestArchive.h"

#include <gmock/gmock.h>
#include <thread>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

CLIENTI NewCustomer(const char *name, const char *vat_number = "01234567897")
{
    CLIENTI customer;
    customer.cli_desc = name;
    customer.cli_piva = vat_number;
    return customer;
}

class StorageTest : public ArchiveTest {
  protected:
    std::vector<std::string> Uses(const char *table, const RecordKeys &keys)
    {
        return FindUses(Cmd(), *FindBrowse(table), keys);
    }
    TableOutcome Delete(const char *table, const RecordKeys &keys)
    {
        return DeleteRecord(Cmd(), *FindBrowse(table), keys);
    }
    std::string Count(const std::string &table) { return Value("SELECT COUNT(*) FROM admin." + table); }

    /// A purchase entry of supplier 1 under causale 21, section 1 and terms 11, with one instalment and one cost
    /// centre.
    void StorePurchase()
    {
        Run("INSERT INTO admin.pnota1 (pno_codice, pno_data, pno_cau, pno_rel, pno_cli_for, pno_sez, pno_reg, pno_prot,"
            " pno_pag, pno_iva_3, pno_dare, pno_avere) VALUES (1, '2026-03-15', 21, 1, 1, 1, 2, 1, 11, 22, 100, 100)");
        Run("INSERT INTO admin.pnotaro2 (row_codice, row_idx, row_mas, row_con, row_sot, row_tipo, row_importo, "
            "row_data,"
            " row_sez, row_rel, row_clfo) VALUES (1, 1, 250, 1, 1, 'A', 100, '2026-03-15', 1, 1, 1)");
        Run("INSERT INTO admin.pnotaro2 (row_codice, row_idx, row_mas, row_con, row_sot, row_tipo, row_importo, "
            "row_data,"
            " row_sez) VALUES (1, 2, 300, 1, 1, 'D', 100, '2026-03-15', 1)");
        Run("INSERT INTO admin.pnotacdc (pcc_pno, pcc_idx, pcc_riga, pcc_cdc, pcc_importo) VALUES (1, 1, 2, 10, 100)");
        Run("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo, sca_ban, "
            "sca_pno)"
            " VALUES (1, 1, 2026, 1, '2026-04-15', 100, 2, 1)");
    }
};

TEST_P(StorageTest, NewRecordIsBroughtIntoForm)
{
    CLIENTI customer = NewCustomer("  Prova S.r.l. ", "IT 01234567897");
    customer.cli_codice = ProposeCode(Cmd(), customer);
    customer.cli_prov = "pr";
    customer.cli_iban = "it60 x054 2811 1010 0000 0123 456";
    customer.cli_data_cessazione = DateToJulian(31, 12, 2026);
    ASSERT_TRUE(StoreRecord(Cmd(), &customer, true).done);
    CLIENTI read;
    read.cli_codice = 41;
    ASSERT_TRUE(LoadRecord(Cmd(), &read));
    EXPECT_EQ(read.cli_desc.str(), "Prova S.r.l.");
    EXPECT_EQ(read.cli_piva.str(), "01234567897");
    EXPECT_EQ(read.cli_prov.str(), "PR");
    EXPECT_EQ(read.cli_iban.str(), "IT60X0542811101000000123456");
    EXPECT_EQ(read.cli_data_cessazione, DateToJulian(31, 12, 2026));
}

TEST_P(StorageTest, RefusalNamesTheFieldAndChangesNothing)
{
    CLIENTI customer = NewCustomer("Prova", "01234567890");
    customer.cli_codice = 41;
    user_.Expect("Partita IVA 01234567890: carattere di controllo errato: atteso 7.");
    const TableOutcome outcome = StoreRecord(Cmd(), &customer, true);
    EXPECT_FALSE(outcome.done);
    EXPECT_EQ(outcome.column, "cli_piva");
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(Count("clienti1"), "40");
}

TEST_P(StorageTest, NoToAQuestionChangesNothing)
{
    const std::string question = "Partita IVA già presente: 1 Edilnova Cordevasco S.r.l.\n\nVuoi Continuare ?";
    CLIENTI customer = NewCustomer("Prova", "09406137340");
    customer.cli_codice = 41;
    user_.Expect(question, IDNO);
    const TableOutcome refused = StoreRecord(Cmd(), &customer, true);
    EXPECT_FALSE(refused.done);
    EXPECT_EQ(refused.column, "cli_piva");
    EXPECT_EQ(refused.reason, "Partita IVA già presente: 1 Edilnova Cordevasco S.r.l.");
    EXPECT_EQ(user_.flags.back(), MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2);
    EXPECT_EQ(Count("clienti1"), "40");
    user_.Expect(question, IDYES);
    EXPECT_TRUE(StoreRecord(Cmd(), &customer, true).done);
    EXPECT_EQ(Count("clienti1"), "41");
}

TEST_P(StorageTest, ProposedCodeGivesWayAndAChosenOneDoesNot)
{
    CENTRI mine{ProposeCode(Cmd(), CENTRI{}), "Mio"}, other{mine.cdc_codice, "Di un altro"};
    EXPECT_EQ(mine.cdc_codice, 61);
    ASSERT_TRUE(StoreRecord(Cmd(), &other, true).done);
    user_.Expect("Il codice 61 è già presente.");
    EXPECT_FALSE(StoreRecord(Cmd(), &mine, true).done);
    EXPECT_TRUE(StoreRecord(Cmd(), &mine, true, {.proposed_code = true}).done);
    EXPECT_EQ(mine.cdc_codice, 62);

    CENTRI last{2'147'483'647, "Ultimo"};
    ASSERT_TRUE(StoreRecord(Cmd(), &last, true).done);
    EXPECT_EQ(ProposeCode(Cmd(), CENTRI{}), 0) << "used up";
}

TEST_P(StorageTest, CodesCountBelowTheirMaster)
{
    CONTI account;
    account.con_mas = 150;
    EXPECT_EQ(ProposeCode(Cmd(), account), 3);
    SOTTOCON sub_account;
    sub_account.sot_mas = 300;
    sub_account.sot_con = 99;
    EXPECT_EQ(ProposeCode(Cmd(), sub_account), 1);
}

/// Stations that open the same form at the same time are all proposed the same code.
TEST_P(StorageTest, StationsGetDistinctProposedCodes)
{
    constexpr int kStations = 4, kEach = 5;
    const long proposed = ProposeCode(Cmd(), AGENTI{});
    std::vector<std::thread> stations;
    std::vector<std::string> failures(kStations);
    for (int station = 0; station < kStations; ++station)
        stations.emplace_back([&, station] {
            try {
                for (int i = 0; i < kEach; ++i) {
                    AGENTI agent{proposed, "Postazione"};
                    const StoreOptions<AGENTI> options{.proposed_code = true};
                    if (!WriteRecord<AGENTI>(nullptr, &agent, true, options).done) failures[station] += "refused ";
                }
            } catch (const SAException &error) {
                failures[station] = error.ErrText();
            }
        });
    for (std::thread &station : stations) station.join();
    EXPECT_THAT(failures, testing::Each(""));
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.agenti1"), "23");
    EXPECT_EQ(Value("SELECT MAX(age_codice) FROM admin.agenti1"), "23") << "without gaps";
}

TEST_P(StorageTest, ChangeOfAnotherStationIsNotOverwritten)
{
    CAUCONT loaded, causale;
    loaded.cac_codice = 21;
    ASSERT_TRUE(LoadRecord(Cmd(), &loaded));
    causale = loaded;
    causale.righe[3] = {0, 0, 300, 1, 2, 0, 0};
    ASSERT_TRUE(StoreRecord(Cmd(), &causale, false, {.loaded = &loaded}).done);
    EXPECT_EQ(Value("SELECT car_sot FROM admin.caucontr WHERE car_cau = 21 AND car_idx = 4"), "2");

    CAUCONT mine = loaded;
    mine.cac_desc = "Altro";
    user_.Expect("Il record è stato cambiato da un'altra stazione: occorre riaprirlo.");
    EXPECT_FALSE(StoreRecord(Cmd(), &mine, false, {.loaded = &loaded}).done) << "only a template row differs";
    EXPECT_EQ(Value("SELECT cac_desc FROM admin.caucont1 WHERE cac_codice = 21"), "Fattura acquisto merci");

    CENTRI gone{10, "Prova"};
    Run("DELETE FROM admin.centri1 WHERE cdc_codice = 10");
    EXPECT_THROW(StoreRecord(Cmd(), &gone, false), SAException);
}

TEST_P(StorageTest, CompanyIsLoadedAgain)
{
    DITTE company = lumera_db_impo;
    company.dit_anno = 2027;
    ASSERT_TRUE(StoreRecord(Cmd(), &company, false).done);
    EXPECT_EQ(lumera_db_impo.dit_anno, 2027);
    FLAG settings = lumera_db_flag;
    settings.flg_arr_limite = 2.5;
    ASSERT_TRUE(StoreRecord(Cmd(), &settings, false).done);
    EXPECT_EQ(lumera_db_flag.flg_arr_limite, 2.5);

    StorePurchase();
    Run("INSERT INTO admin.mastri (mas_codice, mas_desc, mas_for) VALUES (251, 'Altri fornitori', 1)");
    Run("INSERT INTO admin.conti (con_mas, con_codice, con_desc) VALUES (251, 1, 'Altri')");
    company.dit_mas_for = 251;
    user_.Expect("Il mastro 250 ha già righe di prima nota (1): non può essere sostituito.");
    EXPECT_FALSE(StoreRecord(Cmd(), &company, false).done);
    EXPECT_EQ(lumera_db_impo.dit_mas_for, 250);
}

TEST_P(StorageTest, VatCodeInUseChangesAfterAQuestion)
{
    StorePurchase();
    CODIVA code;
    ASSERT_TRUE(sqliva.Search(Cmd(), 22, &code));
    code.iva_aliq = 23;
    user_.Expect("Il codice è già usato in prima nota (1): quanto è registrato non cambia.\n\nVuoi Continuare ?", IDNO);
    EXPECT_FALSE(StoreRecord(Cmd(), &code, false).done);
    code.iva_aliq = 22;
    code.iva_desc = "Altro nome";
    EXPECT_TRUE(StoreRecord(Cmd(), &code, false).done) << "the name alone asks nothing";
}

// --- uses and deletion
// ---------------------------------------------------------------------------------------------------

TEST_P(StorageTest, UsesAreNamed)
{
    StorePurchase();
    struct UseCase {
        const char *table;
        RecordKeys keys;
        std::vector<std::string> uses;
    };
    for (const UseCase &one : std::vector<UseCase>{
             {"fornitori", {"1"}, {"1 movimento di prima nota", "1 scadenza"}},
             {"fornitori", {"2"}, {}},
             {"clienti", {"1"}, {}}, // the supplier's code is not the customer's
             {"codiva", {"22"}, {"1 movimento di prima nota"}},
             {"codiva", {"4"}, {}},
             {"sezioni", {"1"}, {"1 movimento di prima nota"}},
             {"sezioni", {"9"}, {}},
             {"centri", {"10"}, {"1 movimento di prima nota"}},
             {"nazioni", {"DE"}, {"1 cliente", "1 fornitore"}},
         }) {
        EXPECT_EQ(Uses(one.table, one.keys), one.uses) << one.table << " " << one.keys.front();
    }
    // Beside what the demo company itself uses.
    EXPECT_THAT(Uses("causali", {"21"}),
                ElementsAre("1 movimento di prima nota",
                            Value("SELECT COUNT(*) FROM admin.fornito1 WHERE for_cau = 21") + " fornitori",
                            "1 impostazione"));
    EXPECT_THAT(Uses("banche", {"2"}), testing::Contains("1 scadenza"));
    EXPECT_THAT(Uses("conti", {"300", "1"}),
                testing::AllOf(testing::Contains("1 movimento di prima nota"),
                               testing::Contains(Value("SELECT COUNT(*) FROM admin.sotcon WHERE sot_mas = 300 AND "
                                                       "sot_con = 1") +
                                                 " sottoconti")));
    EXPECT_THAT(Uses("sottocon", {"260", "1", "1"}), testing::Contains("1 impostazione"));
    EXPECT_THAT(Uses("mastri", {"150"}), testing::IsSupersetOf({"2 conti", "1 ditta"}));
    EXPECT_THAT(Uses("pagamenti", {"11"}), testing::Contains("1 movimento di prima nota"));
    EXPECT_THAT(Uses("agenti", {"1"}), testing::SizeIs(1));
    EXPECT_THAT(Uses("fornitori", {"uno"}), IsEmpty());
}

TEST_P(StorageTest, UsedRecordStays)
{
    StorePurchase();
    const char *const kText = "Impossibile eliminare: codice usato in 1 movimento di prima nota, 1 scadenza.";
    user_.Expect(kText);
    const TableOutcome outcome = Delete("fornitori", {"1"});
    EXPECT_FALSE(outcome.done);
    EXPECT_EQ(outcome.reason, kText);
    EXPECT_EQ(Count("fornito1"), "25");
}

TEST_P(StorageTest, UnusedRecordGoesAfterAYes)
{
    const char *const kQuestion =
        "Eliminazione cliente 17 Grande Distribuzione Utensile Meneghina S.p.A.\n\nVuoi Continuare ?";
    user_.Expect(kQuestion, IDNO);
    EXPECT_FALSE(Delete("clienti", {"17"}).done);
    EXPECT_EQ(Count("clienti1"), "40");
    user_.Expect(kQuestion, IDYES);
    EXPECT_TRUE(Delete("clienti", {"17"}).done);
    EXPECT_EQ(Count("clienti1"), "39");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.destina1 WHERE dst_rel = 0 AND dst_cli_for = 17"), "0");
    EXPECT_EQ(Count("destina1"), "5") << "nobody else's";

    user_.Expect("Eliminazione causale 82 Versamento IVA\n\nVuoi Continuare ?", IDYES);
    EXPECT_TRUE(Delete("causali", {"82"}).done);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.caucontr WHERE car_cau = 82"), "0");
}

TEST_P(StorageTest, WhatDoesNotExistOrIsNotOursIsNotDeleted)
{
    user_.Expect("Non esiste: cliente 99.");
    EXPECT_FALSE(Delete("clienti", {"99"}).done);
    user_.Expect("Non esiste: sottoconto 300.1.x.");
    EXPECT_FALSE(Delete("sottocon", {"300", "1", "x"}).done);
    user_.Expect("I dati di «Nazioni» non si eliminano.");
    EXPECT_FALSE(Delete("nazioni", {"AD"}).done);
}

/// Every foreign key of the archive is among the places that are looked at: whatever the lists of uses forget would
/// end in the engine's own words.
TEST_P(StorageTest, DeletionNeverMeetsAForeignKey)
{
    StorePurchase();
    for (const BrowseDescription &table : BrowseDescriptions()) {
        if (!table.maintained) continue;
        std::vector<RecordKeys> unused;
        ForEachBrowseRow(Cmd(), table, {}, [&](const BrowseRow &row) {
            unused.push_back(row.keys);
            return true;
        });
        long deleted = 0;
        for (const RecordKeys &keys : unused) {
            if (!Uses(table.name, keys).empty()) continue;
            std::string text = "Eliminazione " + std::string(table.singular);
            for (std::size_t i = 0; i < keys.size(); ++i) text += (i == 0 ? " " : ".") + keys[i];
            user_.Expect(text + " " + *DescribeCode(Cmd(), table, keys) + "\n\nVuoi Continuare ?", IDYES);
            const TableOutcome outcome = Delete(table.name, keys);
            EXPECT_TRUE(outcome.done) << table.name << " " << keys.back() << ": " << outcome.reason;
            if (++deleted == 12) break;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, StorageTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
