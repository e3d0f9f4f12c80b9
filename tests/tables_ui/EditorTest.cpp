#include "tables/ui/Banche.h"
#include "tables/ui/ClientiNew.h"
#include "tables/ui/Fornitori.h"
#include "tables/ui/Lookups.h"
#include "tables/ui/Sezioni.h"
#include "tests/tables_ui/TablesWindowTest.h"

namespace {

const char *const kLose = "Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?";

class EditorTest : public TablesWindowTest {};

TEST_P(EditorTest, NewSupplierPassesOnlyWithARightVatNumberAndIsFoundByItsName)
{
    {
        CFornitori editor;
        keys::Open(&editor);
        EXPECT_EQ(editor.windowTitle().toStdString(), "Fornitori");
        EXPECT_EQ(TextOf(editor, "Codice"), "26"); // the demo company has 25

        EnterTo("Ragione sociale");
        keys::Type("Ferramenta Calabrosi S.r.l.");
        EnterTo("CAP");
        keys::Type("43121");
        EnterTo("Prov.");
        keys::Type("pr");
        EnterTo("Partita IVA");
        keys::Type("01234567");
        EXPECT_TRUE(Shows(editor, "Partita IVA: mancano 3 cifre"));
        keys::Type("890");
        EXPECT_EQ(user_.beeps, 0);
        keys::Press(Qt::Key_Return);
        EXPECT_EQ(user_.beeps, 1);
        EXPECT_EQ(Focused(), "Partita IVA");
        EXPECT_TRUE(Shows(editor, "Partita IVA: carattere di controllo errato: atteso 7"));

        keys::Type("01234567897"); // what was refused is selected
        EXPECT_TRUE(Shows(editor, "Partita IVA corretta"));
        keys::Press(Qt::Key_Return);
        EXPECT_EQ(user_.beeps, 1);
        EXPECT_EQ(Focused(), "Codice fiscale");
        EXPECT_EQ(TextOf(editor, "Codice fiscale"), "01234567897");
        keys::Press(Qt::Key_F2);
        EXPECT_TRUE(editor.m_saved);
        EXPECT_EQ(editor.m_codice, 26);
        EXPECT_TRUE(Shows(editor, "Registrato: 26 Ferramenta Calabrosi S.r.l."));
        EXPECT_EQ(TextOf(editor, "Codice"), "27") << "blank for the next one";
        EXPECT_EQ(TextOf(editor, "Ragione sociale"), "");
        EXPECT_EQ(Focused(), "Codice");
    }
    EXPECT_EQ(Value("SELECT for_piva FROM admin.fornito1 WHERE for_codice = 26 AND for_prov = 'PR'"), "01234567897");

    CFornitoriBr browser;
    keys::Open(&browser);
    keys::Type("calabro srl");
    EXPECT_TRUE(Shows(browser, "Nessuna riga trovata su 26"));
    keys::Press(Qt::Key_A, Qt::ControlModifier);
    keys::Type("calabro ferr");
    EXPECT_TRUE(Shows(browser, "1 di 26"));
    keys::Press(Qt::Key_Return);
    EXPECT_FALSE(browser.isVisible());
    EXPECT_EQ(browser.m_codice, 26);
}

TEST_P(EditorTest, DuplicateVatNumberIsToldAtOnceAndANoLeavesEverythingAsTyped)
{
    CClientiNew editor;
    keys::Open(&editor);
    EnterTo("Ragione sociale");
    keys::Type("Seconda anagrafica");
    EnterTo("Partita IVA");
    keys::Type("IT 09406137340");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(TextOf(editor, "Partita IVA"), "09406137340");
    EXPECT_TRUE(Shows(editor, "Partita IVA già presente: 1 Edilnova Cordevasco S.r.l."));

    const char *const question = "Partita IVA già presente: 1 Edilnova Cordevasco S.r.l.\n\nVuoi Continuare ?";
    user_.Expect(question, IDNO);
    keys::Press(Qt::Key_F2);
    EXPECT_FALSE(editor.m_saved);
    EXPECT_EQ(TextOf(editor, "Ragione sociale"), "Seconda anagrafica");
    EXPECT_EQ(Focused(), "Partita IVA");
    EXPECT_TRUE(editor.IsChanged());
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.clienti1"), "40");

    user_.Expect(question, IDYES);
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT cli_desc FROM admin.clienti1 WHERE cli_codice = 41"), "Seconda anagrafica");
}

TEST_P(EditorTest, UsedCustomerStaysAndAnUnusedOneGoesAfterAQuestion)
{
    Run("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo)"
        " VALUES (0, 1, 2026, 7, '2026-03-31', 100)");
    CClientiNew editor;
    editor.m_codice = 7;
    keys::Open(&editor);
    EXPECT_EQ(editor.windowTitle().toStdString(), "Modifica Clienti - 7 Impresa Costruzioni Gavardelli S.r.l.");
    user_.Expect("Impossibile eliminare: codice usato in 1 scadenza.");
    keys::Press(Qt::Key_F6);
    EXPECT_TRUE(editor.IsRecordLoaded());

    keys::Press(Qt::Key_PageUp);
    EXPECT_EQ(TextOf(editor, "Codice"), "6");
    user_.Expect("Eliminazione cliente 6 Termoidraulica Fontevera S.a.s. di Ugolotti Dina & C.\n\nVuoi Continuare ?",
                 IDYES);
    keys::Press(Qt::Key_F6);
    EXPECT_FALSE(editor.IsRecordLoaded());
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.clienti1 WHERE cli_codice IN (6, 7)"), "1");
}

TEST_P(EditorTest, CodeOfAnExistingRecordLoadsItAndAnUnknownOneStartsANewRecord)
{
    CClientiNew editor;
    keys::Open(&editor);
    keys::Type("4");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(TextOf(editor, "Ragione sociale"), "Caseificio Prato Lungo Soc. coop. agricola");
    EXPECT_FALSE(editor.IsChanged());

    EnterTo("Ragione sociale");
    keys::Type("Caseificio");
    BackTo("Codice");
    user_.Expect(kLose, IDNO);
    keys::Type("5");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(TextOf(editor, "Codice"), "4");
    EXPECT_EQ(TextOf(editor, "Ragione sociale"), "Caseificio") << "what was typed stays";
    EXPECT_TRUE(editor.IsChanged());
    EnterTo("Tipo");

    user_.Expect(kLose, IDYES);
    keys::Press(Qt::Key_PageDown);
    EXPECT_EQ(TextOf(editor, "Codice"), "5");
    EXPECT_EQ(Focused(), "Tipo") << "browsing the records leaves the focus where it is";

    BackTo("Codice");
    keys::Type("900");
    keys::Press(Qt::Key_Return);
    EXPECT_FALSE(editor.IsRecordLoaded());
    EXPECT_EQ(TextOf(editor, "Codice"), "900");
    EXPECT_EQ(TextOf(editor, "Ragione sociale"), "");
}

TEST_P(EditorTest, PersonIsNamedFromSurnameAndFirstName)
{
    CClientiNew editor;
    keys::Open(&editor);
    EnterTo("Tipo");
    keys::Press(Qt::Key_P); // to the next choice that begins so
    EnterTo("Cognome");
    keys::Type("Verdi");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Focused(), "Nome");
    keys::Type("Anna");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(TextOf(editor, "Nominativo"), "Verdi Anna");
    EnterTo("Codice fiscale");
    keys::Type("rssmra80a01h501u");
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT cli_desc FROM admin.clienti1 WHERE cli_codfis = 'RSSMRA80A01H501U' AND cli_pers = 'F'"),
              "Verdi Anna");
}

TEST_P(EditorTest, ForeignVatNumberIsNotJudgedByTheItalianRule)
{
    CFornitori editor;
    keys::Open(&editor);
    EnterTo("Ragione sociale");
    keys::Type("Werkstatt GmbH");
    EnterTo("Nazione");
    keys::Type("de");
    EnterTo("Partita IVA");
    keys::Type("811907980");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Focused(), "Codice fiscale");
    EXPECT_EQ(user_.beeps, 0);
    keys::Press(Qt::Key_F2);
    EXPECT_TRUE(editor.m_saved);
}

TEST_P(EditorTest, RefusedFieldOfTheOtherTabComesToTheFront)
{
    CFornitori editor;
    editor.m_codice = 2;
    keys::Open(&editor);
    keys::Press(Qt::Key_2, Qt::AltModifier);
    EnterTo("IBAN");
    keys::Type("IT05 W098 5701 6000 0000 0895 268");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Focused(), "IBAN");
    EXPECT_TRUE(Shows(editor, "IBAN: cifre di controllo errate"));
    keys::Type("IT05 W098 5701 6000 0000 0895 267");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(TextOf(editor, "IBAN"), "IT05W0985701600000000895267");

    keys::Press(Qt::Key_1, Qt::AltModifier);
    EnterTo("Ragione sociale");
    keys::Press(Qt::Key_Delete);
    keys::Press(Qt::Key_2, Qt::AltModifier);
    user_.Expect("Ragione sociale mancante.");
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Focused(), "Ragione sociale");
}

TEST_P(EditorTest, SupplierOfAnInvoiceIsProposedUnderTheNextCode)
{
    FORNITORI supplier;
    supplier.for_desc = "Da fattura S.r.l.";
    supplier.for_piva = supplier.for_codfis = "01234567897";
    CFornitori editor;
    editor.Propose(supplier);
    editor.m_single = true;
    keys::Open(&editor);
    EXPECT_EQ(TextOf(editor, "Codice"), "26");
    EXPECT_EQ(TextOf(editor, "Ragione sociale"), "Da fattura S.r.l.");
    keys::Press(Qt::Key_F2);
    EXPECT_FALSE(editor.isVisible()) << "a single record ends the dialog";
    EXPECT_EQ(editor.m_codice, 26);
}

TEST_P(EditorTest, RecordChangedByAnotherStationIsNotOverwritten)
{
    CSezioni editor;
    editor.m_codice = 1;
    keys::Open(&editor);
    EnterTo("Descrizione");
    keys::Type("Mia");
    Run("UPDATE admin.sezioni SET sez_desc = 'Loro' WHERE sez_codice = 1");
    user_.Expect("Il record è stato cambiato da un'altra stazione: occorre riaprirlo.");
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT sez_desc FROM admin.sezioni WHERE sez_codice = 1"), "Loro");
    EXPECT_EQ(TextOf(editor, "Descrizione"), "Mia");
}

TEST_P(EditorTest, BankTakesAbiAndCabFromItsIban)
{
    CBanche editor;
    keys::Open(&editor);
    EnterTo("Descrizione");
    keys::Type("Banca nuova");
    EnterTo("IBAN");
    keys::Type("it60x0542811101000000123456");
    EnterTo("Mastro");
    keys::Type("170.1.2");
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT ban_abi || ' ' || ban_cab FROM admin.banche1 WHERE ban_mas = 170 AND ban_con = 1 AND "
                    "ban_sot = 2"),
              "05428 11101");
}

INSTANTIATE_TEST_SUITE_P(Engines, EditorTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
