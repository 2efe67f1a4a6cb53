#include "postgres/PostgresConnection.h"

#include "database/TransactionalScope.h"
#include "postgres/PostgresStore.h"
#include "postgres/ServerErrors.h"

#include <utility>

namespace sync::database {

namespace {

/// As many as the server keeps prepared for a connection.
constexpr std::size_t KeptTexts = 160;

} // namespace

PostgresConnection::PostgresConnection(std::shared_ptr<PostgresStore> const& store)
    : StoreConnection(store)
    , _store(store.get())
{}

PostgresConnection::~PostgresConnection() = default;

Failure PostgresConnection::Open()
{
    if (Failure failure = CheckThread())
        return failure;
    if (_handle != nullptr && _handle->isUsable())
        return {};
    _handle.reset();
    auto handle = std::make_unique<ServerHandle>(_store->address(), _store->options());
    Failure failure = handle->Open();
    if (!failure)
        failure = _store->CheckHandle(*handle);
    if (!failure)
        _handle = std::move(handle);
    return failure;
}

Failure PostgresConnection::CheckUse(StatementText const& statement) const
{
    Failure failure = CheckThread();
    if (failure)
        failure->statement = statement.text();
    return failure;
}

std::shared_ptr<StatementText const> PostgresConnection::TextOf(QString const& text, QString& words)
{
    auto const found = _texts.find(text);
    if (found != _texts.end())
        return found->second;
    std::shared_ptr<StatementText const> made = StatementText::Make(text, words);
    if (made == nullptr)
        return nullptr;
    if (_texts.size() >= KeptTexts)
        _texts.clear();
    _texts.emplace(made->text(), made);
    return made;
}

Failure PostgresConnection::Prepare(QString const& text, std::shared_ptr<StatementText const>& statement)
{
    statement.reset();
    if (Failure failure = Open()) {
        failure->statement = text;
        return failure;
    }
    QString words;
    std::shared_ptr<StatementText const> made = TextOf(text, words);
    if (made == nullptr)
        return MakeServerError(ServerState::Syntax, _handle->name() + QStringLiteral(": ") + words, text);
    bool const mayRepeat = !transaction().isOpen();
    Failure failure = _handle->Prepare(*made);
    if (failure)
        LoseTransactionWithConnection(*failure);
    if (failure && mayRepeat && !_handle->isUsable()) {
        failure = Open();
        if (!failure)
            failure = _handle->Prepare(*made);
    }
    if (!failure)
        statement = std::move(made);
    else
        failure->statement = text;
    return failure;
}

Failure PostgresConnection::Run(StatementText const& statement, BoundValues const& values, Result& result)
{
    result.reset();
    Failure failure = CheckUse(statement);
    if (!failure)
        failure = Open();
    if (!failure)
        failure = statement.isReading() ? Read(statement, values, result) : Write(statement, values, result);
    if (failure)
        failure->statement = statement.text();
    return failure;
}

/// Outside of transactions a read on a connection that was lost is repeated once on a new one.
Failure PostgresConnection::Read(StatementText const& statement, BoundValues const& values, Result& result)
{
    bool const mayRepeat = !transaction().isOpen();
    Failure failure = _handle->Run(statement, values, result);
    if (failure)
        LoseTransactionWithConnection(*failure);
    if (!failure || !mayRepeat || _handle->isUsable())
        return failure;
    if (Failure again = Open())
        return again;
    return _handle->Run(statement, values, result);
}

Failure PostgresConnection::Write(StatementText const& statement, BoundValues const& values, Result& result)
{
    if (Failure failure = CheckNotReadOnly())
        return failure;
    if (Failure failure = transaction().CheckWritable())
        return failure;
    if (!transaction().isOpen())
        return WriteFirst(statement, values, result);
    Failure failure = _handle->Run(statement, values, result);
    if (failure)
        LoseTransactionWithConnection(*failure);
    return failure;
}

/// The first statement of a scope, or one outside of all, which is committed at once. Waits for the other writers of
/// the profile.
Failure PostgresConnection::WriteFirst(StatementText const& statement, BoundValues const& values, Result& result)
{
    qint64 const changesBefore = _handle->changes();
    if (Failure failure = _handle->BeginWith(statement, values, result))
        return failure;
    if (TransactionalScope::Depth() == 0)
        return _handle->Commit();
    transaction().JoinScope(*_handle, changesBefore, shared_from_this());
    return {};
}

Failure PostgresConnection::SetNotices(bool on)
{
    if (Failure failure = Open())
        return failure;
    if (Failure failure = CheckNotReadOnly())
        return failure;
    if (transaction().isOpen() || TransactionalScope::Depth() > 0)
        return _store->Refuse(Refusal::Misuse,
                              QStringLiteral("notices can't be switched inside a scope or a transaction"));
    if (Failure failure = _handle->Begin())
        return failure;
    Failure failure = PostgresSchema(*_handle, _store->address()).SetNotices(on);
    if (failure)
        _handle->RollBack();
    else
        failure = _handle->Commit();
    return failure;
}

/// A failed statement undoes itself only, unless the connection is lost with it.
void PostgresConnection::LoseTransactionWithConnection(StoreError const& error)
{
    if (transaction().isOpen() && !_handle->isUsable())
        transaction().Lose(error, _handle->changes());
}

} // namespace sync::database
