#pragma once

#include "database/TandryDatabaseExport.h"

#include <QtGlobal>

namespace sync::database {

class ScopeParticipant;

/// Groups the writes of an operation, and of the operations that it calls, into one durable unit.
///
/// A scope belongs to the thread that made it and finds the store by itself: the first statement that writes inside it
/// begins a transaction, and the end of the outermost scope makes durable what was written. Unlike most guards of its
/// kind it never rolls back: ending it without `commit` keeps the writes, and a failed statement undoes nothing that
/// went before it. Scopes nest; the end of an inner one ends nothing. Inside a client transaction every scope is an
/// inner one. Queries made inside a scope are to be released before it ends.
class TANDRY_DATABASE_EXPORT TransactionalScope
{
public:
    TransactionalScope();
    virtual ~TransactionalScope();

    /// In the outermost scope makes durable what was written so far, and what follows begins anew; false when a store
    /// could not, and then what was written is gone, unless the store reports that the outcome is not known. In an
    /// inner scope true, and nothing ends.
    bool commit();

    /// How many scopes the calling thread has open.
    [[nodiscard]] static int Depth() noexcept;

    /// Has the participant told when the calling thread's outermost scope commits or ends, once for each call. For the
    /// connections of a store, from inside a scope; the participant must `Leave` before it goes.
    static void Join(ScopeParticipant& participant);

    /// Takes the participant out again; nothing happens when it isn't in.
    static void Leave(ScopeParticipant& participant) noexcept;

    /// How many transactions, of all threads and stores of the process, have not become durable so far: a client rolled
    /// them back, or a failure did. What was read before the number changed may hold rows that are not there, so who
    /// keeps such rows compares it. Any thread may call this; it takes no lock.
    [[nodiscard]] static quint64 Rollbacks() noexcept;

    /// Counts one more. For the connections of a store, once the rows are as they were.
    static void CountRollback() noexcept;

private:
    Q_DISABLE_COPY_MOVE(TransactionalScope)
};

} // namespace sync::database
