#include "tarvodlg/widgets/SpreadSearch.h"

#include "tarvodlg/base/Text.h"
#include "tarvodlg/widgets/Field.h"

#include <array>

namespace {

constexpr char32_t kLatinEnd = 0x180; ///< the letters of Western and Central Europe end here

/// The letter under the accents, in lower case; "ß" and the like stay themselves.
char32_t BaseLetter(char32_t character)
{
    const QString parts = QChar::decomposition(character);
    if (!parts.isEmpty() && !parts.at(0).isSurrogate() && QChar::decompositionTag(character) == QChar::Canonical)
        character = parts.at(0).unicode();
    return QChar::toCaseFolded(character);
}

/// The same out of a table for the letters that come all the time.
char32_t QuickBaseLetter(char32_t character)
{
    static const std::array<char32_t, kLatinEnd> kTable = [] {
        std::array<char32_t, kLatinEnd> table{};
        for (char32_t letter = 0; letter < kLatinEnd; ++letter) table[letter] = BaseLetter(letter);
        return table;
    }();
    return character < kLatinEnd ? kTable[character] : BaseLetter(character);
}

} // namespace

SpreadSearch::SpreadSearch(const QString &wanted)
{
    wanted_ = Fold(FromQt(wanted));
}

const std::string &SpreadSearch::Fold(std::string_view text)
{
    folded_.clear();
    for (std::size_t i = 0; i < text.size();) {
        const char byte = text[i];
        if (static_cast<unsigned char>(byte) < 0x80) {
            folded_ += byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
            ++i;
            continue;
        }
        const char32_t character = DecodeUtf8(text, &i);
        if (character == kMalformedUtf8) continue;
        if (character >= kLatinEnd && QChar::category(character) == QChar::Mark_NonSpacing) continue;
        AppendUtf8(folded_, QuickBaseLetter(character));
    }
    return folded_;
}
