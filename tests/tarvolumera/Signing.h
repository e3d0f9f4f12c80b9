#pragma once

#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <memory>
#include <string>
#include <string_view>

// Signed envelopes made on the spot.

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
using Cms = std::unique_ptr<CMS_ContentInfo, decltype(&CMS_ContentInfo_free)>;
using Bio = std::unique_ptr<BIO, decltype(&BIO_free_all)>;

/// A signer of the tests: elliptic keys, because they are made in no time.
struct Signer {
    Key key{EVP_EC_gen("P-256"), EVP_PKEY_free};
    Certificate certificate{X509_new(), X509_free};

    explicit Signer(const char *common_name, long valid_until_seconds = 86'400)
    {
        X509 *x = certificate.get();
        X509_set_version(x, 2);
        ASN1_INTEGER_set(X509_get_serialNumber(x), common_name[0]);
        X509_gmtime_adj(X509_getm_notBefore(x), -200'000);
        X509_gmtime_adj(X509_getm_notAfter(x), valid_until_seconds);
        X509_set_pubkey(x, key.get());
        X509_NAME *name = X509_get_subject_name(x);
        X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, reinterpret_cast<const unsigned char *>(common_name), -1,
                                   -1, 0);
        X509_set_issuer_name(x, name);
        X509_sign(x, key.get(), EVP_sha256());
    }
};

inline const Signer &Mario()
{
    static const Signer signer("MARIO DI PROVA");
    return signer;
}

inline const Signer &Lucia()
{
    static const Signer signer("LUCIA È PROVA");
    return signer;
}

enum class Form { Der, Ber, Pem };

inline std::string Bytes(BIO *bio)
{
    char *data = nullptr;
    const long length = BIO_get_mem_data(bio, &data);
    return std::string(data, static_cast<std::size_t>(length));
}

inline std::string Sign(std::string_view content, const Signer &signer, Form form = Form::Der, unsigned flags = 0)
{
    const Bio in(BIO_new_mem_buf(content.data(), static_cast<int>(content.size())), BIO_free_all);
    const Bio out(BIO_new(BIO_s_mem()), BIO_free_all);
    const unsigned all = flags | CMS_BINARY | (form == Form::Ber ? CMS_STREAM : 0U);
    const Cms cms(CMS_sign(signer.certificate.get(), signer.key.get(), nullptr, in.get(), all), CMS_ContentInfo_free);
    if (form == Form::Ber) i2d_CMS_bio_stream(out.get(), cms.get(), in.get(), static_cast<int>(all));
    if (form == Form::Der) i2d_CMS_bio(out.get(), cms.get());
    if (form == Form::Pem) PEM_write_bio_CMS_stream(out.get(), cms.get(), nullptr, static_cast<int>(all));
    return Bytes(out.get());
}
