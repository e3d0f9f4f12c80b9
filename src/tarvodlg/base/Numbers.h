#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Rounds to n decimals, halves away from zero, on the decimal value that a person reads: 1.005 gives 1.01,
/// 2.675 gives 2.68, -2.675 gives -2.68. Never gives -0.
/// @param decimals  0 to 9
double Round(double value, int decimals);

/// Goes away from zero to the next unit of the last decimal: MyCeil(33.333, 2) = 33.34, MyCeil(-33.333, 2) = -33.34.
/// A value within 1e-6 of a unit already is that unit, so 33.33 stays 33.33; a credit note splits like its invoice.
double MyCeil(double value, int decimals);

/// True when the value is zero at that many decimals after rounding.
bool TestIfZero(double value, int decimals = 2);

/// Euro to whole cents, rounded as Round does. Long columns are added in cents.
/// @throws std::out_of_range for what is no number or has no place in a long long
long long ToCents(double euro);
double FromCents(long long cents);

/// "1.234,56"; negative with a leading minus. The Italian way, for people.
std::string FormatAmount(double euro, int decimals = 2);

/// Reads an amount as people type or paste it: "1.234,56", "1234,5", "1,234.56", "1234.56", " 12 ", "-3", "+3", "€ 5".
/// A single point followed by exactly three digits is a thousands point ("1.234" is 1234); any other single point is a
/// decimal one, and so is it behind a zero or four digits and more ("0.125"). Empty, letters, two decimal separators,
/// uneven groups or more than 15 digits give nothing.
std::optional<double> ParseAmount(std::string_view text);

/// Reads a plain decimal number as files carry it: optional sign, digits, optional '.' and digits. No blanks, no
/// exponent, no locale. Nothing when malformed.
std::optional<double> ParseDecimal(std::string_view text);
