#pragma once

#include "tarvolumera/fatturapa/FattureElettronicheDB.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// What is printed of an invoice for people to read, without pages, fonts and places: sections of rows of cells. Texts
// are Italian, amounts and dates written out.

enum class SheetTone { Plain, Strong, Note, Total };

struct SheetText {
    std::string text; ///< goes on to further lines where it is too long; a number gets smaller letters instead
    SheetTone tone = SheetTone::Plain;
};

/// Texts one below the other.
using SheetCell = std::vector<SheetText>;
using SheetRow = std::vector<SheetCell>;

struct SheetColumn {
    std::string title;
    double width = 0;       ///< mm; 0 = what the others leave, for one column of a section at most
    bool is_number = false; ///< to the right, never wrapped
};

enum class SheetFrame {
    Open,  ///< words only
    Table, ///< titles of the columns, repeated on every page
    Boxes, ///< a box around every cell
};

struct SheetSection {
    std::string title;
    SheetFrame frame = SheetFrame::Open;
    std::vector<SheetColumn> columns;
    std::size_t count = 0; ///< a section without rows is not printed
    /// Rows are made when they are printed: a document may have tens of thousands of lines.
    std::function<SheetRow(std::size_t index)> row;
};

/// One document of a file.
struct InvoiceSheet {
    std::string heading; ///< "NOTA DI CREDITO"
    std::string number;  ///< "n. 3/NC del 10/02/2026"
    std::string seller;  ///< for the head of further pages
    std::string foot;    ///< where all of it comes from
    std::vector<SheetSection> sections;
};

/// Everything that the file says of one document, each piece in one place; what has no place of its own stands in the
/// section "Altri dati", what the reader found odd in "Avvisi".
/// @param document  below content.Count()
/// @return refers to the content, which must outlive it
InvoiceSheet SheetOf(const CFattureElettronicheDB &content, std::size_t document);
