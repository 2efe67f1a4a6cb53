#pragma once

#include "database/store/StoreConnection.h"
#include "postgres/ServerHandle.h"

#include <memory>
#include <unordered_map>

namespace sync::database {

class PostgresStore;

/// A thread's connection to the server, opened at its first use and again after it was lost.
class PostgresConnection : public StoreConnection
{
public:
    explicit PostgresConnection(std::shared_ptr<PostgresStore> const& store);
    ~PostgresConnection() override;

    Failure Open() override;
    /// Of an open connection.
    ServerHandle& handle() { return *_handle; }
    PostgresStore const& postgresStore() const { return *_store; }

    /// Sets the statement to null on failure. Outside of transactions it tries once more if the connection was lost.
    Failure Prepare(QString const& text, std::shared_ptr<StatementText const>& statement);
    /// Runs a statement. One that writes begins the transaction of an open scope; if it fails, it has changed nothing.
    Failure Run(StatementText const& statement, BoundValues const& values, Result& result);
    /// Switches the profile's notices on or off, in a transaction of its own.
    Failure SetNotices(bool on);
    /// Fails on another thread than the connection's, and after the store has been closed.
    Failure CheckUse(StatementText const& statement) const;

private:
    TransactionHandle& transactionHandle() override { return *_handle; }
    std::shared_ptr<StatementText const> TextOf(QString const& text, QString& words);
    Failure Read(StatementText const& statement, BoundValues const& values, Result& result);
    Failure Write(StatementText const& statement, BoundValues const& values, Result& result);
    Failure WriteFirst(StatementText const& statement, BoundValues const& values, Result& result);
    void LoseTransactionWithConnection(StoreError const& error);

    /// Kept alive by the base.
    PostgresStore* const _store;
    std::unique_ptr<ServerHandle> _handle;
    std::unordered_map<QString, std::shared_ptr<StatementText const>> _texts;
};

} // namespace sync::database
