#include "database/SqliteConnection.h"

#include "database/SqliteStore.h"
#include "database/TransactionalScope.h"
#include "database/sqlite/ErrorTexts.h"

#include <algorithm>
#include <utility>

namespace sync::database {

SqliteConnection::SqliteConnection(std::shared_ptr<SqliteStore> const& store)
    : StoreConnection(store)
    , _store(store.get())
{}

SqliteConnection::~SqliteConnection()
{
    CloseReplacedHandles();
    // Does not wait for locks while the store is open: the next connection that is closed tries again.
    if (_handle != nullptr && !_store->isReadOnly())
        _handle->EraseSecrets(_store->isClosed());
}

Failure SqliteConnection::Open()
{
    return OpenFor(OpenPurpose::Connection);
}

Failure SqliteConnection::OpenFirst()
{
    return OpenFor(OpenPurpose::FirstConnection);
}

Failure SqliteConnection::OpenFor(OpenPurpose purpose)
{
    if (Failure failure = CheckThread())
        return failure;
    CloseReplacedHandles();
    if (_handle != nullptr) {
        // A file that was opened as immutable is opened again after another program has written to it.
        if (_handle->isUsable() && _handle->store().IsUnchanged())
            return {};
        if (_handle->statements().hasLeases())
            _replacedHandles.push_back(std::move(_handle));
        _handle.reset();
    }
    auto handle = std::make_unique<ConnectionHandle>(
        _store->file(), _store->options(), _store->secretErasure(), *_store->ownCommits());
    Failure failure = handle->Open(purpose, _store->access());
    if (!failure)
        failure = _store->CheckIdentity(handle->store());
    if (!failure)
        _handle = std::move(handle);
    return failure;
}

void SqliteConnection::CloseReplacedHandles() noexcept
{
    auto const isFree = [](auto const& handle) { return !handle->statements().hasLeases(); };
    _replacedHandles.erase(std::remove_if(_replacedHandles.begin(), _replacedHandles.end(), isFree),
                           _replacedHandles.end());
}

Failure SqliteConnection::OpenForSnapshot()
{
    if (Failure failure = Open())
        return failure;
    if (transaction().state() != ConnectionTransaction::State::None)
        return Refuse(SQLITE_MISUSE,
                      QStringLiteral("this thread has a transaction or a scope open that is not committed"));
    return _handle->store().CheckUnmoved();
}

/// A statement of a replaced handle must neither write past the new handle nor show what was rolled back.
Failure SqliteConnection::CheckStatement(PreparedStatement const& statement) const
{
    Failure failure = CheckThread();
    bool const isOutdated =
        _handle == nullptr || !_handle->isUsable() || (!_store->isReadOnly() && !_handle->Owns(statement));
    if (!failure && isOutdated)
        failure = Refuse(SQLITE_ABORT_ROLLBACK,
                         QStringLiteral("the statement was prepared before a failure and must be prepared anew"));
    if (failure)
        failure->statement = statement.text();
    return failure;
}

/// A store that is opened as immutable must not change meanwhile: the rows read must belong to one committed state.
Failure SqliteConnection::CheckRead(PreparedStatement const& statement) const
{
    if (!_store->isReadOnly() || (_handle->Owns(statement) && _handle->store().IsUnchanged()))
        return {};
    return Refuse(SQLITE_BUSY_SNAPSHOT, QStringLiteral("the store was changed while it was being read"), &statement);
}

Failure SqliteConnection::Prepare(QString const& text, StatementLease& statement)
{
    statement.reset();
    if (Failure failure = Open()) {
        failure->statement = text;
        return failure;
    }
    StatementError error;
    statement = _handle->statements().Take(_handle->store().get(), text, error);
    if (statement != nullptr)
        return {};
    if (error.words.isEmpty())
        return _handle->store().Describe(error.code, text, true); // SQLite's message: no value is bound yet
    return MakeError(_store->file().path(), error.code, error.words, text);
}

Failure SqliteConnection::Run(PreparedStatement& statement, RunResult& result)
{
    result = {};
    if (Failure failure = CheckStatement(statement))
        return failure;
    if (!statement.isReading())
        return Write(statement, result);
    statement.NoteLogPosition(_handle->logLimit().position());
    return ReadRow(statement, result.hasRow);
}

Failure SqliteConnection::Advance(PreparedStatement& statement, bool& hasRow)
{
    hasRow = false;
    if (Failure failure = CheckStatement(statement))
        return failure;
    if (!transaction().isOpen() && _handle->logLimit().EndsReader(statement.logPosition())) {
        statement.Reset();
        return Refuse(
            SQLITE_BUSY_SNAPSHOT,
            QStringLiteral("the log has reached its limit while this query was read, so it must be run again"),
            &statement);
    }
    return ReadRow(statement, hasRow);
}

Failure SqliteConnection::ReadRow(PreparedStatement& statement, bool& hasRow)
{
    int const code = statement.Step();
    if (code == SQLITE_ROW || code == SQLITE_DONE) {
        hasRow = code == SQLITE_ROW;
        Failure failure = CheckRead(statement);
        if (failure)
            statement.Reset();
        return failure;
    }
    Failure failure = _handle->Describe(code, &statement);
    if (transaction().isOpen() && !_handle->isInTransaction())
        transaction().Lose(*failure, _handle->changes());
    return failure;
}

/// Checks that the connection may write, and begins the transaction of an open scope.
Failure SqliteConnection::PrepareToWrite()
{
    if (Failure failure = CheckNotReadOnly())
        return failure;
    if (Failure failure = transaction().CheckWritable())
        return failure;
    // In a transaction the log and its index were checked at the begin, and will be at the commit.
    if (transaction().isOpen())
        return _handle->store().CheckFileWritable();
    if (Failure failure = _handle->store().CheckWritable())
        return failure;
    return TransactionalScope::Depth() > 0 ? transaction().BeginScope(*_handle, shared_from_this()) : Failure();
}

Failure SqliteConnection::Write(PreparedStatement& statement, RunResult& result)
{
    if (Failure failure = PrepareToWrite()) {
        failure->statement = statement.text();
        return failure;
    }
    if (!transaction().isOpen())
        return WriteAlone(statement, result);
    qint64 const changesBefore = _handle->changes();
    int code = _handle->Write(statement, result);
    bool const isWritten = code == SQLITE_OK;
    // A scope writes its pages to the log at once, so that a full disk shows here and not when the scope ends. A client
    // transaction does not need that, since its commit returns a result. A journal does not allow it: it would lock
    // out all readers, and a thread that fills a cached listing holds the lock that this thread needs to clear it.
    if (isWritten && transaction().state() == ConnectionTransaction::State::Scope && _handle->hasLog())
        code = _handle->FlushToLog();
    if (code == SQLITE_OK)
        return {};

    result = {};
    Failure failure = _handle->Describe(code, &statement);
    if (isWritten || !_handle->isInTransaction())
        transaction().Lose(*failure, changesBefore);
    return failure;
}

/// A statement outside of any transaction gets one of its own, so that a failed commit is looked into here too.
Failure SqliteConnection::WriteAlone(PreparedStatement& statement, RunResult& result)
{
    Failure failure = _handle->Begin();
    if (failure) {
        failure->statement = statement.text();
        return failure;
    }
    if (int const code = _handle->Write(statement, result); code == SQLITE_OK) {
        failure = _handle->Commit();
    }
    else {
        failure = _handle->Describe(code, &statement);
        _handle->RollBack();
    }
    if (!failure)
        return {};
    result = {};
    failure->statement = statement.text();
    return failure;
}

StoreError SqliteConnection::Describe(StatementError const& error, PreparedStatement const& statement) const
{
    QString const& path = _store->file().path();
    return error.words.isEmpty() ? DescribeError(nullptr, error.code, path, statement.text())
                                 : MakeError(path, error.code, error.words, statement.text());
}

Failure SqliteConnection::Refuse(int code, QString const& words, PreparedStatement const* statement) const
{
    return MakeError(_store->file().path(), code, words, statement != nullptr ? statement->text() : QString());
}

} // namespace sync::database
