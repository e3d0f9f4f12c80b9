#pragma once

#include "sqlapi/SAException.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

class EngineConnection;
class EngineStatement;
class SACommand;

using SAString = std::string;

enum class SAEngine { SQLite = 0, PostgreSQL = 1 };

/// What Connect may do when the SQLite file is not there. PostgreSQL databases are never created here.
enum class SAOpenMode { Existing, Create };

/// Write: takes the writer's place at once (SQLite BEGIN IMMEDIATE), so it cannot fail half way for want of a lock.
/// Read: one consistent picture for all queries (SQLite deferred, PostgreSQL REPEATABLE READ READ ONLY).
enum class SATransactionKind { Read, Write };

/// Full: a commit has reached the disk when it returns (the default). Relaxed: a power cut may take back the last
/// commits, never damage the file; for archives that can be made again (demo company, benchmarks).
enum class SADurability { Full, Relaxed };

/// One session with an archive. Sessions are pooled: Disconnect gives the session back and the next Connect to the same
/// target takes it up again with its prepared statements, so every unit of work can afford its own SAConnection.
/// Not shared between threads; the pool is.
class SAConnection {
  public:
    SAConnection();
    ~SAConnection(); ///< disconnects
    SAConnection(const SAConnection &) = delete;
    SAConnection &operator=(const SAConnection &) = delete;

    /// @param target  "postgresql://..." or "postgres://..." for PostgreSQL; anything else is the path of a SQLite file
    /// @throws SAException CannotOpen, Corrupt, ConnectionLost. The text never contains the password of the target.
    void Connect(const std::string &target, SAOpenMode mode = SAOpenMode::Existing);

    /// Rolls back what is open and gives the session back to the pool (a broken one is closed). No-op when not
    /// connected.
    void Disconnect();

    bool isConnected() const;
    SAEngine Engine() const;           ///< @throws SAException when not connected
    const std::string &Target() const; ///< as given to Connect, password included: never log it

    /// Without Begin every statement commits by itself.
    void Begin(SATransactionKind kind = SATransactionKind::Write);
    void Commit();
    void Rollback();
    bool InTransaction() const;

    void SetDurability(SADurability durability);

    /// Runs the statements of a text one after the other. Statements end with ';'; quotes, comments ("--", "/* */") and
    /// BEGIN...END bodies of triggers are respected. Zero-dialect statements are translated for SQLite as in SACommand.
    void ExecuteScript(std::string_view script);

    /// Copies the whole archive, consistent while others write, into a new file. SQLite only.
    /// @throws SAException; then no file is left behind
    void CopyTo(const std::string &file);

    /// Closes the idle sessions of all targets (before a file is removed, or at the end of the program).
    static void ClosePool();

  private:
    friend class SACommand;
    friend class SATransaction;

    EngineConnection &Session() const; ///< @throws SAException when not connected
    void NoteFailure(const SAException &error);
    void RefuseInsideUnit() const;

    std::unique_ptr<EngineConnection> session_;
    std::string target_;
    std::vector<SACommand *> commands_; ///< let go of their statements before the session goes to another user
    int depth_ = 0;                     ///< nesting of SATransaction
    unsigned unit_ = 0;                 ///< number of the outermost SATransaction, tells one that has lost its session
    bool doomed_ = false;               ///< an inner unit failed, the outer one may not commit
    bool failed_ = false;               ///< a statement failed inside a unit; undone by ROLLBACK TO
};

/// A unit of work that is stored whole or not at all. A unit inside another joins it: only the outermost one commits,
/// and it refuses to when an inner unit was left without Commit or a statement failed, whatever the caller did with the
/// exception (PostgreSQL gives up a transaction after an error; both engines behave alike here). A caller who expects a
/// statement to fail sets a SAVEPOINT and goes back to it with ROLLBACK TO.
class SATransaction {
  public:
    explicit SATransaction(SAConnection *connection, SATransactionKind kind = SATransactionKind::Write);
    explicit SATransaction(SACommand *command, SATransactionKind kind = SATransactionKind::Write);
    ~SATransaction(); ///< rolls back when Commit was not reached; never throws
    SATransaction(const SATransaction &) = delete;
    SATransaction &operator=(const SATransaction &) = delete;

    void Commit();

  private:
    bool IsCurrent() const;

    SAConnection *connection_;
    bool outermost_;
    bool done_ = false;
    unsigned unit_ = 0;
};
