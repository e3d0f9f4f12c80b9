#include "tests/einvoice/InvoiceFixture.h"

namespace {

const char *const kNotFound = "Non è stato possibile individuare il fornitore con la partita IVA o con il codice "
                              "Fiscale!\n\nVuoi cercarlo manualmente "
                              "?\n\nRispondi :\nSI - per cercalo\nNO - per creare un nuovo Fornitore\nAnnulla - per "
                              "annullare la contabilizzazione";
constexpr const char *kNoTerms = "Nessuna modalità di pagamento impostata sul fornitore!\n\nNessuna scadenza generata.";

InvoiceSpec FromUnknownSeller()
{
    InvoiceSpec spec;
    spec.seller_vat = "01251347207";
    spec.seller_fiscal_code = "01251347207";
    spec.seller_name = "<Denominazione>Ghirlandozzi Macchine S.r.l.</Denominazione>";
    return spec;
}

fatturapa::PartyType SellerOf(const std::string &text)
{
    CFattureElettronicheDB content;
    content.Load(text, "prova.xml");
    return content.Header().CedentePrestatore;
}

class SupplierTest : public InvoiceTest {
  protected:
    /// 0 when the search stopped.
    long Find(const std::string &text)
    {
        FORNITORI supplier;
        bool is_new = false;
        const bool found = CreaFornnitore(Cmd(), SellerOf(text), choices_, &supplier, &is_new);
        EXPECT_FALSE(is_new);
        return found ? supplier.for_codice : 0;
    }
    long Find(const std::string &vat, const std::string &fiscal_code)
    {
        InvoiceSpec spec;
        spec.seller_vat = vat;
        spec.seller_fiscal_code = fiscal_code;
        return Find(InvoiceText(spec));
    }
};

TEST_P(SupplierTest, IsFoundByVatNumberThenFiscalCodeTheNewestFirst)
{
    EXPECT_EQ(Find("07916437341", ""), 24) << "11, ceased, has the same number";
    EXPECT_EQ(Find("99999999990", "07916437341"), 24) << "by fiscal code, the newest too";
    EXPECT_EQ(Find("", "FRRTTV66C65D612F"), 14);
    EXPECT_EQ(Find("02565617350", "FRRTTV66C65D612F"), 1) << "the VAT number decides";
    EXPECT_EQ(Find("IT02565617350", ""), 1) << "the country repeated in front of the number";
    EXPECT_EQ(Find(ReadSample("IT19949417158_1D0F8.xml")), 24);
}

// Supplier 25 has no VAT number: a seller without one must not be taken for it.
TEST_P(SupplierTest, EmptyNumbersNeverMeet)
{
    Run("UPDATE admin.fornito1 SET for_codfis = '' WHERE for_codice = 25");
    user_.Expect(kNotFound, IDCANCEL);
    EXPECT_EQ(Find("", "01251347207"), 0);
    FORNITORI supplier;
    EXPECT_FALSE(FindSupplierOfRow(Cmd(), "", "01251347207", &supplier));
    EXPECT_FALSE(FindSupplierOfRow(Cmd(), "", "", &supplier));
}

TEST_P(SupplierTest, CancelAndAChoiceGivenUpStopWithNothingStored)
{
    const long code = Filed(FromUnknownSeller());
    const std::string before = Stored();
    for (const int answer : {IDCANCEL, IDYES, IDNO}) {
        user_.Expect(kNotFound, answer);
        const RegistrationOutcome outcome = Register(code);
        EXPECT_FALSE(outcome.registered);
        EXPECT_EQ(outcome.reason, "Fornitore non individuato.");
    }
    choices_.choose_supplier = [](const fatturapa::PartyType &) { return 4711L; };
    user_.Expect(kNotFound, IDYES);
    EXPECT_FALSE(Register(code).registered) << "a supplier that does not exist";
    EXPECT_EQ(Stored(), before);
    EXPECT_EQ(user_.flags.back() & 0xF00u, MB_DEFBUTTON3) << "Cancel is the default";
}

TEST_P(SupplierTest, ChosenSupplierIsUsed)
{
    choices_.choose_supplier = [](const fatturapa::PartyType &seller) {
        return seller.DatiAnagrafici.IdFiscaleIVA.IdCodice == "01251347207" ? 3L : 0L;
    };
    user_.Expect(kNotFound, IDYES);
    const RegistrationOutcome outcome = Register(Filed(FromUnknownSeller()));
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_EQ(outcome.entry.pno_cli_for, 3);
    EXPECT_EQ(Count("fornito1"), "25");
}

TEST_P(SupplierTest, NewLegalPersonCarriesTheSellersData)
{
    InvoiceSpec spec = FromUnknownSeller();
    spec.rea =
        "<IscrizioneREA><Ufficio>MO</Ufficio><NumeroREA>991</NumeroREA><SocioUnico>SU</SocioUnico>"
        "<StatoLiquidazione>LS</StatoLiquidazione></IscrizioneREA><Contatti><Telefono>059 000</Telefono></Contatti>";
    choices_.confirm_supplier = [](FORNITORI *prepared) {
        prepared->for_pag = 45;
        return true;
    };
    choices_.choose_causale = [](long proposed) { return proposed; };
    user_.Expect(kNotFound, IDNO);
    const RegistrationOutcome outcome = Register(Filed(spec));
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_EQ(outcome.entry.pno_cli_for, 26);
    EXPECT_EQ(outcome.entry.pno_cau, 21) << "the company's default";
    EXPECT_EQ(outcome.instalments, 2) << "by the terms given in the editor";

    FORNITORI supplier;
    ASSERT_TRUE(sqlfor.Search(Cmd(), 26, &supplier));
    EXPECT_EQ(supplier.for_pers, "G");
    EXPECT_EQ(supplier.for_desc, "Ghirlandozzi Macchine S.r.l.");
    EXPECT_EQ(supplier.for_piva, "01251347207");
    EXPECT_EQ(supplier.for_codfis, "01251347207");
    EXPECT_EQ(supplier.for_socio_unico, "SU");
    EXPECT_EQ(supplier.for_stato_liq, "LS");
    EXPECT_EQ(supplier.for_rea, "MO-991");
    EXPECT_EQ(supplier.for_indirizzo, "Via Gandhi, 21");
    EXPECT_EQ(supplier.for_cap, "42123");
    EXPECT_EQ(supplier.for_citta, "Reggio nell'Emilia");
    EXPECT_EQ(supplier.for_prov, "RE");
    EXPECT_EQ(supplier.for_naz, "IT");
    EXPECT_EQ(ArchiveFaults(), "");
}

// The editor of a window stores the supplier, a command leaves it to be stored with the entry.
TEST_P(SupplierTest, SupplierIsNewUntilItIsStored)
{
    const fatturapa::PartyType seller = SellerOf(InvoiceText(FromUnknownSeller()));
    const auto is_new_after = [&](const std::function<void(FORNITORI *)> &confirm) {
        choices_.confirm_supplier = [&](FORNITORI *prepared) {
            confirm(prepared);
            return true;
        };
        FORNITORI supplier;
        bool is_new = false;
        user_.Expect(kNotFound, IDNO);
        EXPECT_TRUE(CreaFornnitore(Cmd(), seller, choices_, &supplier, &is_new));
        EXPECT_EQ(supplier.for_codice, 26);
        return is_new;
    };
    EXPECT_TRUE(is_new_after([](FORNITORI *) {}));
    const auto store = [&](FORNITORI *prepared) { sqlfor.SqlTransaction(Cmd(), kInsert, prepared); };
    EXPECT_TRUE(is_new_after([&](FORNITORI *prepared) {
        FORNITORI other = *prepared;
        other.for_desc = "Altra ditta";
        store(&other);
    })) << "another station took the code for somebody else";
    Run("DELETE FROM admin.fornito1 WHERE for_codice = 26");
    EXPECT_FALSE(is_new_after(store));
    EXPECT_EQ(Count("fornito1"), "26");
}

TEST_P(SupplierTest, NewNaturalPersonIsCalledBySurnameAndName)
{
    choices_.confirm_supplier = [](FORNITORI *) { return true; };
    choices_.choose_causale = [](long) { return 27L; };
    user_.Expect(kNotFound, IDNO);
    user_.Expect(kNoTerms);
    const RegistrationOutcome outcome = Register(Filed(ReadSample("IT03918277199_AV042.xml")));
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_EQ(outcome.instalments, 0);
    EXPECT_THAT(outcome.notes, testing::Contains("Ritenuta d'acconto di 400,00 da trattenere al pagamento."));
    EXPECT_EQ(outcome.entry.righe[0].des_sot, "Tornabarbi, Leonida");
    FORNITORI supplier;
    ASSERT_TRUE(sqlfor.Search(Cmd(), outcome.entry.pno_cli_for, &supplier));
    EXPECT_EQ(supplier.for_pers, "F");
    EXPECT_EQ(supplier.for_desc, "Tornabarbi, Leonida");
    EXPECT_EQ(supplier.for_rag_soc1, "Tornabarbi");
    EXPECT_EQ(supplier.for_rag_soc2, "Leonida");
    EXPECT_EQ(ArchiveFaults(), "");
}

// Longer than any column, and letters of more than one byte where the cut falls.
TEST_P(SupplierTest, LongNamesAreCutAtWholeLetters)
{
    InvoiceSpec spec = FromUnknownSeller();
    std::string name;
    for (int i = 0; i < 80; ++i) name += "à";
    spec.seller_name = "<Denominazione>" + name + " S.p.A.</Denominazione>";
    const FORNITORI supplier = SupplierFromSeller(Cmd(), SellerOf(InvoiceText(spec)));
    EXPECT_EQ(supplier.for_desc, name + " S.p.A.");
    EXPECT_EQ(supplier.for_rag_soc1, name.substr(0, 120)) << "60 letters of two bytes";
}

// Nothing of a registration may stay when its last write fails: the second instalment of the entry.
TEST_P(SupplierTest, FailureInTheMiddleTakesTheNewSupplierBackToo)
{
    Run("CREATE UNIQUE INDEX prova_una_rata ON admin.scadenze (sca_pno)");
    choices_.confirm_supplier = [](FORNITORI *prepared) {
        prepared->for_pag = 45;
        return true;
    };
    choices_.choose_causale = [](long proposed) { return proposed; };
    const long code = Filed(FromUnknownSeller());
    const std::string before = Stored();
    user_.Expect(kNotFound, IDNO);
    EXPECT_THROW(Register(code), SAException);
    EXPECT_EQ(Stored(), before);

    Run("DROP INDEX admin.prova_una_rata");
    user_.Expect(kNotFound, IDNO);
    const RegistrationOutcome again = Register(code);
    ASSERT_TRUE(again.registered) << again.reason;
    EXPECT_EQ(again.entry.pno_prot, 1) << "the number given back";
}

// While the new supplier is looked at, another station may store one.
TEST_P(SupplierTest, NewSupplierGivesWayToWhatAnotherStationStored)
{
    choices_.choose_causale = [](long proposed) { return proposed; };
    FORNITORI other;
    choices_.confirm_supplier = [&](FORNITORI *prepared) {
        other = *prepared;
        other.for_desc = "Di un'altra stazione";
        other.for_piva = other.for_codfis = "";
        sqlfor.SqlTransaction(Cmd(), kInsert, &other);
        return true;
    };
    user_.Expect(kNotFound, IDNO);
    user_.Expect(kNoTerms);
    const RegistrationOutcome outcome = Register(Filed(FromUnknownSeller()));
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_EQ(outcome.entry.pno_cli_for, other.for_codice + 1) << "the proposed code was gone";
    EXPECT_EQ(outcome.entry.righe[0].row_sot, other.for_codice + 1);
    EXPECT_EQ(ArchiveFaults(), "");

    choices_.confirm_supplier = [&](FORNITORI *prepared) {
        other = *prepared;
        other.for_codice += 10;
        sqlfor.SqlTransaction(Cmd(), kInsert, &other);
        return true;
    };
    InvoiceSpec spec = FromUnknownSeller();
    spec.seller_vat = spec.seller_fiscal_code = "99999999990";
    user_.Expect(kNotFound, IDNO);
    user_.Expect(kNoTerms);
    const RegistrationOutcome same = Register(Filed(spec));
    ASSERT_TRUE(same.registered) << same.reason;
    EXPECT_EQ(same.entry.pno_cli_for, other.for_codice) << "the same seller is not stored twice";

    choices_.confirm_supplier = [&](FORNITORI *prepared) { // and his invoice registered with him
        other = *prepared;
        sqlfor.SqlTransaction(Cmd(), kInsert, &other);
        ++prepared->for_codice;
        Run(fmt::format("UPDATE admin.pnota1 SET pno_cli_for = {} WHERE pno_codice = 1", other.for_codice));
        return true;
    };
    spec.seller_vat = spec.seller_fiscal_code = "99999999981";
    const long code = Filed(spec);
    user_.Expect(kNotFound, IDNO);
    EXPECT_THROW(Register(code), SAException);
    EXPECT_EQ(Count("pnota1"), "2");
}

INSTANTIATE_TEST_SUITE_P(Engines, SupplierTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
