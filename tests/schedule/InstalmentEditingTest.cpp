#include "schedule/InstalmentEditing.h"

#include "schedule/PostalSlip.h"
#include "tarvodlg/base/Dates.h"
#include "tarvolumera/Company.h"
#include "tests/schedule/EditingFixture.h"

#include <gmock/gmock.h>

#include <cmath>
#include <thread>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class InstalmentEditingTest : public InstalmentFixture<ArchiveTest> {
  protected:
    /// "1/2 61.00 2026-02-28 ultima" of each instalment by number.
    std::vector<std::string> Counts()
    {
        std::vector<std::string> counts;
        sqlsca.ForEach(Cmd(), " ORDER BY sca_relaz, sca_num", {}, [&](const SCADENZE &r) {
            EXPECT_EQ(r.sca_ultima + r.sca_non_ultima, 1);
            counts.push_back(fmt::format("{}/{} {:.2f} {}{}", r.sca_rata, r.sca_rate, r.sca_importo,
                                         FormatIsoDate(r.sca_data), r.sca_ultima ? " ultima" : ""));
            return true;
        });
        return counts;
    }

    void ExpectDeletion(const SCADENZE &record, const std::string &amount, int answer)
    {
        user_.Expect(fmt::format("Vuoi veramente eliminare la scadenza n. {} del {} di {}?", record.sca_num,
                                 FormatDate(record.sca_data), amount),
                     answer);
    }
};

TEST_P(InstalmentEditingTest, StoresUnderTheNextFreeNumber)
{
    SCADENZE one = Typed(kCustomer), other = Typed(kCustomer); // both proposed the same number
    EXPECT_TRUE(StoreInstalment(Cmd(), &one, nullptr).done);
    EXPECT_TRUE(StoreInstalment(Cmd(), &other, nullptr).done);
    EXPECT_EQ(one.sca_num, 1);
    EXPECT_EQ(other.sca_num, 2);
    EXPECT_EQ(one.sca_anno, 2026);
    EXPECT_EQ(one.sca_tipo_pag, 2) << "of the customer's terms";
    EXPECT_EQ(one.sca_ban, 1) << "the customer's bank";
    EXPECT_EQ(one.sca_age, 1);
    EXPECT_EQ(Typed(kSupplier).sca_num, 1) << "each side has its own numbers";
}

struct Fault {
    const char *name;
    std::function<void(SCADENZE &)> spoil;
    const char *column, *text;
};
const Fault kFaults[] = {
    {"NoCounterpart", [](SCADENZE &r) { r.sca_cli_for = 0; }, "sca_cli_for", "Cliente mancante."},
    {"UnknownCounterpart", [](SCADENZE &r) { r.sca_cli_for = 9999; }, "sca_cli_for", "Il cliente 9999 non esiste."},
    {"CodeBeyond32Bits", [](SCADENZE &r) { r.sca_cli_for = 5'000'000'000; }, "sca_cli_for",
     "Il cliente 5000000000 non esiste."},
    {"NoDate", [](SCADENZE &r) { r.sca_data = 0; }, "sca_data", "Data di scadenza mancante."},
    {"Zero", [](SCADENZE &r) { r.sca_importo = 0.004; }, "sca_importo", "Importo mancante."},
    {"TooMuch", [](SCADENZE &r) { r.sca_importo = 1e12; }, "sca_importo", "Importo troppo grande."},
    {"NoNumber", [](SCADENZE &r) { r.sca_importo = std::nan(""); }, "sca_importo", "Importo troppo grande."},
    {"Count", [](SCADENZE &r) { r.sca_rata = 3, r.sca_rate = 2; }, "sca_rata", "La rata 3 di 2 non esiste."},
    {"Section", [](SCADENZE &r) { r.sca_sez = 77; }, "sca_sez", "La sezione 77 non esiste."},
    {"Terms", [](SCADENZE &r) { r.sca_pag = 9999; }, "sca_pag", "Il pagamento 9999 non esiste."},
    {"Bank", [](SCADENZE &r) { r.sca_ban = 77; }, "sca_ban", "La banca 77 non esiste."},
    {"DestinationOfAnother", [](SCADENZE &r) { r.sca_cli_for = 2, r.sca_dst = 1; }, "sca_dst",
     "La destinazione 1 non esiste per il cliente 2."},
    {"Agent", [](SCADENZE &r) { r.sca_age = 77; }, "sca_age", "L'agente 77 non esiste."},
    {"Side", [](SCADENZE &r) { r.sca_relaz = 2; }, "sca_relaz", "Indicare 0 (cliente) o 1 (fornitore)."},
    {"PaidByHand", [](SCADENZE &r) { r.sca_pagato = 1; }, "sca_pagato",
     "Pagamento, distinta e stampa della Ri.Ba. non si scrivono a mano."},
    {"EntryByHand", [](SCADENZE &r) { r.sca_pno = 1; }, "sca_pno",
     "Il movimento di una scadenza non si scrive a mano."},
};

TEST_P(InstalmentEditingTest, RefusesWhatCannotBeStored)
{
    for (const Fault &fault : kFaults) {
        SCOPED_TRACE(fault.name);
        SCADENZE record = Typed(kCustomer);
        fault.spoil(record);
        user_.Expect(fault.text);
        const int beeps = user_.beeps;
        const InstalmentOutcome outcome = StoreInstalment(Cmd(), &record, nullptr);
        EXPECT_FALSE(outcome.done);
        EXPECT_EQ(outcome.column, fault.column);
        EXPECT_EQ(outcome.reason, fault.text);
        EXPECT_EQ(user_.beeps, beeps + 1);
    }
    EXPECT_THAT(Counts(), ElementsAre());
}

TEST_P(InstalmentEditingTest, AsksBeforeACeasedCustomer)
{
    Run("UPDATE admin.clienti1 SET cli_data_cessazione = '2026-01-31' WHERE cli_codice = 2");
    const char *question = "Il cliente selezionato risulta cessato !\n\nVuoi Continuare ?";
    user_.Expect(question, IDNO);
    EXPECT_FALSE(ConfirmCounterpart(Cmd(), kCustomer, 2));
    user_.Expect(question, IDYES);
    EXPECT_TRUE(ConfirmCounterpart(Cmd(), kCustomer, 2));
    EXPECT_EQ(user_.flags.back() & MB_DEFBUTTON2, MB_DEFBUTTON2);
    EXPECT_TRUE(ConfirmCounterpart(Cmd(), kCustomer, 1));
    EXPECT_TRUE(ConfirmCounterpart(Cmd(), kSupplier, 2)) << "supplier 2 has not ceased";
}

TEST_P(InstalmentEditingTest, KeepsWhatAnotherStationDid)
{
    const SCADENZE loaded = Stored(kCustomer);
    SCADENZE mine = loaded;
    mine.sca_importo = 90;
    Run("UPDATE admin.scadenze SET sca_desc = 'di un altro'");
    user_.Expect("La scadenza n. 1 è stata cambiata nel frattempo da un'altra stazione.\n\n"
                 "Ricaricarla e ripetere l'operazione.");
    EXPECT_FALSE(StoreInstalment(Cmd(), &mine, &loaded).done);
    EXPECT_EQ(Value("SELECT sca_desc FROM admin.scadenze WHERE sca_importo = 100"), "di un altro");
    EXPECT_EQ(mine.sca_importo, 90) << "what was typed is not lost";

    ExpectDeletion(loaded, "100,00", IDYES);
    user_.Expect("La scadenza n. 1 è stata cambiata nel frattempo da un'altra stazione.\n\n"
                 "Ricaricarla e ripetere l'operazione.");
    EXPECT_FALSE(DeleteInstalment(Cmd(), loaded).done);

    Run("DELETE FROM admin.scadenze");
    user_.Expect("La scadenza n. 1 è stata eliminata nel frattempo da un'altra stazione.");
    EXPECT_FALSE(StoreInstalment(Cmd(), &mine, &loaded).done);
    EXPECT_THAT(Counts(), ElementsAre());
}

TEST_P(InstalmentEditingTest, InstalmentOfAnEntryFollowsIt)
{
    const SCADENZE loaded = Generated().front();
    const std::string fixed = fmt::format("Il dato viene dal movimento n. {} e si cambia là.", loaded.sca_pno);
    const auto refused = [&](const std::function<void(SCADENZE &)> &change) {
        SCADENZE record = loaded;
        change(record);
        user_.Expect(fixed);
        return !StoreInstalment(Cmd(), &record, &loaded).done;
    };
    EXPECT_TRUE(refused([](SCADENZE &r) { r.sca_cli_for = 2; }));
    EXPECT_TRUE(refused([](SCADENZE &r) { r.sca_fattura = "8"; }));
    EXPECT_TRUE(refused([](SCADENZE &r) { r.sca_rata = 2; }));

    SCADENZE record = loaded;
    record.sca_data = DateToJulian(30, 4, 2026);
    record.sca_desc = "  concordata \n";
    const InstalmentOutcome moved = StoreInstalment(Cmd(), &record, &loaded);
    EXPECT_TRUE(moved.done);
    EXPECT_EQ(moved.warning, "") << "the sum is the same";
    EXPECT_EQ(record.sca_desc, "concordata");
    EXPECT_THAT(Counts(), ElementsAre("1/2 61.00 2026-04-30 ultima", "2/2 61.00 2026-03-31"))
        << "the latest one is the last one";

    const SCADENZE before = record;
    record.sca_importo = 50;
    const InstalmentOutcome reduced = StoreInstalment(Cmd(), &record, &before);
    EXPECT_TRUE(reduced.done) << "told, not refused";
    EXPECT_EQ(reduced.warning,
              fmt::format("Le scadenze del movimento n. {} sommano 111,00, il documento è di 122,00.", loaded.sca_pno));
    const SCADENZE first = record;
    SCADENZE second;
    ASSERT_TRUE(sqlsca.Search(Cmd(), kSupplier, 2, &second));
    const SCADENZE second_before = second;
    second.sca_importo = 72;
    EXPECT_EQ(StoreInstalment(Cmd(), &second, &second_before).warning, "") << "they add up again";
    EXPECT_EQ(first.sca_num, 1);
}

TEST_P(InstalmentEditingTest, PaidOrHeldInstalmentIsLeftAlone)
{
    const struct {
        const char *update, *state, *refusal;
    } states[] = {
        {"sca_pagato = 1, sca_data_pag = '2026-03-01'", "pagata",
         "La scadenza n. 1 è già pagata e non si può {}.\n\nAnnullare prima il pagamento."},
        {"sca_pagato = 1, sca_parked = 1", "in distinta",
         "La scadenza n. 1 è in una distinta e non si può {}.\n\nToglierla prima dalla distinta."},
        {"sca_pagato = 0, sca_parked = 1", "in distinta",
         "La scadenza n. 1 è in una distinta e non si può {}.\n\nToglierla prima dalla distinta."},
    };
    Stored(kSupplier);
    for (const auto &state : states) {
        SCOPED_TRACE(state.update);
        Run(std::string("UPDATE admin.scadenze SET ") + state.update);
        SCADENZE loaded;
        sqlsca.Search(Cmd(), kSupplier, 1, &loaded);
        SCADENZE record = loaded;
        record.sca_importo = 99;
        user_.Expect(
            fmt::format("La scadenza è {}: si possono cambiare solo descrizione, destinazione e agente.", state.state));
        EXPECT_FALSE(StoreInstalment(Cmd(), &record, &loaded).done);
        user_.Expect(fmt::format(fmt::runtime(state.refusal), "eliminare"));
        EXPECT_FALSE(DeleteInstalment(Cmd(), loaded).done) << "not even asked";
        user_.Expect(fmt::format(fmt::runtime(state.refusal), "dividere"));
        SCADENZE part;
        EXPECT_FALSE(SplitInstalment(Cmd(), &loaded, 40, loaded.sca_data, &part).done);

        record = loaded;
        record.sca_desc = std::string("rettificata ") + state.state;
        EXPECT_TRUE(StoreInstalment(Cmd(), &record, &loaded).done);
        EXPECT_FALSE(MayChange(loaded, "sca_data"));
        EXPECT_TRUE(MayChange(loaded, "sca_dst"));
    }
}

TEST_P(InstalmentEditingTest, DeletesAfterAQuestionAndCountsAnew)
{
    const std::vector<SCADENZE> generated = Generated();
    ExpectDeletion(generated[1], "61,00", IDNO);
    EXPECT_FALSE(DeleteInstalment(Cmd(), generated[1]).done);
    EXPECT_EQ(Counts().size(), 2U);
    ExpectDeletion(generated[1], "61,00", IDYES);
    const InstalmentOutcome outcome = DeleteInstalment(Cmd(), generated[1]);
    EXPECT_TRUE(outcome.done);
    EXPECT_THAT(outcome.warning, HasSubstr("sommano 61,00, il documento è di 122,00."));
    EXPECT_THAT(Counts(), ElementsAre("1/1 61.00 2026-02-28 ultima"));
}

TEST_P(InstalmentEditingTest, SplitsInTwoToTheCent)
{
    SCADENZE first = Generated().front(), second;
    EXPECT_TRUE(SplitInstalment(Cmd(), &first, 20.34, DateToJulian(15, 3, 2026), &second).done);
    EXPECT_EQ(first.sca_importo, 40.66);
    EXPECT_EQ(second.sca_num, 3);
    EXPECT_EQ(second.sca_pno, first.sca_pno);
    EXPECT_EQ(second.sca_fattura, "7/A");
    EXPECT_THAT(Counts(), ElementsAre("1/3 40.66 2026-02-28", "3/3 61.00 2026-03-31 ultima", "2/3 20.34 2026-03-15"));

    for (const double part : {0.0, 40.66, 50.0, -1.0, 1e300}) {
        SCOPED_TRACE(part);
        SCADENZE again = first, none;
        user_.Expect("La parte deve stare fra zero e 40,66, esclusi.");
        EXPECT_FALSE(SplitInstalment(Cmd(), &again, part, first.sca_data, &none).done);
    }
    EXPECT_EQ(Counts().size(), 3U);
}

TEST_P(InstalmentEditingTest, SplitsWhatWasEnteredByHand)
{
    SCADENZE first = Stored(kCustomer, [](SCADENZE &r) { r.sca_importo = -100; }), second;
    Stored(kCustomer); // of no invoice either, and none of its business
    EXPECT_TRUE(SplitInstalment(Cmd(), &first, -0.01, first.sca_data, &second).done) << "a credit note's mirrors";
    EXPECT_THAT(Counts(), ElementsAre("1/2 -99.99 2026-06-30", "0/0 100.00 2026-06-30", "2/2 -0.01 2026-06-30 ultima"));
}

TEST_P(InstalmentEditingTest, InvoiceTypedByHandKeepsItsCount)
{
    const auto part = [](long rata, const char *invoice) {
        return [=](SCADENZE &r) {
            r.sca_fattura = invoice;
            r.sca_data_fattura = r.sca_data;
            r.sca_rata = rata;
            r.sca_rate = 2;
        };
    };
    Stored(kCustomer, part(1, "5"));
    const SCADENZE last = Stored(kCustomer, part(2, "5"));
    Stored(kCustomer, part(2, "6"));
    ExpectDeletion(last, "100,00", IDYES);
    EXPECT_TRUE(DeleteInstalment(Cmd(), last).done);
    EXPECT_THAT(Counts(), ElementsAre("1/1 100.00 2026-06-30 ultima", "2/2 100.00 2026-06-30 ultima"));
}

TEST_P(InstalmentEditingTest, BrowsesWithinSideAndSection)
{
    for (const long section : {1L, 9L, 1L}) Stored(kCustomer, [&](SCADENZE &r) { r.sca_sez = section; });
    Stored(kSupplier);
    const auto numbers = [&](short side, bool forward, long section) {
        std::vector<long> visited;
        SCADENZE record;
        while (NeighbourInstalment(Cmd(), side, record.sca_num, forward, section, &record))
            visited.push_back(record.sca_num);
        return visited;
    };
    EXPECT_THAT(numbers(kCustomer, true, 0), ElementsAre(1, 2, 3));
    EXPECT_THAT(numbers(kCustomer, false, 0), ElementsAre(3, 2, 1));
    EXPECT_THAT(numbers(kCustomer, true, 1), ElementsAre(1, 3));
    EXPECT_THAT(numbers(kCustomer, false, 9), ElementsAre(2));
    EXPECT_THAT(numbers(kSupplier, true, 9), ElementsAre());
}

TEST_P(InstalmentEditingTest, StationsTakeNumbersOfTheirOwn)
{
    constexpr int kEach = 10;
    std::vector<std::thread> stations;
    SCADENZE typed = Typed(kCustomer);
    for (int i = 0; i < 3; ++i)
        stations.emplace_back([typed] {
            SAConnection connection;
            connection.Connect(lumera_db_target);
            SACommand command(&connection);
            for (int k = 0; k < kEach; ++k) {
                SCADENZE record = typed;
                EXPECT_TRUE(StoreInstalment(&command, &record, nullptr).done);
            }
        });
    for (std::thread &station : stations) station.join();
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "30");
    EXPECT_EQ(Value("SELECT MAX(sca_num) FROM admin.scadenze"), "30");
}

TEST_P(InstalmentEditingTest, SlipSaysWhatIsPaidAndByWhom)
{
    SCADENZE record = Typed(kCustomer);
    record.sca_importo = 1220.05;
    record.sca_desc = "INCASSO FATTURA VENDITA";
    record.sca_fattura = "12/B";
    record.sca_data_fattura = DateToJulian(5, 2, 2026);
    PostalSlip slip = PostalSlipOf(Cmd(), record);
    EXPECT_EQ(slip.importo_cifre, "1220");
    EXPECT_EQ(slip.decimali_cifre, "05");
    EXPECT_EQ(slip.importo_lettere, "milleduecentoventi/05");
    EXPECT_EQ(slip.causale, "INCASSO FATTURA VENDITA N. 12/B DEL 05/02/2026");
    EXPECT_EQ(slip.eseguito_da, "Edilnova Cordevasco S.r.l.");
    EXPECT_EQ(slip.indirizzo, "Via Emilia Ovest 212");
    EXPECT_EQ(slip.cap, "43126");
    EXPECT_EQ(slip.citta, "Parma (PR)");

    record.sca_importo = 99.999; // rounded before it is parted
    record.sca_data_fattura = 0;
    slip = PostalSlipOf(Cmd(), record);
    EXPECT_EQ(slip.importo_cifre + "," + slip.decimali_cifre + " " + slip.importo_lettere, "100,00 cento/00");
    EXPECT_EQ(slip.causale, "INCASSO FATTURA VENDITA N. 12/B");
    record.sca_fattura = "";
    record.sca_data_fattura = DateToJulian(5, 2, 2026);
    EXPECT_EQ(PostalSlipOf(Cmd(), record).causale, "INCASSO FATTURA VENDITA N.  DEL 05/02/2026");

    record = Typed(kSupplier);
    record.sca_importo = 0.29;
    slip = PostalSlipOf(Cmd(), record);
    EXPECT_EQ(slip.importo_cifre + "," + slip.decimali_cifre, "0,29") << "0.29 * 100 is a bit less than 29";
    EXPECT_EQ(slip.eseguito_da, "Brenzola Forniture S.r.l.") << "to a supplier the company pays";
}

TEST_P(InstalmentEditingTest, NoSlipOverLessThanACent)
{
    const SCADENZE credit = Stored(kCustomer, [](SCADENZE &r) { r.sca_importo = -5; });
    user_.Expect("Il bollettino si stampa per un importo da versare.\n\nLa scadenza n. 1 è di -5,00.");
    EXPECT_FALSE(PrintPostalSlip(credit, ReportDestination{ReportTarget::Pdf, Folder() / "b.pdf"}));
    EXPECT_FALSE(std::filesystem::exists(Folder() / "b.pdf"));
}

INSTANTIATE_TEST_SUITE_P(Engines, InstalmentEditingTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
