#pragma once

#include "tarvolumera/fatturapa/FattureElettronicheDB.h"
#include "tarvolumera/fatturapa/XmlReader.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

// Reading XML elements into structs by tables: one row per element, naming it and the member that takes it. Because a
// file is nearly always in the order of the schema, each search for the row of a child starts where the last one ended.

namespace fatturapa {

/// What the functions of one load share: the file being read and the oddities found.
class ReadContext {
  public:
    ReadContext(std::shared_ptr<const std::string> text, std::string_view file_name,
                std::vector<InvoiceWarning> &warnings)
        : xml(*text), file_text(std::move(text)), file_name_(file_name), warnings_(warnings)
    {
    }

    [[noreturn]] void Refuse(std::string detail) const;
    /// "documento 2: ..." is put in front from the second document of a file on.
    [[noreturn]] void RefuseDocument(std::string detail) const;

    void Warn(std::string text);
    /// "DettaglioPagamento[1]/ImportoPagamento "abc": <what>", for the element whose text was read last.
    void WarnOfText(std::string_view value, std::string_view what);
    /// A date or number with blanks around it: read, but the program that wrote it is careless.
    void WarnOfBlanks(std::string_view value)
    {
        if (xml.HadBlanks() && !value.empty()) WarnOfText(value, "spazi superflui intorno al valore");
    }
    bool WantsWarnings() const { return warnings_.size() <= kWarningsMax; }

    /// Passes over an element that no table knows, and names it.
    void SkipUnknown();
    /// Counts an entry of a list and gives the open element its number in it; a file made to fill the memory is
    /// refused.
    void CountEntry(std::size_t ordinal)
    {
        xml.SetOrdinal(ordinal);
        if (++entries_ > kEntriesMax) RefuseEntries();
    }

    XmlReader xml;
    std::shared_ptr<const std::string> file_text;
    int document = -1; ///< index of the body being read
    bool has_header = false;
    bool has_seller = false;
    bool has_buyer = false;

  private:
    static constexpr std::size_t kWarningsMax = 200;
    // A file of the exchange system's 5 MB has some 100,000 entries (lines, discounts, codes) at most.
    static constexpr std::size_t kEntriesMax = 500'000;

    [[noreturn]] void RefuseEntries() const;

    std::string_view file_name_;
    std::vector<InvoiceWarning> &warnings_;
    std::size_t entries_ = 0;
};

/// A date as files carry it: YYYY-MM-DD, also followed by a time or a time zone.
/// @return nothing when it is no date of the calendar
std::optional<long> ParseXmlDate(std::string_view text);
/// False for a date that no commercial document carries; such a date stands for "none" in the programs that write it.
bool IsPlausibleDay(long day);
/// A decimal number below 10^12; nothing when it is none. A leading '+' is taken.
std::optional<double> ParseXmlAmount(std::string_view text);

void ReadText(ReadContext &context, std::string &value);
void ReadAmount(ReadContext &context, double &value);
void ReadAmount(ReadContext &context, std::optional<double> &value);
void ReadWhole(ReadContext &context, long &value);
void ReadWhole(ReadContext &context, std::optional<long> &value);
void ReadDay(ReadContext &context, long &value);

template <class T>
struct Field {
    std::string_view name;
    void (*read)(ReadContext &context, T &target); ///< leaves the open element
};

template <class T>
std::size_t FindField(std::string_view name, std::span<const Field<T>> fields, std::size_t start)
{
    const auto is_named = [name](const Field<T> &field) {
        return field.name.size() == name.size() && AreSameBytes(field.name.data(), name.data(), name.size());
    };
    for (std::size_t i = start; i < fields.size(); ++i) {
        if (is_named(fields[i])) return i;
    }
    for (std::size_t i = 0; i < start; ++i) {
        if (is_named(fields[i])) return i;
    }
    return fields.size();
}

template <class T>
void ReadFields(ReadContext &context, T &target, std::type_identity_t<std::span<const Field<T>>> fields)
{
    std::size_t last = fields.size();
    std::size_t expected = 0;
    while (context.xml.NextChild(fields[expected].name)) {
        const std::string_view name = context.xml.Name();
        std::size_t found = expected;
        if (name.data() != fields[expected].name.data()) {
            found = FindField(name, fields, expected);
            if (found == fields.size()) found = FindField(LocalName(name), fields, 0);
        }
        if (found == fields.size()) {
            context.SkipUnknown();
            continue;
        }
        fields[found].read(context, target);
        const bool is_repeated = found == last;
        expected = is_repeated || found + 1 == fields.size() ? found : found + 1;
        last = found;
    }
}

template <class Member>
struct MemberTraits;
template <class Owner, class Value>
struct MemberTraits<Value Owner::*> {
    using OwnerType = Owner;
    using ValueType = Value;
};
template <auto M>
using OwnerOf = typename MemberTraits<decltype(M)>::OwnerType;

// The readers to put into a row: Text<&T::Member>, Amount<...> and so on.

template <auto M>
void Text(ReadContext &context, OwnerOf<M> &target)
{
    ReadText(context, target.*M);
}
template <auto M>
void Amount(ReadContext &context, OwnerOf<M> &target)
{
    ReadAmount(context, target.*M);
}
template <auto M>
void Whole(ReadContext &context, OwnerOf<M> &target)
{
    ReadWhole(context, target.*M);
}
template <auto M>
void Day(ReadContext &context, OwnerOf<M> &target)
{
    ReadDay(context, target.*M);
}
template <auto M>
void TextList(ReadContext &context, OwnerOf<M> &target)
{
    context.CountEntry((target.*M).size() + 1);
    ReadText(context, (target.*M).emplace_back());
}
template <auto M>
void WholeList(ReadContext &context, OwnerOf<M> &target)
{
    context.CountEntry((target.*M).size() + 1);
    ReadWhole(context, (target.*M).emplace_back(0));
}
/// A member struct, read with its own table.
template <auto M, const auto &Table>
void Nested(ReadContext &context, OwnerOf<M> &target)
{
    ReadFields(context, target.*M, Table);
}
/// The same for a std::optional member.
template <auto M, const auto &Table>
void Optional(ReadContext &context, OwnerOf<M> &target)
{
    if (!(target.*M)) (target.*M).emplace();
    ReadFields(context, *(target.*M), Table);
}
/// Another reader, noting in a member of the context that the element was there.
template <bool ReadContext::*Flag, auto Read, class T>
void Present(ReadContext &context, T &target)
{
    context.*Flag = true;
    Read(context, target);
}
/// Room made for the first entries of a list.
template <auto M>
inline constexpr std::size_t kFirstEntries = 1;
template <>
inline constexpr std::size_t kFirstEntries<&DatiBeniServiziType::DettaglioLinee> = 4;
template <>
inline constexpr std::size_t kFirstEntries<&DatiPagamentoType::DettaglioPagamento> = 3;

/// A repeated element: one more entry of a vector member.
template <auto M, const auto &Table>
void List(ReadContext &context, OwnerOf<M> &target)
{
    if ((target.*M).capacity() == 0)
        (target.*M).reserve(kFirstEntries<M>); // growing one by one moves every entry again
    context.CountEntry((target.*M).size() + 1);
    ReadFields(context, (target.*M).emplace_back(), Table);
}

} // namespace fatturapa
