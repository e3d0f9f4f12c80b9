#include "tests/einvoice/InvoiceFixture.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/archive/ArchiveCheck.h"

#include <cstdlib>
#include <fstream>
#include <set>

namespace {

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

/// A collection of invoices of the field, which is not part of the repository: a folder with an INDEX.tsv whose first
/// column is the file and whose last one says what is special about it.
std::filesystem::path Corpus()
{
    const char *folder = std::getenv("LUMERA_TEST_FATTURE");
    return folder == nullptr ? "" : folder;
}

/// What no program could make an entry of: everything else must be read.
bool IsBeyondReading(const std::string &special)
{
    for (const char *mark : {"MALFORMED: truncated", "NOT XML", "INVALID: date"}) {
        if (special.find(mark) != std::string::npos) return true;
    }
    return false;
}

/// File and remark of the index's lines that begin with one of the folders.
std::map<std::string, std::string> Indexed(const std::filesystem::path &corpus, const std::vector<std::string> &folders)
{
    std::map<std::string, std::string> files;
    std::ifstream index(corpus / "INDEX.tsv");
    for (std::string line; std::getline(index, line);) {
        for (const std::string &folder : folders) {
            if (line.starts_with(folder)) files[line.substr(0, line.find('\t'))] = line.substr(line.rfind('\t') + 1);
        }
    }
    return files;
}

class CorpusTest : public InvoiceTest {
  protected:
    void SetUp() override
    {
        if (Corpus().empty()) GTEST_SKIP() << "LUMERA_TEST_FATTURE names no collection of invoices";
        InvoiceTest::SetUp();
        if (IsSkipped()) return;
        previous_user_ = SetUserInterface(&yes_);
    }
    void TearDown() override
    {
        if (previous_user_ != nullptr) SetUserInterface(previous_user_);
        InvoiceTest::TearDown();
    }
    Yes yes_;
    UserInterface *previous_user_ = nullptr;
};

TEST_P(CorpusTest, IsReadFiledAndRegisteredWithoutAFault)
{
    const std::map<std::string, std::string> files = Indexed(Corpus(), {"crafted/", "official/", "oca/in/"});
    ASSERT_GT(files.size(), 50u);
    std::set<long> loaded, inconsistent;
    for (const auto &[name, special] : files) {
        const std::vector<ImportResult> results = ImportInvoices(Cmd(), {Corpus() / name});
        ASSERT_EQ(results.size(), 1u);
        EXPECT_EQ(results[0].outcome == ImportOutcome::Refused, IsBeyondReading(special))
            << name << " (" << special << "): " << results[0].text;
        if (results[0].code != 0) loaded.insert(results[0].code);
        if (special.find("tax does not match the rate") != std::string::npos) inconsistent.insert(results[0].code);
    }
    EXPECT_EQ(Count("allegati"), std::to_string(loaded.size()));

    lumera_db_flag.flg_fatture_altro_anno = 1;
    lumera_db_impo.dit_fuori_anno = 1;
    choices_.confirm_supplier = [](FORNITORI *prepared) {
        prepared->for_pag = 45;
        return true;
    };
    choices_.choose_causale = [](long proposed) { return proposed; };
    choices_.choose_vat_code = [](const fatturapa::DatiRiepilogoType &row) { return row.AliquotaIVA > 0 ? 22L : 800L; };
    long registered = 0, bodies = 0;
    std::vector<std::string> doubtful;
    for (const long code : loaded) {
        CFattureElettronicheDB content;
        LoadInvoice(Cmd(), code, &content);
        for (std::size_t document = 0; document < content.Count(); ++document) {
            ++bodies;
            const RegistrationOutcome outcome = Register(code, 0, document);
            EXPECT_TRUE(outcome.registered) << content.FileName() << ": " << outcome.reason;
            registered += outcome.registered ? 1 : 0;
            if (inconsistent.contains(code))
                doubtful.push_back(fmt::format("Movimento {} riga IVA 1", outcome.entry.pno_codice));
        }
    }
    EXPECT_EQ(registered, bodies);
    EXPECT_EQ(Count("pnota1"), std::to_string(registered));
    std::vector<std::string> faulty; // a wrong tax of the seller is stored as he wrote it, and pointed at
    for (const ArchiveFault &fault : CheckArchive(Cmd()).faults) faulty.push_back(fault.where);
    EXPECT_EQ(faulty, doubtful) << ArchiveFaults();
    RecordProperty("registered", std::to_string(registered));
}

INSTANTIATE_TEST_SUITE_P(Engines, CorpusTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
