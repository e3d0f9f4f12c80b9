#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

/// An invoice file that cannot be used. what() is the sentence for the user, with the name of the file; Detail() says
/// in plain Italian what exactly is wrong and where (element, value, position), for the list of an import.
class InvoiceFileError : public std::runtime_error {
  public:
    enum class Reason {
        Unreadable,       ///< missing, too large, empty, or an envelope that cannot be taken apart
        NotAnInvoice,     ///< the content is no XML, is damaged XML, or is no usable FatturaPA document
        InvalidSignature, ///< the signature does not belong to the content
        NoCrypto,         ///< the cryptographic library does not start
    };

    InvoiceFileError(Reason reason, std::string_view file_name, std::string detail);

    Reason Why() const { return reason_; }
    const std::string &Detail() const { return detail_; }
    const std::string &FileName() const { return file_name_; }

  private:
    Reason reason_;
    std::string file_name_;
    std::string detail_;
};
