#include "tables/TableChecks.h"

#include "tests/support/TestArchive.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// "cli_piva: text" per fault, questions with a '?' before them, template rows as "car_mas[2]".
std::vector<std::string> Texts(const std::vector<FieldFault> &faults)
{
    std::vector<std::string> texts;
    for (const FieldFault &fault : faults)
        texts.push_back((fault.severity == FieldFault::Severity::Question ? "?" : "") + fault.column +
                        (fault.row == 0 ? "" : fmt::format("[{}]", fault.row)) + ": " + fault.text);
    return texts;
}

std::string Question(const std::string &text)
{
    return "?" + text + "\n\nVuoi Continuare ?";
}

/// One change of a right record and what must be said about it; nothing = still right.
template <class Record>
struct Case {
    const char *name;
    std::function<void(Record &)> change;
    std::vector<std::string> expected;
};

class ChecksTest : public ArchiveTest {
  protected:
    template <class Record>
    void ExpectFaults(std::vector<FieldFault> (*check)(SACommand *, const Record &, bool), const Record &right,
                      const std::vector<Case<Record>> &cases, bool is_new = true)
    {
        EXPECT_THAT(Texts(check(Cmd(), right, is_new)), IsEmpty()) << "the right record";
        for (const Case<Record> &one : cases) {
            Record record = right;
            one.change(record);
            EXPECT_EQ(Texts(check(Cmd(), record, is_new)), one.expected) << one.name;
        }
    }

    template <class Table, class Record>
    void ExpectAllRight(const Table &table, const char *order, Record record,
                        std::vector<FieldFault> (*check)(SACommand *, const Record &, bool))
    {
        std::vector<Record> all;
        table.ForEach(Cmd(), std::string(" ORDER BY ") + order, {}, [&](const Record &row) {
            all.push_back(row);
            return true;
        });
        EXPECT_FALSE(all.empty()) << table.TableName();
        for (const Record &row : all) {
            record = row;
            EXPECT_THAT(Texts(check(Cmd(), record, false)), IsEmpty()) << table.TableName();
        }
    }
};

CLIENTI RightCustomer()
{
    CLIENTI customer;
    customer.cli_codice = 500;
    customer.cli_desc = "Prova S.r.l.";
    customer.cli_piva = "01234567897";
    customer.cli_codfis = "01234567897";
    customer.cli_cap = "43126";
    customer.cli_prov = "PR";
    return customer;
}

CLIENTI RightPerson()
{
    CLIENTI customer = RightCustomer();
    customer.cli_pers = "F";
    customer.cli_rag_soc1 = "Rossi";
    customer.cli_rag_soc2 = "Mario";
    customer.cli_piva = "";
    customer.cli_codfis = "RSSMRA80A01H501U";
    return customer;
}

/// What a new company begins with, and the demo company's own records, must be storable as they are.
TEST_P(ChecksTest, RecordsOfTheArchiveAreRight)
{
    ExpectAllRight(sqlmas, "mas_codice", MASTRI{}, CheckMastro);
    ExpectAllRight(sqlcon, "con_mas, con_codice", CONTI{}, CheckConto);
    ExpectAllRight(sqlsot, "sot_mas, sot_con, sot_codice", SOTTOCON{}, CheckSottoconto);
    ExpectAllRight(sqlsez, "sez_codice", SEZIONI{}, CheckSezione);
    ExpectAllRight(sqliva, "iva_codice", CODIVA{}, CheckCodiva);
    ExpectAllRight(sqlpag, "pag_codice", PAGAMENTI{}, CheckPagamento);
    ExpectAllRight(sqlban, "ban_codice", BANCHE{}, CheckBanca);
    ExpectAllRight(sqlcdc, "cdc_codice", CENTRI{}, CheckCentro);
    ExpectAllRight(sqlage, "age_codice", AGENTI{}, CheckAgente);
    ExpectAllRight(sqlcli, "cli_codice", CLIENTI{}, CheckCliente);
    ExpectAllRight(sqlfor, "for_codice", FORNITORI{}, CheckFornitore);
    ExpectAllRight(sqldit, "dit_codice", DITTE{}, CheckDitta);
    ExpectAllRight(sqlflg, "flg_codice", FLAG{}, CheckFlag);
    for (long code = 1; code < 100; ++code) {
        CAUCONT causale;
        if (!sqlcac.Search(Cmd(), code, &causale)) continue;
        EXPECT_THAT(Texts(CheckCausale(Cmd(), causale, false)), IsEmpty()) << code;
    }
}

TEST_P(ChecksTest, Customers)
{
    using C = Case<CLIENTI>;
    ExpectFaults<CLIENTI>(
        CheckCliente, RightCustomer(),
        {C{"NoCode", [](auto &r) { r.cli_codice = 0; }, {"cli_codice: Codice mancante o fuori dai limiti."}},
         C{"CodeTaken", [](auto &r) { r.cli_codice = 1; }, {"cli_codice: Il codice 1 è già presente."}},
         C{"HugeCode",
           [](auto &r) { r.cli_codice = 3'000'000'000; },
           {"cli_codice: Codice mancante o fuori dai limiti."}},
         C{"NoName", [](auto &r) { r.cli_desc = "  "; }, {"cli_desc: Ragione sociale mancante."}},
         C{"CheckDigit",
           [](auto &r) { r.cli_piva = "01234567890"; },
           {"cli_piva: Partita IVA 01234567890: carattere di controllo errato: atteso 7."}},
         C{"GroupCode", [](auto &r) { r.cli_codfis = "12345678903"; }, {}},
         C{"BodyWithoutVat", [](auto &r) { r.cli_piva = "", r.cli_codfis = "80012570133"; }, {}},
         C{"CompanyWithPersonsCode",
           [](auto &r) { r.cli_codfis = "RSSMRA80A01H501U"; },
           {"cli_codfis: Codice fiscale RSSMRA80A01H501U: è di una persona fisica, una società ne ha uno di 11 "
            "cifre."}},
         C{"Nobody",
           [](auto &r) { r.cli_piva = "", r.cli_codfis = ""; },
           {Question("cli_piva: Mancano partita IVA e codice fiscale.")}},
         C{"VatTaken",
           [](auto &r) { r.cli_piva = "09406137340"; },
           {Question("cli_piva: Partita IVA già presente: 1 Edilnova Cordevasco S.r.l.")}},
         C{"FiscalCodeTaken",
           [](auto &r) { r.cli_piva = "", r.cli_codfis = "80013747342"; },
           {Question("cli_codfis: Codice fiscale già presente: 36 Istituto di Istruzione Superiore Val Ceredola")}},
         C{"SameNumberElsewhere",
           [](auto &r) { r.cli_naz = "DE", r.cli_prov = "", r.cli_piva = "09406137340", r.cli_codfis = ""; },
           {}},
         C{"ForeignNumber", [](auto &r) { r.cli_naz = "DE", r.cli_piva = "294118739", r.cli_codfis = "X"; }, {}},
         C{"CountryInFront",
           [](auto &r) { r.cli_naz = "DE", r.cli_piva = "DE294118739"; },
           {"cli_piva: Partita IVA DE294118739: scriverla senza la sigla della nazione."}},
         C{"NoNation", [](auto &r) { r.cli_naz = "ZZ"; }, {"cli_naz: La nazione «ZZ» non esiste."}},
         C{"ForeignAddress", [](auto &r) { r.cli_naz = "CH", r.cli_cap = "8005", r.cli_prov = ""; }, {}},
         C{"ShortPostcode",
           [](auto &r) { r.cli_cap = "4312"; },
           {"cli_cap: CAP 4312: lunghezza errata: 4 caratteri invece di 5."}},
         C{"UnknownPostcode",
           [](auto &r) { r.cli_cap = "00000"; },
           {Question("cli_cap: CAP 00000: CAP inesistente: i codici vanno da 00010 a 98168.")}},
         C{"AbolishedProvince", [](auto &r) { r.cli_prov = "VS"; }, {}},
         C{"UnknownProvince", [](auto &r) { r.cli_prov = "XY"; }, {"cli_prov: La provincia «XY» non esiste."}},
         C{"AbroadInItaly", [](auto &r) { r.cli_prov = "EE"; }, {"cli_prov: EE è per gli indirizzi esteri."}},
         C{"SoleTraderCompany",
           [](auto &r) { r.cli_ditta_ind = 1; },
           {"cli_ditta_ind: La ditta individuale è di una persona fisica."}},
         C{"References",
           [](auto &r) { r.cli_pag = 999, r.cli_ban = 9, r.cli_age = 9; },
           {"cli_pag: Il pagamento 999 non esiste.", "cli_ban: La banca 9 non esiste.",
            "cli_age: L'agente 9 non esiste."}},
         C{"HalfAnAccount", [](auto &r) { r.cli_mas = 150; }, {"cli_mas: Indicare mastro e conto, o nessuno dei due."}},
         C{"SuppliersMaster",
           [](auto &r) { r.cli_mas = 250, r.cli_con = 1; },
           {"cli_mas: Il mastro deve essere il 150."}},
         C{"NoAccount", [](auto &r) { r.cli_mas = 150, r.cli_con = 7; }, {"cli_con: Il conto 150.7 non esiste."}},
         C{"ShortDestination",
           [](auto &r) { r.cli_cod_dest = "AB123"; },
           {"cli_cod_dest: Codice destinatario: lunghezza errata: 5 caratteri invece di 7 (6 per gli uffici "
            "pubblici)."}},
         C{"Several",
           [](auto &r) { r.cli_desc = "", r.cli_iban = "IT60X0542811101000000123457", r.cli_pec = "prova"; },
           {"cli_desc: Ragione sociale mancante.", "cli_pec: PEC: deve avere un nome, una @ e un dominio.",
            "cli_iban: IBAN: cifre di controllo errate."}}});

    ExpectFaults<CLIENTI>(
        CheckCliente, RightPerson(),
        {C{"NoSurname",
           [](auto &r) { r.cli_rag_soc1 = ""; },
           {"cli_rag_soc1: Cognome mancante: è una persona fisica."}},
         C{"NoFirstName", [](auto &r) { r.cli_rag_soc2 = ""; }, {"cli_rag_soc2: Nome mancante: è una persona fisica."}},
         C{"BodysCode",
           [](auto &r) { r.cli_codfis = "01234567897"; },
           {"cli_codfis: Codice fiscale 01234567897: quello di una persona fisica ha 16 caratteri."}},
         C{"Omocodia", [](auto &r) { r.cli_codfis = "RSSMRA80A01H50MM"; }, {}},
         C{"CheckLetter",
           [](auto &r) { r.cli_codfis = "RSSMRA80A01H501Z"; },
           {"cli_codfis: Codice fiscale RSSMRA80A01H501Z: carattere di controllo errato: atteso U."}}});
}

/// What was asked when the codes were new is not asked again each time that the telephone changes.
TEST_P(ChecksTest, DoubleVatNumberIsAskedAboutOnce)
{
    FORNITORI supplier;
    ASSERT_TRUE(sqlfor.Search(Cmd(), 24, &supplier));
    supplier.for_telefono = "0521 1";
    EXPECT_THAT(Texts(CheckFornitore(Cmd(), supplier, false)), IsEmpty());
    supplier.for_piva = "02565617350";
    EXPECT_THAT(Texts(CheckFornitore(Cmd(), supplier, false)),
                ElementsAre(Question("for_piva: Partita IVA già presente: 1 Utensileria Marzavola S.r.l.")));
}

TEST_P(ChecksTest, Suppliers)
{
    using C = Case<FORNITORI>;
    FORNITORI right;
    right.for_codice = 500;
    right.for_desc = "Prova S.p.A.";
    right.for_piva = "01234567897";
    right.for_rea = "MI-1234567";
    right.for_cau = 21;
    ExpectFaults<FORNITORI>(
        CheckFornitore, right,
        {C{"SalesCausale", [](auto &r) { r.for_cau = 1; }, {"for_cau: La causale 1 non è dei fornitori."}},
         C{"NoCausale", [](auto &r) { r.for_cau = 999; }, {"for_cau: La causale 999 non esiste."}},
         C{"Rea",
           [](auto &r) { r.for_rea = "1234567"; },
           {"for_rea: Numero REA: scrivere ufficio e numero, come MI-1234567."}},
         C{"Members",
           [](auto &r) { r.for_socio_unico = "NO", r.for_stato_liq = "X"; },
           {"for_socio_unico: Socio unico: SU (uno) o SM (più soci).",
            "for_stato_liq: Liquidazione: LS (in liquidazione) o LN (non in liquidazione)."}}});
}

TEST_P(ChecksTest, Causali)
{
    using C = Case<CAUCONT>;
    CAUCONT right;
    ASSERT_TRUE(sqlcac.Search(Cmd(), 21, &right));
    right.cac_codice = 500;
    ExpectFaults<CAUCONT>(
        CheckCausale, right,
        {C{"NoRegister", [](auto &r) { r.cac_reg = 8; }, {"cac_reg: Il registro va da 1 a 7."}},
         C{"VatWithoutRegister", [](auto &r) { r.cac_reg = 1; }, {"cac_iva: Le righe IVA vogliono un registro IVA."}},
         C{"SuspendedWithoutVat",
           [](auto &r) { r.cac_iva = 0, r.cac_iva_sosp = 1; },
           {"cac_iva_sosp: L'IVA in sospensione vuole le righe IVA."}},
         C{"PurchasesFromCustomers",
           [](auto &r) { r.cac_rel = 0; },
           {Question("cac_rel: Nel registro ACQUISTI il soggetto è di solito un fornitore.")}},
         C{"Section", [](auto &r) { r.cac_sez = 5; }, {"cac_sez: La sezione 5 non esiste."}},
         C{"Document",
           [](auto &r) { r.cac_tipo_documento = 14; },
           {"cac_tipo_documento: Il tipo documento 14 non esiste."}},
         C{"Rows",
           [](auto &r) {
               r.righe[1].car_sot = 77;
               r.righe[2].car_mas = 999;
               r.righe[3].car_con = 1;
               r.righe[4] = {0, 0, 300, 0, 1, 2, 0};
               r.righe[19] = {0, 0, 300, 1, 1, 3, 0};
           },
           {"car_sot[2]: Riga n. 2: Il conto 260.1.77 non esiste.", "car_mas[3]: Riga n. 3: Il mastro 999 non esiste.",
            "car_mas[4]: Riga n. 4: Manca il mastro.", "car_con[5]: Riga n. 5: Manca il conto.",
            "car_tipo[20]: Riga n. 20: Segno: 0 dare, 1 avere, 2 a scelta."}},
         C{"RowOnASupplier", [](auto &r) { r.righe[0].car_sot = 1; }, {}},
         C{"RowOnNobody",
           [](auto &r) { r.righe[0].car_sot = 99; },
           {"car_sot[1]: Riga n. 1: Il soggetto 99 non esiste."}}});
}

TEST_P(ChecksTest, VatCodes)
{
    using C = Case<CODIVA>;
    CODIVA right;
    right.iva_codice = 23;
    right.iva_desc = "IVA 22% prova";
    right.iva_aliq = 22;
    right.iva_tip = kVatTaxable;
    const char *const kNoTax = "iva_aliq: Questo tipo di codice non ha imposta: aliquota 0.";
    ExpectFaults<CODIVA>(
        CheckCodiva, right,
        {C{"Kind", [](auto &r) { r.iva_tip = 15; }, {"iva_tip: Il tipo va da 1 a 14."}},
         C{"NoRate", [](auto &r) { r.iva_aliq = 0; }, {"iva_aliq: Aliquota mancante per un'operazione con imposta."}},
         C{"ExemptWithRate", [](auto &r) { r.iva_tip = kVatExempt, r.iva_natura = "N4"; }, {kNoTax}},
         C{"ExemptWithoutNature",
           [](auto &r) { r.iva_tip = kVatExempt, r.iva_aliq = 0; },
           {"iva_natura: La natura di questo tipo di codice è N4."}},
         C{"WrongFamily",
           [](auto &r) { r.iva_tip = kVatNonTaxable, r.iva_aliq = 0, r.iva_natura = "N2.1"; },
           {"iva_natura: La natura di questo tipo di codice è N3."}},
         C{"UnknownSubCode",
           [](auto &r) { r.iva_tip = kVatNonTaxable, r.iva_aliq = 0, r.iva_natura = "N3.9"; },
           {"iva_natura: La natura N3.9 non esiste."}},
         C{"Intent", [](auto &r) { r.iva_tip = kVatDeclarationOfIntent, r.iva_aliq = 0, r.iva_natura = "N3.5"; }, {}},
         C{"TaxableWithNature",
           [](auto &r) { r.iva_natura = "N4"; },
           {"iva_natura: Questo tipo di codice non ha natura."}},
         C{"OwnReverseCharge", [](auto &r) { r.iva_tip = kVatReverseChargeOwn, r.iva_natura = "N6.3"; }, {}},
         C{"NoTaxNoPart",
           [](auto &r) { r.iva_tip = kVatOutsideField, r.iva_aliq = 0, r.iva_inded = 40; },
           {"iva_inded: Senza imposta non c'è una parte indetraibile."}},
         C{"HalfOfNothing",
           [](auto &r) { r.iva_tip = kVatNonDeductible, r.iva_inded = 50; },
           {"iva_inded: Un codice indetraibile lo è per intero."}},
         C{"AboveHundred", [](auto &r) { r.iva_aliq = 220; }, {"iva_aliq: «aliq» deve essere tra 0 e 100."}},
         C{"SecondPreferred",
           [](auto &r) { r.iva_aliq_default = 1; },
           {Question("iva_aliq_default: Per aliquota e tipo è già preferito il codice 22 IVA 22%")}}});
}

TEST_P(ChecksTest, PaymentTerms)
{
    using C = Case<PAGAMENTI>;
    PAGAMENTI right;
    right.pag_codice = 500;
    right.pag_desc = "Prova";
    right.pag_ini = "FINE MESE";
    right.pag_mese_esc_1 = "AGOSTO";
    ExpectFaults<PAGAMENTI>(
        CheckPagamento, right,
        {C{"Start",
           [](auto &r) { r.pag_ini = "META MESE"; },
           {"pag_ini: Decorrenza: DATA FATTURA, DATA DIVERSA o FINE MESE."}},
         C{"Month",
           [](auto &r) { r.pag_mese_esc_2 = "AGO"; },
           {"pag_mese_esc_2: «AGO» non è un mese: scriverlo intero, come AGOSTO."}},
         C{"NoInstalments", [](auto &r) { r.pag_num_rate = 0; }, {"pag_num_rate: Le rate vanno da 1 a 60."}},
         C{"NoneWanted", [](auto &r) { r.pag_num_rate = 0, r.pag_genera = 0; }, {}},
         C{"VatBesideSixty",
           [](auto &r) { r.pag_num_rate = 60, r.pag_iva_separata = 1; },
           {"pag_num_rate: Con quella dell'IVA le rate sono più di 60."}},
         C{"SixtyEqualOnes", [](auto &r) { r.pag_num_rate = 60, r.pag_rate_uguali = 1; }, {}},
         C{"NeverOutOfAugust",
           [](auto &r) { r.pag_gg_int = 365, r.pag_gg_fisso_1 = 15; },
           {"pag_gg_int: Con rate ogni 365 giorni una scadenza può non uscire mai dai mesi esclusi: cambiare "
            "l'intervallo o i mesi."}},
         C{"NeverOutOfTwoMonths",
           [](auto &r) { r.pag_gg_int = 180, r.pag_gg_fisso_1 = 15, r.pag_mese_esc_2 = "FEBBRAIO"; },
           {"pag_gg_int: Con rate ogni 180 giorni una scadenza può non uscire mai dai mesi esclusi: cambiare "
            "l'intervallo o i mesi."}},
         C{"HalfYearlyOverAugust", [](auto &r) { r.pag_gg_int = 180, r.pag_gg_fisso_1 = 15; }, {}},
         C{"NeverOutButWithoutInstalments",
           [](auto &r) { r.pag_gg_int = 365, r.pag_gg_fisso_1 = 15, r.pag_genera = 0; },
           {}},
         C{"ManyInstalments", [](auto &r) { r.pag_num_rate = 61; }, {"pag_num_rate: Le rate vanno da 1 a 60."}},
         C{"FixedDay",
           [](auto &r) { r.pag_gg_fisso_1 = 32; },
           {"pag_gg_fisso_1: «gg_fisso_1» deve essere tra 0 e 31."}},
         C{"SameFixedDays",
           [](auto &r) { r.pag_gg_fisso_1 = r.pag_gg_fisso_2 = 15; },
           {"pag_gg_fisso_2: I due giorni fissi sono uguali."}},
         C{"RibaByAnotherName",
           [](auto &r) { r.pag_tipo_pag = kPaymentRiba, r.pag_tipo = "EFFETTI"; },
           {Question("pag_tipo: Le ricevute bancarie si riconoscono dal testo RI.BA.")}}});
}

TEST_P(ChecksTest, ChartOfAccounts)
{
    using M = Case<MASTRI>;
    using N = Case<CONTI>;
    using S = Case<SOTTOCON>;
    MASTRI master;
    master.mas_codice = 990;
    master.mas_desc = "Prova";
    ExpectFaults<MASTRI>(CheckMastro, master,
                         {M{"NoDescription", [](auto &r) { r.mas_desc = ""; }, {"mas_desc: Descrizione mancante."}},
                          M{"SecondCustomersMaster",
                            [](auto &r) { r.mas_cli = 1; },
                            {Question("mas_cli: Il mastro clienti della ditta è il 150.")}}});
    MASTRI customers;
    ASSERT_TRUE(sqlmas.Search(Cmd(), 150, &customers));
    customers.mas_cli = 0;
    EXPECT_THAT(Texts(CheckMastro(Cmd(), customers, false)), ElementsAre("mas_cli: È il mastro clienti della ditta."));

    CONTI account;
    account.con_mas = 300;
    account.con_codice = 99;
    account.con_desc = "Prova";
    ExpectFaults<CONTI>(
        CheckConto, account,
        {N{"NoMaster", [](auto &r) { r.con_mas = 999; }, {"con_mas: Il mastro 999 non esiste."}},
         N{"Taken", [](auto &r) { r.con_codice = 1; }, {"con_codice: Il codice 1 è già presente."}},
         N{"OthersFlag", [](auto &r) { r.con_cli = 1; }, {"con_cli: Il mastro 300 non è dei clienti."}}});

    SOTTOCON sub_account;
    sub_account.sot_mas = 300;
    sub_account.sot_con = 1;
    sub_account.sot_codice = 99;
    sub_account.sot_desc = "Prova";
    sub_account.sot_tipo = "C";
    const char *const kKind = "sot_tipo: Tipo: A attività, P passività, C costo, R ricavo, T escluso dalla chiusura.";
    ExpectFaults<SOTTOCON>(CheckSottoconto, sub_account,
                           {S{"NoAccount", [](auto &r) { r.sot_con = 9; }, {"sot_con: Il conto 300.9 non esiste."}},
                            S{"Kind", [](auto &r) { r.sot_tipo = "X"; }, {kKind}},
                            S{"NoKind", [](auto &r) { r.sot_tipo = ""; }, {kKind}},
                            S{"BelowCustomers",
                              [](auto &r) { r.sot_mas = 150; },
                              {"sot_mas: Nel mastro 150 i sottoconti sono i clienti stessi."}}});
}

TEST_P(ChecksTest, BanksAndLookups)
{
    using C = Case<BANCHE>;
    BANCHE right;
    ASSERT_TRUE(sqlban.Search(Cmd(), 1, &right));
    right.ban_codice = 50;
    ExpectFaults<BANCHE>(
        CheckBanca, right,
        {C{"Abi", [](auto &r) { r.ban_abi = "123"; }, {"ban_abi: ABI: deve avere cinque cifre."}},
         C{"AnotherCab", [](auto &r) { r.ban_cab = "12702"; }, {"ban_cab: CAB diverso da quello dell'IBAN (12701)."}},
         C{"Bic",
           [](auto &r) { r.ban_bic = "XVDEIT2PX"; },
           {"ban_bic: BIC: deve avere 8 o 11 caratteri: quattro lettere della banca, due della nazione e il resto."}},
         C{"Account",
           [](auto &r) { r.ban_mas = 170, r.ban_con = 1, r.ban_sot = 777; },
           {"ban_mas: Il conto 170.1.777 non esiste."}},
         C{"HalfAnAccount",
           [](auto &r) { r.ban_mas = 170; },
           {"ban_mas: Indicare mastro, conto e sottoconto, o nessuno dei tre."}}});
    SEZIONI section;
    section.sez_esc_liq_iva = 2;
    EXPECT_THAT(Texts(CheckSezione(Cmd(), section, true)),
                ElementsAre("sez_codice: Codice mancante o fuori dai limiti.", "sez_desc: Descrizione mancante.",
                            "sez_esc_liq_iva: «esc_liq_iva» può essere solo 0 o 1."));
    EXPECT_THAT(Texts(CheckCentro(Cmd(), CENTRI{10, "Prova"}, true)),
                ElementsAre("cdc_codice: Il codice 10 è già presente."));
    EXPECT_THAT(Texts(CheckAgente(Cmd(), AGENTI{10, ""}, true)), ElementsAre("age_desc: Descrizione mancante."));
}

TEST_P(ChecksTest, CompanyAndSettings)
{
    using D = Case<DITTE>;
    ExpectFaults<DITTE>(CheckDitta, lumera_db_impo,
                        {D{"Year", [](auto &r) { r.dit_anno = 26; }, {"dit_anno: L'esercizio va dal 1980 al 9999."}},
                         D{"Period",
                           [](auto &r) { r.dit_periodicita = "A"; },
                           {"dit_periodicita: Liquidazione IVA: M mensile o T trimestrale."}},
                         D{"Vat",
                           [](auto &r) { r.dit_piva = "08235227340"; },
                           {"dit_piva: Partita IVA 08235227340: carattere di controllo errato: atteso 8."}},
                         D{"Interest",
                           [](auto &r) { r.dit_tasso_mora = 101; },
                           {"dit_tasso_mora: «tasso_mora» deve essere tra 0 e 100."}},
                         D{"Masters",
                           [](auto &r) { r.dit_mas_for = 150; },
                           {"dit_mas_for: Il mastro 150 non è dei fornitori.",
                            "dit_mas_for: Clienti e fornitori vogliono due mastri diversi."}},
                         D{"Account", [](auto &r) { r.dit_con_cli = 9; }, {"dit_con_cli: Il conto 150.9 non esiste."}}},
                        false);
    FLAG settings = lumera_db_flag;
    settings.flg_sot_iva_acq = 0;
    settings.flg_cau_pagamento = 41;
    settings.flg_cau_fatture = 999;
    EXPECT_THAT(Texts(CheckFlag(Cmd(), settings, false)),
                ElementsAre("flg_mas_iva_acq: Indicare mastro, conto e sottoconto, o nessuno dei tre.",
                            "flg_cau_pagamento: La causale 41 non è adatta per i pagamenti ai fornitori: serve il "
                            "registro SOLO LIBRO GIORNALE con un fornitore.",
                            "flg_cau_fatture: La causale 999 non esiste."));
}

INSTANTIATE_TEST_SUITE_P(Engines, ChecksTest, testing::ValuesIn(TestEngines()), TestEngineName);

// --- forms of single fields
// ---------------------------------------------------------------------------------------------

struct FormCase {
    const char *name, *value;
    bool right;
};

void PrintTo(const FormCase &one, std::ostream *out)
{
    *out << one.name;
}

class IbanTest : public testing::TestWithParam<FormCase> {};

TEST_P(IbanTest, IsTold)
{
    EXPECT_EQ(IbanFault(GetParam().value).empty(), GetParam().right) << IbanFault(GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Cases, IbanTest,
                         testing::Values(FormCase{"None", "", true},
                                         FormCase{"Italian", "IT60X0542811101000000123456", true},
                                         FormCase{"German", "DE89370400440532013000", true},
                                         FormCase{"British", "GB82WEST12345698765432", true},
                                         FormCase{"UnknownCountry", "TR330006100519786457841326", true},
                                         FormCase{"Digit", "IT60X0542811101000000123457", false},
                                         FormCase{"Swapped", "IT60X0542811101000000124356", false},
                                         FormCase{"Short", "IT60X054281110100000012345", false},
                                         FormCase{"OnlyCountry", "IT60", false},
                                         FormCase{"Blanks", "IT60 X054 2811 1010 0000 0123 456", false},
                                         FormCase{"Lower", "it60x0542811101000000123456", false},
                                         FormCase{"NoCin", "IT6000542811101000000123456", false},
                                         FormCase{"Letters", "ITALIANISSIMO123", false}),
                         [](const auto &p) { return std::string(p.param.name); });

class EmailTest : public testing::TestWithParam<FormCase> {};

TEST_P(EmailTest, IsTold)
{
    EXPECT_EQ(EmailFault(GetParam().value).empty(), GetParam().right) << EmailFault(GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Cases, EmailTest,
                         testing::Values(FormCase{"None", "", true}, FormCase{"Plain", "info@edilnova.example", true},
                                         FormCase{"Tagged", "a.b+c@pec.uno.example", true},
                                         FormCase{"NoAt", "info.edilnova.example", false},
                                         FormCase{"TwoAt", "a@b@c.it", false}, FormCase{"NoName", "@b.it", false},
                                         FormCase{"NoDomain", "a@", false}, FormCase{"NoDot", "a@localhost", false},
                                         FormCase{"OneLetterEnd", "a@b.c", false},
                                         FormCase{"Two", "a@b.it; c@d.it", false}, FormCase{"Blank", "a b@c.it", false},
                                         FormCase{"Dots", "a@b..it", false}),
                         [](const auto &p) { return std::string(p.param.name); });

struct CodeCase {
    const char *name, *nation, *code;
    bool right;
};

void PrintTo(const CodeCase &one, std::ostream *out)
{
    *out << one.name;
}

class ForeignVatTest : public testing::TestWithParam<CodeCase> {};

TEST_P(ForeignVatTest, IsTold)
{
    EXPECT_EQ(CheckCounterpartVat(GetParam().nation, GetParam().code).ok(), GetParam().right);
}

INSTANTIATE_TEST_SUITE_P(Cases, ForeignVatTest,
                         testing::Values(CodeCase{"Italian", "IT", "01234567897", true},
                                         CodeCase{"WrongItalian", "IT", "01234567890", false},
                                         CodeCase{"WrongByItalianRule", "FR", "01234567890", true},
                                         CodeCase{"Swiss", "CH", "CHE219374515", true},
                                         CodeCase{"SwissTwice", "CH", "CHCHE219374515", false},
                                         CodeCase{"Greek", "GR", "EL123456789", false},
                                         CodeCase{"Spanish", "ES", "B67319046", true},
                                         CodeCase{"Austrian", "AT", "U12345678", true},
                                         CodeCase{"AustrianInFull", "AT", "ATU12345678", false},
                                         CodeCase{"Points", "NL", "1234.567", false}, CodeCase{"None", "DE", "", true}),
                         [](const auto &p) { return std::string(p.param.name); });

TEST(DestinationCode, SevenOrSix)
{
    EXPECT_EQ(DestinationCodeFault("IT", "K7QWE2A"), "");
    EXPECT_EQ(DestinationCodeFault("IT", "UFQ8ZK"), "");
    EXPECT_EQ(DestinationCodeFault("DE", "XXXXXXX"), "");
    EXPECT_NE(DestinationCodeFault("IT", "XXXXXXX"), "");
    EXPECT_NE(DestinationCodeFault("IT", "k7qwe2a"), "");
    EXPECT_NE(DestinationCodeFault("IT", "K7QW"), "");
}

} // namespace
