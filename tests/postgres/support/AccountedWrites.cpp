#include "postgres/support/AccountedWrites.h"

#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/Queries.h"

#include <algorithm>
#include <utility>

namespace tandry::test {

using namespace sync::database;

AccountedWrites::AccountedWrites(std::shared_ptr<PostgresDatabaseFactory> store)
    : _store(std::move(store))
    , _connection(QObject::connect(
          _store.get(), &StoreFactory::CommitFailed, [this](StoreError const& lost) { _lost.push_back(lost); }))
{}

AccountedWrites::~AccountedWrites()
{
    QObject::disconnect(_connection);
}

/// The writes share what becomes of them.
void AccountedWrites::Settle(QStringList const& aliases, bool worked)
{
    auto const isUnknown = [](StoreError const& error) { return error.kind == StoreErrorKind::OutcomeUnknown; };
    auto const error = _store->LastError();
    bool const nobodyKnows = (error && isUnknown(*error)) || std::any_of(_lost.begin(), _lost.end(), isUnknown);
    QSet<QString>& place = worked ? _kept : (nobodyKnows ? _unknown : _failed);
    for (QString const& alias : aliases)
        place.insert(alias);
    _store->ClearError();
    _lost.clear();
}

void AccountedWrites::RunScript(QString const& prefix)
{
    QString const alone = prefix + QStringLiteral("alone");
    Settle({alone}, AddServer(*_store, alone));
    static_cast<void>(CountServers(*_store));
    _store->ClearError();
    WriteScope(prefix);
    WriteClientTransaction(prefix);
    QString const last = prefix + QStringLiteral("last");
    Settle({last}, AddServer(*_store, last));
}

/// A scope whose connection is lost goes on with a new transaction, so each write is told apart.
void AccountedWrites::WriteScope(QString const& prefix)
{
    QStringList written;
    auto const settleIfLost = [&] {
        if (_lost.empty())
            return;
        Settle(written, false);
        written.clear();
    };
    {
        TransactionalScope const scope;
        for (QString const& alias : {prefix + QStringLiteral("scope1"), prefix + QStringLiteral("scope2")}) {
            bool const added = AddServer(*_store, alias);
            settleIfLost();
            if (added)
                written.append(alias);
            else
                Settle({alias}, false);
            static_cast<void>(CountServers(*_store));
            settleIfLost();
        }
        _store->ClearError();
    }
    Settle(written, _lost.empty());
}

void AccountedWrites::WriteClientTransaction(QString const& prefix)
{
    QStringList const aliases{prefix + QStringLiteral("client1"), prefix + QStringLiteral("client2")};
    auto const database = _store->CreateDatabase();
    bool worked = database->transaction();
    if (worked) {
        for (QString const& alias : aliases)
            worked = AddServer(*_store, alias) && worked;
        if (worked)
            worked = database->commit();
        else
            static_cast<void>(database->rollback());
    }
    Settle(aliases, worked);
}

QStringList AccountedWrites::Lies(QStringList const& onServer) const
{
    QSet<QString> const found(onServer.begin(), onServer.end());
    QStringList lies;
    for (QString const& alias : _kept - found)
        lies.append(alias + QStringLiteral(" was told as done and is not there"));
    for (QString const& alias : _failed& found)
        lies.append(alias + QStringLiteral(" was told as failed and is there"));
    for (QString const& alias : found - _kept - _failed - _unknown)
        lies.append(alias + QStringLiteral(" was never written"));
    if (found.size() != onServer.size())
        lies.append(QStringLiteral("a record is there twice"));
    return lies;
}

} // namespace tandry::test
