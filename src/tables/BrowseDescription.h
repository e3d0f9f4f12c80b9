#pragma once

#include "tarvodlg/print/ReportValue.h"
#include "tarvolumera/TarvoPostgreSQL.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// One of the values that a column can have, with the words that people read for it.
struct BrowseChoice {
    const char *value; ///< as it is stored: "1", "A"
    const char *text;
};

struct BrowseColumn {
    enum class Kind { Text, Code, Amount, Date, Flag, Choice };

    const char *column; ///< its name in the archive
    const char *title;
    Kind kind = Kind::Text;
    int width = 10; ///< characters that it needs on a screen; longer texts are cut there
    std::span<const BrowseChoice> choices{};
};

/// What a list of a table shows: one description per table, from which the lookup browsers, the lists of the command
/// line and the exports all come.
struct BrowseDescription {
    const char *name;     ///< "clienti", as commands call it
    const char *title;    ///< "Clienti"
    const char *singular; ///< "cliente"
    CTarvoPostgreSQL *table;
    std::vector<const char *> keys; ///< columns of the primary key; the last one is the code that users type
    const char *description;        ///< the column that says what a code means
    std::vector<BrowseColumn> columns;
    const char *order;       ///< ORDER BY of the list; ends in the keys, so that it is the same every time
    bool maintained = false; ///< users add, change and delete its records
};

/// mastri, conti, sottocon, causali, codiva, pagamenti, sezioni, fornitori, clienti, banche, centri, agenti, nazioni,
/// province, aggregazioni, articoli, caumag.
std::span<const BrowseDescription> BrowseDescriptions();
/// Null when there is no table of that name.
const BrowseDescription *FindBrowse(std::string_view name);

/// Keys that a list is limited to: {{"con_mas", 10}} gives the accounts of master 10. Columns of the table only.
using FixedKeys = std::vector<std::pair<std::string, long>>;
/// The primary key of a record in the order of BrowseDescription::keys, numbers as "12".
using RecordKeys = std::vector<std::string>;

struct BrowseRow {
    RecordKeys keys;
    /// One per column. Text: string; Code and Flag: long long; Amount: double; Date: ReportDate; Choice: string, its
    /// words. SQL's NULL is monostate.
    std::vector<ReportValue> cells;
};

/// Streams the rows in the order of the description until the callback says false. The callback runs no query on the
/// same connection.
void ForEachBrowseRow(SACommand *cmd, const BrowseDescription &description, const FixedKeys &fixed,
                      const std::function<bool(const BrowseRow &)> &each);

/// A cell for people: "1.234,56", "31/12/2026", "Sì"; empty for NULL, a code of 0, a flag that is off, no date.
std::string CellText(const BrowseColumn &column, const ReportValue &cell);

/// Whether a row belongs to what was typed into the search of a list: digits match the beginning of its code, any text
/// is looked for in all of its text columns. An empty text matches.
bool RowMatches(const BrowseDescription &description, const BrowseRow &row, std::string_view typed);

/// What the code means; nothing when there is no such record (or a key that should be a number is none).
std::optional<std::string> DescribeCode(SACommand *cmd, const BrowseDescription &description, const RecordKeys &keys);

struct CodeMatch {
    RecordKeys keys;
    std::string description;
};

/// Proposals while a code is typed: digits are the beginning of the code, anything else is looked for anywhere in the
/// description, whatever its case and accents. The exact code comes first, then the order of the list.
/// @param most  how many at most   @return empty for an empty text
std::vector<CodeMatch> MatchCodes(SACommand *cmd, const BrowseDescription &description, const FixedKeys &fixed,
                                  std::string_view typed, std::size_t most);

/// Upper case without accents and apostrophes, one blank where there were several: "Calabrò  S.r.l." is "CALABRO
/// S.R.L.", and so is "calabro' s.r.l.", as many type it. The engines compare letters each in its own way, so searching
/// is done on this.
std::string Folded(std::string_view text);

/// Goes to the record after (before) the given one in the order of the keys. Empty keys: the first (last) one.
/// @return false when there is none
bool NeighbourRecord(SACommand *cmd, const BrowseDescription &description, const RecordKeys &keys, bool forward,
                     RecordKeys *result);
