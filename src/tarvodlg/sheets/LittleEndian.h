#pragma once

#include "tarvodlg/sheets/SheetBook.h"

#include <bit>
#include <cstdint>

// Numbers of binary office files. What lies outside of the bytes is refused.

inline unsigned ByteAt(std::string_view bytes, std::size_t at)
{
    if (at >= bytes.size()) throw SheetError(kSheetDamaged);
    return static_cast<unsigned char>(bytes[at]);
}

inline unsigned WordAt(std::string_view bytes, std::size_t at)
{
    return ByteAt(bytes, at) | ByteAt(bytes, at + 1) << 8;
}

inline std::uint32_t LongAt(std::string_view bytes, std::size_t at)
{
    return WordAt(bytes, at) | static_cast<std::uint32_t>(WordAt(bytes, at + 2)) << 16;
}

inline double DoubleAt(std::string_view bytes, std::size_t at)
{
    return std::bit_cast<double>(LongAt(bytes, at) | static_cast<std::uint64_t>(LongAt(bytes, at + 4)) << 32);
}
