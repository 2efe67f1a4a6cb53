#pragma once

#include "database/ConnectionHandle.h"
#include "database/ConnectionTransaction.h"
#include "database/ThreadErrors.h"

#include <memory>
#include <thread>
#include <vector>

namespace sync::database {

class SqliteStore;

/// A thread's connection to a store, opened at its first use. Used by its thread only.
///
/// The store owns it, and queries and database objects share it.
class SqliteConnection : public std::enable_shared_from_this<SqliteConnection>
{
public:
    explicit SqliteConnection(std::shared_ptr<SqliteStore> store);
    ~SqliteConnection();
    Q_DISABLE_COPY_MOVE(SqliteConnection)

    /// Opens the connection unless it is open.
    Failure Open();
    /// The same for the first connection of a store, which also checks the file as a whole.
    Failure OpenFirst();
    /// Opens the connection, and fails if this thread must not open another handle on the store now: if the file was
    /// moved, or if the connection has a transaction open, which would lock that handle out or be invisible to it.
    Failure OpenForSnapshot();
    /// Of an open connection.
    JournalMode journalMode() const { return _handle->store().journalMode(); }

    /// Sets the statement to null on failure.
    Failure Prepare(QString const& text, StatementLease& statement);
    /// Runs a statement to its first row, or to its end if it writes. A statement that writes begins the transaction of
    /// an open scope; if it fails, it has changed nothing.
    Failure Run(PreparedStatement& statement, RunResult& result);
    /// Moves a statement that stands on a row to the next row, or to its end.
    Failure Advance(PreparedStatement& statement, bool& hasRow);

    /// The client's own transaction.
    Failure BeginTransaction();
    Failure CommitTransaction();
    Failure RollBackTransaction();

    /// Commits what a scope that was never ended has written; called when the thread ends.
    void CommitAbandonedScope() noexcept { _transaction.CommitAbandonedScope(); }

    /// The error of an `exec` whose bound value was refused.
    StoreError Describe(StatementError const& error, PreparedStatement const& statement) const;

    ThreadErrors& errors() { return _errors; }

private:
    Failure OpenFor(OpenPurpose purpose);
    void CloseReplacedHandles() noexcept;
    Failure CheckThread() const;
    Failure CheckStatement(PreparedStatement const& statement) const;
    Failure ReadRow(PreparedStatement& statement, bool& hasRow);
    Failure CheckRead(PreparedStatement const& statement) const;
    Failure PrepareToWrite();
    Failure Write(PreparedStatement& statement, RunResult& result);
    Failure WriteAlone(PreparedStatement& statement, RunResult& result);
    Failure Refuse(int code, QString const& words, PreparedStatement const* statement = nullptr) const;

    std::shared_ptr<SqliteStore> const _store;
    std::thread::id const _thread;
    ThreadErrors _errors;
    std::unique_ptr<ConnectionHandle> _handle;
    /// Handles that were replaced while queries held statements of them.
    std::vector<std::unique_ptr<ConnectionHandle>> _replacedHandles;
    ConnectionTransaction _transaction;
};

} // namespace sync::database
