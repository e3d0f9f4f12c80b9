#pragma once

#include "tables/TableStorage.h"

#include <memory>
#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

/// A record of any table that commands store, behind one face.
class TableRecord {
  public:
    virtual ~TableRecord() = default;

    /// Reads the record with these keys. @return false when there is none, or a key is no number
    virtual bool Load(SACommand *cmd, const RecordKeys &keys) = 0;
    virtual nlohmann::json ToJson() const = 0;

    /// Takes a record of a file: the stored one with the changes of the object, or a new one, with the next code when
    /// the object has none. @param where  its place in the file   @throws RefusedError
    virtual void Take(SACommand *cmd, const nlohmann::json &object, const std::string &where) = 0;
    virtual TableOutcome Confirm(SACommand *cmd) const = 0;
    virtual TableOutcome Write(SACommand *cmd) = 0;
    virtual bool IsNew() const = 0;
    /// True when the object had no code and the next one will be taken.
    virtual bool HasProposedCode() const = 0;
    /// "12", "150.3".
    virtual std::string Keys() const = 0;
};

/// A table that commands show and store; `ditta` and `impostazioni` have one record, the company's own.
struct RecordTable {
    const char *name;
    std::size_t keys; ///< how many codes name a record; 0 = there is one
    std::unique_ptr<TableRecord> (*make)();
};

std::span<const RecordTable> RecordTables();
/// Null when there is no table of that name.
const RecordTable *FindRecordTable(std::string_view name);
