#pragma once

#include "tarvolumera/Company.h"

#include <filesystem>
#include <functional>
#include <string>

/// What a new archive is made of.
struct NewArchive {
    std::string archive;               ///< folder to create, or the address of an existing empty PostgreSQL database
    std::filesystem::path data_folder; ///< of a PostgreSQL company; ignored for a folder
    DITTE company;                     ///< replaced by the demo company's own data when demo is set
    long year = 0;                     ///< fiscal year
    bool demo = false;                 ///< with customers, suppliers, banks of the demo company
    /// Called on the finished tables with the new company current, before the archive appears at its place; what it
    /// throws undoes everything.
    std::function<void(SACommand *)> fill;
};

/// Creates an archive with its base tables. All or nothing: what fails half way leaves neither folder nor tables. Opens
/// it as the current company.
/// @throws SAException, FileError; SA_UserGenerated_Error when there already is an archive
void CreateArchive(const NewArchive &wanted);

/// Loads a tab-separated table of schema/ ("base/07_codiva.tsv"): the first line names the columns, empty cells keep
/// the column's default. Values are bound.
/// @param extra  columns and values added to every row
/// @return the number of rows
long LoadTable(SACommand *cmd, std::string_view resource,
               const std::vector<std::pair<std::string, std::string>> &extra = {});
