#include "tables/BrowseDescription.h"

#include "tarvodlg/base/Text.h"

#include <array>

namespace {

/// The letters without their accents, from À (0xC0) to ß (0xDF).
constexpr std::array<const char *, 32> kLatin1 = {"A", "A", "A", "A", "A", "A", "AE", "C", "E",  "E", "E",
                                                  "E", "I", "I", "I", "I", "D", "N",  "O", "O",  "O", "O",
                                                  "O", "x", "O", "U", "U", "U", "U",  "Y", "TH", "SS"};

/// The same for the capitals from 0x100 to 0x17E, two places for each pair of capital and small letter.
constexpr std::string_view kExtended = "AAAAAACCCCCCCCDDDDEEEEEEEEEEGGGGGGGGHHHHIIIIIIIIIIJJJJKKKLLLLLLLLLLNNNNNNNNN"
                                       "OOOOOOOORRRRRRSSSSSSSSTTTTTTUUUUUUUUUUUUWWYYYZZZZZZ";
static_assert(kExtended.size() == 0x7F);

bool IsCombiningMark(char32_t c)
{
    return c >= 0x300 && c <= 0x36F;
}

bool IsApostrophe(char32_t c)
{
    return c == '\'' || c == '`' || c == 0xB4 || c == 0x2018 || c == 0x2019;
}

void AppendFolded(std::string &text, char32_t c)
{
    if (c >= 0xC0 && c <= 0xDF)
        text += kLatin1[c - 0xC0];
    else if (c >= 0x100 && c <= 0x17E)
        text += kExtended[c - 0x100];
    else
        AppendUtf8(text, c);
}

} // namespace

std::string Folded(std::string_view text)
{
    const std::string upper = ToUpper(OnOneLine(text));
    std::string folded;
    folded.reserve(upper.size());
    for (std::size_t position = 0; position < upper.size();) {
        const char32_t c = DecodeUtf8(upper, &position);
        if (!IsCombiningMark(c) && !IsApostrophe(c)) AppendFolded(folded, c);
    }
    return folded;
}
