#include "tarvolumera/fatturapa/SignedEnvelope.h"

#include "tarvolumera/fatturapa/Base64.h"
#include "tests/tarvolumera/SampleInvoice.h"
#include "tests/tarvolumera/Signing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Reason = InvoiceFileError::Reason;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAreArray;

std::string SignByTwo(const std::string &content)
{
    const Bio in(BIO_new_mem_buf(content.data(), static_cast<int>(content.size())), BIO_free_all);
    const Bio out(BIO_new(BIO_s_mem()), BIO_free_all);
    const unsigned flags = CMS_BINARY | CMS_PARTIAL;
    const Cms cms(CMS_sign(Mario().certificate.get(), Mario().key.get(), nullptr, in.get(), flags),
                  CMS_ContentInfo_free);
    CMS_add1_signer(cms.get(), Lucia().certificate.get(), Lucia().key.get(), nullptr, flags);
    CMS_final(cms.get(), in.get(), nullptr, flags);
    i2d_CMS_bio(out.get(), cms.get());
    return Bytes(out.get());
}

/// @param line_length  0 for one line without end
std::string Base64(std::string_view bytes, std::size_t line_length = 0, std::string_view line_end = "\n")
{
    std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char *>(text.data()),
                    reinterpret_cast<const unsigned char *>(bytes.data()), static_cast<int>(bytes.size()));
    text.pop_back();
    if (line_length == 0) return text;
    std::string lines;
    for (std::size_t i = 0; i < text.size(); i += line_length) {
        lines += text.substr(i, line_length);
        lines += line_end;
    }
    return lines;
}

std::string Utf16(std::string_view ascii)
{
    std::string text("\xFF\xFE");
    for (const char character : ascii) {
        text += character;
        text += '\0';
    }
    return text;
}

InvoiceFileError Refusal(const std::string &bytes)
{
    try {
        ExtractInvoiceXml(bytes, "prova.xml.p7m");
    } catch (const InvoiceFileError &error) {
        return error;
    }
    return InvoiceFileError(Reason::Unreadable, "", "nessun errore");
}

struct Wrapped {
    const char *name;
    std::string (*make)(const std::string &xml);
    const char *encoding;
    int levels;
    std::vector<std::string> signers;
};

void PrintTo(const Wrapped &wrapped, std::ostream *out)
{
    *out << wrapped.name;
}

class EnvelopeTest : public testing::TestWithParam<Wrapped> {};

TEST_P(EnvelopeTest, GivesTheXmlInside)
{
    std::string xml = SampleInvoice();
    for (int i = 0; i < 200; ++i) xml += "<!-- commento che rende il contenuto lungo -->\n"; // several BER pieces
    const ExtractedXml extracted = ExtractInvoiceXml(GetParam().make(xml), "prova.xml.p7m");
    EXPECT_THAT(extracted.xml, HasSubstr(xml));
    EXPECT_EQ(extracted.envelope.encoding, GetParam().encoding);
    EXPECT_EQ(extracted.envelope.levels, GetParam().levels);
    EXPECT_EQ(extracted.envelope.is_signed, GetParam().levels > 0);
    if (GetParam().levels > 1) {
        EXPECT_EQ(extracted.envelope.signers, GetParam().signers) << "outermost first";
    } else {
        EXPECT_THAT(extracted.envelope.signers, UnorderedElementsAreArray(GetParam().signers));
    }
}

using Text = const std::string &;
const std::string kMario = "MARIO DI PROVA";
const std::string kLucia = "LUCIA È PROVA";

INSTANTIATE_TEST_SUITE_P(
    Forms, EnvelopeTest,
    testing::Values(
        Wrapped{"Plain", [](Text xml) { return xml; }, "XML", 0, {}},
        Wrapped{"PlainWithMark", [](Text xml) { return "\xEF\xBB\xBF" + xml; }, "XML", 0, {}},
        Wrapped{"PlainAfterBlankLine", [](Text xml) { return "\r\n " + xml; }, "XML", 0, {}},
        Wrapped{"Der", [](Text xml) { return Sign(xml, Mario()); }, "DER > XML", 1, {kMario}},
        Wrapped{"Ber", [](Text xml) { return Sign(xml, Mario(), Form::Ber); }, "BER > XML", 1, {kMario}},
        Wrapped{"Pem", [](Text xml) { return Sign(xml, Mario(), Form::Pem); }, "PEM > DER > XML", 1, {kMario}},
        Wrapped{"WithoutAttributes",
                [](Text xml) { return Sign(xml, Mario(), Form::Der, CMS_NOATTR); },
                "DER > XML",
                1,
                {kMario}},
        Wrapped{"TrailingLineEnd", [](Text xml) { return Sign(xml, Mario()) + "\r\n"; }, "DER > XML", 1, {kMario}},
        Wrapped{"TwoSigners", SignByTwo, "DER > XML", 1, {kMario, kLucia}},
        Wrapped{
            "Base64OneLine", [](Text xml) { return Base64(Sign(xml, Mario())); }, "base64 > DER > XML", 1, {kMario}},
        Wrapped{
            "Base64Lines", [](Text xml) { return Base64(Sign(xml, Mario()), 64); }, "base64 > DER > XML", 1, {kMario}},
        Wrapped{"Base64WindowsLines",
                [](Text xml) { return Base64(Sign(xml, Mario(), Form::Ber), 76, "\r\n"); },
                "base64 > BER > XML",
                1,
                {kMario}},
        Wrapped{"Base64WithMark",
                [](Text xml) { return "\xEF\xBB\xBF" + Base64(Sign(xml, Mario())); },
                "base64 > DER > XML",
                1,
                {kMario}},
        Wrapped{"Base64OfBase64",
                [](Text xml) { return Base64(Base64(Sign(xml, Mario()), 64), 64); },
                "base64 > base64 > DER > XML",
                1,
                {kMario}},
        Wrapped{"Base64OfXml", [](Text xml) { return Base64(xml, 76); }, "base64 > XML", 0, {}},
        Wrapped{"Nested",
                [](Text xml) { return Sign(Sign(xml, Mario()), Lucia()); },
                "DER > DER > XML",
                2,
                {kLucia, kMario}},
        Wrapped{"NestedWithBase64Between",
                [](Text xml) { return Sign(Base64(Sign(xml, Mario()), 64), Lucia()); },
                "DER > base64 > DER > XML",
                2,
                {kLucia, kMario}},
        Wrapped{
            "PayloadWithMark", [](Text xml) { return Sign("\xEF\xBB\xBF" + xml, Mario()); }, "DER > XML", 1, {kMario}},
        Wrapped{"ExpiredCertificate",
                [](Text xml) { return Sign(xml, Signer("SCADUTO", -86'400)); },
                "DER > XML",
                1,
                {"SCADUTO"}}),
    [](const auto &item) { return std::string(item.param.name); });

TEST(SignedEnvelope, KeepsTheBytesOfOtherEncodings)
{
    const std::string wide = Utf16("<?xml version=\"1.0\"?><a/>");
    EXPECT_EQ(ExtractInvoiceXml(Sign(wide, Mario()), "x").xml, wide);
    EXPECT_EQ(ExtractInvoiceXml(wide.substr(2), "x").xml, wide.substr(2));
}

TEST(SignedEnvelope, OpensFiveLevelsAndNoMore)
{
    std::string bytes = SampleInvoice();
    for (int i = 0; i < 5; ++i) bytes = Sign(bytes, Mario());
    EXPECT_EQ(ExtractInvoiceXml(bytes, "x").envelope.levels, 5);
    const InvoiceFileError refusal = Refusal(Sign(bytes, Mario()));
    EXPECT_EQ(refusal.Why(), Reason::Unreadable);
    EXPECT_THAT(refusal.Detail(), HasSubstr("più di 5 buste"));
}

struct Broken {
    const char *name;
    std::string (*make)(const std::string &xml);
    Reason reason;
    const char *message; ///< the whole sentence for the user
    const char *detail;
};

void PrintTo(const Broken &broken, std::ostream *out)
{
    *out << broken.name;
}

class BrokenEnvelopeTest : public testing::TestWithParam<Broken> {};

TEST_P(BrokenEnvelopeTest, IsRefusedForItsReason)
{
    const InvoiceFileError refusal = Refusal(GetParam().make(SampleInvoice()));
    EXPECT_EQ(refusal.Why(), GetParam().reason) << refusal.Detail();
    EXPECT_STREQ(refusal.what(), GetParam().message);
    EXPECT_THAT(refusal.Detail(), HasSubstr(GetParam().detail));
}

constexpr const char *kSignature =
    "Il file contiene una firma digitale non valida e non può essere aperto!\n\nprova.xml.p7m";
constexpr const char *kFile = "Impossibile caricare il file :\nprova.xml.p7m";
constexpr const char *kXml = "Impossibile caricare l'xml dal file :\n\nprova.xml.p7m";

INSTANTIATE_TEST_SUITE_P(
    Reasons, BrokenEnvelopeTest,
    testing::Values(
        Broken{"TamperedContent", [](Text xml) { return Replaced(Sign(xml, Mario()), "122.00", "922.00"); },
               Reason::InvalidSignature, kSignature, "modificati"},
        Broken{"TamperedContentWithoutAttributes",
               [](Text xml) { return Replaced(Sign(xml, Mario(), Form::Der, CMS_NOATTR), "122.00", "922.00"); },
               Reason::InvalidSignature, kSignature, "modificati"},
        Broken{"TamperedSignature",
               [](Text xml) {
                   std::string bytes = Sign(xml, Mario());
                   bytes[bytes.size() - 5] = static_cast<char>(bytes[bytes.size() - 5] ^ 1);
                   return bytes;
               },
               Reason::InvalidSignature, kSignature, "modificati"},
        Broken{"TamperedInnerEnvelope",
               [](Text xml) { return Sign(Replaced(Sign(xml, Mario()), "122.00", "922.00"), Lucia()); },
               Reason::InvalidSignature, kSignature, "modificati"},
        Broken{"SignerCertificateMissing", [](Text xml) { return Sign(xml, Mario(), Form::Der, CMS_NOCERTS); },
               Reason::InvalidSignature, kSignature, "manca il certificato"},
        Broken{"NobodySigned",
               [](Text) {
                   return std::string("\x30\x80\x06\x09\x2A\x86\x48\x86\xF7\x0D\x01\x07\x02\xA0\x80\x30\x80\x02\x01\x01"
                                      "\x31\x00\x30\x80\x06\x09\x2A\x86\x48\x86\xF7\x0D\x01\x07\x01\xA0\x80\x04\x04<a/>"
                                      "\x00\x00\x00\x00\x31\x00\x00\x00\x00\x00\x00\x00",
                                      55);
               },
               Reason::InvalidSignature, kSignature, "alcuna firma"},
        Broken{"Detached", [](Text xml) { return Sign(xml, Mario(), Form::Der, CMS_DETACHED); }, Reason::Unreadable,
               kFile, "firma è separata"},
        Broken{"NotSignedData",
               [](Text xml) {
                   const Bio in(BIO_new_mem_buf(xml.data(), static_cast<int>(xml.size())), BIO_free_all);
                   const Bio out(BIO_new(BIO_s_mem()), BIO_free_all);
                   const Cms cms(CMS_data_create(in.get(), CMS_BINARY), CMS_ContentInfo_free);
                   i2d_CMS_bio(out.get(), cms.get());
                   return Bytes(out.get());
               },
               Reason::Unreadable, kFile, "non contiene dati firmati"},
        Broken{"TruncatedDer", [](Text xml) { return Sign(xml, Mario()).substr(0, 1'000); }, Reason::Unreadable, kFile,
               "danneggiata o incompleta"},
        Broken{"TruncatedBer", [](Text xml) { return Sign(xml, Mario(), Form::Ber).substr(0, 1'000); },
               Reason::Unreadable, kFile, "danneggiata o incompleta"},
        Broken{"TruncatedPem", [](Text xml) { return Sign(xml, Mario(), Form::Pem).substr(0, 1'000); },
               Reason::Unreadable, kFile, "danneggiata o incompleta"},
        Broken{"TruncatedBase64", [](Text xml) { return Base64(Sign(xml, Mario())).substr(0, 1'001); },
               Reason::Unreadable, kFile, "danneggiata o incompleta"},
        Broken{"Empty", [](Text) { return std::string(); }, Reason::Unreadable, kFile, "vuoto"},
        Broken{"TooLarge", [](Text) { return std::string(kInvoiceFileBytesMax + 1, '<'); }, Reason::Unreadable, kFile,
               "supera 50 MB"},
        Broken{"PlainText", [](Text) { return std::string("Questa è una lettera, non una fattura."); },
               Reason::NotAnInvoice, kXml, "non è XML"},
        Broken{"WordsOfBase64Letters", [](Text) { return std::string("Questa non e una fattura"); },
               Reason::NotAnInvoice, kXml, "non è XML"},
        Broken{"OnlyBlanks", [](Text) { return std::string(" \r\n\t"); }, Reason::NotAnInvoice, kXml, "non è XML"},
        Broken{"Zip", [](Text) { return std::string("PK\x03\x04 archivio"); }, Reason::NotAnInvoice, kXml, "ZIP"},
        Broken{"EndlessBase64",
               [](Text xml) {
                   std::string text = xml;
                   for (int i = 0; i < 6; ++i) text = Base64(text);
                   return text;
               },
               Reason::NotAnInvoice, kXml, "non è XML"}),
    [](const auto &item) { return std::string(item.param.name); });

TEST(SignedEnvelope, MissingFileIsNamed)
{
    try {
        ReadInvoiceFile("/non/esiste.xml");
        FAIL() << "nessun errore";
    } catch (const InvoiceFileError &error) {
        EXPECT_STREQ(error.what(), "Impossibile caricare il file :\n/non/esiste.xml");
    }
}

/// Whatever a file holds, the outcome is a text or a refusal.
void ExpectAnOutcome(const std::string &bytes)
{
    try {
        ExtractInvoiceXml(bytes, "x");
    } catch (const InvoiceFileError &error) {
        EXPECT_FALSE(error.Detail().empty());
    }
}

TEST(SignedEnvelope, NoDamageCrashesOrPassesUnnoticed)
{
    const std::string xml = SampleInvoice();
    for (const Form form : {Form::Der, Form::Ber, Form::Pem}) {
        const std::string bytes = Sign(xml, Mario(), form);
        for (std::size_t length = 0; length < bytes.size(); length += 97) ExpectAnOutcome(bytes.substr(0, length));
    }
    const std::string bytes = Sign(xml, Mario());
    unsigned random = 12'345;
    for (int i = 0; i < 600; ++i) {
        std::string damaged = bytes;
        random = random * 1'664'525 + 1'013'904'223;
        const std::size_t at = random / 7 % damaged.size();
        damaged[at] = static_cast<char>(damaged[at] ^ (1 << (random >> 28 & 7)));
        try {
            // A flipped bit may hit what the signature does not cover (the serial number, a name); never the content.
            EXPECT_EQ(ExtractInvoiceXml(damaged, "x").xml, xml) << "byte " << at;
        } catch (const InvoiceFileError &error) {
            EXPECT_FALSE(error.Detail().empty());
        }
    }
}

TEST(SignedEnvelope, EndlessListOfDigestsIsRefused)
{
    // The head of a signed envelope whose digest list holds far more algorithms than anybody signs with.
    const std::string algorithm("\x30\x0B\x06\x09\x60\x86\x48\x01\x65\x03\x04\x02\x01", 13);
    std::string list;
    for (int i = 0; i < 500; ++i) list += algorithm;
    const std::string signed_data("\x30\x80\x06\x09\x2A\x86\x48\x86\xF7\x0D\x01\x07\x02\xA0\x80\x30\x80\x02\x01\x01",
                                  20);
    EXPECT_THAT(Refusal(signed_data + "\x31" + std::string("\x80", 1) + list).Detail(), HasSubstr("troppi algoritmi"));
    EXPECT_THAT(Refusal(signed_data + "\x31" + std::string("\x82\x19\x64", 3) + list).Detail(),
                HasSubstr("troppi algoritmi"));
}

struct Base64Case {
    const char *text;
    const char *bytes; ///< nullptr: refused
};

TEST(Base64, TakesBlanksAndRefusesTheRest)
{
    for (const Base64Case &c : {Base64Case{"", ""},
                                {"Zg==", "f"},
                                {"Zm8=", "fo"},
                                {"Zm9v", "foo"},
                                {"Z m\r\n9\tv", "foo"},
                                {"Zg", "f"},
                                {"Zm8", "fo"},
                                {"Zm9vYg==\n", "foob"},
                                {"Z", nullptr},
                                {"Zg=", nullptr},
                                {"Zg==Zg==", nullptr},
                                {"Zm9v===", nullptr},
                                {"Zm9v=", nullptr},
                                {"Zm-v", nullptr},
                                {"Zm9v\xC3\xA0", nullptr}}) {
        std::string bytes = "prima";
        EXPECT_EQ(DecodeBase64(c.text, bytes), c.bytes != nullptr) << c.text;
        EXPECT_EQ(bytes, c.bytes != nullptr ? c.bytes : "prima") << c.text;
    }
}

} // namespace
