#include "database/ConnectionTransaction.h"

#include "database/ConnectionHandle.h"
#include "database/ThreadErrors.h"
#include "database/TransactionalScope.h"
#include "database/sqlite/ErrorTexts.h"

#include <utility>

namespace sync::database {

ConnectionTransaction::ConnectionTransaction(StoreFile const& file, ThreadErrors& errors)
    : _file(file)
    , _errors(errors)
{}

ConnectionTransaction::~ConnectionTransaction()
{
    if (isOpen()) // SQLite rolls it back when the handle is closed
        TransactionalScope::CountRollback();
}

Failure ConnectionTransaction::BeginScope(ConnectionHandle& handle, std::shared_ptr<void> owner)
{
    if (Failure failure = handle.Begin())
        return failure;
    _state = State::Scope;
    _handle = &handle;
    _changesAtBegin = handle.changes();
    _scopeOwner = std::move(owner);
    TransactionalScope::Join(*this);
    return {};
}

Failure ConnectionTransaction::BeginClient(ConnectionHandle& handle)
{
    if (_state == State::Client || _state == State::LostClient)
        return Refuse(SQLITE_MISUSE, QStringLiteral("a transaction is open already"));
    if (TransactionalScope::Depth() > 0)
        return Refuse(SQLITE_MISUSE, QStringLiteral("a transaction can't be opened inside a scope"));
    if (Failure failure = handle.store().CheckWritable())
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
        return Refuse(SQLITE_MISUSE, QStringLiteral("no transaction is open"));
    if (std::exchange(_state, State::None) == State::LostClient)
        return Refuse(SQLITE_ABORT_ROLLBACK, QStringLiteral("an earlier failure rolled the transaction back"));
    return Commit(*std::exchange(_handle, nullptr));
}

Failure ConnectionTransaction::RollBackClient()
{
    if (_state != State::Client && _state != State::LostClient)
        return Refuse(SQLITE_MISUSE, QStringLiteral("no transaction is open"));
    if (std::exchange(_state, State::None) == State::Client)
        RollBack(*std::exchange(_handle, nullptr));
    return {};
}

Failure ConnectionTransaction::CheckWritable() const
{
    if (_state != State::LostClient)
        return {};
    return Refuse(SQLITE_ABORT_ROLLBACK, QStringLiteral("an earlier failure rolled the transaction back"));
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
    ConnectionHandle& handle = *std::exchange(_handle, nullptr);
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
Failure ConnectionTransaction::Commit(ConnectionHandle& handle)
{
    if (Failure failure = handle.store().CheckWritable()) {
        RollBack(handle);
        return failure;
    }
    Failure failure = handle.Commit();
    if (failure)
        TransactionalScope::CountRollback();
    return failure;
}

void ConnectionTransaction::RollBack(ConnectionHandle& handle) noexcept
{
    handle.RollBack();
    TransactionalScope::CountRollback();
}

Failure ConnectionTransaction::Refuse(int code, QString const& words) const
{
    return MakeError(_file.path(), code, words);
}

} // namespace sync::database
