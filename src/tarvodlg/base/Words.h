#pragma once

#include <string>

/// A whole number in Italian words, as people write it: "ventotto", "centottanta", "ventitré", "duemilauno",
/// "un milione duecentomila". Millions and milliards are words of their own, all the rest is one word.
/// @param number  0 to 999,999,999,999
/// @throws std::out_of_range for any other
std::string NumberInWords(long long number);

/// An amount as it stands on slips and receipts: the euro in words, the cents in figures: 1220.05 is
/// "milleduecentoventi/05". Rounded to cents before it is parted; what is negative begins with "meno ".
/// @throws std::out_of_range beyond 999,999,999,999.99, and for what is no number
std::string AmountInWords(double euro);
