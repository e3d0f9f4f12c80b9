#include "tarvodlg/base/Words.h"

#include "tarvodlg/base/Numbers.h"

#include <stdexcept>

#include <fmt/format.h>

namespace {

constexpr long long kNumberMax = 999'999'999'999;

constexpr const char *kBelowTwenty[] = {"",         "uno",    "due",         "tre",      "quattro",
                                        "cinque",   "sei",    "sette",       "otto",     "nove",
                                        "dieci",    "undici", "dodici",      "tredici",  "quattordici",
                                        "quindici", "sedici", "diciassette", "diciotto", "diciannove"};
constexpr const char *kTens[] = {"",          "",         "venti",    "trenta",  "quaranta",
                                 "cinquanta", "sessanta", "settanta", "ottanta", "novanta"};

/// 1 to 99. Uno and otto swallow the vowel before them: ventuno, ventotto.
std::string BelowHundred(long long number)
{
    if (number < 20) return kBelowTwenty[number];
    std::string words = kTens[number / 10];
    const long long unit = number % 10;
    if (unit == 1 || unit == 8) words.pop_back();
    return words + kBelowTwenty[unit];
}

/// 1 to 999. Cento loses its vowel before otto and ottanta, never before uno and undici.
std::string BelowThousand(long long number)
{
    const long long hundreds = number / 100, rest = number % 100;
    if (hundreds == 0) return BelowHundred(rest);
    std::string words = hundreds == 1 ? "cento" : std::string(kBelowTwenty[hundreds]) + "cento";
    if (rest == 8 || rest / 10 == 8) words.pop_back();
    return words + BelowHundred(rest);
}

/// 1 to 999,999 in one word.
std::string BelowMillion(long long number)
{
    const long long thousands = number / 1000, rest = number % 1000;
    std::string words;
    if (thousands == 1)
        words = "mille";
    else if (thousands > 1)
        words = BelowThousand(thousands) + "mila";
    return words + BelowThousand(rest);
}

/// The last tre of a longer word is stressed, and so has its accent: ventitré, milletré; but tre, tremila.
std::string Accented(std::string word)
{
    constexpr std::string_view kThree = "tre";
    if (word.size() > kThree.size() && word.ends_with(kThree)) word.replace(word.size() - 1, 1, "é");
    return word;
}

void AddWord(std::string &words, const std::string &word)
{
    words += (words.empty() ? "" : " ") + word;
}

/// Adds "un milione", "due milioni", "ventitré milioni"; nothing for 0.
void AddNoun(std::string &words, long long count, const char *one, const char *many)
{
    if (count == 1)
        AddWord(words, std::string("un ") + one);
    else if (count > 1)
        AddWord(words, Accented(BelowThousand(count)) + " " + many);
}

} // namespace

std::string NumberInWords(long long number)
{
    if (number < 0 || number > kNumberMax)
        throw std::out_of_range("numero troppo grande per essere scritto in lettere");
    if (number == 0) return "zero";
    std::string words;
    AddNoun(words, number / 1'000'000'000, "miliardo", "miliardi");
    AddNoun(words, number / 1'000'000 % 1000, "milione", "milioni");
    if (number % 1'000'000 != 0) AddWord(words, Accented(BelowMillion(number % 1'000'000)));
    return words;
}

std::string AmountInWords(double euro)
{
    const long long cents = ToCents(euro), size = cents < 0 ? -cents : cents;
    return fmt::format("{}{}/{:02}", cents < 0 ? "meno " : "", NumberInWords(size / 100), size % 100);
}
