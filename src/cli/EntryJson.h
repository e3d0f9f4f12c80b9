#pragma once

#include "tarvolumera/JournalEntry.h"

#include <nlohmann/json.hpp>
#include <string>

/// A whole entry as JSON: the column names without prefix, rows under "righe", VAT lines under "iva".
nlohmann::json EntryToJson(const PNOTA &entry);

/// Builds a new entry from JSON through the rules of the editor: causale, counterpart, document, VAT lines, rows.
///
/// Keys: data, cau, doc, data_doc, cli_for, sez, pag, data_pag, desc, des_cau, tot_doc, prot with prot_fisso 1 (fixes
/// the protocol), iva: [{codice, imponibile, imposta, aliquota, indetraibile}], righe: [{mas, con, sot, tipo, importo,
/// desc, doc}], centri: [{riga, cdc, importo}]. Without righe the causale's template rows stay and fill themselves. A
/// tax that is given stands as it is given; the rate, when given, must be the code's. Amounts are numbers or texts with
/// a decimal point.
/// @throws RefusedError naming the key that is wrong
PNOTA EntryFromJson(SACommand *cmd, const std::string &text, long today);
