#include "database/store/ConnectionTransaction.h"

#include "database/TransactionalScope.h"
#include "database/store/Store.h"
#include "database/store/ThreadErrors.h"
#include "database/store/TransactionHandle.h"

#include <utility>

namespace sync::database {

ConnectionTransaction::ConnectionTransaction(Store const& store, ThreadErrors& errors)
    : _store(store)
    , _errors(errors)
{}

ConnectionTransaction::~ConnectionTransaction()
{
    if (isOpen()) // the database rolls it back when the handle is closed
        TransactionalScope::CountRollback();
}

Failure ConnectionTransaction::BeginScope(TransactionHandle& handle, std::shared_ptr<void> owner)
{
    if (Failure failure = handle.Begin())
        return failure;
    JoinScope(handle, handle.changes(), std::move(owner));
    return {};
}

void ConnectionTransaction::JoinScope(TransactionHandle& handle, qint64 changesAtBegin, std::shared_ptr<void> owner)
{
    _state = State::Scope;
    _handle = &handle;
    _changesAtBegin = changesAtBegin;
    _scopeOwner = std::move(owner);
    TransactionalScope::Join(*this);
}

Failure ConnectionTransaction::BeginClient(TransactionHandle& handle)
{
    if (_state == State::Client || _state == State::LostClient)
        return _store.Refuse(Refusal::Misuse, QStringLiteral("a transaction is open already"));
    if (TransactionalScope::Depth() > 0)
        return _store.Refuse(Refusal::Misuse, QStringLiteral("a transaction can't be opened inside a scope"));
    if (Failure failure = handle.CheckWritable())
        return failure;
    if (Failure failure = handle.Begin())
        return failure;
    _state = State::Client;
    _handle = &handle;
    return {};
}

Failure ConnectionTransaction::CommitClient()
{
    if (_state != State::Client && _state != State::LostClient)
        return _store.Refuse(Refusal::Misuse, QStringLiteral("no transaction is open"));
    if (std::exchange(_state, State::None) == State::LostClient)
        return RefuseRolledBack();
    return Commit(*std::exchange(_handle, nullptr));
}

Failure ConnectionTransaction::RollBackClient()
{
    if (_state != State::Client && _state != State::LostClient)
        return _store.Refuse(Refusal::Misuse, QStringLiteral("no transaction is open"));
    if (std::exchange(_state, State::None) == State::Client)
        RollBack(*std::exchange(_handle, nullptr));
    return {};
}

Failure ConnectionTransaction::CheckWritable() const
{
    if (_state != State::LostClient)
        return {};
    return RefuseRolledBack();
}

void ConnectionTransaction::Lose(StoreError const& error, qint64 changesBefore)
{
    RollBack(*std::exchange(_handle, nullptr));
    if (_state == State::Client) {
        _state = State::LostClient;
        return;
    }
    _state = State::None;
    TransactionalScope::Leave(*this);
    std::shared_ptr<void> const owner = std::move(_scopeOwner);
    if (changesBefore == _changesAtBegin)
        return; // no write has returned true
    StoreError lost = error;
    lost.text += QStringLiteral("; what was written before it in the same scope is lost");
    _errors.RecordLostWrites(lost);
}

bool ConnectionTransaction::CommitScope() noexcept
{
    std::shared_ptr<void> const owner = std::move(_scopeOwner);
    TransactionHandle& handle = *std::exchange(_handle, nullptr);
    _state = State::None;

    Failure failure = Commit(handle);
    if (!failure)
        return true;
    if (handle.changes() == _changesAtBegin) {
        _errors.Record(*failure);
        return false;
    }
    if (failure->kind != StoreErrorKind::OutcomeUnknown)
        failure->text += QStringLiteral("; what was written in the scope is lost");
    _errors.RecordLostWrites(*failure);
    return false;
}

void ConnectionTransaction::CommitAbandonedScope() noexcept
{
    if (_state != State::Scope)
        return;
    TransactionalScope::Leave(*this);
    static_cast<void>(CommitScope()); // reports its failure itself
}

/// Rolls back on failure.
Failure ConnectionTransaction::Commit(TransactionHandle& handle)
{
    if (Failure failure = handle.CheckWritable()) {
        RollBack(handle);
        return failure;
    }
    Failure failure = handle.Commit();
    if (failure)
        TransactionalScope::CountRollback();
    return failure;
}

void ConnectionTransaction::RollBack(TransactionHandle& handle) noexcept
{
    handle.RollBack();
    TransactionalScope::CountRollback();
}

Failure ConnectionTransaction::RefuseRolledBack() const
{
    return _store.Refuse(Refusal::RolledBack, QStringLiteral("an earlier failure rolled the transaction back"));
}

} // namespace sync::database
