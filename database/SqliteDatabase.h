#pragma once

#include "database/SqliteConnection.h"
#include "interf/IQSqlDatabaseWrapper.h"

#include <memory>

namespace sync::database {

/// The client transaction of a thread's connection. The transaction belongs to the connection: any object of the same
/// thread may end it.
class SqliteDatabase : public sync::interf::IQSqlDatabaseWrapper
{
    Q_OBJECT

public:
    /// Every operation fails if the connection is null.
    explicit SqliteDatabase(std::shared_ptr<SqliteConnection> connection);
    ~SqliteDatabase() override;

    bool isOpen() override;
    QString lastError() override;
    bool transaction() override;
    bool commit() override;
    bool rollback() override;

private:
    bool Run(Failure (SqliteConnection::*operation)());

    std::shared_ptr<SqliteConnection> _connection;
    QString _lastError;
};

} // namespace sync::database
