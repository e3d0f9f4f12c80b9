#include "sqlapi/SACommand.h"
#include "sqlapi/engines/Engine.h"

namespace {

SAConnection *ConnectionOf(SACommand *command)
{
    return command == nullptr ? nullptr : command->Connection();
}

} // namespace

SATransaction::SATransaction(SAConnection *connection, SATransactionKind kind) : connection_(connection)
{
    if (connection_ == nullptr) throw LibraryError("a transaction needs a connection");
    outermost_ = !connection_->InTransaction();
    if (outermost_) {
        connection_->Begin(kind);
        ++connection_->unit_;
    }
    unit_ = connection_->unit_;
    ++connection_->depth_;
}

SATransaction::SATransaction(SACommand *command, SATransactionKind kind) : SATransaction(ConnectionOf(command), kind) {}

SATransaction::~SATransaction()
{
    if (done_ || !IsCurrent()) return;
    --connection_->depth_;
    if (!outermost_) {
        connection_->doomed_ = true;
        return;
    }
    try {
        connection_->Rollback();
    } catch (const std::exception &) {
        // The session is broken; its server or file forgets the transaction when it is closed.
    }
}

void SATransaction::Commit()
{
    if (done_) throw LibraryError("the unit of work is already committed");
    if (!IsCurrent()) throw LibraryError("the unit of work was rolled back when its connection was closed");
    done_ = true;
    --connection_->depth_;
    if (outermost_) connection_->Commit();
}

// After a Disconnect, or in a later unit of the same connection, there is nothing of this one left.
bool SATransaction::IsCurrent() const
{
    return connection_->unit_ == unit_ && connection_->session_ != nullptr;
}
