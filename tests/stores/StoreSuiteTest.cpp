#include "storesuite/StoreSuite.h"
#include "database/SqliteDatabaseFactory.h"
#include "own_store/QtSqlDatabaseFactory.h"

#include <QTemporaryDir>

namespace {

using sync::database::JournalMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using tandry::storesuite::IDatabaseFactory;

/// A store in a temporary folder.
class FileStore : public tandry::storesuite::StoreUnderTest
{
protected:
    QString Path() const { return _folder.filePath(QStringLiteral("store.db")); }

private:
    QTemporaryDir _folder;
};

class SqliteStore : public FileStore
{
public:
    explicit SqliteStore(JournalMode journalMode) { _options.journalMode = journalMode; }

    std::shared_ptr<IDatabaseFactory> Open() override
    {
        auto factory = SqliteDatabaseFactory::Open(Path(), nullptr, _options);
        EXPECT_TRUE(factory == nullptr || factory->journalMode() == _options.journalMode);
        return factory;
    }

private:
    OpenOptions _options = [] {
        OpenOptions options;
        options.busyTimeoutMsec = 50; // longer waits are for this same thread
        return options;
    }();
};

class QtSqlStore : public FileStore
{
public:
    std::shared_ptr<IDatabaseFactory> Open() override { return own_store::QtSqlDatabaseFactory::Open(Path()); }
};

} // namespace

TANDRY_STORE_SUITE(SqliteWithLog, [] { return std::make_unique<SqliteStore>(JournalMode::WriteAheadLog); });
TANDRY_STORE_SUITE(SqliteWithJournal, [] { return std::make_unique<SqliteStore>(JournalMode::Rollback); });
TANDRY_STORE_SUITE(QtSql, [] { return std::make_unique<QtSqlStore>(); });
