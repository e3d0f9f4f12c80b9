#pragma once

#include "tarvolumera/Company.h"

#include <string>

class SACommand;

/// What is asked of a new company, as typed.
struct CompanyDetails {
    std::string name, vat_number;
    std::string fiscal_code; ///< empty = the VAT number
    std::string address, postcode, town, province, country = "IT";
};

/// How many entries the demo company has unless told otherwise, and the seed they come from.
inline constexpr long kDemoEntries = 600;
inline constexpr unsigned kDemoSeed = 2026;

/// The company's record: codes normalised, person or body by its fiscal code, quarterly VAT settlement, customers and
/// suppliers on the masters of the base chart.
DITTE CompanyFrom(const CompanyDetails &details);

/// What keeps the codes of an Italian company from being right, in Italian; empty when nothing does.
std::string CompanyCodeFault(const DITTE &company);

/// The fiscal years a company can have.
inline constexpr long kFirstYear = 1980, kLastYear = 9999;

/// Creates the archive of a company (in a folder or an empty PostgreSQL database) and opens it.
/// @throws SAException, FileError; then there is no archive and the company open before stays
void CreateCompany(const std::string &archive, const DITTE &company, long year);

/// The same for the demo company, with a year of entries.
void CreateDemoCompany(const std::string &archive, long year, long entries = kDemoEntries, unsigned seed = kDemoSeed);

/// Moves the company to another fiscal year, for every station, and loads it again. @throws SAException
void ChangeFiscalYear(SACommand *cmd, long year);
