#pragma once

#include "database/store/ConnectionTransaction.h"
#include "database/store/ThreadErrors.h"

#include <memory>
#include <thread>

namespace sync::database {

class Store;

/// A thread's connection to a store, with its errors and its transaction. Used by its thread only.
///
/// The store owns it, and queries and database objects share it.
class StoreConnection : public std::enable_shared_from_this<StoreConnection>
{
public:
    virtual ~StoreConnection();
    Q_DISABLE_COPY_MOVE(StoreConnection)

    /// Opens the connection unless it is open.
    virtual Failure Open() = 0;

    /// The client's own transaction.
    Failure BeginTransaction();
    Failure CommitTransaction();
    Failure RollBackTransaction();

    /// Commits what a scope that was never ended has written; called when the thread ends.
    void CommitAbandonedScope() noexcept { _transaction.CommitAbandonedScope(); }

    ThreadErrors& errors() { return _errors; }

protected:
    explicit StoreConnection(std::shared_ptr<Store> store);

    /// Fails on another thread than the connection's, and after the store has been closed.
    Failure CheckThread() const;
    Failure CheckNotReadOnly() const;

    Store& store() const { return *_store; }
    ConnectionTransaction& transaction() { return _transaction; }

private:
    /// Of an open connection.
    virtual TransactionHandle& transactionHandle() = 0;

    std::shared_ptr<Store> const _store;
    std::thread::id const _thread;
    ThreadErrors _errors;
    ConnectionTransaction _transaction;
};

} // namespace sync::database
