#include "sqlapi/SAConnection.h"

#include "sqlapi/SACommand.h"
#include "sqlapi/engines/ConnectionPool.h"
#include "sqlapi/engines/Engine.h"
#include "sqlapi/engines/ScriptSplitter.h"

// The pool is made before the first connection is, so that a connection which lives to the end of the program (a table
// object's own) can still give its session back.
SAConnection::SAConnection()
{
    ConnectionPool::Instance();
}

SAConnection::~SAConnection()
{
    Disconnect();
    for (SACommand *command : commands_) command->connection_ = nullptr;
}

void SAConnection::Connect(const std::string &target, SAOpenMode mode)
{
    Disconnect();
    auto session = ConnectionPool::Instance().Take(EngineConnection::PoolKey(target));
    session_ = session ? std::move(session) : EngineConnection::Open(target, mode);
    target_ = target;
}

void SAConnection::Disconnect()
{
    for (SACommand *command : commands_) command->LetGo();
    depth_ = 0;
    ++unit_;
    doomed_ = failed_ = false;
    if (!session_) return;
    if (session_->PrepareForPool())
        ConnectionPool::Instance().Give(EngineConnection::PoolKey(target_), std::move(session_));
    session_.reset();
    target_.clear();
}

bool SAConnection::isConnected() const
{
    return session_ != nullptr;
}

EngineConnection &SAConnection::Session() const
{
    if (!session_) throw LibraryError("not connected");
    return *session_;
}

SAEngine SAConnection::Engine() const
{
    return Session().Engine();
}

const std::string &SAConnection::Target() const
{
    return target_;
}

void SAConnection::Begin(SATransactionKind kind)
{
    if (Session().InTransaction()) throw LibraryError("a transaction is already open");
    Session().Begin(kind);
    doomed_ = failed_ = false;
}

void SAConnection::Commit()
{
    RefuseInsideUnit();
    if (doomed_ || failed_) {
        Rollback();
        throw LibraryError("the transaction was rolled back because a part of it failed");
    }
    Session().Commit();
}

void SAConnection::Rollback()
{
    doomed_ = failed_ = false;
    Session().Rollback();
}

bool SAConnection::InTransaction() const
{
    return session_ && session_->InTransaction();
}

void SAConnection::SetDurability(SADurability durability)
{
    if (Session().InTransaction()) throw LibraryError("the durability cannot change inside a transaction");
    Session().SetDurability(durability);
}

void SAConnection::ExecuteScript(std::string_view script)
{
    EngineConnection &session = Session();
    try {
        for (const std::string_view statement : SplitScript(script))
            if (session.Run(statement).rolls_back_part) failed_ = false;
    } catch (const SAException &error) {
        NoteFailure(error);
        throw;
    }
}

void SAConnection::CopyTo(const std::string &file)
{
    if (Session().InTransaction()) throw LibraryError("an archive cannot be copied inside a transaction");
    Session().CopyTo(file);
}

void SAConnection::ClosePool()
{
    ConnectionPool::Instance().Clear();
}

// A misuse of this library never reached the engine, so the transaction is still good.
void SAConnection::NoteFailure(const SAException &error)
{
    if (depth_ > 0 && error.ErrClass() == SA_DBMS_API_Error) failed_ = true;
}

void SAConnection::RefuseInsideUnit() const
{
    if (depth_ > 0) throw LibraryError("only the outermost unit of work may commit");
}
