#include "support/FakeClock.h"
#include "support/FolderManagerFixture.h"

namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using FolderRefreshTest = FolderEventsTest;

TEST_F(FolderRefreshTest, OnePathIsHandedOnAsItIs)
{
    for (QString path : {"/r/a"_q, ""_q, "\"\n\U0001F4C1"_q, QString()}) {
        QString const before = path;
        refresh->paths.clear();
        manager.RefreshNativeFileViewer(path);
        ASSERT_THAT(refresh->paths, SizeIs(1));
        EXPECT_EQ(refresh->paths[0], before);
        EXPECT_EQ(refresh->paths[0].isNull(), before.isNull());
        EXPECT_EQ(path, before);
    }
    EXPECT_EQ(store->QueriesCreated(), 0);
}

TEST_F(FolderRefreshTest, AllRootsAreReadFromTheStoreAndHandedOnOneByOne)
{
    PlayFolders({{2, Folder("/b"_q)}, {1, Folder("/a"_q)}});
    logged.RefreshNativeFileViewer();
    EXPECT_THAT(events.Take(),
                ElementsAre("RefreshNativeFileViewer @0"_q,
                            "exec SelectRoots @0"_q,
                            "RefreshNativeFileViewer /b @0"_q,
                            "shell /b @0"_q,
                            "RefreshNativeFileViewer /a @0"_q,
                            "shell /a @0"_q));
}

TEST_F(FolderRefreshTest, AllRootsAreThoseOfTheMomentDespiteAFreshCache)
{
    FakeClock const clock;
    PlayFolders({{1, Folder("/old"_q)}});
    manager.GetAllRootFolders();
    PlayFolders({{1, Folder("/old"_q)}, {2, Folder("/new"_q)}});
    manager.RefreshNativeFileViewer();
    EXPECT_THAT(refresh->paths, ElementsAre("/old"_q, "/new"_q));

    // And the cache is left as it was.
    store->Forget();
    EXPECT_THAT(manager.GetAllRootFolders(), SizeIs(1));
    EXPECT_THAT(store->Executions(), IsEmpty());
}

TEST_F(FolderRefreshTest, FailingListingRefreshesNothing)
{
    store->FailExec(1);
    manager.RefreshNativeFileViewer();
    EXPECT_THAT(refresh->paths, IsEmpty());
}

TEST_F(FolderRefreshTest, NullObjectStillReadsTheRootsAndIsNotCalled)
{
    FolderConfigManager quiet(store, nullptr);
    PlayFolders({{1, Folder("/r"_q)}});
    quiet.RefreshNativeFileViewer();
    EXPECT_THAT(store->Statements(), ElementsAre(folder_texts::SelectRoots));

    store->Forget();
    QString path = "/r"_q;
    quiet.RefreshNativeFileViewer(path);
    EXPECT_THAT(store->Statements(), IsEmpty());
}

TEST_F(FolderRefreshTest, UpdateOfAFreshRecordRefreshesOnlyOnceItsStatusIsSet)
{
    PlayFolders({{1, DistinctFolder()}});
    FolderConfiguration folder = manager.GetFolderConfigurationById(1);
    folder.setName("other"_q);
    folder.setClientPath("/moved"_q);
    folder.setFolderOption(SynchronizationFolderOption(2));
    folder.setLastSyncTime(QDateTime(QDate(2024, 1, 1), QTime(0, 0)));
    EXPECT_TRUE(manager.Update(folder));
    EXPECT_THAT(refresh->paths, IsEmpty());

    folder.setSyncStatus(folder.getSyncStatus());
    EXPECT_TRUE(manager.Update(folder));
    EXPECT_THAT(refresh->paths, ElementsAre("/moved"_q));
}

TEST_F(FolderRefreshTest, StatusWrittenByNameRefreshesToo)
{
    PlayFolders({{1, Folder("/r"_q)}});
    FolderConfiguration folder = manager.GetFolderConfigurationById(1);
    EXPECT_TRUE(folder.setProperty("SyncStatus", 1));
    EXPECT_TRUE(manager.Update(folder));
    EXPECT_THAT(refresh->paths, ElementsAre("/r"_q));
}

TEST_F(FolderRefreshTest, NewRootIsRefreshedTwiceWithTheFlagAndNeverWithout)
{
    FolderConfiguration plain = Folder("/plain"_q);
    EXPECT_TRUE(manager.Add(plain));
    EXPECT_THAT(refresh->paths, IsEmpty());

    FolderConfiguration changed = Folder("/changed"_q);
    changed.setSyncStatus(FolderSynchronizationStatus(1));
    EXPECT_TRUE(manager.Add(changed));
    EXPECT_THAT(refresh->paths, ElementsAre("/changed"_q, "/changed"_q));
}

} // namespace
