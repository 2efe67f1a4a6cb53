#pragma once

#include "interf/IDatabaseFactory.h"

#include <QString>

#include <memory>

namespace tandry::test {

class QtSqlConnection;

/// A store over Qt SQL: the least that the interfaces ask for, by other means than the SQLite store's, so that nothing
/// which both keep can be an accident of the one.
///
/// For one thread. Dates are kept as ISO texts, statements are prepared for each query, and the file is an SQLite
/// database by the engine's own defaults.
class QtSqlDatabaseFactory : public sync::interf::factory::IDatabaseFactory
{
public:
    /// Opens the file and makes the tables where there are none; null when that fails.
    static std::shared_ptr<QtSqlDatabaseFactory> Open(QString const& path);

    /// Takes back an open bracket; what an open scope wrote stays.
    ~QtSqlDatabaseFactory() override;

    std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> CreateDatabase() override;
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() override;

private:
    explicit QtSqlDatabaseFactory(std::shared_ptr<QtSqlConnection> connection);

    std::shared_ptr<QtSqlConnection> _connection;
};

} // namespace tandry::test
