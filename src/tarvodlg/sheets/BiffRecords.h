#pragma once

#include <string>
#include <string_view>
#include <vector>

/// One record of a workbook stream, with the records that continue it.
struct BiffRecord {
    unsigned type = 0;
    std::string_view data;                   ///< of the record itself
    std::vector<std::string_view> continued; ///< of those that continue it
};

/// Steps through the records of a workbook stream.
class BiffRecords {
  public:
    /// @param stream  outlives this   @param at  where a record begins. @throws SheetError
    BiffRecords(std::string_view stream, std::size_t at);

    /// @return false at the end of the stream. @throws SheetError when a record reaches beyond it
    bool Next(BiffRecord *record);

  private:
    std::string_view Take(unsigned *type);

    std::string_view stream_;
    std::size_t at_;
};

/// Reads texts of two bytes a character out of a record and those that continue it. A text that goes on in the next
/// record says there anew whether its characters have one byte or two.
class BiffTextReader {
  public:
    BiffTextReader(const BiffRecord &record, std::size_t at);

    bool AtEnd();
    unsigned Byte();
    unsigned Word();
    std::size_t Long();
    /// A text whose number of characters was read before.
    std::string Text(std::size_t characters);

  private:
    std::string_view Rest() const { return parts_[part_].substr(at_); }
    void ToNextPart();
    void Skip(std::size_t bytes);

    std::vector<std::string_view> parts_;
    std::size_t part_ = 0, at_;
};

/// The text of an older file, a byte a character. @param code_page  of Windows, or 10000 for that of the Macintosh
std::string FromCodePage(std::string_view bytes, unsigned code_page);
