#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

namespace fatturapa {

/// XML that is not well-formed, or more than we take; what() is Italian and ends with line and column.
class XmlFault : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What a byte can be in an XML text.
namespace xml_bytes {

inline constexpr std::uint8_t kNameStart = 1;
inline constexpr std::uint8_t kName = 2;

constexpr std::array<std::uint8_t, 256> MakeClasses()
{
    std::array<std::uint8_t, 256> classes{};
    for (std::size_t i = 0; i < classes.size(); ++i) {
        const bool is_letter = (i >= 'a' && i <= 'z') || (i >= 'A' && i <= 'Z') || i == '_' || i == ':' || i >= 0x80;
        const bool is_other = (i >= '0' && i <= '9') || i == '-' || i == '.';
        if (is_letter) classes[i] = kNameStart | kName;
        if (is_other) classes[i] = kName;
    }
    return classes;
}
inline constexpr std::array<std::uint8_t, 256> kClass = MakeClasses();

} // namespace xml_bytes

/// Names are some 4 to 24 bytes long and compared twice per element: a call of memcmp costs more than comparing them.
inline bool AreSameBytes(const char *a, const char *b, std::size_t size)
{
    const auto differ = [&]<class Word>(std::size_t at, Word) {
        Word first;
        Word second;
        std::memcpy(&first, a + at, sizeof(Word));
        std::memcpy(&second, b + at, sizeof(Word));
        return first != second;
    };
    if (size < 4) {
        for (std::size_t i = 0; i < size; ++i) {
            if (a[i] != b[i]) return false;
        }
        return true;
    }
    if (size < 8) return !differ(0, std::uint32_t{}) && !differ(size - 4, std::uint32_t{});
    for (std::size_t i = 0; i + 8 < size; i += 8) {
        if (differ(i, std::uint64_t{})) return false;
    }
    return !differ(size - 8, std::uint64_t{});
}

/// Reads an XML text element by element, without building a tree: a document tree costs more than all the rest of
/// reading an invoice, and its size is in the hands of who wrote the file. The caller asks for the next child and then
/// consumes it: as text, child by child, or by skipping it. Names keep their prefix. Document types are refused, so no
/// entity is ever expanded beyond the five of XML and character numbers; an ampersand that begins none of them stands
/// for itself.
class XmlReader {
  public:
    static constexpr int kDepthMax = 32;

    /// @param text  UTF-8; must outlive the reader and what it returns
    explicit XmlReader(const std::string &text)
        : begin_(text.data()), end_(text.data() + text.size()), position_(text.data())
    {
    }

    /// Moves to the root element. @throws XmlFault, also for a document type
    void OpenRoot();
    /// Value of an attribute of the root, undecoded; "" when absent. To be asked before the first child.
    std::string_view Attribute(std::string_view name) const;
    /// What follows the end of the root. @return false when there is text, which no XML has. @throws XmlFault for an
    /// element
    bool CloseDocument();

    /// Moves to the next child of the open element; at its end tag leaves it. Text in between is passed over.
    /// @param expected  the name that will probably come: a right guess saves reading it letter by letter. Name() then
    /// gives this very view, so it must live as long as the reader.
    /// @return false when the open element has ended
    bool NextChild(std::string_view expected = {})
    {
        if (is_empty_) return LeaveEmpty();
        for (;;) {
            const char *next = FindMark<false>(position_);
            position_ = next;
            if (next == end_) FailTruncated();
            if (next[1] == '/') {
                CloseTag();
                return false;
            }
            if (next[1] != '!' && next[1] != '?') {
                if (!OpenExpected(expected)) OpenTag();
                return true;
            }
            SkipMarkup();
        }
    }

    /// Text of the open element without blanks around, which is left by this. Elements inside it are passed over.
    /// Valid until the next call.
    std::string_view Text()
    {
        if (is_empty_) return LeaveEmptyText();
        const char *start = position_;
        const char *next = FindMark<true>(start);
        if (*next != '<' || next[1] != '/') return ComposedText();
        position_ = next;
        CloseTag();
        return Trimmed({start, static_cast<std::size_t>(next - start)});
    }

    /// The same for a long text whose line ends do not matter; it comes as it stands in the file wherever it can.
    std::string_view LongText();
    /// Leaves the open element unread.
    void Skip();

    /// The name of the open element, prefix included.
    std::string_view Name() const { return open_[static_cast<std::size_t>(depth_ - 1)].name; }
    /// Says which of its kind the open element is, for messages; 1 is the first.
    void SetOrdinal(std::size_t ordinal) { open_[static_cast<std::size_t>(depth_ - 1)].ordinal = ordinal; }
    /// "DettaglioLinee[3]/PrezzoUnitario": the open element for people.
    std::string Place() const { return PlaceAt(depth_ - 1); }
    /// The same for the element whose text was read last.
    std::string PlaceOfText() const { return PlaceAt(depth_); }

    /// True when the text lies in the file itself, so that it lives as long as that.
    bool IsInFile(std::string_view text) const { return text.data() >= begin_ && text.data() <= end_; }
    /// True after an ampersand that should have been written as an entity.
    bool HasBareAmpersand() const { return has_bare_ampersand_; }
    /// True when the text read last had blanks around it.
    bool HadBlanks() const { return had_blanks_; }

  private:
    struct Open {
        std::string_view name;
        std::size_t ordinal;
    };

    static bool IsOfClass(char character, std::uint8_t wanted)
    {
        return (xml_bytes::kClass[static_cast<unsigned char>(character)] & wanted) != 0;
    }
    static bool IsBlank(char character)
    {
        return character == ' ' || character == '\n' || character == '\t' || character == '\r';
    }
    static std::string_view WithoutBlanks(std::string_view text)
    {
        while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
        while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
        return text;
    }
    std::string_view Trimmed(std::string_view text)
    {
        const std::string_view trimmed = WithoutBlanks(text);
        had_blanks_ = trimmed.size() != text.size();
        return trimmed;
    }

    /// Bytes of the word that equal the character are marked in their highest bit; the first mark is exact.
    static constexpr std::uint64_t Marks(std::uint64_t word, char character)
    {
        constexpr std::uint64_t ones = 0x0101010101010101U;
        const std::uint64_t zero_if_equal = word ^ (ones * static_cast<unsigned char>(character));
        return (zero_if_equal - ones) & ~zero_if_equal & (ones * 0x80);
    }

    /// Likewise bytes below ' '.
    static constexpr std::uint64_t ControlMarks(std::uint64_t word)
    {
        constexpr std::uint64_t ones = 0x0101010101010101U;
        return (word - ones * 0x20) & ~word & (ones * 0x80);
    }

    /// The next '<', and for texts also what needs a closer look: '&', line ends and control characters. Gaps and texts
    /// are a dozen bytes long on the average: looking at eight of them at once halves the time of reading an invoice.
    template <bool OfText>
    const char *FindMark(const char *next) const
    {
        while (std::endian::native == std::endian::little && end_ - next >= 8) {
            std::uint64_t word;
            std::memcpy(&word, next, 8);
            std::uint64_t marks = Marks(word, '<');
            if constexpr (OfText) marks |= Marks(word, '&') | ControlMarks(word);
            if (marks != 0) return next + std::countr_zero(marks) / 8;
            next += 8;
        }
        while (next < end_ && *next != '<' && !(OfText && (*next == '&' || static_cast<unsigned char>(*next) < 0x20))) {
            ++next;
        }
        return next;
    }

    static const char *NameEnd(const char *start)
    {
        while (IsOfClass(*start, xml_bytes::kName)) ++start;
        return start;
    }

    /// At '<': opens the element when it has the name and no attributes.
    bool OpenExpected(std::string_view name)
    {
        const char *start = position_ + 1;
        if (name.empty() || depth_ == kDepthMax || static_cast<std::size_t>(end_ - start) <= name.size() ||
            start[name.size()] != '>' || !AreSameBytes(start, name.data(), name.size())) {
            return false;
        }
        open_[static_cast<std::size_t>(depth_++)] = {name, 0};
        position_ = start + name.size() + 1;
        return true;
    }

    /// At '<' of a start tag.
    void OpenTag()
    {
        const char *start = position_ + 1;
        if (!IsOfClass(*start, xml_bytes::kNameStart)) Fail("carattere < fuori posto");
        const char *name_end = NameEnd(start + 1);
        if (depth_ == kDepthMax) Fail("troppi livelli di elementi annidati");
        open_[static_cast<std::size_t>(depth_++)] = {{start, static_cast<std::size_t>(name_end - start)}, 0};
        if (*name_end == '>') {
            position_ = name_end + 1;
        } else {
            FinishOpenTag(name_end);
        }
    }

    /// At '<' of an end tag.
    void CloseTag()
    {
        const std::string_view name = Name();
        const char *found = position_ + 2;
        if (static_cast<std::size_t>(end_ - found) < name.size() + 1 ||
            !AreSameBytes(found, name.data(), name.size())) {
            FailEndTag();
        }
        const char *close = found + name.size();
        while (IsBlank(*close)) ++close;
        if (*close != '>') FailEndTag();
        position_ = close + 1;
        --depth_;
    }

    bool LeaveEmpty()
    {
        is_empty_ = false;
        --depth_;
        return false;
    }
    std::string_view LeaveEmptyText()
    {
        LeaveEmpty();
        had_blanks_ = false;
        return {};
    }

    void FinishOpenTag(const char *after_name);
    void SkipMarkup();
    void SkipPast(std::string_view mark, const char *fault);
    std::string_view ComposedText();
    void AppendPlain(std::string_view text);
    void AppendDecoded(std::string_view text);
    bool AppendEntity(std::string_view entity);
    std::string PlaceAt(int index) const;

    [[noreturn]] void Fail(std::string_view fault) const;
    [[noreturn]] void FailTruncated() const;
    [[noreturn]] void FailEndTag() const;

    const char *begin_;
    const char *end_; ///< a zero byte stands here, so that looking at the next character needs no test
    const char *position_;
    int depth_ = 0;
    bool is_empty_ = false; ///< the open element was written <a/>
    bool has_bare_ampersand_ = false;
    bool had_blanks_ = false;
    std::array<Open, kDepthMax + 1> open_;
    std::string_view attributes_;
    std::string composed_;
};

/// A name without its namespace prefix.
inline std::string_view LocalName(std::string_view name)
{
    const std::size_t colon = name.rfind(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

} // namespace fatturapa
