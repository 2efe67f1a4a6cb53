#include "database/ScopeParticipant.h"
#include "support/FolderManagerFixture.h"

#include <ostream>
#include <string>

namespace {

using namespace sync::config;
using namespace tandry::test;
using sync::database::TransactionalScope;
using testing::ElementsAre;
using testing::SizeIs;

using FolderRemoveTest = FolderEventsTest;
using FolderRemoveTreeTest = FolderEventsTest;
using FolderCleanRootTest = FolderEventsTest;

std::vector<Binding> BoundTo(char const* placeholder, int id)
{
    return {{QString::fromUtf8(placeholder), id}};
}

// Remove

TEST_F(FolderRemoveTest, ReadsThePathDeletesTheRowAndTellsTheShell)
{
    PlayFolders({{7, Folder("/r/a"_q, 1, 1)}});
    EXPECT_TRUE(logged.Remove(7));
    EXPECT_THAT(events.Take(),
                ElementsAre("Remove 7 @0"_q,
                            "GetFolderConfigurationById 7 @0"_q,
                            "exec SelectById @0"_q,
                            "exec DeleteById @1"_q,
                            "ClearCaches @1"_q,
                            "RefreshNativeFileViewer /r/a @1"_q,
                            "shell /r/a @1"_q));
    EXPECT_EQ(store->Executions().at(1).bindings, BoundTo(":id", 7));
}

TEST_F(FolderRemoveTest, UnknownIdSucceedsClearsTheCachesAndRefreshesANullPath)
{
    store->SetRowsAffected(0);
    EXPECT_TRUE(logged.Remove(4711));
    EXPECT_THAT(events.Take(),
                ElementsAre("Remove 4711 @0"_q,
                            "GetFolderConfigurationById 4711 @0"_q,
                            "exec SelectById @0"_q,
                            "exec DeleteById @1"_q,
                            "ClearCaches @1"_q,
                            "RefreshNativeFileViewer null @1"_q,
                            "shell null @1"_q));
}

TEST_F(FolderRemoveTest, FailingLookupStopsNothing)
{
    store->FailExec(1);
    EXPECT_TRUE(manager.Remove(7));
    EXPECT_THAT(refresh->paths, ElementsAre(QString()));
    EXPECT_TRUE(refresh->paths[0].isNull());
}

TEST_F(FolderRemoveTest, FailureClearsNoCacheAndTellsNobody)
{
    PlayFolders({{7, Folder("/r/a"_q, 1, 1)}});
    store->FailExec(2);
    EXPECT_FALSE(logged.Remove(7));
    EXPECT_THAT(events.Take(),
                ElementsAre("Remove 7 @0"_q,
                            "GetFolderConfigurationById 7 @0"_q,
                            "exec SelectById @0"_q,
                            "exec DeleteById @1 fails"_q));
}

TEST_F(FolderRemoveTest, ShellHearsOfItThoughTheStatusNeverChanged)
{
    PlayFolders({{7, Folder("/r/a"_q, 1, 1)}});
    EXPECT_TRUE(manager.Remove(7));
    EXPECT_THAT(refresh->paths, ElementsAre("/r/a"_q));
}

TEST_F(FolderRemoveTest, NullRefreshObjectIsNoHindrance)
{
    FolderConfigManager quiet(store, nullptr);
    EXPECT_TRUE(quiet.Remove(7));
    EXPECT_TRUE(quiet.CleanRootFolder(7));
}

// RemoveFolderAndChildren

TEST_F(FolderRemoveTreeTest, LeafIsRemovedAndThenItsFiles)
{
    PlayNothing();
    PlayFolders({{7, Folder("/r/a"_q, 1, 1)}});
    EXPECT_TRUE(logged.RemoveFolderAndChildren(7));
    EXPECT_THAT(events.Take(),
                ElementsAre("RemoveFolderAndChildren 7 @0"_q,
                            "GetFolderConfigurationByParentId 7 @0"_q,
                            "exec SelectByParentId @0"_q,
                            "Remove 7 @0"_q,
                            "GetFolderConfigurationById 7 @0"_q,
                            "exec SelectById @0"_q,
                            "exec DeleteById @1"_q,
                            "ClearCaches @1"_q,
                            "RefreshNativeFileViewer /r/a @1"_q,
                            "shell /r/a @1"_q,
                            "exec DeleteFilesByFolder @1"_q));
    EXPECT_EQ(store->Executions().back().bindings, BoundTo(":folderConfigurationId", 7));
}

TEST_F(FolderRemoveTreeTest, ChildrenGoFirstInTheirOrderAndDepthFirst)
{
    // 1 holds 3 and 2 in this order, 3 holds 4.
    PlayFolders({{3, Folder("/r/a"_q, 1, 1)}, {2, Folder("/r/b"_q, 1, 1)}});
    PlayFolders({{4, Folder("/r/a/x"_q, 3, 1)}});
    PlayNothing();
    PlayFolders({{4, Folder("/r/a/x"_q, 3, 1)}});
    PlayFolders({{3, Folder("/r/a"_q, 1, 1)}});
    PlayNothing();
    PlayFolders({{2, Folder("/r/b"_q, 1, 1)}});
    PlayFolders({{1, Folder("/r"_q)}});
    EXPECT_TRUE(manager.RemoveFolderAndChildren(1));

    EXPECT_THAT(refresh->paths, ElementsAre("/r/a/x"_q, "/r/a"_q, "/r/b"_q, "/r"_q));
    std::vector<std::pair<QString, int>> deletes;
    for (Execution const& execution : store->Executions()) {
        if (execution.scopeDepth > 0) {
            EXPECT_EQ(execution.scopeDepth, 1);
            deletes.emplace_back(folder_texts::NameOf(execution.statement), execution.bindings.at(0).value.toInt());
        }
    }
    QString const folder = "DeleteById"_q;
    QString const files = "DeleteFilesByFolder"_q;
    EXPECT_THAT(deletes,
                ElementsAre(std::pair(folder, 4),
                            std::pair(files, 4),
                            std::pair(folder, 3),
                            std::pair(files, 3),
                            std::pair(folder, 2),
                            std::pair(files, 2),
                            std::pair(folder, 1),
                            std::pair(files, 1)));
}

TEST_F(FolderRemoveTreeTest, FailureAtTheSecondChildLeavesTheFolderAndWhatWasRemoved)
{
    PlayFolders({{2, Folder("/r/a"_q, 1, 1)}, {3, Folder("/r/b"_q, 1, 1)}, {4, Folder("/r/c"_q, 1, 1)}});
    PlayNothing();
    PlayFolders({{2, Folder("/r/a"_q, 1, 1)}});
    PlayNothing();
    PlayFolders({{3, Folder("/r/b"_q, 1, 1)}});
    store->FailExec(8);
    EXPECT_FALSE(logged.RemoveFolderAndChildren(1));
    EXPECT_THAT(events.Take(),
                ElementsAre("RemoveFolderAndChildren 1 @0"_q,
                            "GetFolderConfigurationByParentId 1 @0"_q,
                            "exec SelectByParentId @0"_q,
                            "RemoveFolderAndChildren 2 @0"_q,
                            "GetFolderConfigurationByParentId 2 @0"_q,
                            "exec SelectByParentId @0"_q,
                            "Remove 2 @0"_q,
                            "GetFolderConfigurationById 2 @0"_q,
                            "exec SelectById @0"_q,
                            "exec DeleteById @1"_q,
                            "ClearCaches @1"_q,
                            "RefreshNativeFileViewer /r/a @1"_q,
                            "shell /r/a @1"_q,
                            "exec DeleteFilesByFolder @1"_q,
                            "RemoveFolderAndChildren 3 @0"_q,
                            "GetFolderConfigurationByParentId 3 @0"_q,
                            "exec SelectByParentId @0"_q,
                            "Remove 3 @0"_q,
                            "GetFolderConfigurationById 3 @0"_q,
                            "exec SelectById @0"_q,
                            "exec DeleteById @1 fails"_q));
}

TEST_F(FolderRemoveTreeTest, FailureAtTheFilesOfALeafAnswersFalseWithTheFolderGone)
{
    PlayNothing();
    PlayFolders({{7, Folder("/r/a"_q, 1, 1)}});
    store->FailExec(4);
    EXPECT_FALSE(manager.RemoveFolderAndChildren(7));
    EXPECT_TRUE(store->Executions().at(2).succeeded);
    EXPECT_THAT(refresh->paths, ElementsAre("/r/a"_q));
}

TEST_F(FolderRemoveTreeTest, FailingListingOfTheChildrenLooksLikeALeaf)
{
    store->FailExec(1);
    EXPECT_TRUE(manager.RemoveFolderAndChildren(7));
    EXPECT_THAT(store->Executions(), SizeIs(4));
}

TEST_F(FolderRemoveTreeTest, RingOfParentsEndsWhereItsFirstFolderIsMetAgain)
{
    // 1 holds 2 and 5, 2 holds 3, and 3 holds 1.
    PlayFolders({{2, Folder("/r/a"_q, 1, 1)}, {5, Folder("/r/b"_q, 1, 1)}});
    PlayFolders({{3, Folder("/r/a/x"_q, 2, 1)}});
    PlayFolders({{1, Folder("/r"_q, 3, 1)}});
    EXPECT_FALSE(logged.RemoveFolderAndChildren(1));
    EXPECT_THAT(events.Take(),
                ElementsAre("RemoveFolderAndChildren 1 @0"_q,
                            "GetFolderConfigurationByParentId 1 @0"_q,
                            "exec SelectByParentId @0"_q,
                            "RemoveFolderAndChildren 2 @0"_q,
                            "GetFolderConfigurationByParentId 2 @0"_q,
                            "exec SelectByParentId @0"_q,
                            "RemoveFolderAndChildren 3 @0"_q,
                            "GetFolderConfigurationByParentId 3 @0"_q,
                            "exec SelectByParentId @0"_q,
                            "RemoveFolderAndChildren 1 @0"_q));
    PlayNothing();
    EXPECT_TRUE(logged.RemoveFolderAndChildren(1)) << "the walk has left nothing behind";
}

TEST_F(FolderRemoveTreeTest, FolderThatIsItsOwnParentStays)
{
    PlayFolders({{7, Folder("/r/a"_q, 7, 1)}});
    EXPECT_FALSE(manager.RemoveFolderAndChildren(7));
    EXPECT_THAT(store->Executions(), SizeIs(1));
}

TEST_F(FolderRemoveTreeTest, SameIdOfAnotherManagerMeanwhileIsNoRing)
{
    class Outer : public FolderConfigManager
    {
    public:
        Outer(std::shared_ptr<RecordingStore> const& store, FolderConfigManager& inner)
            : FolderConfigManager(store, nullptr)
            , _inner(inner)
        {}

        bool Remove(int id) override { return _inner.RemoveFolderAndChildren(id) && FolderConfigManager::Remove(id); }

    private:
        FolderConfigManager& _inner;
    };
    EXPECT_TRUE(Outer(std::make_shared<RecordingStore>(), manager).RemoveFolderAndChildren(7));
    EXPECT_THAT(store->Executions(), SizeIs(4));
}

// CleanRootFolder

/// A manager's store that takes part in the scope of `CleanRootFolder` and counts how often it is told to commit.
class CommitCountingManager : public FolderConfigManager, private sync::database::ScopeParticipant
{
public:
    explicit CommitCountingManager(std::shared_ptr<RecordingStore> const& store)
        : FolderConfigManager(store, nullptr)
    {}
    ~CommitCountingManager() override { TransactionalScope::Leave(*this); }

    /// The first statement inside the scope.
    FolderConfiguration GetFolderConfigurationById(int id) override
    {
        TransactionalScope::Join(*this);
        return FolderConfigManager::GetFolderConfigurationById(id);
    }

    /// Commits by call; the scope's end tells once more, as the participant joins again each time.
    int Commits() const { return _told - 1; }

private:
    bool CommitScope() noexcept override
    {
        ++_told;
        TransactionalScope::Join(*this);
        return false; // the answer of the commit isn't looked at
    }

    int _told = 0;
};

TEST_F(FolderCleanRootTest, RemovesRootFilesAndFoldersInOneScope)
{
    PlayFolders({{1, Folder("/r"_q)}});
    PlayFolders({{3, Folder("/r/b"_q, 1, 1)}, {2, Folder("/r/a"_q, 1, 1)}});
    EXPECT_TRUE(logged.CleanRootFolder(1));
    EXPECT_THAT(events.Take(),
                ElementsAre("CleanRootFolder 1 @0"_q,
                            "Remove 1 @1"_q,
                            "GetFolderConfigurationById 1 @1"_q,
                            "exec SelectById @1"_q,
                            "exec DeleteById @2"_q,
                            "ClearCaches @2"_q,
                            "RefreshNativeFileViewer /r @2"_q,
                            "shell /r @2"_q,
                            "exec DeleteFilesByRoot @2"_q,
                            "GetFolderConfigurationsByRootId 1 @1"_q,
                            "exec SelectByRootId @1"_q,
                            "exec DeleteByRoot @2"_q,
                            "ClearCaches @2"_q,
                            "RefreshNativeFileViewer /r/b @2"_q,
                            "shell /r/b @2"_q,
                            "RefreshNativeFileViewer /r/a @2"_q,
                            "shell /r/a @2"_q));
    EXPECT_EQ(store->Executions().at(2).bindings, BoundTo(":folderConfigurationId", 1));
    EXPECT_EQ(store->Executions().at(4).bindings, BoundTo(":folderConfigurationId", 1));
}

TEST_F(FolderCleanRootTest, FailureAtTheRootStopsAtOnce)
{
    store->FailExec(2);
    EXPECT_FALSE(logged.CleanRootFolder(1));
    EXPECT_THAT(events.Take(),
                ElementsAre("CleanRootFolder 1 @0"_q,
                            "Remove 1 @1"_q,
                            "GetFolderConfigurationById 1 @1"_q,
                            "exec SelectById @1"_q,
                            "exec DeleteById @2 fails"_q));
}

TEST_F(FolderCleanRootTest, FailureAtTheFilesLeavesTheSubFoldersAndTheRootGone)
{
    store->FailExec(3);
    EXPECT_FALSE(logged.CleanRootFolder(1));
    EXPECT_THAT(events.Take(),
                ElementsAre("CleanRootFolder 1 @0"_q,
                            "Remove 1 @1"_q,
                            "GetFolderConfigurationById 1 @1"_q,
                            "exec SelectById @1"_q,
                            "exec DeleteById @2"_q,
                            "ClearCaches @2"_q,
                            "RefreshNativeFileViewer null @2"_q,
                            "shell null @2"_q,
                            "exec DeleteFilesByRoot @2 fails"_q));
}

TEST_F(FolderCleanRootTest, FailureAtTheSubFoldersRefreshesNoneOfThem)
{
    PlayFolders({{1, Folder("/r"_q)}});
    PlayFolders({{2, Folder("/r/a"_q, 1, 1)}});
    store->FailExec(5);
    EXPECT_FALSE(manager.CleanRootFolder(1));
    EXPECT_THAT(refresh->paths, ElementsAre("/r"_q));
}

TEST_F(FolderCleanRootTest, FailingListingOfTheSubFoldersOnlySilencesTheShell)
{
    PlayFolders({{1, Folder("/r"_q)}});
    store->FailExec(4);
    EXPECT_TRUE(manager.CleanRootFolder(1));
    EXPECT_EQ(store->Statements().back(), folder_texts::DeleteByRoot);
    EXPECT_THAT(refresh->paths, ElementsAre("/r"_q));
}

class FolderCleanRootCommitTest : public FolderManagerTest, public testing::WithParamInterface<int>
{};

TEST_P(FolderCleanRootCommitTest, CommitsOnceWhateverTheOutcome)
{
    CommitCountingManager counting(store);
    if (GetParam() > 0)
        store->FailExec(GetParam());
    EXPECT_EQ(counting.CleanRootFolder(1), GetParam() == 0);
    EXPECT_EQ(counting.Commits(), 1);
}

// Failing statement, 0 for none: the deletes of the root, of the files and of the sub-folders.
INSTANTIATE_TEST_SUITE_P(FailingStatement, FolderCleanRootCommitTest, testing::Values(0, 2, 3, 5));

TEST_F(FolderManagerTest, NoOtherOperationCommitsByItself)
{
    CommitCountingManager counting(store);
    EXPECT_TRUE(counting.Remove(1));
    EXPECT_EQ(counting.Commits(), 0); // told once, by the scope's end
}

} // namespace
