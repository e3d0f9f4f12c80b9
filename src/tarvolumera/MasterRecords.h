#pragma once

#include "tarvolumera/TableDescription.h"

#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

/// The records of customers, suppliers, chart, causali, VAT codes, terms and banks that one connection has looked up,
/// kept as long as this lives: preparing a document asks for the same few again and again, and each question is a round
/// trip to the server.
///
/// For a span of work in which the changes of another station may wait for the next one: a document on its way into the
/// journal, a pass over many that stores nothing. Not around windows, whose user may change the records on a connection
/// of his own. Inside a transaction everything is read from the archive, and a write of this connection empties it. A
/// record that was not found is asked for again. A scope inside another one on the same connection shares its records.
class MasterRecords {
  public:
    explicit MasterRecords(SACommand *cmd);
    ~MasterRecords();
    MasterRecords(const MasterRecords &) = delete;
    MasterRecords &operator=(const MasterRecords &) = delete;

    /// The scope that keeps records of that table for the connection, as it is now; null when there is none.
    static MasterRecords *Of(const SAConnection *connection, const TableDescription &table);
    /// Called by whatever writes on the connection.
    static void Forget(const SAConnection *connection);

    /// Fills the record with the answer to the question that the query, ready to be executed, was asked before.
    /// @return false when it was not asked yet
    bool Take(SACommand *query, const TableDescription &table, void *record) const;
    void Keep(SACommand *query, const TableDescription &table, void *record);

  private:
    using Value = std::variant<long, double, std::string>;

    static MasterRecords *Innermost(const SAConnection *connection);

    const SAConnection *connection_;
    MasterRecords *outer_;  ///< the one in use before this one, of whatever connection
    MasterRecords *shared_; ///< the one that keeps the records: itself, or an outer one of the same connection
    std::unordered_map<std::string, std::vector<Value>> answers_;
};
