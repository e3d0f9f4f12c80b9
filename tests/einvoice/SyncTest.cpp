#include "einvoice/InvoiceDocuments.h"
#include "einvoice/InvoiceInbox.h"
#include "einvoice/InvoiceSync.h"
#include "einvoice/WatchedFolder.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvolumera/ReceivedInvoices.h"
#include "tarvolumera/Sincro.h"
#include "tests/einvoice/InvoiceFixture.h"

#include <fstream>
#include <zip.h>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A drop folder, written and looked at by the same test.
class SyncTest : public InvoiceTest {
  protected:
    void SetUp() override
    {
        InvoiceTest::SetUp();
        if (IsSkipped()) return;
        fs::create_directories(Drop());
    }
    fs::path Drop() { return Folder() / "arrivi"; }

    /// A file that was finished an hour ago. @param written  how long ago it was written
    fs::path Put(const std::string &name, const std::string &bytes, std::chrono::seconds written = 3600s)
    {
        const fs::path file = Drop() / name;
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
        fs::last_write_time(file, now_ - written);
        return file;
    }

    /// "name: outcome" for each line.
    std::vector<std::string> Sync()
    {
        WatchedFolder provider(Drop(), [this] { return now_; });
        std::vector<std::string> lines;
        result_ = SynchroniseInvoices(Cmd(), provider);
        for (const SyncLine &line : result_.lines)
            lines.push_back(fmt::format("{}: {}", line.name, SyncOutcomeText(line.outcome)));
        return lines;
    }

    std::string FiledOfKind(long kind)
    {
        return Value(fmt::format("SELECT COUNT(*) FROM admin.allegati WHERE all_tab_tipo = {}", kind));
    }

    fs::file_time_type now_ = fs::file_time_type::clock::now();
    SyncResult result_;
};

std::string Metadata(const std::string &invoice, const std::string &sdi)
{
    return "<?xml version=\"1.0\"?><types:MetadatiInvioFile xmlns:types=\"urn:x\" "
           "versione=\"1.0\"><IdentificativoSdI>" +
           sdi + "</IdentificativoSdI><NomeFile>" + invoice + "</NomeFile></types:MetadatiInvioFile>";
}

TEST_P(SyncTest, EachFileIsTakenUpOnceAndNoneIsTouched)
{
    Put("IT02565617350_00A24.xml", ReadSample("IT02565617350_00A24.xml"));
    Put("giugno/IT06186527153_E4187.xml.p7m", ReadSample("IT06186527153_E4187.xml.p7m"));
    Put("IT08235227348_00017_RC_001.xml", ReadSample("IT08235227348_00017_RC_001.xml"));
    Put("IT02565617350_00A24.XML.PDF", "%PDF-1.4 prova");
    Put("note.txt", "niente");
    Put(".nascosto.xml", "<");
    EXPECT_THAT(Sync(),
                ElementsAre("IT02565617350_00A24.xml: caricata", "IT08235227348_00017_RC_001.xml: notifica",
                            "giugno/IT06186527153_E4187.xml.p7m: caricata", "IT02565617350_00A24.XML.PDF: PDF"));
    EXPECT_THAT(result_.lines[1].text, HasSubstr("ricevuta di consegna (RC) di IT08235227348_00017.xml, SdI 99001"));
    EXPECT_EQ(FiledOfKind(kReceivedInvoices), "2");
    EXPECT_EQ(FiledOfKind(kSdiNotification), "1");
    EXPECT_EQ(Value("SELECT all_fname FROM admin.allegati WHERE all_tab_tipo = 21"), "IT02565617350_00A24.XML.PDF");
    EXPECT_THAT(Sync(), IsEmpty());
    fs::last_write_time(Drop() / "IT02565617350_00A24.xml", now_ - 60s);
    EXPECT_THAT(Sync(), IsEmpty()) << "copied again with the same content";
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(Drop()), fs::recursive_directory_iterator()), 7);
    EXPECT_EQ(ReadWholeFile(Drop() / "IT02565617350_00A24.xml", 1'000'000), ReadSample("IT02565617350_00A24.xml"));
    EXPECT_EQ(ArchiveFaults(), "");
}

TEST_P(SyncTest, HalfWrittenFilesWaitForTheNextTime)
{
    const std::string whole = InvoiceText({});
    Put("a.xml", whole, 1s);
    Put("b.xml", whole.substr(0, whole.size() - 30));
    Put("c.xml.part", whole);
    Put("d.crdownload", whole);
    Put("e.xml", whole, -3600s); // written by a machine whose clock is ahead
    EXPECT_THAT(Sync(), ElementsAre("a.xml: rimandato", "b.xml: rimandato", "c.xml.part: rimandato",
                                    "d.crdownload: rimandato", "e.xml: caricata"));
    now_ += 10s;
    Put("b.xml", whole + "\n<!-- coda -->\n");
    fs::remove(Drop() / "d.crdownload");
    fs::rename(Drop() / "c.xml.part", Drop() / "c.xml");
    EXPECT_THAT(Sync(), ElementsAre("a.xml: già presente", "b.xml: caricata", "c.xml: già presente"));
    EXPECT_THAT(Sync(), IsEmpty());
}

/// A folder in which somebody writes while it is read.
class BusyFolder : public WatchedFolder {
  public:
    BusyFolder(const fs::path &folder, std::function<void()> write) : WatchedFolder(folder), write_(std::move(write)) {}
    std::string Read(const ProvidedFile &file) override
    {
        std::string bytes = WatchedFolder::Read(file);
        if (write_) std::exchange(write_, nullptr)();
        return bytes;
    }

  private:
    std::function<void()> write_;
};

TEST_P(SyncTest, FileThatGrowsWhileItIsReadIsLeft)
{
    const fs::path file = Put("a.xml.p7m", ReadSample("IT06186527153_E4187.xml.p7m").substr(0, 4000));
    BusyFolder provider(Drop(), [&] { Put("a.xml.p7m", ReadSample("IT06186527153_E4187.xml.p7m")); });
    const SyncResult result = SynchroniseInvoices(Cmd(), provider);
    ASSERT_EQ(result.lines.size(), 1u);
    EXPECT_EQ(result.lines[0].outcome, SyncOutcome::Waiting);
    EXPECT_EQ(Count("sincro"), "0");
    EXPECT_THAT(Sync(), ElementsAre("a.xml.p7m: caricata"));
}

TEST_P(SyncTest, RefusedFileIsTriedAgainWhenItChanges)
{
    const std::string whole = InvoiceText({});
    Put("a.xml", Replaced(whole, "<Numero>7/P</Numero>", ""));
    Put("b.pdf.zip", "PK\x03\x04 rotto");
    EXPECT_THAT(Sync(), ElementsAre("a.xml: rifiutato", "b.pdf.zip: rifiutato"));
    EXPECT_THAT(result_.lines[0].text, HasSubstr("Numero"));
    EXPECT_EQ(FiledOfKind(kReceivedInvoices), "0");
    EXPECT_THAT(Sync(), IsEmpty()) << "listed once";
    Put("a.xml", whole, 1800s);
    EXPECT_THAT(Sync(), ElementsAre("a.xml: caricata"));
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.sincro WHERE syn_nome = 'a.xml'"), "2");

    Put("c.xml", whole.substr(0, whole.size() - 30), 7200s);
    EXPECT_THAT(Sync(), ElementsAre("c.xml: rifiutato")) << "the rest would have come by now";
    EXPECT_THAT(Sync(), IsEmpty());
}

TEST_P(SyncTest, InvoiceOfAnotherCompanyIsAskedAboutOnce)
{
    Put("a.xml", Replaced(InvoiceText({}), "08235227348", "02565617350"));
    user_.Expect("Partita Iva/Codice fiscale non corrispondenti per il file :\n\na.xml\n\nVuoi Continuare ?", IDNO);
    EXPECT_THAT(Sync(), ElementsAre("a.xml: rifiutato"));
    EXPECT_THAT(Sync(), IsEmpty());
    fs::last_write_time(Drop() / "a.xml", now_ - 60s);
    lumera_db_impo.dit_piva = lumera_db_impo.dit_codfis = "02565617350"; // it was the company that was wrong
    EXPECT_THAT(Sync(), ElementsAre("a.xml: caricata")) << "put there once more";
}

TEST_P(SyncTest, LinksOutOfTheFolderAndHugeFilesAreRefused)
{
    const fs::path outside = Folder() / "segreto.xml";
    std::ofstream(outside) << InvoiceText({});
    fs::create_directories(Folder() / "altrove");
    fs::create_symlink(outside, Drop() / "a.xml");
    fs::create_directory_symlink(Folder() / "altrove", Drop() / "b");
    fs::create_symlink("../arrivi2.xml", Drop() / "c.xml"); // leads nowhere
    fs::resize_file(Put("d.xml", "<"), 60'000'000);
    fs::last_write_time(Drop() / "d.xml", now_ - 1h);
    Put("e.xml", InvoiceText({}));
    fs::create_symlink("e.xml", Drop() / "f.xml"); // stays inside: the file itself is listed
    EXPECT_THAT(Sync(), ElementsAre("a.xml: rifiutato", "b: rifiutato", "c.xml: rifiutato", "d.xml: rifiutato",
                                    "e.xml: caricata"));
    EXPECT_THAT(result_.lines[3].text, HasSubstr("60 MB"));
    EXPECT_THAT(Sync(), IsEmpty());
}

TEST_P(SyncTest, MissingFolderIsAnErrorNotAnEmptyOne)
{
    WatchedFolder provider(Folder() / "smontata");
    EXPECT_THROW(SynchroniseInvoices(Cmd(), provider), FileError);
}

TEST_P(SyncTest, ArchiveGivesALineForEachOfItsFiles)
{
    const fs::path file = Drop() / "mese.zip";
    int code = 0;
    zip_t *archive = zip_open(file.c_str(), ZIP_CREATE, &code);
    const std::string invoice = InvoiceText({}), metadata = Metadata("IT01_1.xml", "77"), broken = "<x/>";
    const auto add = [&](const char *name, const std::string &bytes) {
        zip_file_add(archive, name, zip_source_buffer(archive, bytes.data(), bytes.size(), 0), 0);
    };
    add("giugno/IT01_1.xml", invoice);
    add("giugno/IT01_1_MT_001.xml", metadata);
    add("x.xml", broken);
    zip_close(archive);
    fs::last_write_time(file, now_ - 1h);
    EXPECT_THAT(Sync(), ElementsAre("mese.zip: giugno/IT01_1.xml: caricata",
                                    "mese.zip: giugno/IT01_1_MT_001.xml: notifica", "mese.zip: x.xml: rifiutato"));
    EXPECT_THAT(Sync(), IsEmpty());
}

TEST_P(SyncTest, IdentifierOfTheMetadataIsNotedOnTheInvoice)
{
    const long code = Filed(ReadSample("IT06186527153_E4187.xml.p7m"), "IT06186527153_E4187.xml.p7m");
    const std::string sdi = fmt::format("SELECT fat_sdi FROM admin.fatture WHERE fat_codice = {}", code);
    Put("IT06186527153_E4187_MT_001.xml", Metadata("IT06186527153_E4187.xml", "1234567890"));
    EXPECT_THAT(Sync(), ElementsAre("IT06186527153_E4187_MT_001.xml: notifica"));
    EXPECT_EQ(Value(sdi), "1234567890");
}

// The two come by different ways: the metadata may be there a day before.
TEST_P(SyncTest, MetadataOfAnEarlierRunFindTheirInvoiceWhenItComes)
{
    Put("IT06186527153_E4187_MT_001.xml", Metadata("IT06186527153_E4187.xml.p7m", "1234567890"));
    Put("IT02565617350_00A24_MT_001.xml", Metadata("IT02565617350_00A24.xml", "55"));
    EXPECT_THAT(Sync(),
                ElementsAre("IT02565617350_00A24_MT_001.xml: notifica", "IT06186527153_E4187_MT_001.xml: notifica"));
    Put("IT06186527153_E4187.xml.p7m", ReadSample("IT06186527153_E4187.xml.p7m"));
    EXPECT_THAT(Sync(), ElementsAre("IT06186527153_E4187.xml.p7m: caricata"));
    EXPECT_EQ(Value("SELECT fat_sdi FROM admin.fatture"), "1234567890") << "in the summary stored with the invoice";
    EXPECT_EQ(Count("fatture"), "1");
}

TEST_P(SyncTest, ReadableDocumentWaitsForItsInvoice)
{
    Put("IT02565617350_00A24.PDF", "%PDF-1.4 prova");
    Put("falso.pdf", "<html>");
    EXPECT_THAT(Sync(), ElementsAre("IT02565617350_00A24.PDF: rimandato", "falso.pdf: rifiutato"));
    Put("IT02565617350_00A24.xml", ReadSample("IT02565617350_00A24.xml"));
    EXPECT_THAT(Sync(), ElementsAre("IT02565617350_00A24.xml: caricata", "IT02565617350_00A24.PDF: PDF"));
    EXPECT_EQ(Value("SELECT all_fname FROM admin.allegati WHERE all_tab_tipo = 21"), "IT02565617350_00A24.PDF");
}

TEST_P(SyncTest, ReadableDocumentOfTheProviderTakesThePlaceOfOurs)
{
    const long code = Filed(ReadSample("IT02565617350_00A24.xml"), "IT02565617350_00A24.xml");
    StoredInvoicePdf(Cmd(), code);
    Put("IT02565617350_00A24.PDF", "%PDF-1.4 prova");
    EXPECT_THAT(Sync(), ElementsAre("IT02565617350_00A24.PDF: PDF"));
    EXPECT_EQ(AsText(StoredInvoicePdf(Cmd(), code).all_data), "%PDF-1.4 prova");
    EXPECT_EQ(Count("allegati"), "2");
    Put("IT02565617350_00A24.pdf", "%PDF-1.4 altra");
    EXPECT_THAT(Sync(), ElementsAre("IT02565617350_00A24.pdf: già presente")) << "the first one stays";
    DeleteInvoice(Cmd(), code);
    EXPECT_EQ(Count("allegati"), "0");
}

// --- notifications known by what they are ---------------------------------------------------------------------------

struct NotificationCase {
    const char *name, *file, *root;
    ImportOutcome outcome;
};

TEST_P(SyncTest, NotificationsAreIgnoredByAnImport)
{
    for (const NotificationCase &test :
         {NotificationCase{"Discard", "x.xml", "NotificaScarto", ImportOutcome::Ignored},
          NotificationCase{"Undelivered", "x.xml", "RicevutaImpossibilitaRecapito", ImportOutcome::Ignored},
          NotificationCase{"Outcome", "x.xml", "NotificaEsito", ImportOutcome::Ignored},
          NotificationCase{"Term", "x.xml", "NotificaDecorrenzaTermini", ImportOutcome::Ignored},
          NotificationCase{"Attested", "x.xml", "AttestazioneTrasmissioneFattura", ImportOutcome::Ignored},
          NotificationCase{"ByName", "IT01_00001_NE_002.xml", "Sconosciuta", ImportOutcome::Ignored},
          NotificationCase{"NeitherNameNorRoot", "IT01_00001_ZZ_002.xml", "Sconosciuta", ImportOutcome::Refused}}) {
        const std::string xml =
            fmt::format("\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<!-- > --><n:{0} xmlns:n=\"u\"><A/></n:{0}>", test.root);
        const ImportResult result = ImportInvoice(Cmd(), test.file, test.file, xml);
        EXPECT_EQ(result.outcome, test.outcome) << test.name;
        if (test.outcome == ImportOutcome::Ignored) {
            EXPECT_THAT(result.text, HasSubstr("notifica, non è una fattura: "));
        }
    }
    // A name like a notification's does not hide an invoice.
    EXPECT_EQ(ImportInvoice(Cmd(), "x", "IT01_00001_MT_001.xml", InvoiceText({})).outcome, ImportOutcome::Loaded);
    EXPECT_EQ(Count("allegati"), "1");
}

INSTANTIATE_TEST_SUITE_P(Engines, SyncTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
