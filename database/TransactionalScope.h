#pragma once

#include "TandryDatabaseExport.h"

#include <QtGlobal>

namespace sync::database {

class ScopeParticipant;

/// Groups the writes of an operation, and of the operations that it calls, into one durable unit.
///
/// A scope belongs to the thread that created it and needs no reference to a store: the first statement that writes
/// inside it begins a transaction, and the end of the outermost scope makes the writes durable. Unlike most guards of
/// its kind, a scope never rolls back: ending it without `commit` keeps the writes, and a failed statement undoes no
/// earlier writes. Scopes nest, and the end of an inner scope has no effect. Inside a client transaction every scope is
/// an inner one. Release queries that were created inside a scope before it ends.
///
/// A scope without writes costs nothing and takes no lock. With `SqliteDatabaseFactory` its first write takes the
/// store's write lock, for which it waits up to `OpenOptions::busyTimeoutMsec`, and its end flushes the disk once.
/// Until then no other thread or program can write, so a scope should not wait for anything.
class TANDRY_DATABASE_EXPORT TransactionalScope
{
public:
    TransactionalScope();
    virtual ~TransactionalScope();

    /// In the outermost scope, makes the writes so far durable; later writes begin a new transaction. Returns false if
    /// a store fails; its writes are then gone, unless the store reports that the outcome is unknown. In an inner
    /// scope, does nothing and returns true.
    bool commit();

    /// Returns the number of scopes that the calling thread has open.
    [[nodiscard]] static int Depth() noexcept;

    /// Adds a participant, whose `CommitScope` is called once when the calling thread's outermost scope commits or
    /// ends. For the connections of a store, inside a scope. The participant must call `Leave` before it is destroyed.
    static void Join(ScopeParticipant& participant);

    /// Removes the participant; does nothing if it has not joined.
    static void Leave(ScopeParticipant& participant) noexcept;

    /// Returns the number of transactions, of all threads and stores of the process, that were rolled back by a client
    /// or by a failure. Rows that were read before the number changed may not be in the store, so a cache of rows
    /// compares it. Any thread may call this; it takes no lock.
    [[nodiscard]] static quint64 Rollbacks() noexcept;

    /// Increments that number. For the connections of a store, after the rows were rolled back.
    static void CountRollback() noexcept;

private:
    Q_DISABLE_COPY_MOVE(TransactionalScope)
};

} // namespace sync::database
