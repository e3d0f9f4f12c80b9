#include "tarvolumera/archive/ArchiveCheck.h"

#include "tarvolumera/Company.h"
#include "tarvolumera/archive/ArchiveCreation.h"
#include "tests/support/TestDatabase.h"
#include "tests/tarvolumera/CleanBooks.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

namespace {

/// One archive per engine for all tests: each undoes what it did to it.
struct Books {
    std::unique_ptr<TestFolder> folder;
    std::unique_ptr<TestDatabase> database;
    std::string target;
};

class ArchiveCheckTest : public testing::Test {
  protected:
    static void TearDownTestSuite() { books_.clear(); }

    void Open(SAEngine engine)
    {
        if (!IsTestEngineReady(engine)) return;
        Books &books = books_[engine];
        if (books.target.empty()) Create(engine, &books);
        if (HasFatalFailure()) return;
        connection_.Connect(books.target);
        command_.setConnection(&connection_);
    }

    bool IsOpen() const { return connection_.isConnected(); }
    void Run(const std::string &sql) { SACommand(&connection_, sql).Execute(); }

    /// Lets the next changes go past foreign keys and, in a file, past the declared conditions.
    void WithoutKeys(SAEngine engine, std::unique_ptr<SATransaction> *unit)
    {
        if (engine == SAEngine::SQLite) {
            Run("PRAGMA foreign_keys=OFF");
            Run("PRAGMA ignore_check_constraints=ON");
        }
        *unit = std::make_unique<SATransaction>(&connection_);
        if (engine == SAEngine::PostgreSQL) Run("SET LOCAL session_replication_role = replica");
    }

    static void Create(SAEngine engine, Books *books)
    {
        NewArchive wanted;
        wanted.year = kCleanBooksYear;
        wanted.demo = true;
        if (engine == SAEngine::SQLite) {
            books->folder = std::make_unique<TestFolder>();
            wanted.archive = (books->folder->Path() / "ditta").string();
        } else {
            books->database = std::make_unique<TestDatabase>(engine, TestDatabase::Schema::None);
            wanted.archive = books->database->Target();
        }
        wanted.fill = StoreCleanBooks;
        CreateArchive(wanted);
        books->target = lumera_db_target;
    }

    static inline std::map<SAEngine, Books> books_;
    SAConnection connection_;
    SACommand command_;
};

std::string Listed(const ArchiveCheckResult &result)
{
    std::string list;
    for (const ArchiveFault &fault : result.faults)
        list += fmt::format("{}: {}: {}\n", fault.kind, fault.where, fault.text);
    return list;
}

// ------------------------------------------------------------------------------------------------------- clean books

class CleanBooksTest : public ArchiveCheckTest, public testing::WithParamInterface<SAEngine> {
  protected:
    void SetUp() override { Open(GetParam()); }
};

TEST_P(CleanBooksTest, HoldNoFault)
{
    if (!IsOpen()) return;
    const ArchiveCheckResult result = CheckArchive(&command_);
    EXPECT_EQ(Listed(result), "");
    EXPECT_FALSE(result.truncated);
    EXPECT_EQ(result.entries, 11);
    EXPECT_EQ(result.rows, 33);
    EXPECT_EQ(result.instalments, 6);
    EXPECT_FALSE(connection_.InTransaction());
}

TEST_P(CleanBooksTest, ListsNoMoreOfAKindThanAskedForAndSaysSo)
{
    if (!IsOpen()) return;
    SATransaction unit(&connection_);
    Run("UPDATE admin.scadenze SET sca_anno = 1999"); // six faults
    Run("UPDATE admin.pnota1 SET pno_dare = pno_dare + 1 WHERE pno_codice = 8");
    const ArchiveCheckResult cut = CheckArchive(&command_, 5);
    EXPECT_TRUE(cut.truncated);
    EXPECT_EQ(cut.faults.size(), 6U) << Listed(cut);
    EXPECT_EQ(cut.faults.front().kind, "Totali");
    const ArchiveCheckResult whole = CheckArchive(&command_, 6);
    EXPECT_FALSE(whole.truncated);
    EXPECT_EQ(whole.faults.size(), 7U) << Listed(whole);
}

INSTANTIATE_TEST_SUITE_P(Engines, CleanBooksTest, testing::ValuesIn(TestEngines()), TestEngineName);

// ------------------------------------------------------------------------------------------------- tolerated oddities

struct Oddity {
    const char *name, *sql;
};
void PrintTo(const Oddity &oddity, std::ostream *out)
{
    *out << oddity.name;
}

class OddityTest : public ArchiveCheckTest, public testing::WithParamInterface<std::tuple<SAEngine, Oddity>> {
  protected:
    void SetUp() override { Open(std::get<0>(GetParam())); }
};

TEST_P(OddityTest, IsNoFault)
{
    if (!IsOpen()) return;
    SATransaction unit(&connection_);
    Run(std::get<1>(GetParam()).sql);
    EXPECT_EQ(Listed(CheckArchive(&command_)), "");
}

template <class Case>
std::string CaseName(const testing::TestParamInfo<std::tuple<SAEngine, Case>> &info)
{
    return std::string(std::get<1>(info.param).name) +
           (std::get<0>(info.param) == SAEngine::SQLite ? "_SQLite" : "_PostgreSQL");
}

constexpr Oddity kOddities[] = {
    {"RoundingAtTheLimit", "UPDATE admin.pnota1 SET pno_tot_doc = pno_tot_doc + 1.00 WHERE pno_codice = 1"},
    {"TaxFiveCentsOff", "UPDATE admin.pnota1 SET pno_imposta_0 = 220.05, pno_tot_iva = 220.05 WHERE pno_codice = 1"},
    {"ReverseChargeWithoutTax", "UPDATE admin.pnota1 SET pno_imposta_0 = 0, pno_tot_iva = 0 WHERE pno_codice = 4"},
    {"FirstDayOfTheBooks", "UPDATE admin.scadenze SET sca_data = '1980-01-01', sca_anno = 1980 WHERE sca_rate = 0"},
    {"AllInstalmentsOfLastYearPurged", "DELETE FROM admin.scadenze WHERE sca_pno = 9"},
    {"AllInstalmentsDeleted", "DELETE FROM admin.scadenze WHERE sca_pno = 1"},
    {"OneMoreInstalmentByHand",
     "INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo, sca_pno)"
     " VALUES (1, 99, 2026, 1, '2026-12-31', 5, 1)"},
    {"LastProtocolGone", "DELETE FROM admin.pnota1 WHERE pno_codice = 12"},
    {"BinaryFractions", "UPDATE admin.pnotacdc SET pcc_importo = CASE pcc_cdc WHEN 10 THEN 999.7 ELSE 0.3 END"},
};
INSTANTIATE_TEST_SUITE_P(Cases, OddityTest,
                         testing::Combine(testing::ValuesIn(TestEngines()), testing::ValuesIn(kOddities)),
                         CaseName<Oddity>);

// ------------------------------------------------------------------------------------------------------------ damages

enum class OnServer { Found, Refused };

struct Damage {
    const char *name;
    std::vector<std::string> sql;
    const char *kind, *where, *text;
    std::set<std::string> beside = {};    ///< further kinds that the same damage shows in
    OnServer on_server = OnServer::Found; ///< Refused: a declared condition forbids it, and a server keeps to it
};
void PrintTo(const Damage &damage, std::ostream *out)
{
    *out << damage.name;
}

class DamageTest : public ArchiveCheckTest, public testing::WithParamInterface<std::tuple<SAEngine, Damage>> {
  protected:
    void SetUp() override { Open(std::get<0>(GetParam())); }
};

TEST_P(DamageTest, IsFound)
{
    if (!IsOpen()) return;
    const auto &[engine, damage] = GetParam();
    std::unique_ptr<SATransaction> unit;
    WithoutKeys(engine, &unit);
    const auto inflict = [&, &sql = damage.sql] {
        for (const std::string &statement : sql) Run(statement);
    };
    if (engine == SAEngine::PostgreSQL && damage.on_server == OnServer::Refused) {
        EXPECT_THROW(inflict(), SAException);
        return;
    }
    inflict();
    const ArchiveCheckResult result = CheckArchive(&command_);
    const bool is_found =
        std::any_of(result.faults.begin(), result.faults.end(), [&d = damage](const ArchiveFault &fault) {
            return fault.kind == d.kind && fault.where == d.where && fault.text.find(d.text) != std::string::npos;
        });
    EXPECT_TRUE(is_found) << Listed(result);
    for (const ArchiveFault &fault : result.faults) {
        const bool by_engine = engine == SAEngine::SQLite && fault.kind == "Motore";
        EXPECT_TRUE(by_engine || fault.kind == damage.kind || damage.beside.contains(fault.kind)) << Listed(result);
    }
}

std::string Entry(const std::string &change, int number)
{
    return fmt::format("UPDATE admin.pnota1 SET {} WHERE pno_codice = {}", change, number);
}
std::string Row(const std::string &change, int number, int row)
{
    return fmt::format("UPDATE admin.pnotaro2 SET {} WHERE row_codice = {} AND row_idx = {}", change, number, row);
}
std::string Instalment(const std::string &change, int number)
{
    return fmt::format("UPDATE admin.scadenze SET {} WHERE sca_relaz = 1 AND sca_num = {}", change, number);
}

// One damage a line where it fits: the formatter would give every part its own.
// clang-format off
const Damage kFigures[] = {
    {"RowOneCentMore", {Row("row_importo = 400.01", 8, 1)}, "Quadratura", "Movimento 8",
     "Dare 400,01, Avere 400,00, differenza 0,01", {"Totali"}},
    {"RowSideSwapped", {Row("row_tipo = 'A'", 2, 2)}, "Quadratura", "Movimento 2", "differenza -44,06", {"Totali"}},
    {"RowsLost", {"DELETE FROM admin.pnotaro2 WHERE row_codice = 8"}, "Quadratura", "Movimento 8", "non ha righe",
     {"Totali"}},
    {"HeaderDare", {Entry("pno_dare = 401", 8)}, "Totali", "Movimento 8", "in testata Dare 401,00"},
    {"HeaderAvere", {Entry("pno_avere = 399.99", 8)}, "Totali", "Movimento 8", "Avere 399,99"},
    {"HeaderImbalance", {Entry("pno_tot_squ = 0.01", 8)}, "Totali", "Movimento 8", "sbilancio 0,01"},
    {"TotalTaxable", {Entry("pno_tot_imp = 1", 1)}, "Totali", "Movimento 1", "imponibile 1,00 invece di 1.000,00"},
    {"TotalTax", {Entry("pno_tot_iva = 220.01", 1)}, "Totali", "Movimento 1", "IVA 220,01 invece di 220,00"},
    {"TotalExempt", {Entry("pno_tot_esente = 0", 12)}, "Totali", "Movimento 12", "esente 0,00 invece di 7,00"},
    {"TotalNonTaxable", {Entry("pno_tot_non_imp = 0", 12)}, "Totali", "Movimento 12",
     "non imponibile 0,00 invece di 8,00"},
    {"TotalOutsideField", {Entry("pno_tot_non_82 = 9", 12)}, "Totali", "Movimento 12",
     "fuori campo 9,00 invece di 2,00"},
    {"DocumentBeyondRounding", {Entry("pno_tot_doc = 1221.01", 1)}, "Totali", "Movimento 1",
     "totale documento 1.221,01, dalle righe IVA 1.220,00"},
    {"DocumentWithTaxNotOwed", {Entry("pno_tot_doc = 244", 4)}, "Totali", "Movimento 4", "dalle righe IVA 200,00"},
    {"LineWithoutCode", {Entry("pno_impo_6 = 10", 2)}, "IVA", "Movimento 2 riga IVA 7", "imponibile 10,00",
     {"Totali"}},
    {"TaxWithoutCode", {Entry("pno_imposta_1 = -1", 2)}, "IVA", "Movimento 2 riga IVA 2", "imposta -1,00", {"Totali"}},
    {"NoLine", {Entry("pno_iva_0 = NULL, pno_impo_0 = 0, pno_imposta_0 = 0", 2)}, "IVA", "Movimento 2",
     "non ha righe IVA", {"Totali"}},
    {"LinesWithoutVat", {Entry("pno_iva_3 = 22", 8)}, "IVA", "Movimento 8", "non è IVA ma ha righe IVA"},
    {"KindAboveTheLast", {Entry("pno_tip_0 = 15", 1)}, "IVA", "Movimento 1 riga IVA 1", "tipo 15"},
    {"KindMissing", {Entry("pno_tip_0 = 0", 1)}, "IVA", "Movimento 1 riga IVA 1", "tipo 0"},
    {"TaxSixCentsOff", {Entry("pno_imposta_0 = 220.06, pno_tot_iva = 220.06", 1)}, "IVA", "Movimento 1 riga IVA 1",
     "l'imposta 220,06 non è il 22,00% di 1.000,00"},
    {"TaxOfCreditNote", {Entry("pno_imposta_0 = 11, pno_tot_iva = 11", 5)}, "IVA", "Movimento 5 riga IVA 1",
     "l'imposta 11,00 non è il 22,00% di -50,00", {"Totali"}},
    {"AmountBeyondAllLimits", {Entry("pno_impo_0 = 1e300", 1)}, "IVA", "Movimento 1", "fuori dai limiti"},
    {"CostCentreSplit", {"UPDATE admin.pnotacdc SET pcc_importo = pcc_importo + 0.01 WHERE pcc_idx = 2"},
     "Centri di costo", "Movimento 1 riga 3", "la riga vale 1.000,00, i centri di costo 1.000,01"},
};

const Damage kRowsAndNumbers[] = {
    {"RowDate", {Row("row_data = '2026-03-11'", 1, 2)}, "Righe", "Movimento 1 riga 2", "data 11/03/2026"},
    {"RowSection", {Row("row_sez = 2", 1, 2)}, "Righe", "Movimento 1 riga 2", "sezione 2"},
    {"RowOperation", {Row("row_operazione = 3", 1, 2)}, "Righe", "Movimento 1 riga 2", "operazione 3"},
    {"RowSide", {Row("row_tipo = 'X'", 8, 2)}, "Righe", "Movimento 8 riga 2", "\"X\"", {"Quadratura", "Totali"},
     OnServer::Refused},
    {"NegativeAmounts", {"UPDATE admin.pnotaro2 SET row_importo = -row_importo WHERE row_codice = 8"}, "Righe",
     "Movimento 8 riga 2", "-400,00", {"Totali"}, OnServer::Refused},
    {"RowBehindTheLast", {Row("row_idx = 101", 8, 2)}, "Righe", "Movimento 8 riga 101", "100 righe", {},
     OnServer::Refused},
    {"SupplierRowAsCustomer", {Row("row_rel = 0", 1, 1)}, "Righe", "Movimento 1 riga 1",
     "250.1.1 la riga porta il tipo 0"},
    {"SupplierRowWithoutCode", {Row("row_rel = 2, row_clfo = 0", 1, 1)}, "Righe", "Movimento 1 riga 1",
     "tipo 2 e il cliente/fornitore 0", {"Collegamenti"}},
    {"CustomerRowAsSupplier", {Row("row_rel = 1", 6, 1)}, "Righe", "Movimento 6 riga 1",
     "150.1.1 la riga porta il tipo 1"},
    {"OrdinaryRowWithCode", {Row("row_rel = 1, row_clfo = 1", 1, 3)}, "Righe", "Movimento 1 riga 3", "300.1.1"},
    {"OrdinaryRowAsCustomer", {Row("row_rel = 0", 1, 3)}, "Righe", "Movimento 1 riga 3", "tipo 0"},
    {"OneProtocolMissing", {Entry("pno_prot = 7", 5)}, "Protocolli", "Protocollo 5 ACQUISTI sez. 1 anno 2026",
     "manca"},
    {"SeveralProtocolsMissing", {Entry("pno_prot = 10", 12)}, "Protocolli",
     "Protocolli dal 6 al 9 ACQUISTI sez. 1 anno 2026", "mancano 4 protocolli"},
    {"FirstProtocolMissing", {Entry("pno_prot = 2", 9)}, "Protocolli", "Protocollo 1 ACQUISTI sez. 1 anno 2025",
     "manca"},
    {"ProtocolBehindTheFixedOne", {Entry("pno_data = '2026-04-01', pno_prot = 59, pno_reg = 3", 7),
     "UPDATE admin.pnotaro2 SET row_data = '2026-04-01' WHERE row_codice = 7"}, "Protocolli",
     "Protocollo 58 FATTURE EMESSE sez. 1 anno 2026", "manca", {"IVA"}},
    {"ProtocolTwice", {"DROP INDEX admin.pnota1_protocollo", Entry("pno_prot = 1", 2)}, "Protocolli",
     "Protocollo 1 ACQUISTI sez. 1 anno 2026", "assegnato ai movimenti 1 e 2"},
    {"NoProtocol", {Entry("pno_prot = NULL", 12)}, "Protocolli", "Movimento 12",
     "manca il protocollo del registro ACQUISTI"},
    {"ProtocolInTheJournal", {Entry("pno_prot = 1", 8)}, "Protocolli", "Movimento 8",
     "il protocollo 1 non è ammesso nel registro SOLO LIBRO GIORNALE", {}, OnServer::Refused},
    {"UnknownRegister", {Entry("pno_reg = 9", 8)}, "Protocolli", "Movimento 8", "registro 9", {}, OnServer::Refused},
    {"EntryNumber", {Entry("pno_codice = -1", 8), "UPDATE admin.pnotaro2 SET row_codice = -1 WHERE row_codice = 8"},
     "Numerazione", "Movimento -1", "non è valido", {}, OnServer::Refused},
    {"InstalmentNumber", {Instalment("sca_num = 0", 5)}, "Numerazione", "Scadenza fornitore 0", "non è valido", {},
     OnServer::Refused},
    {"EntryYear", {Entry("pno_data = '1979-12-31'", 8),
     "UPDATE admin.pnotaro2 SET row_data = '1979-12-31' WHERE row_codice = 8"}, "Date", "Movimento 8", "31/12/1979"},
    {"RowYear", {Row("row_data = '0206-03-10'", 8, 1)}, "Date", "Movimento 8 riga 1", "10/03/0206", {"Righe"}},
    {"NewerArchive",
     {"INSERT INTO admin.versione (ver_numero, ver_data, ver_programma) VALUES (99, '2026-01-01', '9')"}, "Motore",
     "Tabella versione", "versione 99"},
    {"NoVersion", {"DELETE FROM admin.versione"}, "Motore", "Tabella versione", "versione 0"},
};

const Damage kInstalmentsAndDocuments[] = {
    {"InstalmentAboveTheCount", {Instalment("sca_rata = 4", 3)}, "Scadenze", "Scadenza fornitore 3", "rata 4 di 3"},
    {"InstalmentWithoutNumber", {Instalment("sca_rata = 0", 2)}, "Scadenze", "Scadenza fornitore 2", "rata 0 di 3"},
    {"LastAndNotLast", {Instalment("sca_ultima = 1", 1)}, "Scadenze", "Scadenza fornitore 1", "si contraddicono", {},
     OnServer::Refused},
    {"PaidWithoutDate", {"UPDATE admin.scadenze SET sca_pagato = 1 WHERE sca_relaz = 0"}, "Scadenze",
     "Scadenza cliente 1", "senza data"},
    {"InstalmentYear", {Instalment("sca_anno = 2025", 1)}, "Scadenze", "Scadenza fornitore 1",
     "l'anno 2025 non è quello della data 10/04/2026"},
    {"CounterpartOfTheEntry", {Entry("pno_cli_for = 2", 1)}, "Scadenze", "Scadenza fornitore 3", "fornitore 2"},
    {"SideOfTheEntry", {Entry("pno_rel = 0", 1)}, "Scadenze", "Scadenza fornitore 1", "ha tipo 0"},
    {"InstalmentLost", {"DELETE FROM admin.scadenze WHERE sca_relaz = 1 AND sca_num = 2"}, "Scadenze", "Movimento 1",
     "ha 2 scadenze, 2 numeri di rata diversi, su 3 rate"},
    {"InstalmentTwice", {Instalment("sca_rata = 1", 2)}, "Scadenze", "Movimento 1",
     "ha 3 scadenze, 2 numeri di rata diversi"},
    {"CountsThatDiffer", {Instalment("sca_rate = 4", 2)}, "Scadenze", "Movimento 1", "su 4 rate"},
    {"NoLastInstalment", {Instalment("sca_ultima = 0, sca_non_ultima = 1", 3)}, "Scadenze", "Movimento 1",
     "nessuna delle 3 rate"},
    {"LastIsNotTheLatest", {Instalment("sca_data = '2026-12-30'", 2)}, "Scadenze", "Movimento 1",
     "l'ultima rata scade il 09/06/2026, ma ce n'è una che scade il 30/12/2026"},
    {"AttachmentSize", {"UPDATE admin.pnotaall SET pat_bytes_size = 11"}, "Allegati", "Allegato 1 del movimento 1",
     "bolla.txt: 10 byte invece di 11"},
    {"SummaryMissing", {"DELETE FROM admin.fatture WHERE fat_codice = 2"}, "Allegati", "Documento 2 anno 2026",
     "IT06186527153_E4187.xml.p7m: manca il riepilogo che l'elenco delle fatture ricevute mostra (si scrive aprendo "
     "l'elenco)"},
    {"SummaryOfAnotherFile",
     {"UPDATE admin.fatture SET fat_fname = 'altro.xml', fat_numero = '9/B', fat_data = '2026-03-01'"
      " WHERE fat_codice = 1"},
     "Allegati", "Documento 1 anno 2026",
     "IT02565617350_00A24.xml: il riepilogo nell'elenco delle fatture ricevute non è quello del documento (9/B del "
     "01/03/2026)"},
    {"DocumentSize", {"UPDATE admin.allegati SET all_bytes_size = 1 WHERE all_codice = 3"}, "Allegati",
     "Documento 3 anno 2026", "invece di 1"},
    {"DocumentExchanged",
     {"UPDATE admin.allegati SET all_data = (SELECT a.all_data FROM admin.allegati a WHERE a.all_codice = 3),"
      " all_bytes_size = (SELECT b.all_bytes_size FROM admin.allegati b WHERE b.all_codice = 3)"
      " WHERE all_codice = 1"},
     "Allegati", "Documento 1 anno 2026", "IT02565617350_00A24.xml: il contenuto non è più quello archiviato"},
    {"SignedDocumentExchanged", {"UPDATE admin.allegati SET all_impronta = '00ff' WHERE all_codice = 2"}, "Allegati",
     "Documento 2 anno 2026", "IT06186527153_E4187.xml.p7m: il contenuto non è più quello archiviato"},
};

const Damage kLinks[] = {
    {"Causale", {Entry("pno_cau = 999", 1)}, "Collegamenti", "Movimento 1", "la causale 999"},
    {"Section", {Entry("pno_sez = 99", 8)}, "Collegamenti", "Movimento 8", "la sezione 99", {"Righe"}},
    {"Terms", {Entry("pno_pag = 999", 1)}, "Collegamenti", "Movimento 1", "il pagamento 999"},
    {"Aggregation", {Entry("pno_agr = 999", 1)}, "Collegamenti", "Movimento 1", "l'aggregazione 999"},
    {"Supplier", {Entry("pno_cli_for = 9999", 2)}, "Collegamenti", "Movimento 2", "il fornitore 9999"},
    {"Customer", {Entry("pno_cli_for = 9999", 7)}, "Collegamenti", "Movimento 7", "il cliente 9999"},
    {"FirstVatCode", {Entry("pno_iva_0 = 999", 2)}, "Collegamenti", "Movimento 2",
     "il codice IVA 999 della riga IVA 1"},
    {"LastVatCode", {Entry("pno_iva_6 = 999", 12)}, "Collegamenti", "Movimento 12",
     "il codice IVA 999 della riga IVA 7"},
    {"RowAccount", {Row("row_con = 77", 2, 3)}, "Collegamenti", "Movimento 2 riga 3", "il conto 300.77 "},
    {"RowSubAccount", {Row("row_sot = 99", 2, 3)}, "Collegamenti", "Movimento 2 riga 3", "il sottoconto 300.1.99"},
    {"RowSupplier", {Row("row_sot = 9999, row_clfo = 9999", 2, 1)}, "Collegamenti", "Movimento 2 riga 1",
     "il fornitore 9999"},
    {"RowCustomer", {Row("row_sot = 9999, row_clfo = 9999", 7, 1)}, "Collegamenti", "Movimento 7 riga 1",
     "il cliente 9999"},
    {"RowCausale", {Row("row_cau = 999", 2, 1)}, "Collegamenti", "Movimento 2 riga 1", "la causale 999"},
    {"RowsOfLostEntry", {"DELETE FROM admin.pnota1 WHERE pno_codice = 1"}, "Collegamenti", "Movimento 1 riga 1",
     "il movimento non esiste", {"Protocolli"}},
    {"InstalmentsOfLostEntry", {"DELETE FROM admin.pnota1 WHERE pno_codice = 1"}, "Collegamenti",
     "Scadenza fornitore 3", "il movimento 1 non esiste", {"Protocolli"}},
    {"AttachmentOfLostEntry", {"DELETE FROM admin.pnota1 WHERE pno_codice = 1"}, "Collegamenti", "Allegato 1",
     "il movimento 1 non esiste", {"Protocolli"}},
    {"ImageOfLostEntry", {"INSERT INTO admin.pnotaim1 (pni_codice, pni_data) VALUES (999, '')"}, "Collegamenti",
     "Immagine del movimento 999", "non esiste"},
    {"ReceiptsOfLostEntry", {"INSERT INTO admin.pnotacor (cor_data, cor_sez, cor_pno) VALUES ('2026-01-02', 1, 999)"},
     "Collegamenti", "Corrispettivi del 02/01/2026 sez. 1", "il movimento 999"},
    {"ReceiptsOfLostSection", {"INSERT INTO admin.pnotacor (cor_data, cor_sez) VALUES ('2026-01-02', 99)"},
     "Collegamenti", "Corrispettivi del 02/01/2026 sez. 99", "la sezione non esiste"},
    {"HolderOfLostEntry", {"INSERT INTO admin.pnotacoi (coi_codice, coi_pno) VALUES (4, 999)"}, "Collegamenti",
     "Cointestatario 4", "il movimento 999"},
    {"HolderUnknown",
     {"INSERT INTO admin.pnotacoi (coi_codice, coi_pno, coi_rel, coi_cli_for) VALUES (4, 1, 1, 9999)"},
     "Collegamenti", "Cointestatario 4 del movimento 1", "il fornitore 9999"},
    {"CostCentre", {"UPDATE admin.pnotacdc SET pcc_cdc = 99 WHERE pcc_idx = 2"}, "Collegamenti", "Movimento 1 riga 3",
     "il centro di costo 99 non esiste"},
    {"CostCentreOfLostRow", {"UPDATE admin.pnotacdc SET pcc_riga = 50"}, "Collegamenti", "Movimento 1 riga 50",
     "divide una riga che non esiste"},
    {"InstalmentSupplier", {Instalment("sca_cli_for = 9999", 5)}, "Collegamenti", "Scadenza fornitore 5",
     "il fornitore 9999"},
    {"InstalmentCustomer", {"UPDATE admin.scadenze SET sca_cli_for = 9999 WHERE sca_relaz = 0"}, "Collegamenti",
     "Scadenza cliente 1", "il cliente 9999", {"Scadenze"}},
    {"InstalmentTerms", {Instalment("sca_pag = 999", 1)}, "Collegamenti", "Scadenza fornitore 1", "il pagamento 999"},
    {"InstalmentBank", {Instalment("sca_ban = 999", 1)}, "Collegamenti", "Scadenza fornitore 1", "la banca 999"},
    {"InstalmentSection", {Instalment("sca_sez = 99", 1)}, "Collegamenti", "Scadenza fornitore 1", "la sezione 99"},
    {"InstalmentAgent", {Instalment("sca_age = 999", 1)}, "Collegamenti", "Scadenza fornitore 1", "l'agente 999"},
    {"TermsOfCustomer", {"UPDATE admin.clienti1 SET cli_pag = 999 WHERE cli_codice = 1"}, "Collegamenti", "Cliente 1",
     "il pagamento 999"},
    {"CausaleOfSupplier", {"UPDATE admin.fornito1 SET for_cau = 999 WHERE for_codice = 1"}, "Collegamenti",
     "Fornitore 1", "la causale 999"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Figures, DamageTest,
                         testing::Combine(testing::ValuesIn(TestEngines()), testing::ValuesIn(kFigures)),
                         CaseName<Damage>);
INSTANTIATE_TEST_SUITE_P(RowsAndNumbers, DamageTest,
                         testing::Combine(testing::ValuesIn(TestEngines()), testing::ValuesIn(kRowsAndNumbers)),
                         CaseName<Damage>);
INSTANTIATE_TEST_SUITE_P(InstalmentsAndDocuments, DamageTest,
                         testing::Combine(testing::ValuesIn(TestEngines()),
                                          testing::ValuesIn(kInstalmentsAndDocuments)),
                         CaseName<Damage>);
INSTANTIATE_TEST_SUITE_P(Links, DamageTest,
                         testing::Combine(testing::ValuesIn(TestEngines()), testing::ValuesIn(kLinks)),
                         CaseName<Damage>);

// -------------------------------------------------------------------------------------------------------- broken file

class BrokenFileTest : public ArchiveCheckTest {};

/// Overwrites the page on which an index or a table begins.
void BreakPage(const std::filesystem::path &file, long page)
{
    constexpr long kPageSize = 4096;
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp((page - 1) * kPageSize);
    const std::string rubbish(static_cast<std::size_t>(kPageSize), '\x5a');
    stream.write(rubbish.data(), kPageSize);
    ASSERT_TRUE(stream.good());
}

TEST_F(BrokenFileTest, IsReportedNotThrown)
{
    for (const char *object : {"pnota1_doc", "pnotaro2", "pnota1", "scadenze"}) {
        SCOPED_TRACE(object);
        Open(SAEngine::SQLite);
        const TestFolder folder;
        const std::filesystem::path copy = folder.Path() / "copia.db";
        connection_.CopyTo(copy.string());
        SACommand root(&connection_, "SELECT rootpage AS pagina FROM admin.sqlite_master WHERE name = :nome");
        root.Param("nome").setAsString(object);
        root.Execute();
        ASSERT_TRUE(root.FetchNext());
        BreakPage(copy, root.Field("pagina").asLong());
        root.Close();
        connection_.Disconnect();

        SAConnection broken;
        broken.Connect(copy.string());
        SACommand command(&broken);
        const ArchiveCheckResult result = CheckArchive(&command);
        EXPECT_TRUE(std::any_of(result.faults.begin(), result.faults.end(), [](const ArchiveFault &fault) {
            return fault.kind == "Motore";
        })) << Listed(result);
        broken.Disconnect();
        SAConnection::ClosePool();
    }
}

} // namespace
