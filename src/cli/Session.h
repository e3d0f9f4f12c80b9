#pragma once

#include "cli/CommandLine.h"
#include "desk/UserFolders.h"
#include "tarvodlg/base/ConsoleUserInterface.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>

class Table;

/// A command used in a way that makes no sense; the text is Italian.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A command that a check of the books refuses; the text is Italian and was not shown yet.
class RefusedError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What all commands of one run share: the archive, how to answer, how to print.
struct Session {
    std::string archive; ///< folder or PostgreSQL address; empty = the default archive
    bool json = false;
    bool yes = false;
    std::string today; ///< date instead of the clock's, for tests and for catching up
    ConsoleUserInterface user;

    /// Opens the archive as the current company. @throws SAException
    void OpenArchive();
    /// The archive named by option, environment or default.
    std::string ArchiveName() const;
    /// True when tables may be drawn with bold titles.
    bool Colours() const;
};

/// A date option: "YYYY-MM-DD" or "DD/MM/YYYY"; 0 for an empty text. @throws UsageError naming the option
long ParseDateOption(const std::string &option, const std::string &text);

/// Prints a text to standard output.
void Print(const std::string &text);

/// Prints a JSON document on one line. Bytes that are no UTF-8, as a file name may hold, are replaced.
void PrintJson(const nlohmann::json &document);

/// A JSON list that is printed item by item, so that a long one takes no memory:
/// {"movimenti": [ ... ], "totale": 12}
class JsonListPrinter {
  public:
    explicit JsonListPrinter(const std::string &name);
    void Add(const nlohmann::json &item);
    /// @param more  further keys beside the list
    void Finish(const nlohmann::json &more = nlohmann::json::object());

    /// Ends the list that a failure left open, so that what was printed stays one document.
    /// @return false when none is open
    static bool FinishOpen(const nlohmann::json &more);

  private:
    enum class State { None, Empty, Filled };
    static State open_; ///< standard output has one list at a time
};

/// An amount rounded to cents, as JSON number.
nlohmann::json JsonAmount(double euro);
/// A date as "YYYY-MM-DD", null for 0.
nlohmann::json JsonDate(long day);
