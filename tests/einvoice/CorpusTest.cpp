#include "tests/einvoice/CorpusFiles.h"
#include "tests/einvoice/InvoiceFixture.h"

#include "einvoice/InvoicePdf.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/archive/ArchiveCheck.h"

#include <algorithm>
#include <map>
#include <set>

namespace {

using testing::HasSubstr;

/// Says Yes to everything, so that a run over many files meets every branch behind a question; a supplier that is not
/// found is made.
class Yes : public UserInterface {
  public:
    int MessageBox(const std::string &, unsigned flags) override
    {
        const unsigned buttons = flags & 0xFu;
        return buttons == MB_YESNOCANCEL ? IDNO : buttons == MB_YESNO ? IDYES : IDOK;
    }
    void Beep(int, int) override {}
    std::unique_ptr<ProgressView> OpenProgress(const std::string &) override
    {
        class Unseen : public ProgressView {
            void SetStatus(const std::string &) override {}
            void SetRange(long, long) override {}
            void SetPosition(long) override {}
        };
        return std::make_unique<Unseen>();
    }
    std::vector<std::filesystem::path> PickFiles(const FilePicking &) override { return {}; }
    std::optional<std::filesystem::path> PickFolder(const std::string &) override { return std::nullopt; }
    std::optional<long> PickDate(const std::string &, long) override { return std::nullopt; }
    std::optional<long> PickYear(const std::string &, long) override { return std::nullopt; }
    long Today() override { return DateToJulian(1, 6, 2026); }
    long SecondOfDay() override { return 0; }
    std::string UserName() override { return "prova"; }
};

/// Files that are no invoice, with words of the reason that name what is wrong in them.
const std::map<std::string, std::vector<const char *>> kRefused = {
    {"crafted/IT01234567897_00041.xml", {"troncato", "DatiGeneraliDocumento", "riga 9"}},
    {"crafted/IT01234567897_00043.xml", {"non è XML"}},
    {"crafted/IT01234567897_00045.xml", {"Data", "2022-02-30", "calendario"}},
    {"crafted/IT01234567897_00063.xml.p7m", {"busta di firma", "incompleta"}},
    {"simevo/invalid/malformed.xml", {"troncato", "riga 3"}},
    {"simevo/invalid/missing_CessionarioCommittente.xml", {"manca", "CessionarioCommittente"}},
    {"simevo/invalid/missing_DatiBeniServizi.xml", {"manca", "DatiBeniServizi"}},
    {"simevo/invalid/missing_DatiGeneraliDocumento.xml", {"manca", "DatiGeneraliDocumento"}},
    {"simevo/invalid/missing_DatiGeneraliDocumento_TipoDocumento.xml", {"manca", "TipoDocumento"}},
    {"simevo/invalid/missing_FatturaElettronicaBody.xml", {"manca", "FatturaElettronicaBody"}},
    {"simevo/malicious/embedded_schema.xml", {"DOCTYPE", "riga 2"}},
    {"simevo/malicious/quadratic_blowup.xml", {"DOCTYPE", "riga 1"}},
    {"simevo/malicious/small_jumbo.xml", {"DOCTYPE", "riga 2"}},
    // Random texts: valid patterns, impossible dates.
    {"simevo/random/01.xml", {"Data", "7753-87-63"}},
    {"simevo/random/03.xml", {"Data", "5258-71-61"}},
    {"simevo/random/05.xml", {"Data", "8439-06-47"}},
    {"simevo/random/07.xml", {"Data", "1091-45-51"}},
    {"simevo/random/09.xml", {"Data", "1797-72-92"}},
    {"guasti/IT02565617350_00B01.xml", {"troncato"}},
    {"guasti/IT00586557340_0B002.xml.p7m", {"firma", "modificati"}},
    {"guasti/IT07916437341_00B77.xml", {"Data", "2026-02-30"}},
};

/// Files that the schema does not admit and that are an invoice all the same, with a word of the warning that names the
/// fault; "" = there is nothing to say, because the form changes no value (order of elements, old namespace, "10.0").
const std::map<std::string, const char *> kTolerated = {
    {"crafted/IT01234567897_00065.xml.p7m", ""}, // the file is fine, its name is not
    {"crafted/IT01234567897_00067.xml", ""},
    {"fe_net/IT01234567890_FPR02.xml", ""},
    {"fe_net/IT02182030391_32.windows-1252.xml", ""},
    {"fe_php/IT01234567890_11001_entity.xml", ""},
    {"fe_php/IT01234567890_11001_payment_details.xml", ""},
    {"fe_php/IT01234567890_11001_slash.xml", ""},
    {"fe_php/IT01234567890_11002.xml", ""},
    {"gobl/import/acube_test.xml", "IdTrasmittente"},
    {"gobl/import/invoice-fund-contribution-mixed-retention.xml", ""},
    {"oca/in/IT01234567890_FPR04.xml", "spazi superflui"},
    {"oca/in/IT02780790107_11004.xml", ""},
    {"simevo/invalid/missing_DatiGeneraliDocumento_Divisa.xml", "Divisa"},
    {"simevo/invalid/missing_FormatoTrasmissione.xml", "FormatoTrasmissione"},
    {"simevo/invalid/missing_IdTrasmittente_IdCodice.xml", "IdTrasmittente"},
    {"simevo/invalid/missing_ProgressivoInvio.xml", "ProgressivoInvio"},
};

/// Invoices that are filed and cannot become an entry, with the reason.
const std::map<std::string, const char *> kNotRegistered = {
    {"guasti/IT19949417158_1B0V8.xml", "più di 7 aliquote"},
    {"autofattura.xml", "è la ditta stessa"},
};

/// Invoices whose declared total is not what their summary gives, with the difference: the entry holds the summary,
/// which is what the VAT return counts, and its notes name the difference.
const std::map<std::string, double> kNotClosing = {
    {"crafted/IT01234567897_00047.xml", -2.10}, // inconsistent by intention
    // Totals net of a discount at the foot, or of that and of withholding tax.
    {"gobl/export/invoice-simple-rounding.xml", -687.99},
    {"gobl/import/invoice-credit-note.xml", -688.00},
    {"gobl/import/invoice-fund-contribution-mixed-retention.xml", -280.04},
    {"gobl/import/invoice-irpef.xml", -1049.66},
    {"gobl/import/invoice-simple-rounding.xml", -687.99},
    {"gobl/import/invoice-simple.xml", -688.00},
    {"oca/in/IT05979361218_014.xml", -38.78},
    // A wrong total, and one with the tax of another country in it.
    {"oca/in/IT02780790107_11007.xml", 27.61},
    {"oca/out_oss/IT06363391001_00001.xml", 2.80},
};

/// Invoices whose declared total is net of the withholding tax, with what was withheld.
const std::map<std::string, double> kNetOfWithholding = {
    {"gobl/export/invoice-fund-contribution-mixed-retention.xml", 520.00},
    {"oca/in/ITBNCMRA80A01D548T_20005.xml", 23.00},
    {"oca/in/ITNREGCM80H30D612D_20004.xml", 2.00},
};

/// Invoices whose tax does not follow from rate and taxable amount: stored as the seller wrote it, and pointed at.
const std::set<std::string> kWrongTax = {
    "crafted/IT01234567897_00047.xml",
    "devcode/fattura_semplificata.xml",          // 6.00 of tax in 60.00 at 10%
    "fe_php/semplificata/ESEMPIO_NDC_SEMPL.xml", // nothing but tax
};

constexpr const char *kNoCorpus = "no collection of invoices beside the sources nor in LUMERA_TEST_FATTURE";
constexpr const char *kNotification = "guasti/IT08235227348_00017_RC_001.xml";

class CorpusTest : public InvoiceTest {
  protected:
    struct Filed {
        std::string name;
        std::vector<ToldDocument> documents;
    };

    void SetUp() override
    {
        InvoiceTest::SetUp();
        if (IsSkipped()) return;
        previous_user_ = SetUserInterface(&yes_);
        lumera_db_flag.flg_fatture_altro_anno = 1;
        lumera_db_impo.dit_fuori_anno = 1;
        choices_.confirm_supplier = [](FORNITORI *prepared) {
            prepared->for_pag = 45;
            return true;
        };
        choices_.choose_causale = [](long proposed) { return proposed; };
        choices_.choose_vat_code = [](const fatturapa::DatiRiepilogoType &row) {
            return row.AliquotaIVA > 0 ? 22L : 800L;
        };
    }
    void TearDown() override
    {
        if (previous_user_ != nullptr) SetUserInterface(previous_user_);
        InvoiceTest::TearDown();
    }

    /// Files all of them, looks at the list and the sheets, registers what can be.
    void RunThrough(const std::vector<CorpusFile> &files)
    {
        for (const CorpusFile &file : files) Import(file);
        EXPECT_EQ(Count("allegati"), std::to_string(filed_.size()));
        CheckList();
        for (const auto &[code, file] : filed_) {
            SCOPED_TRACE(file.name);
            CFattureElettronicheDB content;
            LoadInvoice(Cmd(), code, &content);
            ASSERT_EQ(content.Count(), file.documents.size());
            EXPECT_GE(WriteInvoicePdf(content, {}, Folder() / "foglio.pdf"), static_cast<long>(content.Count()));
            for (std::size_t i = 0; i < file.documents.size(); ++i) CheckRegistration(code, i, file);
        }
        EXPECT_EQ(Count("pnota1"), std::to_string(registered_));
        std::vector<std::string> faulty;
        for (const ArchiveFault &fault : CheckArchive(Cmd()).faults) faulty.push_back(fault.where);
        EXPECT_EQ(faulty, doubtful_) << ArchiveFaults();
    }

  private:
    void Import(const CorpusFile &file)
    {
        SCOPED_TRACE(file.name);
        const auto refused = kRefused.find(file.name);
        const auto tolerated = kTolerated.find(file.name);
        EXPECT_EQ(refused == kRefused.end() && tolerated == kTolerated.end(), file.is_valid)
            << "what is wrong with the file is not in the tables";
        const std::string before = Stored();
        const ImportResult result = ImportInvoice(Cmd(), file.name, BaseName(file.name), file.bytes);
        if (refused != kRefused.end()) {
            EXPECT_EQ(result.outcome, ImportOutcome::Refused);
            for (const char *word : refused->second) EXPECT_THAT(result.text, HasSubstr(word));
            EXPECT_EQ(Stored(), before);
            return;
        }
        if (file.name == kNotification) {
            EXPECT_EQ(result.outcome, ImportOutcome::Ignored);
            EXPECT_EQ(Stored(), before);
            return;
        }
        ASSERT_EQ(result.outcome, ImportOutcome::Loaded) << result.text;
        if (tolerated != kTolerated.end() && *tolerated->second != 0) {
            EXPECT_THAT(result.warnings, testing::Contains(HasSubstr(tolerated->second)));
        }
        filed_[result.code] = {file.name, WhatTheFileSays(file.bytes)};
    }

    void CheckList()
    {
        std::size_t rows = 0, documents = 0;
        for (const auto &[code, file] : filed_) documents += file.documents.size();
        ForEachInvoice(Cmd(), 0, 0, [&](const InvoiceRow &row) {
            ++rows;
            const Filed &file = filed_.at(row.code);
            const ToldDocument &told = file.documents.at(row.document);
            SCOPED_TRACE(file.name);
            EXPECT_EQ(row.fault, "");
            EXPECT_EQ(row.documents, file.documents.size());
            EXPECT_EQ(row.file_name.str(), BaseName(file.name));
            EXPECT_EQ(row.type, told.type);
            EXPECT_EQ(row.number, told.number);
            EXPECT_EQ(row.day, told.day);
            for (const std::string &word : told.seller) EXPECT_THAT(row.seller_name, HasSubstr(word));
            EXPECT_NEAR(row.total, told.Total(), 0.001);
            EXPECT_FALSE(row.is_registered);
            return true;
        });
        EXPECT_EQ(rows, documents);
    }

    void CheckRegistration(long code, std::size_t document, const Filed &file)
    {
        const std::string before = Stored();
        const RegistrationOutcome outcome = Register(code, 0, document);
        if (const auto why_not = kNotRegistered.find(file.name); why_not != kNotRegistered.end()) {
            EXPECT_FALSE(outcome.registered);
            EXPECT_THAT(outcome.reason, HasSubstr(why_not->second));
            EXPECT_EQ(Stored(), before);
            return;
        }
        ASSERT_TRUE(outcome.registered) << outcome.reason;
        ++registered_;
        if (kWrongTax.contains(file.name))
            doubtful_.push_back(fmt::format("Movimento {} riga IVA 1", outcome.entry.pno_codice));
        PNOTA entry;
        ASSERT_TRUE(sqlpno.Search(Cmd(), outcome.entry.pno_codice, &entry));
        const std::string notes = fmt::format("{}", fmt::join(outcome.notes, "\n"));
        const auto open = kNotClosing.find(file.name);
        const auto net = kNetOfWithholding.find(file.name);
        EXPECT_EQ(notes.find("al netto della ritenuta") != std::string::npos, net != kNetOfWithholding.end()) << notes;
        ToldDocument told = file.documents[document];
        if (net != kNetOfWithholding.end()) told.declared += net->second;
        CheckAmounts(told, entry, notes, open == kNotClosing.end() ? 0 : open->second);
    }

    static void CheckAmounts(const ToldDocument &told, const PNOTA &entry, const std::string &notes, double difference)
    {
        const double sign = told.IsWrittenCreditNote() ? -1 : 1;
        EXPECT_NEAR(entry.pno_tot_doc, sign * (told.Total() - difference), 0.001) << notes;
        EXPECT_EQ(notes.find("differenza " + FormatAmount(difference)) != std::string::npos &&
                      notes.find("Non registrata") != std::string::npos,
                  difference != 0)
            << notes;
        double dare = 0, avere = 0;
        for (const PNOTA_RIGA &row : entry.righe) (row.row_tipo == "D" ? dare : avere) += row.row_importo;
        EXPECT_TRUE(TestIfZero(dare - avere)) << dare << " and " << avere;

        std::size_t lines = 0;
        for (const PNOTA_IVA &line : entry.iva) lines += line.iva != 0;
        // Stamp duty charged on has a line of its own, the last.
        EXPECT_EQ(lines, told.summary.size() + (notes.find("esclusa art. 15") != std::string::npos)) << notes;
        for (std::size_t i = 0; i < told.summary.size(); ++i) {
            EXPECT_NEAR(entry.iva.at(i).aliq, told.summary[i].rate, 0.001);
            EXPECT_NEAR(entry.iva[i].impo, sign * told.summary[i].taxable, 0.001);
            EXPECT_NEAR(entry.iva[i].imposta, sign * told.summary[i].tax, 0.001);
        }
    }

    Yes yes_;
    UserInterface *previous_user_ = nullptr;
    std::map<long, Filed> filed_; ///< by their numbers
    long registered_ = 0;
    std::vector<std::string> doubtful_;
};

TEST_P(CorpusTest, SamplesComeOutAsTheirFilesSay)
{
    std::vector<CorpusFile> files = RepositorySamples();
    InvoiceSpec own;
    own.seller_vat = own.seller_fiscal_code = lumera_db_impo.dit_piva.str();
    files.push_back({"autofattura.xml", InvoiceText(own), true});
    RunThrough(files);
}

TEST_P(CorpusTest, InvoicesOfTheFieldComeOutAsTheirFilesSay)
{
    if (!HasCorpus()) GTEST_SKIP() << kNoCorpus;
    RunThrough(CorpusFiles());
}

INSTANTIATE_TEST_SUITE_P(Engines, CorpusTest, testing::ValuesIn(TestEngines()), TestEngineName);

// A file that nobody entered into the tables above, and one that is no longer there, would else go unseen.
TEST(CorpusFilesTest, EveryFileIsLookedAt)
{
    std::set<std::string> names;
    for (const CorpusFile &file : RepositorySamples()) names.insert(file.name);
    EXPECT_EQ(names.size(), 19u) << "a new sample belongs into the tables, and its count here";
    if (!HasCorpus()) GTEST_SKIP() << kNoCorpus;
    for (const CorpusFile &file : CorpusFiles()) names.insert(file.name);
    for (const std::string &name : FilesInCorpusFolder())
        EXPECT_TRUE(names.contains(name)) << name << " is not in the index";
    for (const auto &[name, words] : kRefused) EXPECT_TRUE(names.contains(name)) << name;
    for (const auto &[name, word] : kTolerated) EXPECT_TRUE(names.contains(name)) << name;
    for (const auto &[name, difference] : kNotClosing) EXPECT_TRUE(names.contains(name)) << name;
    for (const std::string &name : kWrongTax) EXPECT_TRUE(names.contains(name)) << name;
}

} // namespace
