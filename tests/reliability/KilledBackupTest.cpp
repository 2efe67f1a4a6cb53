#include "database/SqliteDatabaseFactory.h"
#include "support/ChildProcess.h"
#include "support/FaultyFiles.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QFileInfo>
#include <QTemporaryDir>

#include <csignal>

namespace {

using namespace tandry::test;
using sync::database::JournalMode;
using sync::database::SqliteDatabaseFactory;

class KilledBackup : public testing::TestWithParam<JournalMode>
{};

TEST_P(KilledBackup, LeavesACompleteCopyOrNoneAndTheStoreUnchanged)
{
    int kills = 0;
    int end = -SIGKILL;
    for (int step = 1; end == -SIGKILL; ++step) {
        SCOPED_TRACE(step);
        QTemporaryDir const folder;
        QString const path = folder.filePath("store.db"_q);
        QString const copy = folder.filePath("copy.db"_q);
        ReleasedStore{2, GetParam()}.CopyTo(path);
        end = InChildProcess([&] {
            FaultyFiles files;
            auto const store = SqliteDatabaseFactory::Open(path);
            files.Fail(step,
                       SQLITE_OK,
                       {FileOperation::Open,
                        FileOperation::Write,
                        FileOperation::Truncate,
                        FileOperation::Sync,
                        FileOperation::Delete});
            files.WatchFailure(Crash);
            if (store == nullptr || !store->Backup(copy))
                return 1;
            files.Recover();
            return 0;
        });
        kills += end == -SIGKILL ? 1 : 0;

        QString error;
        ASSERT_NE(SqliteDatabaseFactory::Open(path, &error), nullptr) << error.toStdString();
        EXPECT_EQ(QFileInfo::exists(copy), end == 0);
        if (end != 0)
            continue;
        ASSERT_NE(SqliteDatabaseFactory::Open(copy, &error), nullptr) << error.toStdString();
        RawStore raw(path);
        RawStore rawCopy(copy);
        EXPECT_EQ(RowsOf(rawCopy), RowsOf(raw));
    }
    EXPECT_EQ(end, 0);
    EXPECT_GT(kills, 20);
}

INSTANTIATE_TEST_SUITE_P(Each,
                         KilledBackup,
                         testing::Values(JournalMode::WriteAheadLog, JournalMode::Rollback),
                         [](auto const& parameter) {
                             return parameter.param == JournalMode::WriteAheadLog ? "Log" : "Journal";
                         });

} // namespace
