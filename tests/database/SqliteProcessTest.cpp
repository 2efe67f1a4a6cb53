#include "database/SqliteProcess.h"
#include "support/ChildProcess.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

namespace {

using namespace tandry::test;
using sync::database::DisableSqliteMemoryStatistics;
using sync::database::SqliteDatabaseFactory;

/// A process in which SQLite has not been used yet.
class SqliteProcess : public testing::Test
{
protected:
    int InNewProcess(std::function<bool()> const& holds)
    {
        return InChildProcess([&] { return sqlite3_shutdown() == SQLITE_OK && holds() ? 0 : 1; });
    }

    bool Write()
    {
        auto const store = SqliteDatabaseFactory::Open(folder.filePath("store.db"_q));
        return store != nullptr && AddServer(*store, "a"_q) && CountServers(*store) > 0;
    }

    static bool CountsMemory()
    {
        sqlite3_int64 const before = sqlite3_memory_used();
        void* const memory = sqlite3_malloc(1000);
        bool const isCounted = sqlite3_memory_used() >= before + 1000;
        sqlite3_free(memory);
        return isCounted;
    }

    QTemporaryDir folder;
};

TEST_F(SqliteProcess, HasMemoryStatisticsUntilTheProgramTurnsThemOff)
{
    EXPECT_EQ(InNewProcess([&] { return Write() && CountsMemory(); }), 0);
}

TEST_F(SqliteProcess, HasNoMemoryStatisticsAfterTheCall)
{
    EXPECT_EQ(InNewProcess([&] { return DisableSqliteMemoryStatistics() && Write() && !CountsMemory(); }), 0);
}

TEST_F(SqliteProcess, CallAfterTheFirstUseSaysThatItTookNoEffect)
{
    EXPECT_EQ(InNewProcess([&] { return Write() && !DisableSqliteMemoryStatistics() && Write() && CountsMemory(); }),
              0);
}

} // namespace
