#pragma once

#include "database/ScopeParticipant.h"
#include "database/store/Failure.h"

#include <QtGlobal>

#include <memory>

namespace sync::database {

class Store;
class ThreadErrors;
class TransactionHandle;

/// The transaction of a thread's connection: a scope's, or the client's own.
class ConnectionTransaction : public ScopeParticipant
{
public:
    enum class State
    {
        None,
        /// Begun by a statement that wrote inside a `TransactionalScope`.
        Scope,
        /// Begun by the client, through `IQSqlDatabaseWrapper`.
        Client,
        /// A failure rolled the client's transaction back: nothing may be written until the client ends it.
        LostClient,
    };

    ConnectionTransaction(Store const& store, ThreadErrors& errors);
    ~ConnectionTransaction() override;
    Q_DISABLE_COPY_MOVE(ConnectionTransaction)

    State state() const { return _state; }
    /// Whether the database has a transaction open for a scope or the client.
    bool isOpen() const { return _handle != nullptr; }

    /// Begins the transaction of the thread's open scope. The end of the scope needs the connection, so its `owner` is
    /// kept alive until then. The handle must outlive the transaction.
    Failure BeginScope(TransactionHandle& handle, std::shared_ptr<void> owner);
    /// The same for a transaction that the handle has begun, before which it had changed `changesAtBegin` rows.
    void JoinScope(TransactionHandle& handle, qint64 changesAtBegin, std::shared_ptr<void> owner);
    /// Begins a client transaction.
    Failure BeginClient(TransactionHandle& handle);
    Failure CommitClient();
    Failure RollBackClient();

    /// Fails after a failure rolled the client's transaction back.
    Failure CheckWritable() const;

    /// Ends the open transaction after a statement failed in a way that rolled it back, or must. Reports the writes of
    /// a scope as lost if the handle had changed rows before the statement, that is, `changesBefore` rows in all.
    void Lose(StoreError const& error, qint64 changesBefore);

    /// Commits what the scope has written; if that fails, reports its writes as lost.
    bool CommitScope() noexcept override;
    /// Commits what a scope that was never ended has written, when its thread ends.
    void CommitAbandonedScope() noexcept;

private:
    Failure Commit(TransactionHandle& handle);
    static void RollBack(TransactionHandle& handle) noexcept;
    Failure RefuseRolledBack() const;

    Store const& _store;
    ThreadErrors& _errors;
    State _state = State::None;
    /// Set while a transaction is open.
    TransactionHandle* _handle = nullptr;
    qint64 _changesAtBegin = 0;
    std::shared_ptr<void> _scopeOwner;
};

} // namespace sync::database
