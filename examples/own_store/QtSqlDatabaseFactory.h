#pragma once

#include "interf/IDatabaseFactory.h"

#include <QString>

#include <memory>

namespace own_store {

class QtSqlConnection;

/// A minimal store over Qt SQL, which passes the store suite. It shares no code with the project's own store, so that
/// the suite does not test peculiarities of that one.
///
/// For one thread. It stores dates as ISO texts and prepares a statement for each query; the file is an SQLite database
/// with SQLite's default settings.
class QtSqlDatabaseFactory : public sync::interf::factory::IDatabaseFactory
{
public:
    /// Opens the file, and creates the tables if there are none. Returns null on failure.
    static std::shared_ptr<QtSqlDatabaseFactory> Open(QString const& path);

    /// Rolls back an open client transaction and commits an open scope.
    ~QtSqlDatabaseFactory() override;

    std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> CreateDatabase() override;
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() override;

private:
    explicit QtSqlDatabaseFactory(std::shared_ptr<QtSqlConnection> connection);

    std::shared_ptr<QtSqlConnection> _connection;
};

} // namespace own_store
