#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The container of older office files: streams of bytes in chains of sectors, with a table that links them. Chains
/// that run in circles or out of the file are refused.
class CompoundFile {
  public:
    static bool IsOne(std::string_view bytes);

    /// @param bytes  the whole file, outlives this. @throws SheetError
    explicit CompoundFile(std::string_view bytes);

    /// A stream at the top level; nothing when there is none. @throws SheetError when its chain is broken
    std::optional<std::string> Read(std::string_view name) const;
    bool Has(std::string_view name) const;

  private:
    struct Entry {
        std::string name; ///< ASCII; other characters as '?'
        unsigned type = 0;
        std::uint32_t left = 0, right = 0, child = 0, start = 0;
        std::size_t size = 0;
    };

    std::string_view Sector(std::uint32_t number) const;
    void ReadTable();
    void ReadDirectory();
    std::string ReadChain(std::uint32_t start) const;
    std::string ReadMiniChain(std::uint32_t start) const;
    const Entry *Find(std::string_view name) const;

    std::string_view bytes_;
    std::size_t sector_size_ = 512;
    std::size_t sectors_ = 0;
    std::vector<std::uint32_t> table_, mini_table_;
    std::vector<Entry> entries_;
    std::string mini_stream_;
};
