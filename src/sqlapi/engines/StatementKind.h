#pragma once

#include <string_view>

/// What the engines need to know about a statement before it runs, read from its first words.
struct StatementKind {
    /// What the statement is about as such; decides between TableNotFound, ViewNotFound and RelationNotFound.
    enum class Subject { None, Table, View };

    bool reads_only = false;      ///< SELECT, VALUES, WITH without a writing part: rows can be streamed
    bool changes_rows = false;    ///< INSERT, UPDATE, DELETE ...: RowsAffected counts
    bool changes_schema = false;  ///< CREATE, ALTER, DROP ...: column lists known so far may be stale
    bool changes_session = false; ///< SET, PRAGMA, CREATE TEMP ...: the session is not like a new one afterwards
    bool rolls_back_part = false; ///< ROLLBACK TO: what failed since the savepoint is undone
    Subject subject = Subject::None;

    /// Worth keeping prepared: run again and again with other parameters.
    bool IsRepeatable() const { return reads_only || changes_rows; }

    static StatementKind Of(std::string_view text);
};
