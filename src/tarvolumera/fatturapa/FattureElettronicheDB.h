#pragma once

#include "tarvolumera/fatturapa/FatturaElettronica.h"
#include "tarvolumera/fatturapa/SignedEnvelope.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Something odd in a file that was read all the same.
struct InvoiceWarning {
    int document = -1; ///< index of the body, -1 when it is about the header or the whole file
    std::string text;  ///< Italian, names element and value
};

/// The reader of FatturaPA files, ordinary and simplified. It owns what it read; a failed Load leaves it empty.
///
/// Whatever the exchange system lets through is read, oddities become warnings. A file is refused only when nothing can
/// be done with it: no XML, a notification or another document, no seller, buyer or body, a document without type,
/// number or date, a summary without its amounts.
class CFattureElettronicheDB {
  public:
    /// Reads a file, plain or signed. @throws InvoiceFileError
    void Load(const char *path);
    /// The same for the bytes of a file. @param file_name for the messages only @throws InvoiceFileError
    void Load(std::string bytes, std::string_view file_name);
    /// The same for what was taken out of a file already: a signature is not verified a second time.
    void Load(ExtractedXml extracted, std::string_view file_name);
    void Clear();

    const fatturapa::FatturaElettronica &Fattura() const { return fattura_; }
    const fatturapa::FatturaElettronicaHeader &Header() const { return fattura_.Header; }
    /// The bodies in the order of the file: each is a document of its own of the same seller and buyer.
    const std::vector<fatturapa::FatturaElettronicaBody> &Documents() const { return fattura_.Body; }
    std::size_t Count() const { return fattura_.Body.size(); }

    /// In the order of the file; a file with more than 200 oddities lists 200 and says so.
    const std::vector<InvoiceWarning> &Warnings() const { return warnings_; }
    const EnvelopeInfo &Envelope() const { return envelope_; }
    const std::string &FileName() const { return file_name_; }

  private:
    bool IsEmpty() const { return file_name_.empty() && fattura_.Body.empty(); }

    std::string file_name_;
    EnvelopeInfo envelope_;
    fatturapa::FatturaElettronica fattura_;
    std::vector<InvoiceWarning> warnings_;
};
