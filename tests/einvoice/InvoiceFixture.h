#pragma once

#include "einvoice/InvoiceRegistration.h"
#include "tests/support/TestArchive.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// The samples of the repository: "fatture" or "guasti".
std::filesystem::path SampleFolder(const char *name);
std::filesystem::path SampleFile(const std::string &file);
std::string ReadSample(const std::string &file);

/// The text with the first occurrence of a part replaced. @throws std::out_of_range when there is none
std::string Replaced(std::string text, std::string_view part, std::string_view replacement);

/// One row of the VAT summary, amounts as they stand in the file.
struct SummarySpec {
    std::string rate, taxable, tax;
    std::string nature, rounding, law, due;
};

/// An ordinary invoice to the demo company as a test describes it.
struct InvoiceSpec {
    std::string seller_vat = "02565617350"; ///< supplier 1 of the demo company: causale 21, terms 45
    std::string seller_fiscal_code = "02565617350";
    std::string seller_name = "<Denominazione>Utensileria Marzavola S.r.l.</Denominazione>";
    std::string seller_country = "IT";
    std::string rea;
    std::string type = "TD01", number = "7/P", date = "2026-03-10";
    std::string total = "122.00"; ///< empty = not declared
    std::string rounding, stamp;  ///< of the document
    std::vector<SummarySpec> summary = {{"22.00", "100.00", "22.00", "", "", "", ""}};
};
std::string InvoiceText(const InvoiceSpec &spec);
/// A summary of so many rates and natures, 8 at most, that the demo company has VAT codes for.
std::vector<SummarySpec> Rates(std::size_t count);

/// A fresh demo company with a shorthand for what these tests do over and over.
class InvoiceTest : public ArchiveTest {
  protected:
    /// Files an invoice that must be accepted. @return its number
    long Filed(const std::string &bytes, const std::string &name = "prova.xml");
    long Filed(const InvoiceSpec &spec) { return Filed(InvoiceText(spec)); }
    RegistrationOutcome Register(long code, long causale = 0, std::size_t document = 0)
    {
        return RegisterInvoice(Cmd(), code, document, causale, choices_);
    }
    /// "250.1.1 A 122.00" for every row in use.
    static std::vector<std::string> RowsOf(const PNOTA &entry);
    std::string Count(const std::string &table) { return Value("SELECT COUNT(*) FROM admin." + table); }
    /// "28/02/2026 739.32" for every instalment of an entry.
    std::vector<std::string> Instalments(long entry);
    /// Rows of all tables that a registration writes; equal before and after what must change nothing.
    std::string Stored();
    /// Everything that is wrong in the archive, a line each; empty when it is clean.
    std::string ArchiveFaults();

    RegistrationChoices choices_; ///< empty: the user gives every browser and editor up
};
