#pragma once

#include "database/store/Failure.h"

#include <QtGlobal>

namespace sync::database {

/// A database's handle, as far as the transaction of its connection is concerned.
class TransactionHandle
{
public:
    /// Fails if nothing can be written now, and what is open must not be committed.
    virtual Failure CheckWritable() const = 0;
    /// Begins a transaction that keeps other writers out.
    virtual Failure Begin() = 0;
    /// Returns success if the transaction is durable. Otherwise nothing of it is, and the transaction has been rolled
    /// back, unless the error is of the kind `OutcomeUnknown`.
    virtual Failure Commit() = 0;
    virtual void RollBack() noexcept = 0;
    /// How many rows the handle has changed so far.
    virtual qint64 changes() const = 0;

protected:
    TransactionHandle() = default;
    ~TransactionHandle() = default;

private:
    Q_DISABLE_COPY_MOVE(TransactionHandle)
};

} // namespace sync::database
