#pragma once

#include "tarvolumera/fatturapa/InvoiceFileError.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Files above this size are refused unread: the exchange system takes 5 MB, archives hold somewhat larger ones.
inline constexpr std::size_t kInvoiceFileBytesMax = 50'000'000;

/// What was found around the XML of an invoice file.
struct EnvelopeInfo {
    bool is_signed = false;           ///< at least one CMS envelope, its signature verified
    int levels = 0;                   ///< CMS envelopes opened, outermost included
    std::vector<std::string> signers; ///< common names, outermost envelope first; may be fewer than the signatures
    /// The wrappings from the outside in, joined by " > ": "DER", "BER", "PEM", "base64", and last "XML".
    std::string encoding;
};

/// The XML bytes of an invoice file, as they were written (byte order mark and encoding included).
struct ExtractedXml {
    std::string xml;
    EnvelopeInfo envelope;
};

/// Takes the XML out of the bytes of an invoice file: the one routine of import, display and export. The form is known
/// by the content, never by the extension: plain XML (UTF-8, UTF-16), CMS SignedData as DER, BER, PEM or base64 (with
/// or without line ends, even twice), and such envelopes inside each other, five at most. Every signature is verified
/// against its content; trust, expiry and revocation of the certificate are not judged here, since an invoice stays an
/// invoice.
/// @param file_name  for the messages only
/// @throws InvoiceFileError
ExtractedXml ExtractInvoiceXml(std::string bytes, std::string_view file_name);

/// The bytes of a file on disk. @throws InvoiceFileError when it cannot be read or exceeds kInvoiceFileBytesMax
std::string ReadInvoiceFile(const std::string &path);
