#pragma once

#include "database/store/StoreConnection.h"
#include "interf/IQSqlDatabaseWrapper.h"

#include <memory>

namespace sync::database {

/// The client transaction of a thread's connection. The transaction belongs to the connection: any object of the same
/// thread may end it.
class StoreDatabase : public sync::interf::IQSqlDatabaseWrapper
{
    Q_OBJECT

public:
    explicit StoreDatabase(std::shared_ptr<Store> store);
    ~StoreDatabase() override;

    bool isOpen() override;
    QString lastError() override;
    bool transaction() override;
    bool commit() override;
    bool rollback() override;

private:
    bool Run(Failure (StoreConnection::*operation)());

    std::shared_ptr<Store> const _store;
    /// Null on a thread that is ending.
    std::shared_ptr<StoreConnection> const _connection;
    QString _lastError;
};

} // namespace sync::database
