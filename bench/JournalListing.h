#pragma once

#include "sqlapi/SACommand.h"

#include <string>

/// One line of the journal list.
struct ListedEntry {
    long codice = 0, data = 0, data_doc = 0; ///< dates as day numbers
    long sez = 0, cau = 0, reg = 0, rel = 0, cli_for = 0;
    double tot_doc = 0, dare = 0, avere = 0;
    std::string desc, doc;
};

/// What was read, so that both sides can be seen to have read the same.
struct ListedSum {
    long entries = 0;
    long long codes = 0, days = 0, cents = 0;
    std::size_t characters = 0;

    void Add(const ListedEntry &entry);
    friend bool operator==(const ListedSum &, const ListedSum &) = default;
};

/// The query of the journal list, newest first; the same text for both engines and both sides.
inline constexpr char kListing[] =
    "SELECT pno_codice, pno_data, pno_desc, pno_data_doc, pno_tot_doc, pno_sez, pno_cau, pno_reg, pno_rel,"
    " pno_cli_for, pno_doc, pno_dare, pno_avere FROM admin.pnota1 ORDER BY pno_data DESC, pno_codice DESC";

/// Reads all rows of the command's text through the library, every field by its name.
ListedSum ListThroughLibrary(SACommand *command);
