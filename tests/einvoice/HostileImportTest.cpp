#include "tests/einvoice/InvoiceFixture.h"
#include "tests/tarvolumera/Signing.h"

#include "einvoice/InvoiceDocuments.h"
#include "einvoice/InvoicePdf.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"

#include <fstream>

namespace {

using testing::HasSubstr;

class HostileImportTest : public InvoiceTest {
  protected:
    ImportResult Import(const std::string &bytes, const std::string &name = "prova.xml")
    {
        return ImportInvoice(Cmd(), name, name, bytes);
    }
    InvoiceRow OnlyRow()
    {
        InvoiceRow found;
        ForEachInvoice(Cmd(), 0, 0, [&](const InvoiceRow &row) {
            found = row;
            return true;
        });
        return found;
    }
};

std::string Repeated(std::string_view text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

std::string Utf16(std::string_view ascii)
{
    std::string text("\xFF\xFE");
    for (const char character : ascii) (text += character) += '\0';
    return text;
}

std::string Utf32(std::string_view ascii)
{
    std::string text("\xFF\xFE\0\0", 4);
    for (const char character : ascii) (text += character) += std::string(3, '\0');
    return text;
}

/// "\r\n" at the end of every line.
std::string WindowsLines(const std::string &text)
{
    std::string lines;
    for (const char character : text) lines += character == '\n' ? std::string("\r\n") : std::string(1, character);
    return lines;
}

std::string WithDoctype(const std::string &declarations)
{
    return Replaced(InvoiceText({}), "<p:Fattura", "<!DOCTYPE p [" + declarations + "]>\n<p:Fattura");
}

struct Attack {
    const char *name;
    std::string bytes;
    const char *reason; ///< part of it
};

std::vector<Attack> Attacks()
{
    const std::string valid = InvoiceText({});
    const auto with = [&](std::string_view part, std::string_view replacement) {
        return Replaced(valid, part, replacement);
    };
    const std::string inner = Replaced(Sign(valid, Mario()), "122.00", "922.00");
    std::string six = valid;
    for (int i = 0; i < 6; ++i) six = Sign(six, Mario());
    return {
        {"file of this machine as an entity", WithDoctype("<!ENTITY x SYSTEM \"file:///etc/passwd\">"), "DTD"},
        {"entities that multiply", WithDoctype("<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;&a;\">"), "DTD"},
        {"parameter entity", WithDoctype("<!ENTITY % x SYSTEM \"http://127.0.0.1/x.dtd\"> %x;"), "DTD"},
        {"doctype in UTF-16", Utf16(WithDoctype("<!ENTITY a \"a\">")), "DTD"},
        {"doctype inside the signature", Sign(WithDoctype("<!ENTITY a \"a\">"), Mario()), "DTD"},
        {"depth", with("<Divisa>", Repeated("<a>", 100'000)), "troppi livelli"},
        {"depth that ends", with("<Divisa>", Repeated("<a>", 5'000) + Repeated("</a>", 5'000) + "<Divisa>"),
         "troppi livelli"},
        {"endless list", with("<DatiRiepilogo>", Repeated("<DettaglioLinee/>", 500'001) + "<DatiRiepilogo>"), "voci"},
        {"UTF-16 cut in a letter", Utf16(valid).substr(0, 1'001), "troncato"},
        {"UTF-32", Utf32(valid), "carattere nullo"},
        {"EBCDIC", std::string("\x4C\x6F\xA7\x94\x93\x40\xA5\x85\x99\xA2\x89\x96\x95"), "non è XML"},
        {"null character", with("7/P", std::string_view("7\0P", 3)), "carattere nullo"},
        {"amount with a comma", with("<ImponibileImporto>100.00", "<ImponibileImporto>1,00"), "\"1,00\""},
        {"amount beyond all numbers", with("<ImponibileImporto>100.00", "<ImponibileImporto>1e400"), "\"1e400\""},
        {"amount that is none", with("<Imposta>22.00", "<Imposta>nan"), "\"nan\""},
        {"amount of four hundred digits", with("<Imposta>22.00", "<Imposta>" + std::string(400, '9')), "Imposta"},
        {"month 13", with("2026-03-10", "2026-13-10"), "\"2026-13-10\""},
        {"year 9999", with("2026-03-10", "9999-03-10"), "non plausibile"},
        {"year 1", with("2026-03-10", "0001-03-10"), "non plausibile"},
        {"date for people", with("2026-03-10", "10/03/2026"), "\"10/03/2026\""},
        {"changed after signing", inner, "modificati"},
        {"changed, then signed by another", Sign(inner, Lucia()), "modificati"},
        {"signature without content", Sign(valid, Mario(), Form::Der, CMS_DETACHED), "firma è separata"},
        {"signature of nothing", Sign("", Mario()), "vuot"},
        {"six envelopes", six, "più di 5 buste"},
        {"signed letter", Sign("Gentile cliente, in allegato la fattura.", Mario()), "non è XML"},
    };
}

TEST_P(HostileImportTest, IsRefusedNamingTheFaultAndNothingChanges)
{
    Filed(InvoiceSpec{});
    const std::string before = Stored();
    for (const Attack &attack : Attacks()) {
        SCOPED_TRACE(attack.name);
        const ImportResult result = Import(attack.bytes, "prova.xml.p7m");
        EXPECT_EQ(result.outcome, ImportOutcome::Refused);
        EXPECT_EQ(result.code, 0);
        EXPECT_THAT(result.text, HasSubstr(attack.reason));
    }
    EXPECT_EQ(Stored(), before);
    EXPECT_EQ(ArchiveFaults(), "");
}

struct Oddity {
    const char *name;
    std::string bytes;
    const char *seller; ///< part of the name as the list shows it
};

/// Ugly, and an invoice.
std::vector<Oddity> Oddities()
{
    const auto named = [](std::string_view encoding, std::string_view seller) {
        InvoiceSpec spec;
        spec.seller_name = fmt::format("<Denominazione>{}</Denominazione>", seller);
        return Replaced(InvoiceText(spec), "UTF-8", encoding);
    };
    const std::string plain = InvoiceText({});
    std::string attributes;
    for (int i = 0; i < 10'000; ++i) attributes += fmt::format("x{}=\"\" ", i);
    return {
        {"UTF-16", Utf16(named("UTF-16", "SELVA")), "SELVA"},
        {"mark of UTF-8", "\xEF\xBB\xBF" + plain, "Marzavola"},
        {"line ends of Windows", WindowsLines(plain), "Marzavola"},
        {"declares UTF-8, is Latin", named("UTF-8", "PERCH\xC9"), "PERCHÉ"},
        {"declares Latin after the mark of UTF-8", "\xEF\xBB\xBF" + named("ISO-8859-1", "PERCHÉ"), "PERCHÉ"},
        {"declares what nobody knows", named("x-klingon", "PERCHÉ"), "PERCHÉ"},
        {"declares UTF-16, is UTF-8", named("UTF-16", "PERCHÉ"), "PERCHÉ"},
        {"entity that nobody declared", named("UTF-8", "A&xxe;B"), "A&xxe;B"},
        {"numbers of no character", named("UTF-8", "A&#0;&#xD800;&#x110000;&#xFFFF;&#99999999999;B"), "B"},
        {"half letters", named("UTF-8", "PERCH\xC3 \xED\xA0\x80 \xF8\x88\x80\x80\x80 Z"), "Z"},
        {"name without end", named("UTF-8", Repeated("Òrto ", 20'000)), "Òrto Òrto"},
        {"number without end", Replaced(plain, "7/P", std::string(5'000, '7')), "Marzavola"},
        {"ten thousand attributes", Replaced(plain, "versione=", attributes + "versione="), "Marzavola"},
        {"envelope in an envelope", Sign(Sign(plain, Mario()), Lucia()), "Marzavola"},
        {"signed with the mark and UTF-16", Sign(Utf16(named("UTF-16", "SELVA")), Mario(), Form::Ber), "SELVA"},
    };
}

TEST_P(HostileImportTest, UglyInvoicesAreFiledListedRenderedAndRegistered)
{
    choices_.confirm_supplier = [](FORNITORI *) { return true; };
    for (const Oddity &oddity : Oddities()) {
        SCOPED_TRACE(oddity.name);
        Run("DELETE FROM admin.fatture");
        Run("DELETE FROM admin.allegati");
        const ImportResult result = Import(oddity.bytes);
        EXPECT_EQ(result.outcome, ImportOutcome::Loaded) << result.text;
        if (result.code == 0) continue;
        EXPECT_THAT(OnlyRow().seller_name, HasSubstr(oddity.seller));
        EXPECT_NEAR(OnlyRow().total, 122.0, 0.001);
        CFattureElettronicheDB content;
        LoadInvoice(Cmd(), result.code, &content);
        EXPECT_GT(WriteInvoicePdf(content, {}, Folder() / "foglio.pdf"), 0);
        choices_.skip_duplicates = true;
        Run("DELETE FROM admin.scadenze");
        Run("UPDATE admin.pnota1 SET pno_doc = 'prima', pno_all = 0");
        const RegistrationOutcome outcome = Register(result.code);
        EXPECT_TRUE(outcome.registered) << outcome.reason;
        EXPECT_NEAR(outcome.entry.pno_tot_doc, 122.0, 0.001);
    }
}

// Names come from outside: with an invoice, out of an archive, from a portal. On the way out they stay in the folder.
TEST_P(HostileImportTest, NamesNeverLeadOutOfTheFolder)
{
    std::vector<long> codes;
    InvoiceSpec spec;
    int number = 0;
    for (const char *name : {"..\\..\\x.xml", "../../x.xml", "/etc/passwd.xml", "C:\\windows\\x.xml", "CON.xml",
                             "nul.xml.p7m", "..", "", "a\nb.xml", "x.xml:nascosto"}) {
        SCOPED_TRACE(name);
        spec.number = std::to_string(++number);
        const ImportResult result = Import(InvoiceText(spec), name);
        ASSERT_EQ(result.outcome, ImportOutcome::Loaded) << result.text;
        codes.push_back(result.code);
    }
    const std::filesystem::path folder = Folder() / "fuori" / "qui";
    const FilesExported exported = ExportFiles(Cmd(), {codes, true}, folder);
    EXPECT_THAT(exported.faults, testing::IsEmpty());
    EXPECT_EQ(exported.written, static_cast<long>(codes.size()));
    std::size_t inside = 0;
    for (const auto &item : std::filesystem::recursive_directory_iterator(folder)) {
        ++inside;
        EXPECT_EQ(SafeFileName(item.path().filename().string()), item.path().filename().string());
    }
    EXPECT_EQ(inside, codes.size());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.parent_path()), {}), 1) << "beside the folder";
    for (const long code : codes) EXPECT_GT(StoredInvoicePdf(Cmd(), code).all_data.size(), 1'000u);
}

/// The highest memory of this process since the last call of Reset, in bytes; 0 where the system does not tell.
class PeakMemory {
  public:
    static void Reset() { std::ofstream("/proc/self/clear_refs") << "5"; }
    static long Bytes()
    {
        std::ifstream status("/proc/self/status");
        for (std::string line; std::getline(status, line);)
            if (line.starts_with("VmHWM:")) return std::stol(line.substr(6)) * 1024;
        return 0;
    }
};

TEST_P(HostileImportTest, TwentyThousandLinesGoAllTheWay)
{
    constexpr int kLines = 20'000;
    std::string lines;
    for (int i = 1; i <= kLines; ++i)
        lines +=
            fmt::format("<DettaglioLinee><NumeroLinea>{}</NumeroLinea><CodiceArticolo><CodiceTipo>INT</CodiceTipo>"
                        "<CodiceValore>A{}</CodiceValore></CodiceArticolo><Descrizione>Vite zincata {}</Descrizione>"
                        "<Quantita>1.00</Quantita><PrezzoUnitario>1.00</PrezzoUnitario>"
                        "<PrezzoTotale>1.00</PrezzoTotale><AliquotaIVA>22.00</AliquotaIVA></DettaglioLinee>",
                        i % 10'000, i, i);
    InvoiceSpec spec;
    spec.total = "24400.00";
    spec.summary = {{"22.00", "20000.00", "4400.00", "", "", "", ""}};
    std::string bytes = InvoiceText(spec);
    const std::size_t begin = bytes.find("<DettaglioLinee>"), end = bytes.find("</DettaglioLinee>") + 17;
    bytes.replace(begin, end - begin, lines);

    PeakMemory::Reset();
    const long before = PeakMemory::Bytes();
    const long code = Filed(bytes);
    EXPECT_NEAR(OnlyRow().total, 24'400.0, 0.001);
    const RegistrationOutcome outcome = Register(code);
    EXPECT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_NEAR(outcome.entry.pno_tot_doc, 24'400.0, 0.001);
    CFattureElettronicheDB content;
    LoadInvoice(Cmd(), code, &content);
    EXPECT_EQ(content.Documents().at(0).DatiBeniServizi.DettaglioLinee.size(), static_cast<std::size_t>(kLines));
    EXPECT_GT(WriteInvoicePdf(content, {}, Folder() / "foglio.pdf"), 200);
#ifndef __SANITIZE_ADDRESS__ // keeps what was freed
    constexpr long kMemoryMax = 300'000'000;
    EXPECT_LT(PeakMemory::Bytes() - before, kMemoryMax);
#endif
    RecordProperty("peak", std::to_string(PeakMemory::Bytes() - before));
    EXPECT_EQ(Import(bytes, "copia.xml").outcome, ImportOutcome::AlreadyThere);
}

INSTANTIATE_TEST_SUITE_P(Engines, HostileImportTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
