#pragma once

#include <filesystem>
#include <string>
#include <vector>

// Invoices of the field and what they say, read with nothing of the program's own reader.

struct CorpusFile {
    std::string name; ///< with its folder: "official/IT01234567890_FPR01.xml", "guasti/..."
    std::string bytes;
    bool is_valid = true; ///< against the schema
};

/// A collection of invoices of the field, which is not part of the repository: a folder with an INDEX.tsv whose ninth
/// column says whether the file is valid. The folder named by LUMERA_TEST_FATTURE, else the one beside the sources.
bool HasCorpus();
std::vector<CorpusFile> CorpusFiles();
/// What lies in that folder, index or not.
std::vector<std::string> FilesInCorpusFolder();

/// The samples of the repository, those with a fault included.
std::vector<CorpusFile> RepositorySamples();

std::string BaseName(const std::string &name);

/// One row of a document's VAT summary; of a simplified one the rows of its goods, one for each rate and nature.
struct ToldVat {
    double rate = 0, taxable = 0, tax = 0;
    std::string nature;
};

/// What a document says, as its elements say it.
struct ToldDocument {
    std::string type, number;
    long day = 0;
    std::vector<std::string> seller; ///< words of his name
    std::vector<ToldVat> summary;
    bool has_total = false;
    double declared = 0;

    double SumOfSummary() const;
    double Total() const { return has_total ? declared : SumOfSummary(); }
    /// A credit note with positive amounts: the books take the other sign.
    bool IsWrittenCreditNote() const { return (type == "TD04" || type == "TD08") && Total() > 0; }
};

/// Opens a signed envelope with the program's function, and reads the XML with a parser of its own.
std::vector<ToldDocument> WhatTheFileSays(const std::string &bytes);
