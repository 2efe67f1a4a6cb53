#include "support/FolderManagerFixture.h"

#include <limits>
#include <ostream>
#include <string>

namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::ElementsAre;
using testing::IsEmpty;

/// A record whose status was set.
FolderConfiguration Changed(QString const& clientPath, int parentId = 0, int rootId = -1)
{
    FolderConfiguration folder = Folder(clientPath, parentId, rootId);
    folder.setSyncStatus(FolderSynchronizationStatus(1));
    return folder;
}

using FolderAddTest = FolderEventsTest;
using FolderUpdateTest = FolderEventsTest;

// Add

TEST_F(FolderAddTest, NewRootIsInsertedAndThenUpdatedWithItsOwnId)
{
    store->PlayInsertId(42);
    FolderConfiguration root = Folder("/r"_q);
    EXPECT_TRUE(logged.Add(root));
    EXPECT_EQ(root.getId(), 42);
    EXPECT_EQ(root.getRootId(), 42);
    EXPECT_THAT(
        events.Take(),
        ElementsAre("Add /r @0"_q, "exec Insert @1"_q, "Update /r @1"_q, "exec Update @2"_q, "ClearCaches @1"_q));

    auto const boundRootId = [&](std::size_t execution) {
        for (Binding const& binding : store->Executions().at(execution).bindings) {
            if (binding.placeholder == ":rootId"_q)
                return binding.value.toInt();
        }
        return 0;
    };
    EXPECT_EQ(boundRootId(0), -1);
    EXPECT_EQ(boundRootId(1), 42);
    EXPECT_EQ(store->Executions().at(1).bindings.at(0).value, QVariant(42));
}

TEST_F(FolderAddTest, NewRootWithAChangedStatusIsRefreshedTwice)
{
    FolderConfiguration root = Changed("/r"_q);
    EXPECT_TRUE(logged.Add(root));
    EXPECT_THAT(events.Take(),
                ElementsAre("Add /r @0"_q,
                            "exec Insert @1"_q,
                            "Update /r @1"_q,
                            "exec Update @2"_q,
                            "shell /r @2"_q,
                            "ClearCaches @1"_q,
                            "shell /r @1"_q));
}

TEST_F(FolderAddTest, RootWithARootIdKeepsItAndIsNotUpdated)
{
    FolderConfiguration root = Folder("/r"_q, 0, 7);
    EXPECT_TRUE(logged.Add(root));
    EXPECT_EQ(root.getRootId(), 7);
    EXPECT_THAT(events.Take(), ElementsAre("Add /r @0"_q, "exec Insert @1"_q, "ClearCaches @1"_q));
}

TEST_F(FolderAddTest, SubFolderIsInsertedAndRefreshedAfterTheCachesAreCleared)
{
    store->PlayInsertId(8);
    FolderConfiguration folder = Changed("/r/a"_q, 5, 7);
    EXPECT_TRUE(logged.Add(folder));
    EXPECT_EQ(folder.getId(), 8);
    EXPECT_EQ(folder.getRootId(), 7);
    EXPECT_EQ(folder.getParentId(), 5);
    EXPECT_THAT(events.Take(), ElementsAre("Add /r/a @0"_q, "exec Insert @1"_q, "ClearCaches @1"_q, "shell /r/a @1"_q));
}

TEST_F(FolderAddTest, IdIsReadFromWhateverTheStoreGives)
{
    store->PlayInsertId(QVariant(qlonglong(std::numeric_limits<int>::max())));
    FolderConfiguration folder = Folder("/r/a"_q, 5, 7);
    EXPECT_TRUE(manager.Add(folder));
    EXPECT_EQ(folder.getId(), std::numeric_limits<int>::max());
}

TEST_F(FolderAddTest, FailureLeavesTheRecordAloneAndTellsNobody)
{
    store->FailExec(1);
    FolderConfiguration root = Changed("/r"_q);
    FolderConfiguration const before(root);
    EXPECT_FALSE(logged.Add(root));
    EXPECT_THAT(DifferingMembers(root, before), IsEmpty());
    EXPECT_THAT(events.Take(), ElementsAre("Add /r @0"_q, "exec Insert @1 fails"_q));
}

TEST_F(FolderAddTest, FailureOfTheUpdateOfANewRootGoesUnseen)
{
    store->PlayInsertId(42);
    store->FailExec(2);
    FolderConfiguration root = Changed("/r"_q);
    EXPECT_TRUE(logged.Add(root));
    EXPECT_EQ(root.getId(), 42);
    EXPECT_EQ(root.getRootId(), 42);
    EXPECT_THAT(events.Take(),
                ElementsAre("Add /r @0"_q,
                            "exec Insert @1"_q,
                            "Update /r @1"_q,
                            "exec Update @2 fails"_q,
                            "ClearCaches @1"_q,
                            "shell /r @1"_q));
}

TEST_F(FolderAddTest, IdOfTheRecordIsNotWritten)
{
    store->PlayInsertId(1);
    FolderConfiguration folder = Folder("/r/a"_q, 5, 7);
    EXPECT_TRUE(manager.Add(folder));
    store->PlayInsertId(2);
    EXPECT_TRUE(manager.Add(folder)); // the same record again: a second row
    EXPECT_EQ(folder.getId(), 2);
}

TEST_F(FolderAddTest, ChangedStatusStaysChanged)
{
    FolderConfiguration folder = Changed("/r/a"_q, 5, 7);
    EXPECT_TRUE(manager.Add(folder));
    EXPECT_TRUE(folder.getSyncStatusChanged());
}

struct PlaceCase
{
    char const* name;
    int parentId;
    int rootId;
    bool accepted;
};

void PrintTo(PlaceCase const& place, std::ostream* out)
{
    *out << place.name;
}

class FolderPlaceTest : public FolderManagerTest, public testing::WithParamInterface<PlaceCase>
{};

TEST_P(FolderPlaceTest, AddTakesARootOrAFolderThatNamesRootAndParent)
{
    FolderConfiguration folder = Changed("/a"_q, GetParam().parentId, GetParam().rootId);
    EXPECT_EQ(manager.Add(folder), GetParam().accepted);
    if (GetParam().accepted) {
        EXPECT_NE(folder.getId(), -1);
    }
    else {
        EXPECT_EQ(folder.getId(), -1);
        EXPECT_EQ(folder.getRootId(), GetParam().rootId);
        EXPECT_EQ(store->QueriesCreated(), 0);
        EXPECT_TRUE(refresh->paths.isEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(Places,
                         FolderPlaceTest,
                         testing::Values(PlaceCase{"RootWithoutRootId", 0, -1, true},
                                         PlaceCase{"RootWithRootId", 0, 7, true},
                                         PlaceCase{"RootWithRootIdZero", 0, 0, true},
                                         PlaceCase{"FolderWithoutRoot", 5, -1, false},
                                         PlaceCase{"FolderWithRoot", 5, 7, true},
                                         PlaceCase{"FolderWithRootIdZero", 5, 0, true},
                                         PlaceCase{"NeitherParentNorRoot", -1, -1, false},
                                         PlaceCase{"RootButNoParent", -1, 7, false},
                                         PlaceCase{"AnyOtherParentWithRoot", -2, 7, true},
                                         PlaceCase{"AnyOtherParentWithoutRoot", -2, -1, false}),
                         [](auto const& param) { return std::string(param.param.name); });

TEST_F(FolderAddTest, DefaultRecordIsRefused)
{
    FolderConfiguration folder;
    EXPECT_FALSE(manager.Add(folder));
    EXPECT_EQ(store->QueriesCreated(), 0);
}

// Update

TEST_F(FolderUpdateTest, ChangedStatusRefreshesInsideTheScopeAndClearsNoCache)
{
    EXPECT_TRUE(logged.Update(Changed("/r/a"_q)));
    EXPECT_THAT(events.Take(), ElementsAre("Update /r/a @0"_q, "exec Update @1"_q, "shell /r/a @1"_q));
}

TEST_F(FolderUpdateTest, UnchangedStatusRefreshesNothing)
{
    EXPECT_TRUE(logged.Update(Folder("/r/a"_q)));
    EXPECT_THAT(events.Take(), ElementsAre("Update /r/a @0"_q, "exec Update @1"_q));
}

TEST_F(FolderUpdateTest, FailureRefreshesNothing)
{
    store->FailExec(1);
    EXPECT_FALSE(logged.Update(Changed("/r/a"_q)));
    EXPECT_THAT(events.Take(), ElementsAre("Update /r/a @0"_q, "exec Update @1 fails"_q));
}

TEST_F(FolderUpdateTest, ChangedStatusStaysChangedAndRefreshesOnceMore)
{
    FolderConfiguration folder = Changed("/r/a"_q);
    EXPECT_TRUE(manager.Update(folder));
    EXPECT_TRUE(folder.getSyncStatusChanged());
    EXPECT_TRUE(manager.Update(folder));
    EXPECT_THAT(refresh->paths, ElementsAre("/r/a"_q, "/r/a"_q));
    folder.resetSyncStatusChanged();
    EXPECT_TRUE(manager.Update(folder));
    EXPECT_THAT(refresh->paths, testing::SizeIs(2));
}

TEST_F(FolderUpdateTest, NullRefreshObjectIsNoHindrance)
{
    FolderConfigManager quiet(store, nullptr);
    EXPECT_TRUE(quiet.Update(Changed("/r/a"_q)));
    FolderConfiguration root = Changed("/r"_q);
    EXPECT_TRUE(quiet.Add(root));
}

// Failing stores

TEST_F(FolderManagerTest, FailingStoreLeavesNoQueryAndNoScopeOpen)
{
    store->FailAll();
    FolderConfiguration root = Changed("/r"_q);
    EXPECT_FALSE(manager.Add(root));
    EXPECT_FALSE(manager.Update(root));
    EXPECT_FALSE(manager.Remove(1));
    EXPECT_FALSE(manager.RemoveFolderAndChildren(1));
    EXPECT_FALSE(manager.CleanRootFolder(1));
    EXPECT_EQ(store->LiveObjects(), 0);
    EXPECT_EQ(sync::database::TransactionalScope::Depth(), 0);
    EXPECT_TRUE(refresh->paths.isEmpty());
}

} // namespace
