#pragma once

#include "tarvodlg/print/ReportError.h"
#include "tarvodlg/print/SelectionFormula.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// A report layout (reports/NAME.rpt) is a small XML file:
//
//   <report title="Movimenti Prima Nota" paper="A4" orientation="landscape" margin="10" font="DejaVu Sans" size="8">
//     <tables>
//       <table name="pnota" from="admin.pnota1"/>            names that formulas and the query use, and their real
//       tables
//     </tables>
//     <query>SELECT pnota.pno_codice, ... FROM {pnota} LEFT JOIN {causali} ON ... WHERE {selection} ORDER BY
//     ...</query> <parameters><parameter name="Ditta" type="string"/></parameters>        string, long, double or date
//     <page-header height="18"> items </page-header>
//     <report-header height="10"> items </report-header>       once, on the first page
//     <group by="pno_data" new-page="no" keep="yes">           groups nest in the order in which they stand
//       <header height="6"> items </header> <footer height="6"> items </footer>
//     </group>
//     <detail height="4.5" when="{row.pno_tot_doc} &lt;> 0"> items </detail>  several details are printed one below the
//     other <report-footer height="12"> items </report-footer>       the totals, once at the end <page-footer
//     height="6"> items </page-footer> <subreport name="DettaglioIva"> tables, query, parameters, bands as above
//     </subreport>
//   </report>
//
// {name} in the query becomes "real_table AS name", {selection} the condition of the selection formula, :Name a bound
// parameter of the report. Items, in millimetres from the left and the top of their band:
//
//   <text x="0" y="0" w="40" align="left|right|center" bold="yes" size="10" color="#006000" when="...">words</text>
//   <field of="column" .../> <param name="Ditta" .../> <page .../> (its number, from the first page's)
//   <sum of="column" .../> <count .../>   over the group of a group band, over the report in its footer; cents are
//   added <running of="column" .../>            sum from the beginning up to here; in page bands it carries over <line
//   x y w/> <box x y w h/> <image param="Logo" x y w h/> <subreport name="..." x y link="Parameter=column,..."/>
//
// Rows are streamed, so what a sum or count says is known only at the end of what it is about: they stand in the footer
// of a group or of the report. The main report's query has {selection} exactly once, a sub-report's at most once. All
// measures are numbers with a decimal point.
//
// format= of numbers: "0", "0,00" (thousands points, comma), "0,00z" (zero prints empty), of dates "date"; of any
// number "code". when= is a formula over {row.column} and {?parameter}. A text wider than its w is cut with "…", or
// goes on to further lines with wrap="yes" (the band grows). A number is never cut: it gets smaller letters.
//
// The fields of the details are also the columns of CSV and XLSX, under the words that stand above them on paper. What
// paper says elsewhere, in the address of a letter, a sheet needs in each row: a field with title="Codice" is in it
// only.

enum class BandKind { ReportHeader, PageHeader, GroupHeader, Detail, GroupFooter, ReportFooter, PageFooter };
enum class ItemKind { Text, Field, Param, Page, Sum, Count, Running, Line, Box, Image, Subreport };
enum class ItemAlign { Left, Right, Center };

/// Where something stands in the layout file, from 1; for messages.
struct LayoutPlace {
    std::size_t line = 0, column = 0;
};

struct ReportItem {
    ItemKind kind = ItemKind::Text;
    double x = 0, y = 0, w = 0, h = 0; ///< mm; w 0 = to the right margin
    std::string text;                  ///< words, or name of column, parameter, sub-report
    std::string title; ///< of a field that is no item of the page but a column of CSV and XLSX; or empty
    std::string link;  ///< of a sub-report: "Parameter=column,Parameter=?Parameter"
    ItemAlign align = ItemAlign::Left;
    bool bold = false, italic = false, wrap = false;
    double size = 0;   ///< points; 0 = the report's
    std::string color; ///< "#rrggbb"; empty = black
    std::string format;
    SelectionFormula when;
    LayoutPlace place;
};

struct ReportBand {
    BandKind kind = BandKind::Detail;
    double height = 0; ///< mm
    SelectionFormula when;
    std::vector<ReportItem> items;
    LayoutPlace place;
};

struct ReportGroup {
    std::vector<std::string> by; ///< columns; a change of any of them ends the group
    bool new_page = false;       ///< each group begins on a page of its own
    bool keep = true;            ///< the header is not left alone at the foot of a page
    std::optional<ReportBand> header, footer;
    LayoutPlace place;
};

struct ReportTable {
    std::string name; ///< as formulas and the query call it
    std::string from; ///< "admin.pnota1"; schema and name, each of letters, digits and '_'
};

enum class ParameterType { String, Long, Double, Date };
struct ReportParameter {
    std::string name;
    ParameterType type = ParameterType::String;
};

struct ReportLayout {
    std::string file, title;
    std::string paper = "A4";
    bool landscape = false;
    double margin = 10; ///< mm, on all sides
    std::string font = "DejaVu Sans";
    double size = 8; ///< points
    std::vector<ReportTable> tables;
    std::string query;
    LayoutPlace query_place;
    std::vector<ReportParameter> parameters;
    std::vector<ReportGroup> groups;
    std::vector<ReportBand> bands; ///< all but those of the groups; details in their order
    std::vector<std::shared_ptr<ReportLayout>> subreports;
    std::string name; ///< of a sub-report

    const ReportBand *Band(BandKind kind) const; ///< null when the layout has none
    /// "pnotagest.rpt, riga 12, colonna 5", with which messages about a part of the layout begin.
    std::string Words(LayoutPlace place) const;
};

struct PaperSize {
    double width = 0, height = 0; ///< mm, margins included
};
/// A4, A3, A5 or Letter, turned when landscape; A4 for any other name.
PaperSize PaperSizeOf(std::string_view paper, bool landscape);

/// True for "schema.table", each part of letters, digits and '_': what may stand in a query in the place of a layout's
/// table.
bool IsRealTableName(std::string_view name);

/// Reads a layout. Unknown elements and attributes, wrong numbers, formulas that cannot be understood, items outside
/// the page, references to nothing are refused. @param file  its name in messages
/// @throws ReportError "pnotagest.rpt, riga 12, colonna 5: ..."
ReportLayout ParseLayout(std::string_view xml, const std::string &file);

/// The layout of that name: the company's own in its "report" folder, else the one that travels inside the library.
/// @param file  a plain file name ending in ".rpt"
/// @throws ReportError when there is none; FileError when the company's own cannot be read
ReportLayout LoadLayout(const std::string &file);
/// Names of the layouts inside the library.
std::vector<std::string> LayoutNames();
