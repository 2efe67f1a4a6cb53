#include "support/FolderManagerFixture.h"

#include <QDir>

#include <algorithm>

namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class AddFolderAndParentTest : public FolderEventsTest
{
protected:
    /// The root /r with the server path /t, id 10, as the store gives it.
    FolderConfiguration Root(char const* clientPath = "/r", char const* serverPath = "/t")
    {
        FolderConfiguration root = DistinctFolder();
        root.setClientPath(QString::fromUtf8(clientPath));
        root.setServerPath(QString::fromUtf8(serverPath));
        root.setParentId(0);
        root.setRootId(10);
        PlayFolders({{10, root}});
        FolderConfiguration stored = manager.GetFolderConfigurationById(10);
        store->Forget();
        return stored;
    }

    /// The look-ups by path find nothing this often.
    void PlayMisses(int count)
    {
        for (int i = 0; i < count; ++i)
            PlayNothing();
    }

    /// Returns the values that the statements bound to a placeholder, in order; statements without it are left out.
    std::vector<QVariant> BoundTo(char const* placeholder) const
    {
        std::vector<QVariant> values;
        for (Execution const& execution : store->Executions()) {
            for (Binding const& binding : execution.bindings) {
                if (binding.placeholder == QString::fromUtf8(placeholder))
                    values.push_back(binding.value);
            }
        }
        return values;
    }

    /// How many statements of this kind were run.
    std::ptrdiff_t Count(QString const& statement) const
    {
        std::vector<QString> const statements = store->Statements();
        return std::count(statements.begin(), statements.end(), statement);
    }
};

TEST_F(AddFolderAndParentTest, EmptyPathGivesADefaultRecordAndRunsNoQuery)
{
    for (QString const& path : {""_q, QString()}) {
        FolderConfiguration const folder = manager.AddFolderAndParent(path, DistinctFolder());
        EXPECT_THAT(DifferingMembers(folder, FolderConfiguration()), IsEmpty());
    }
    EXPECT_EQ(store->QueriesCreated(), 0);
}

TEST_F(AddFolderAndParentTest, MissingFoldersAreMadeFromTheTopDown)
{
    FolderConfiguration const root = Root();
    PlayMisses(2);
    PlayFolders({{10, root}});
    store->PlayInsertId(20);
    store->PlayInsertId(21);
    FolderConfiguration const b = manager.AddFolderAndParent("/r/a/b"_q, root);

    EXPECT_EQ(b.getId(), 21);
    EXPECT_EQ(b.getName(), "b"_q);
    EXPECT_EQ(b.getClientPath(), "/r/a/b"_q);
    EXPECT_EQ(b.getServerPath(), "/t/a/b"_q);
    EXPECT_EQ(b.getRemoteLongKey(), "/t/a/b"_q);
    EXPECT_EQ(b.getSyncStatus(), 3);
    EXPECT_EQ(b.getParentId(), 20);
    EXPECT_EQ(b.getRootId(), 10);

    EXPECT_THAT(BoundTo(":clientPath"), ElementsAre("/r/a/b"_q, "/r/a"_q, "/r"_q, "/r/a"_q, "/r/a/b"_q));
    EXPECT_THAT(BoundTo(":parentId"), ElementsAre(10, 20));
    EXPECT_THAT(BoundTo(":name"), ElementsAre("a"_q, "b"_q));
    EXPECT_THAT(BoundTo(":serverPath"), ElementsAre("/t/a"_q, "/t/a/b"_q));
    EXPECT_THAT(BoundTo(":rootId"), ElementsAre(10, 10));
}

TEST_F(AddFolderAndParentTest, NewFolderTakesWhatItsRootHasAndDefaultsForTheRest)
{
    FolderConfiguration const root = Root();
    PlayMisses(1);
    PlayFolders({{10, root}});
    FolderConfiguration const folder = manager.AddFolderAndParent("/r/a"_q, root);

    FolderConfiguration expected;
    expected.setRootId(10);
    expected.setAuthenticationId(root.getAuthenticationId());
    expected.setProductConfigurationId(root.getProductConfigurationId());
    expected.setName("a"_q);
    expected.setRemoteShortKey(root.getRemoteShortKey());
    expected.setRemoteLongKey("/t/a"_q);
    expected.setClientPath("/r/a"_q);
    expected.setServerPath("/t/a"_q);
    expected.setParentId(10);
    expected.setSyncStatus(FolderSynchronizationStatus(3));
    EXPECT_THAT(DifferingMembers(folder, expected), ElementsAre("Id"));
    EXPECT_EQ(folder.getId(), 1);
}

TEST_F(AddFolderAndParentTest, FolderOnRecordIsGivenBackWithoutAWrite)
{
    PlayFolders({{21, Folder("/r/a/b"_q, 20, 10)}});
    FolderConfiguration const b = logged.AddFolderAndParent("/r/a/b"_q, FolderConfiguration());
    EXPECT_EQ(b.getId(), 21);
    EXPECT_THAT(events.Take(),
                ElementsAre("AddFolderAndParent /r/a/b @0"_q,
                            "GetFolderConfigurationByClientPath /r/a/b @0"_q,
                            "exec SelectByClientPath @0"_q));
}

TEST_F(AddFolderAndParentTest, FolderOfAnotherAccountIsGivenBackAsItStands)
{
    FolderConfiguration const root = Root();
    FolderConfiguration other = Folder("/r/a"_q, 30, 31);
    other.setAuthenticationId(root.getAuthenticationId() + 1);
    PlayFolders({{21, other}});
    FolderConfiguration const folder = manager.AddFolderAndParent("/r/a"_q, root);
    EXPECT_EQ(folder.getId(), 21);
    EXPECT_EQ(folder.getRootId(), 31);
    EXPECT_EQ(folder.getAuthenticationId(), other.getAuthenticationId());
}

TEST_F(AddFolderAndParentTest, GoesThroughTheVirtualInterfaceAtEachLevel)
{
    FolderConfiguration const root = Root();
    events.Take();
    PlayMisses(2);
    PlayFolders({{10, root}});
    logged.AddFolderAndParent("/r/a/b"_q, root);
    EXPECT_THAT(events.Take(),
                ElementsAre("AddFolderAndParent /r/a/b @0"_q,
                            "GetFolderConfigurationByClientPath /r/a/b @0"_q,
                            "exec SelectByClientPath @0"_q,
                            "AddFolderAndParent /r/a @0"_q,
                            "GetFolderConfigurationByClientPath /r/a @0"_q,
                            "exec SelectByClientPath @0"_q,
                            "AddFolderAndParent /r @0"_q,
                            "GetFolderConfigurationByClientPath /r @0"_q,
                            "exec SelectByClientPath @0"_q,
                            "Add /r/a @0"_q,
                            "exec Insert @1"_q,
                            "ClearCaches @1"_q,
                            "shell /r/a @1"_q,
                            "Add /r/a/b @0"_q,
                            "exec Insert @1"_q,
                            "ClearCaches @1"_q,
                            "shell /r/a/b @1"_q));
}

TEST_F(AddFolderAndParentTest, PathOutsideEveryFolderWritesNothing)
{
    FolderConfiguration const root = Root();
    FolderConfiguration const folder = manager.AddFolderAndParent("/x/y"_q, root);
    EXPECT_EQ(folder.getId(), -1);
    EXPECT_EQ(folder.getClientPath(), "/x/y"_q);
    EXPECT_EQ(folder.getParentId(), -1);
    EXPECT_THAT(BoundTo(":clientPath"), ElementsAre("/x/y"_q, "/x"_q, "/"_q));
    EXPECT_EQ(Count(folder_texts::Insert), 0);
    EXPECT_THAT(refresh->paths, IsEmpty());
}

TEST_F(AddFolderAndParentTest, FileSystemsRootThatIsNotOnRecordIsADefaultRecord)
{
    FolderConfiguration const folder = manager.AddFolderAndParent("/"_q, Root());
    EXPECT_THAT(DifferingMembers(folder, FolderConfiguration()), IsEmpty());
    EXPECT_THAT(store->Executions(), SizeIs(1));
}

TEST_F(AddFolderAndParentTest, RootOfTheFileSystemMayBeTheRecordedRoot)
{
    FolderConfiguration const root = Root("/", "/t");
    PlayMisses(1);
    PlayFolders({{10, root}});
    FolderConfiguration const folder = manager.AddFolderAndParent("/a"_q, root);
    EXPECT_EQ(folder.getId(), 1);
    EXPECT_EQ(folder.getParentId(), 10);
    // The prefix ends where no slash follows, so the path stays what it is.
    EXPECT_EQ(folder.getServerPath(), "/a"_q);
}

TEST_F(AddFolderAndParentTest, OtherCaseThanTheRootsLeadsOutside)
{
    FolderConfiguration const root = Root();
    FolderConfiguration const folder = manager.AddFolderAndParent("/R/a"_q, root);
    EXPECT_EQ(folder.getId(), -1);
    EXPECT_THAT(BoundTo(":clientPath"), ElementsAre("/R/a"_q, "/R"_q, "/"_q));
    EXPECT_EQ(Count(folder_texts::Insert), 0);
}

TEST_F(AddFolderAndParentTest, PathIsCleanedFirst)
{
    PlayFolders({{21, Folder("/r/b"_q, 10, 10)}});
    EXPECT_EQ(manager.AddFolderAndParent("/r//a/../b/"_q, FolderConfiguration()).getId(), 21);
    EXPECT_THAT(BoundTo(":clientPath"), ElementsAre("/r/b"_q));
}

TEST_F(AddFolderAndParentTest, FolderFoundOutsideTheRootIsStillAParent)
{
    FolderConfiguration const root = Root();
    PlayMisses(1);
    PlayFolders({{30, Folder("/x"_q, 0, 30)}});
    FolderConfiguration const folder = manager.AddFolderAndParent("/x/a"_q, root);
    EXPECT_EQ(folder.getParentId(), 30);
    EXPECT_EQ(folder.getRootId(), 10);
    EXPECT_EQ(folder.getServerPath(), "/x/a"_q);
}

TEST_F(AddFolderAndParentTest, FailureAtTheLastLevelLeavesTheUpperOnes)
{
    FolderConfiguration const root = Root();
    PlayMisses(2);
    PlayFolders({{10, root}});
    store->FailExec(6); // the look-up of the root itself was the first
    FolderConfiguration const folder = manager.AddFolderAndParent("/r/a/b"_q, root);
    EXPECT_EQ(folder.getId(), -1);
    EXPECT_EQ(folder.getParentId(), 1);
    EXPECT_EQ(folder.getServerPath(), "/t/a/b"_q);
    EXPECT_EQ(Count(folder_texts::Insert), 2);
    EXPECT_THAT(refresh->paths, ElementsAre("/r/a"_q));
}

TEST_F(AddFolderAndParentTest, FailureAtTheFirstLevelStopsTheLowerOnes)
{
    FolderConfiguration const root = Root();
    PlayMisses(2);
    PlayFolders({{10, root}});
    store->FailExec(5);
    FolderConfiguration const folder = manager.AddFolderAndParent("/r/a/b"_q, root);
    EXPECT_EQ(folder.getId(), -1);
    EXPECT_EQ(folder.getParentId(), -1);
    EXPECT_EQ(Count(folder_texts::Insert), 1);
    EXPECT_THAT(refresh->paths, IsEmpty());
}

TEST_F(AddFolderAndParentTest, FailingStoreGivesAFilledRecordWithoutAnId)
{
    FolderConfiguration const root = Root();
    store->FailAll();
    FolderConfiguration const folder = manager.AddFolderAndParent("/r/a"_q, root);
    EXPECT_EQ(folder.getId(), -1);
    EXPECT_EQ(folder.getClientPath(), "/r/a"_q);
    EXPECT_EQ(Count(folder_texts::Insert), 0);
}

TEST_F(AddFolderAndParentTest, OddNamesAreOneFolderEach)
{
    FolderConfiguration const root = Root();
    PlayMisses(1);
    PlayFolders({{10, root}});
    FolderConfiguration const folder = manager.AddFolderAndParent("/r/'a\"\n\U0001F4C1 %1"_q, root);
    EXPECT_EQ(folder.getName(), "'a\"\n\U0001F4C1 %1"_q);
    EXPECT_EQ(folder.getServerPath(), "/t/'a\"\n\U0001F4C1 %1"_q);
}

#ifndef Q_OS_WIN
TEST_F(AddFolderAndParentTest, DriveLetterIsARelativeNameWhereThereAreNoDrives)
{
    FolderConfiguration const folder = manager.AddFolderAndParent("C:/r"_q, Root());
    EXPECT_EQ(folder.getId(), -1);
    EXPECT_EQ(BoundTo(":clientPath").at(1).toString(), QDir::currentPath() + "/C:"_q);
}
#else
TEST_F(AddFolderAndParentTest, FoldersOnADriveAreMadeFromTheTopDown)
{
    FolderConfiguration const root = Root("C:/r", "/t");
    PlayMisses(2);
    PlayFolders({{10, root}});
    FolderConfiguration const b = manager.AddFolderAndParent("C:/r/a/b"_q, root);
    EXPECT_EQ(b.getServerPath(), "/t/a/b"_q);
    EXPECT_EQ(b.getId(), 2);
}
#endif

} // namespace
