#pragma once

#include "database/ConnectionHandle.h"
#include "database/store/StoreConnection.h"

#include <memory>
#include <vector>

namespace sync::database {

class SqliteStore;

/// A thread's connection to a store's file, opened at its first use.
class SqliteConnection : public StoreConnection
{
public:
    explicit SqliteConnection(std::shared_ptr<SqliteStore> const& store);
    ~SqliteConnection() override;

    Failure Open() override;
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

    /// The error of an `exec` whose bound value was refused.
    StoreError Describe(StatementError const& error, PreparedStatement const& statement) const;

private:
    TransactionHandle& transactionHandle() override { return *_handle; }
    Failure OpenFor(OpenPurpose purpose);
    void CloseReplacedHandles() noexcept;
    Failure CheckStatement(PreparedStatement const& statement) const;
    Failure ReadRow(PreparedStatement& statement, bool& hasRow);
    Failure CheckRead(PreparedStatement const& statement) const;
    Failure PrepareToWrite();
    Failure Write(PreparedStatement& statement, RunResult& result);
    Failure WriteAlone(PreparedStatement& statement, RunResult& result);
    Failure Refuse(int code, QString const& words, PreparedStatement const* statement = nullptr) const;

    /// Kept alive by the base.
    SqliteStore* const _store;
    std::unique_ptr<ConnectionHandle> _handle;
    /// Handles that were replaced while queries held statements of them.
    std::vector<std::unique_ptr<ConnectionHandle>> _replacedHandles;
};

} // namespace sync::database
