#include "tarvodlg/sheets/CompoundFile.h"

#include "tarvodlg/base/Text.h"
#include "tarvodlg/sheets/LittleEndian.h"

#include <algorithm>

namespace {

constexpr std::string_view kSignature("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
constexpr std::uint32_t kLastSector = 0xFFFFFFFA; ///< above it the numbers mean end, free and the like
constexpr std::uint32_t kNoEntry = 0xFFFFFFFF;
constexpr std::size_t kHeaderTableEntries = 109, kMiniSectorSize = 64, kMiniStreamBelow = 4096, kEntrySize = 128;
constexpr unsigned kStream = 2, kRoot = 5;

[[noreturn]] void Damaged()
{
    throw SheetError(kSheetDamaged);
}

std::string NameOf(std::string_view entry)
{
    const std::size_t length = std::min(WordAt(entry, 0x40), 64U) / 2;
    std::string name;
    for (std::size_t i = 0; i + 1 < length; ++i) { // the last one ends the name
        const unsigned c = WordAt(entry, i * 2);
        name += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?';
    }
    return name;
}

} // namespace

bool CompoundFile::IsOne(std::string_view bytes)
{
    return bytes.starts_with(kSignature);
}

CompoundFile::CompoundFile(std::string_view bytes) : bytes_(bytes)
{
    const unsigned shift = WordAt(bytes_, 0x1E);
    if (!IsOne(bytes_) || (shift != 9 && shift != 12)) Damaged();
    sector_size_ = std::size_t{1} << shift;
    if (bytes_.size() <= sector_size_) Damaged();
    sectors_ = (bytes_.size() - 1) / sector_size_; // the header takes the place of one; the last one may be cut short
    ReadTable();
    ReadDirectory();
}

std::string_view CompoundFile::Sector(std::uint32_t number) const
{
    if (number >= sectors_) Damaged();
    return bytes_.substr((std::size_t{number} + 1) * sector_size_, sector_size_);
}

void CompoundFile::ReadTable()
{
    const auto take = [this](std::uint32_t number) {
        // More links than sectors lead nowhere; the same sector named again and again must not fill the memory.
        if (number > kLastSector || table_.size() >= sectors_) return;
        const std::string_view sector = Sector(number);
        for (std::size_t at = 0; at + 4 <= sector.size(); at += 4) table_.push_back(LongAt(sector, at));
    };
    for (std::size_t i = 0; i < kHeaderTableEntries; ++i) take(LongAt(bytes_, 0x4C + i * 4));
    std::uint32_t next = LongAt(bytes_, 0x44);
    for (std::size_t steps = 0; next <= kLastSector; ++steps) {
        if (steps > sectors_) Damaged();
        const std::string_view sector = Sector(next);
        for (std::size_t at = 0; at + 4 < sector_size_; at += 4) take(LongAt(sector, at));
        next = LongAt(sector, sector_size_ - 4);
    }
}

std::string CompoundFile::ReadChain(std::uint32_t start) const
{
    std::string bytes;
    std::size_t steps = 0;
    for (std::uint32_t number = start; number <= kLastSector; number = table_[number]) {
        if (++steps > sectors_) Damaged();
        bytes += Sector(number);
        if (number >= table_.size()) Damaged();
    }
    return bytes;
}

std::string CompoundFile::ReadMiniChain(std::uint32_t start) const
{
    std::string bytes;
    for (std::uint32_t number = start; number <= kLastSector; number = mini_table_[number]) {
        const std::size_t at = std::size_t{number} * kMiniSectorSize;
        if (at >= mini_stream_.size() || number >= mini_table_.size() || bytes.size() > mini_stream_.size()) Damaged();
        bytes += mini_stream_.substr(at, kMiniSectorSize);
    }
    return bytes;
}

void CompoundFile::ReadDirectory()
{
    const std::string directory = ReadChain(LongAt(bytes_, 0x30));
    for (std::size_t at = 0; at + kEntrySize <= directory.size(); at += kEntrySize) {
        const std::string_view raw = std::string_view(directory).substr(at, kEntrySize);
        entries_.push_back({NameOf(raw), ByteAt(raw, 0x42), LongAt(raw, 0x44), LongAt(raw, 0x48), LongAt(raw, 0x4C),
                            LongAt(raw, 0x74), LongAt(raw, 0x78)});
    }
    if (entries_.empty() || entries_.front().type != kRoot) Damaged();
    const std::string links = ReadChain(LongAt(bytes_, 0x3C));
    for (std::size_t at = 0; at + 4 <= links.size(); at += 4) mini_table_.push_back(LongAt(links, at));
    if (!mini_table_.empty()) mini_stream_ = ReadChain(entries_.front().start);
}

const CompoundFile::Entry *CompoundFile::Find(std::string_view name) const
{
    // Only the root's own children: an object put into a sheet is a workbook too, one level below.
    std::vector<bool> seen(entries_.size());
    std::vector<std::uint32_t> waiting = {entries_.front().child};
    while (!waiting.empty()) {
        const std::uint32_t number = waiting.back();
        waiting.pop_back();
        if (number == kNoEntry || number >= entries_.size() || seen[number]) continue;
        seen[number] = true;
        const Entry &entry = entries_[number];
        if (entry.type == kStream && EqualsIgnoreCase(entry.name, name)) return &entry;
        waiting.push_back(entry.left);
        waiting.push_back(entry.right);
    }
    return nullptr;
}

bool CompoundFile::Has(std::string_view name) const
{
    return Find(name) != nullptr;
}

std::optional<std::string> CompoundFile::Read(std::string_view name) const
{
    const Entry *entry = Find(name);
    if (entry == nullptr) return std::nullopt;
    std::string bytes = entry->size < kMiniStreamBelow ? ReadMiniChain(entry->start) : ReadChain(entry->start);
    if (bytes.size() < entry->size) Damaged();
    bytes.resize(entry->size);
    return bytes;
}
