#pragma once

#include "tarvolumera/Causali.h"

#include <nlohmann/json.hpp>
#include <string>

/// A record as JSON: the column names without prefix, dates as "AAAA-MM-GG", null for none.
nlohmann::json RecordToJson(const TableDescription &description, const void *record);

/// Puts what the object has into the record and leaves the rest of it. Flags may be true and false, numbers texts with
/// a decimal point. @param more  a key that is not a column and is left to the caller; "" = none
/// @param where  the record's place, as "clienti, record 3", for messages
/// @throws RefusedError naming the key that is unknown or wrong, or a text that is too long for its column
void RecordFromJson(const nlohmann::json &object, const TableDescription &description, void *record,
                    const std::string &where, std::string_view more = {});

/// "cli_piva" is "piva".
std::string JsonKey(std::string_view column);

/// The template rows of a causale: [{idx, mas, con, sot, tipo, auto}]. Without idx they count from 1 in their order.
nlohmann::json TemplateRowsToJson(const CAUCONT &causale);
void TemplateRowsFromJson(const nlohmann::json &rows, CAUCONT *causale, const std::string &where);
