#include "tarvolumera/FiscalCodes.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using Fault = FiscalCodeFault;

struct CodeCase {
    std::string code;
    Fault fault;
    std::string text = {};
};
void PrintTo(const CodeCase &c, std::ostream *out)
{
    *out << '"' << c.code << '"';
}

void ExpectFault(const FiscalCodeCheck &check, const CodeCase &expected)
{
    EXPECT_EQ(check.fault, expected.fault);
    EXPECT_EQ(check.text, expected.text);
    EXPECT_EQ(check.ok(), expected.fault == Fault::None);
    EXPECT_EQ(check.expected != '\0', expected.fault == Fault::CheckCharacter);
}

class VatNumberTest : public testing::TestWithParam<CodeCase> {};

TEST_P(VatNumberTest, IsJudged)
{
    ExpectFault(CheckVatNumber(GetParam().code), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Right, VatNumberTest,
                         testing::Values(CodeCase{"01234567897", Fault::None}, CodeCase{"12345678903", Fault::None},
                                         CodeCase{"11111111115", Fault::None}, CodeCase{"02182030391", Fault::None},
                                         CodeCase{"07643520567", Fault::None}, CodeCase{"99999999990", Fault::None}));

INSTANTIATE_TEST_SUITE_P(
    Wrong, VatNumberTest,
    testing::Values(CodeCase{"01234567890", Fault::CheckCharacter, "carattere di controllo errato: atteso 7"},
                    CodeCase{"01234567899", Fault::CheckCharacter, "carattere di controllo errato: atteso 7"},
                    CodeCase{"12345678901", Fault::CheckCharacter, "carattere di controllo errato: atteso 3"},
                    CodeCase{"00000000000", Fault::OnlyZeros, "codice composto di soli zeri"},
                    CodeCase{"0123456789", Fault::Length, "lunghezza errata: 10 caratteri invece di 11"},
                    CodeCase{"012345678971", Fault::Length, "lunghezza errata: 12 caratteri invece di 11"},
                    CodeCase{"0123456789A", Fault::Characters, "caratteri non validi: 'A' in posizione 11"},
                    CodeCase{"01234à67897", Fault::Characters, "caratteri non validi: 'à' in posizione 6"},
                    CodeCase{"0123\n567897", Fault::Characters, "caratteri non validi: '' in posizione 5"},
                    CodeCase{"RSSMRA80A01H501U", Fault::Length, "lunghezza errata: 16 caratteri invece di 11"},
                    CodeCase{"", Fault::Empty, "codice mancante"}));

class FiscalCodeTest : public testing::TestWithParam<CodeCase> {};

TEST_P(FiscalCodeTest, IsJudged)
{
    ExpectFault(CheckFiscalCode(GetParam().code), GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Right, FiscalCodeTest,
    testing::Values(CodeCase{"RSSMRA80A01H501U", Fault::None}, CodeCase{"RSSMRA80A41H501Y", Fault::None},
                    CodeCase{"RSSMRA80A01Z404R", Fault::None}, CodeCase{"BNCMRA80A01D548T", Fault::None},
                    CodeCase{"MRTMTT25D09F205Z", Fault::None}, CodeCase{"RSSMRA80A01H50MM", Fault::None},
                    CodeCase{"RSSMRA80A01H5LMX", Fault::None}, CodeCase{"RSSMRAULALMHRLMD", Fault::None},
                    CodeCase{"80012570133", Fault::None}, CodeCase{"97103880585", Fault::None},
                    CodeCase{"RSSMRA00B29H501Y", Fault::None})); // 29 February 2000; 1900 had none

INSTANTIATE_TEST_SUITE_P(
    Wrong, FiscalCodeTest,
    testing::Values(CodeCase{"RSSMRA80A01H501Z", Fault::CheckCharacter, "carattere di controllo errato: atteso U"},
                    CodeCase{"RSSMRAULALMHRLMX", Fault::CheckCharacter, "carattere di controllo errato: atteso D"},
                    CodeCase{"RSSMRA80A01H50MU", Fault::CheckCharacter, "carattere di controllo errato: atteso M"},
                    CodeCase{"97103880580", Fault::CheckCharacter, "carattere di controllo errato: atteso 5"},
                    CodeCase{"RSSMRA80F01H501U", Fault::Characters, "caratteri non validi: 'F' in posizione 9"},
                    CodeCase{"rSSMRA80A01H501U", Fault::Characters, "caratteri non validi: 'r' in posizione 1"},
                    CodeCase{"RSSMRA8OA01H501U", Fault::Characters, "caratteri non validi: 'O' in posizione 8"},
                    CodeCase{"RSSMRA80A01H5015", Fault::Characters, "caratteri non validi: '5' in posizione 16"},
                    CodeCase{"RSSMRÀ80A01H501U", Fault::Characters, "caratteri non validi: 'À' in posizione 6"},
                    CodeCase{"RSSMRA80A01H501", Fault::Length, "lunghezza errata: 15 caratteri invece di 11 o 16"},
                    CodeCase{"RSSMRA80B30H501X", Fault::BirthDate, "data di nascita impossibile"},
                    CodeCase{"RSSMRA81B29H501R", Fault::BirthDate, "data di nascita impossibile"},
                    CodeCase{"RSSMRA80A00H501V", Fault::BirthDate, "data di nascita impossibile"},
                    CodeCase{"RSSMRA80A40H501Z", Fault::BirthDate, "data di nascita impossibile"},
                    CodeCase{"", Fault::Empty, "codice mancante"}));

TEST(FiscalCode, EveryOtherCheckLetterIsRefused)
{
    for (char letter = 'A'; letter <= 'Z'; ++letter)
        EXPECT_EQ(CheckFiscalCode(std::string("RSSMRA80A01H501") + letter).ok(), letter == 'U') << letter;
}

TEST(FiscalCode, TelematicNumbersStartBelowEight)
{
    EXPECT_TRUE(IsTelematicVatNumber("07643520567"));
    EXPECT_FALSE(IsTelematicVatNumber("99999999990"));
    EXPECT_FALSE(IsTelematicVatNumber("80012570133"));
    EXPECT_FALSE(IsTelematicVatNumber("01234567890"));
    EXPECT_FALSE(IsTelematicVatNumber(""));
}

TEST(FiscalCode, HolderFollowsFromTheShape)
{
    EXPECT_EQ(HolderOf("80012570133"), FiscalCodeHolder::Body);
    EXPECT_EQ(HolderOf("01234567890"), FiscalCodeHolder::Body); // wrong check digit, shape all the same
    EXPECT_EQ(HolderOf("RSSMRA80A01H501Z"), FiscalCodeHolder::Person);
    EXPECT_EQ(HolderOf("RSSMRAULALMHRLMD"), FiscalCodeHolder::Person);
    EXPECT_EQ(HolderOf("RSSMRA80F01H501U"), FiscalCodeHolder::Unknown);
    EXPECT_EQ(HolderOf("0123456789"), FiscalCodeHolder::Unknown);
    EXPECT_EQ(HolderOf(""), FiscalCodeHolder::Unknown);
}

TEST(FiscalCode, IsReadAsFilesCarryIt)
{
    const std::pair<const char *, const char *> cases[] = {{"01234567897", "01234567897"},
                                                           {" it 012.345.678-97\r\n", "01234567897"},
                                                           {"IT01234567897", "01234567897"},
                                                           {"rss mra 80a01\u00A0h501u", "RSSMRA80A01H501U"},
                                                           {"ITRSSMRA80A01H501U", "RSSMRA80A01H501U"},
                                                           {"ITRMRA80A01H501U", "ITRMRA80A01H501U"}, // surname Itri
                                                           {"IT", "IT"},
                                                           {"", ""}};
    for (const auto &[text, expected] : cases) EXPECT_EQ(NormalisedFiscalCode(text), expected) << text;
}

class PostcodeTest : public testing::TestWithParam<CodeCase> {};

TEST_P(PostcodeTest, IsJudged)
{
    ExpectFault(CheckPostcode(GetParam().code), GetParam());
}

const char *const kNoPlace = "CAP inesistente: i codici vanno da 00010 a 98168";

INSTANTIATE_TEST_SUITE_P(
    Cases, PostcodeTest,
    testing::Values(CodeCase{"00010", Fault::None}, CodeCase{"98168", Fault::None}, CodeCase{"47890", Fault::None},
                    CodeCase{"00009", Fault::Range, kNoPlace}, CodeCase{"98169", Fault::Range, kNoPlace},
                    CodeCase{"00000", Fault::Range, kNoPlace},
                    CodeCase{"2010", Fault::Length, "lunghezza errata: 4 caratteri invece di 5"},
                    CodeCase{"2010A", Fault::Characters, "caratteri non validi: 'A' in posizione 5"},
                    CodeCase{"", Fault::Empty, "codice mancante"}));

} // namespace
