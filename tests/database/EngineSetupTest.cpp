#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

namespace {

using namespace tandry::test;

using EngineSetup = StoreFixture;

TEST_F(EngineSetup, StatisticsOfMemoryAreOffWhereTheLibraryWasLoadedFirst)
{
    EXPECT_TRUE(Execute(*store, "SELECT * FROM ServerConfiguration"_q));
    EXPECT_EQ(sqlite3_memory_used(), 0);
}

} // namespace
