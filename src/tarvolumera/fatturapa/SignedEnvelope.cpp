#include "tarvolumera/fatturapa/SignedEnvelope.h"

#include "tarvodlg/base/Files.h"
#include "tarvolumera/fatturapa/Base64.h"

#include <fmt/format.h>
#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/x509.h>

#include <memory>
#include <optional>

namespace {

using Reason = InvoiceFileError::Reason;

// Portals wrap what they get once more, so an archive holds base64 of base64; more than that is an attack on our time.
constexpr int kSignedLevelsMax = 5;
constexpr int kTextWrappingsMax = 5;

// A file of several signers in parallel has a handful of them. Every further algorithm would make us digest the whole
// content once more, which a hostile file could ask for ten thousand times.
constexpr int kSignersMax = 32;
constexpr long kDigestListBytesMax = 1024;

template <auto Free>
struct Freer {
    template <class T>
    void operator()(T *object) const
    {
        Free(object);
    }
};
using CmsPointer = std::unique_ptr<CMS_ContentInfo, Freer<CMS_ContentInfo_free>>;
using BioPointer = std::unique_ptr<BIO, Freer<BIO_free_all>>;
using NamePointer = std::unique_ptr<unsigned char, Freer<[](unsigned char *text) { OPENSSL_free(text); }>>;

constexpr const char *kDamagedEnvelope = "la busta di firma digitale è danneggiata o incompleta";

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

std::string_view WithoutMark(std::string_view bytes)
{
    return bytes.starts_with(kUtf8Mark) ? bytes.substr(kUtf8Mark.size()) : bytes;
}

std::string_view WithoutLeadingBlanks(std::string_view bytes)
{
    const std::size_t start = bytes.find_first_not_of(" \t\r\n");
    return start == std::string_view::npos ? std::string_view() : bytes.substr(start);
}

bool LooksLikeXml(std::string_view bytes)
{
    using namespace std::string_view_literals;
    for (const std::string_view start : {"\xFF\xFE"sv, "\xFE\xFF"sv, "<\0"sv, "\0<"sv}) {
        if (bytes.starts_with(start)) return true;
    }
    return WithoutLeadingBlanks(WithoutMark(bytes)).starts_with('<');
}

bool LooksLikeCms(std::string_view bytes)
{
    return bytes.size() > 2 && bytes[0] == '\x30' && static_cast<unsigned char>(bytes[1]) >= 0x80;
}

/// The base64 between the BEGIN and END lines; nothing when there is no such armour. A missing END line is left to the
/// envelope inside, which then is too short.
std::optional<std::string_view> PemBody(std::string_view text)
{
    constexpr std::string_view begin_mark = "-----BEGIN ";
    if (!text.starts_with(begin_mark)) return std::nullopt;
    const std::size_t line_end = text.find("-----", begin_mark.size());
    if (line_end == std::string_view::npos) return std::nullopt;
    const std::string_view body = text.substr(line_end + 5);
    return body.substr(0, body.find("-----END "));
}

std::string ForeignContentDetail(std::string_view bytes)
{
    if (bytes.starts_with("PK\x03\x04")) return "il contenuto è un archivio ZIP: estrarre prima i file che contiene";
    if (bytes.starts_with("%PDF")) return "il contenuto è un documento PDF, non una fattura elettronica";
    return "il contenuto non è XML e non è una busta di firma digitale";
}

/// Reads the header of one ASN.1 object and moves to its content. @return false when it is no such object
bool EnterObject(const unsigned char *&position, const unsigned char *end, int tag_wanted, long &length, bool &open_end)
{
    int tag = 0;
    int tag_class = 0;
    const int form = ASN1_get_object(&position, &length, &tag, &tag_class, end - position);
    open_end = (form & 1) != 0;
    return (form & 0x80) == 0 && tag == tag_wanted;
}

/// False when the list of digest algorithms at the head of a signed envelope is longer than any signer needs. An
/// envelope that does not begin like one is left to the real parser.
bool DigestListIsSmall(std::string_view bytes)
{
    const auto *position = reinterpret_cast<const unsigned char *>(bytes.data());
    const unsigned char *end = position + bytes.size();
    long length = 0;
    bool open_end = false;
    if (!EnterObject(position, end, V_ASN1_SEQUENCE, length, open_end)) return true;
    if (!EnterObject(position, end, V_ASN1_OBJECT, length, open_end)) return true;
    position += length;
    if (!EnterObject(position, end, 0, length, open_end)) return true;
    if (!EnterObject(position, end, V_ASN1_SEQUENCE, length, open_end)) return true;
    if (!EnterObject(position, end, V_ASN1_INTEGER, length, open_end)) return true;
    position += length;
    if (!EnterObject(position, end, V_ASN1_SET, length, open_end)) return true;
    if (!open_end) return length <= kDigestListBytesMax;
    const unsigned char *start = position;
    while (position - start <= kDigestListBytesMax) {
        if (!EnterObject(position, end, V_ASN1_SEQUENCE, length, open_end) || open_end) return true;
        position += length;
    }
    return false;
}

std::string SignatureDetail()
{
    std::string detail = "la firma non può essere verificata";
    while (const unsigned long error = ERR_get_error()) {
        if (ERR_GET_LIB(error) != ERR_LIB_CMS) continue;
        switch (ERR_GET_REASON(error)) {
        case CMS_R_CONTENT_VERIFY_ERROR:
        case CMS_R_VERIFICATION_FAILURE:
            detail = "il contenuto o la firma sono stati modificati dopo la firma";
            break;
        case CMS_R_SIGNER_CERTIFICATE_NOT_FOUND:
            detail = "nella busta manca il certificato del firmatario";
            break;
        case CMS_R_UNKNOWN_DIGEST_ALGORITHM:
        case CMS_R_NO_MATCHING_DIGEST:
            detail = "l'algoritmo della firma non è conosciuto";
            break;
        default:
            break;
        }
    }
    return detail;
}

std::string CommonName(X509 *certificate)
{
    const X509_NAME *subject = X509_get_subject_name(certificate);
    const int index = X509_NAME_get_index_by_NID(subject, NID_commonName, -1);
    if (index < 0) return {};
    unsigned char *text = nullptr;
    const int length = ASN1_STRING_to_UTF8(&text, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, index)));
    if (length < 0) return {};
    const NamePointer owner(text);
    return std::string(reinterpret_cast<const char *>(text), static_cast<std::size_t>(length));
}

void AddSigners(CMS_ContentInfo *cms, std::vector<std::string> &names)
{
    STACK_OF(X509) *signers = CMS_get0_signers(cms);
    for (int i = 0; i < sk_X509_num(signers); ++i) {
        std::string name = CommonName(sk_X509_value(signers, i));
        if (!name.empty()) names.push_back(std::move(name));
    }
    sk_X509_free(signers);
}

/// Takes one file apart, level by level.
class EnvelopeOpener {
  public:
    EnvelopeOpener(std::string bytes, std::string_view file_name) : bytes_(std::move(bytes)), file_name_(file_name) {}

    ExtractedXml Open()
    {
        while (!LooksLikeXml(bytes_)) {
            if (LooksLikeCms(bytes_)) {
                OpenSigned();
            } else {
                OpenText();
            }
        }
        Note("XML");
        return {std::move(bytes_), std::move(envelope_)};
    }

  private:
    [[noreturn]] void Refuse(Reason reason, std::string detail) const
    {
        ERR_clear_error();
        throw InvoiceFileError(reason, file_name_, std::move(detail));
    }

    void Note(std::string_view form)
    {
        if (!envelope_.encoding.empty()) envelope_.encoding += " > ";
        envelope_.encoding += form;
    }

    void OpenText()
    {
        const std::string_view text = WithoutLeadingBlanks(WithoutMark(bytes_));
        const std::optional<std::string_view> pem = PemBody(text);
        if (text.empty() || ++text_wrappings_ > kTextWrappingsMax)
            Refuse(Reason::NotAnInvoice, ForeignContentDetail(text));
        std::string decoded;
        if (!DecodeBase64(pem.value_or(text), decoded) || decoded.empty()) {
            const bool was_envelope = pem || text.starts_with("MI"); // 30 8x in base64
            if (was_envelope) Refuse(Reason::Unreadable, kDamagedEnvelope);
            Refuse(Reason::NotAnInvoice, ForeignContentDetail(text));
        }
        Note(pem ? "PEM" : "base64");
        bytes_ = std::move(decoded);
    }

    void OpenSigned()
    {
        if (++envelope_.levels > kSignedLevelsMax) {
            Refuse(Reason::Unreadable, fmt::format("più di {} buste di firma una dentro l'altra", kSignedLevelsMax));
        }
        Note(bytes_[1] == '\x80' ? "BER" : "DER");
        const CmsPointer cms = ParseSigned();
        std::string content = VerifiedContent(cms.get());
        AddSigners(cms.get(), envelope_.signers);
        envelope_.is_signed = true;
        bytes_ = std::move(content);
    }

    CmsPointer ParseSigned() const
    {
        if (!DigestListIsSmall(bytes_)) Refuse(Reason::Unreadable, "la busta di firma elenca troppi algoritmi");
        const auto *position = reinterpret_cast<const unsigned char *>(bytes_.data());
        CmsPointer cms(d2i_CMS_ContentInfo(nullptr, &position, static_cast<long>(bytes_.size())));
        if (!cms) Refuse(Reason::Unreadable, kDamagedEnvelope);
        if (OBJ_obj2nid(CMS_get0_type(cms.get())) != NID_pkcs7_signed) {
            Refuse(Reason::Unreadable, "la busta non contiene dati firmati (è cifrata o di altro tipo)");
        }
        ASN1_OCTET_STRING **content = CMS_get0_content(cms.get());
        if (content == nullptr || *content == nullptr) {
            Refuse(Reason::Unreadable, "la firma è separata dal documento: il file non contiene la fattura");
        }
        const int signers = sk_CMS_SignerInfo_num(CMS_get0_SignerInfos(cms.get()));
        if (signers < 1) Refuse(Reason::InvalidSignature, "la busta non porta alcuna firma");
        if (signers > kSignersMax) Refuse(Reason::Unreadable, "la busta porta troppe firme");
        return cms;
    }

    std::string VerifiedContent(CMS_ContentInfo *cms) const
    {
        const BioPointer out(BIO_new(BIO_s_mem()));
        if (!out) Refuse(Reason::NoCrypto, "memoria insufficiente per la verifica della firma");
        if (CMS_verify(cms, nullptr, nullptr, nullptr, out.get(), CMS_NO_SIGNER_CERT_VERIFY | CMS_BINARY) != 1) {
            Refuse(Reason::InvalidSignature, SignatureDetail());
        }
        char *data = nullptr;
        const long length = BIO_get_mem_data(out.get(), &data);
        if (length <= 0) Refuse(Reason::Unreadable, "la busta di firma è vuota");
        return std::string(data, static_cast<std::size_t>(length));
    }

    std::string bytes_;
    std::string_view file_name_;
    EnvelopeInfo envelope_;
    int text_wrappings_ = 0;
};

} // namespace

ExtractedXml ExtractInvoiceXml(std::string bytes, std::string_view file_name)
{
    if (bytes.size() > kInvoiceFileBytesMax) {
        throw InvoiceFileError(Reason::Unreadable, file_name,
                               fmt::format("il file supera {} MB", kInvoiceFileBytesMax / 1'000'000));
    }
    if (bytes.empty()) throw InvoiceFileError(Reason::Unreadable, file_name, "il file è vuoto");
    if (!LooksLikeXml(bytes) && OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr) != 1) {
        throw InvoiceFileError(Reason::NoCrypto, file_name, "la libreria crittografica non si avvia");
    }
    return EnvelopeOpener(std::move(bytes), file_name).Open();
}

std::string ReadInvoiceFile(const std::string &path)
{
    try {
        return ReadWholeFile(path, kInvoiceFileBytesMax);
    } catch (const FileError &error) {
        throw InvoiceFileError(Reason::Unreadable, path, error.what());
    }
}
