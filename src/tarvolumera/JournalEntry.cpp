#include "tarvolumera/JournalEntry.h"

#include <string>

const char *RegisterName(long vat_register)
{
    switch (vat_register) {
    case kJournalOnly:
        return "SOLO LIBRO GIORNALE";
    case kPurchases:
        return "ACQUISTI";
    case kSales:
        return "FATTURE EMESSE";
    case kReceipts:
        return "CORRISPETTIVI";
    case kSuspendedSales:
        return "FATTURE IN SOSPENSIONE";
    case kEuPurchases:
        return "ACQUISTI CEE";
    case kEuSales:
        return "FATTURE EMESSE CEE";
    default:
        return "*** SCONOSCIUTO ***";
    }
}

Text<220> PadDocumentNumber(std::string_view number)
{
    constexpr std::size_t kDigits = 20;
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    std::string padded;
    for (std::size_t i = 0; i < number.size();) {
        if (!is_digit(number[i])) {
            padded += number[i++];
            continue;
        }
        std::size_t end = i;
        while (end < number.size() && is_digit(number[end])) ++end;
        if (end - i < kDigits) padded.append(kDigits - (end - i), '0');
        padded.append(number.substr(i, end - i));
        i = end;
    }
    return padded;
}
