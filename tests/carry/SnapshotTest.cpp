#include "tools/carry/Snapshot.h"

#include "database/SqliteDatabaseFactory.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;
using sync::database::StoreErrorKind;
using tandry::carry::Snapshot;

namespace {

class SnapshotTest : public testing::Test
{
protected:
    /// Opens a store that waits for no lock.
    std::shared_ptr<SqliteDatabaseFactory> Open() const
    {
        StoreError error;
        sync::database::OpenOptions options;
        options.busyTimeoutMsec = 0;
        auto store = SqliteDatabaseFactory::Open(path, error, options);
        EXPECT_NE(store, nullptr) << error.text.toStdString();
        return store;
    }

    QTemporaryDir const folder;
    QString const path = folder.filePath("store.db"_q);
};

} // namespace

TEST_F(SnapshotTest, HasTheRowsOfItsMoment)
{
    auto const store = Open();
    StoreError error;
    auto const snapshot = Snapshot::Take(*store, error);
    ASSERT_NE(snapshot, nullptr) << error.text.toStdString();
    RawStore(path).Run("DELETE FROM Schedules"_q);
    EXPECT_EQ(RawStore(snapshot->store()->path()).Count("Schedules"_q), 1);
}

TEST_F(SnapshotTest, OfALockedStoreFailsWithTheLockAsTheReason)
{
    Open();
    RawStore(path).Run("PRAGMA journal_mode = DELETE"_q);
    auto const store = Open();
    RawStore other(path);
    other.Run("BEGIN EXCLUSIVE"_q);
    StoreError error;
    EXPECT_EQ(Snapshot::Take(*store, error), nullptr);
    EXPECT_EQ(error.kind, StoreErrorKind::Locked) << error.text.toStdString();
}
