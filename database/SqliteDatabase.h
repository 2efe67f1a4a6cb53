#pragma once

#include "database/SqliteConnection.h"
#include "interf/IQSqlDatabaseWrapper.h"

#include <memory>

namespace sync::database {

/// The bracket of a thread's connection. It belongs to the connection: any object of the same thread may end it.
class SqliteDatabase : public sync::interf::IQSqlDatabaseWrapper
{
    Q_OBJECT

public:
    /// Without a connection every operation fails.
    explicit SqliteDatabase(std::shared_ptr<SqliteConnection> connection);
    ~SqliteDatabase() override;

    bool isOpen() override;
    QString lastError() override;
    bool transaction() override;
    bool commit() override;
    bool rollback() override;

private:
    bool Answer(Failure (SqliteConnection::*operation)());

    std::shared_ptr<SqliteConnection> _connection;
    QString _lastError;
};

} // namespace sync::database
