#include "support/FakeClock.h"
#include "support/FolderManagerFixture.h"

#include <functional>
#include <ostream>
#include <string>

namespace {

// The constant is private; an explicit instantiation may name it nonetheless, and links only if it is exported.
int refreshRateMsec = 0;

template <int const* Rate>
struct ReadsTheRate
{
    ReadsTheRate() { refreshRateMsec = *Rate; }
    static ReadsTheRate const instance;
};

template <int const* Rate>
ReadsTheRate<Rate> const ReadsTheRate<Rate>::instance;

template struct ReadsTheRate<&sync::config::FolderConfigManager::_allFoldersCacheRefreshRateMsec>;

using namespace sync::config;
using namespace tandry::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
namespace texts = tandry::test::folder_texts;

class FolderCacheTest : public FolderManagerTest
{
protected:
    FakeClock clock;
};

TEST(FolderCache, RateIsExportedAndASecond)
{
    EXPECT_EQ(refreshRateMsec, 1000);
}

struct ListingCase
{
    char const* name;
    QString statement;
    std::function<QVector<FolderConfiguration>(FolderConfigManager&)> list;
};

void PrintTo(ListingCase const& listing, std::ostream* out)
{
    *out << listing.name;
}

class FolderCachedListingTest : public FolderCacheTest, public testing::WithParamInterface<ListingCase>
{
protected:
    QVector<FolderConfiguration> List() { return GetParam().list(manager); }
};

TEST_P(FolderCachedListingTest, TwoCallsASecondApartRunOneQuery)
{
    PlayFolders({{1, Folder("/r"_q)}});
    EXPECT_THAT(List(), SizeIs(1));
    FakeClock::Move(1'000);
    EXPECT_THAT(List(), SizeIs(1));
    EXPECT_THAT(store->Statements(), ElementsAre(GetParam().statement));
}

TEST_P(FolderCachedListingTest, TwoCallsTwoAndAHalfSecondsApartRunTwo)
{
    List();
    FakeClock::Move(2'500);
    PlayFolders({{1, Folder("/r"_q)}});
    EXPECT_THAT(List(), SizeIs(1));
    EXPECT_THAT(store->Statements(), ElementsAre(GetParam().statement, GetParam().statement));
}

TEST_P(FolderCachedListingTest, ValueLivesJustUnderTwoSeconds)
{
    List();
    FakeClock::Move(1'999);
    List();
    EXPECT_THAT(store->Executions(), SizeIs(1));
    FakeClock::Move(1);
    List();
    EXPECT_THAT(store->Executions(), SizeIs(2));
}

TEST_P(FolderCachedListingTest, ClearCachesMakesTheNextCallRunAQueryAtOnce)
{
    List();
    manager.ClearCaches();
    List();
    EXPECT_THAT(store->Executions(), SizeIs(2));
}

TEST_P(FolderCachedListingTest, ClockSetBackByAnHourRefillsAndTheStampFollows)
{
    List();
    FakeClock::Move(-3'600'000);
    List();
    EXPECT_THAT(store->Executions(), SizeIs(2));
    FakeClock::Move(1'999);
    List();
    EXPECT_THAT(store->Executions(), SizeIs(2));
}

TEST_P(FolderCachedListingTest, FailureIsHandedOutAsAnEmptyListingForItsWholeLife)
{
    store->FailExec(1);
    EXPECT_THAT(List(), IsEmpty());
    FakeClock::Move(1'999);
    EXPECT_THAT(List(), IsEmpty());
    EXPECT_THAT(store->Executions(), SizeIs(1));
}

TEST_P(FolderCachedListingTest, ListingInHandOutlivesTheCache)
{
    PlayFolders({{1, Folder("/r"_q)}});
    QVector<FolderConfiguration> const folders = List();
    manager.ClearCaches();
    EXPECT_THAT(List(), IsEmpty());
    ASSERT_THAT(folders, SizeIs(1));
    EXPECT_EQ(folders[0].getClientPath(), "/r"_q);
}

TEST_P(FolderCachedListingTest, ChangeOfAListingInHandLeavesTheCacheAlone)
{
    PlayFolders({{1, Folder("/r"_q)}});
    QVector<FolderConfiguration> folders = List();
    folders[0].setClientPath("/other"_q);
    EXPECT_EQ(List().at(0).getClientPath(), "/r"_q);
}

TEST_P(FolderCachedListingTest, HitCopiesNoRecord)
{
    PlayFolders({{1, Folder("/r"_q)}});
    QVector<FolderConfiguration> const first = List();
    EXPECT_EQ(List().constData(), first.constData());
}

TEST_P(FolderCachedListingTest, ManagersHaveTheirOwnCaches)
{
    List();
    FolderConfigManager other(store, nullptr);
    GetParam().list(other);
    EXPECT_THAT(store->Executions(), SizeIs(2));
}

INSTANTIATE_TEST_SUITE_P(
    Listings,
    FolderCachedListingTest,
    testing::Values(ListingCase{"GetAll", texts::SelectAll, [](auto& manager) { return manager.GetAll(); }},
                    ListingCase{"GetAllRootFolders",
                                texts::SelectRoots,
                                [](auto& manager) { return manager.GetAllRootFolders(); }}),
    [](auto const& param) { return std::string(param.param.name); });

TEST_F(FolderCacheTest, TheTwoListingsAgeApart)
{
    manager.GetAll();
    FakeClock::Move(1'500);
    manager.GetAllRootFolders();
    FakeClock::Move(500);
    store->Forget();
    manager.GetAll();
    manager.GetAllRootFolders();
    EXPECT_THAT(store->Statements(), ElementsAre(texts::SelectAll));
}

TEST_F(FolderCacheTest, LookupsAndOtherListingsNeverReadACache)
{
    PlayFolders({{1, Folder("/r"_q)}});
    manager.GetAll();
    PlayFolders({{1, Folder("/r"_q)}});
    manager.GetAllRootFolders();
    EXPECT_EQ(manager.GetFolderConfigurationById(1).getId(), -1);
    EXPECT_EQ(manager.GetFolderConfigurationByClientPath("/r"_q).getId(), -1);
    EXPECT_THAT(manager.GetFolderConfigurationsByRootId(1), IsEmpty());
    EXPECT_THAT(manager.GetFolderConfigurationByParentId(0), IsEmpty());
}

// Which operations clear the caches

struct ClearingCase
{
    char const* name;
    std::function<void(FolderConfigManager&)> run;
    bool clears;
    /// The statement of the operation that fails, counted from 1.
    int failing = 0;
};

void PrintTo(ClearingCase const& clearing, std::ostream* out)
{
    *out << clearing.name;
}

class FolderCacheClearingTest : public FolderCacheTest, public testing::WithParamInterface<ClearingCase>
{};

TEST_P(FolderCacheClearingTest, BothListingsAreReadAnewAfterIt)
{
    manager.GetAll();
    manager.GetAllRootFolders();
    if (GetParam().failing > 0)
        store->FailExec(2 + GetParam().failing);
    GetParam().run(manager);
    store->Forget();

    manager.GetAll();
    manager.GetAllRootFolders();
    if (GetParam().clears)
        EXPECT_THAT(store->Statements(), ElementsAre(texts::SelectAll, texts::SelectRoots));
    else
        EXPECT_THAT(store->Statements(), IsEmpty());
}

void AddRoot(FolderConfigManager& manager)
{
    FolderConfiguration root = Folder("/r"_q);
    manager.Add(root);
}

void AddFolder(FolderConfigManager& manager)
{
    FolderConfiguration folder = Folder("/r/a"_q, 5, 7);
    manager.Add(folder);
}

void AddNowhere(FolderConfigManager& manager)
{
    FolderConfiguration folder;
    manager.Add(folder);
}

void Update(FolderConfigManager& manager)
{
    FolderConfiguration folder = DistinctFolder();
    manager.Update(folder);
}

void Remove(FolderConfigManager& manager)
{
    manager.Remove(1);
}

void RemoveTree(FolderConfigManager& manager)
{
    manager.RemoveFolderAndChildren(1);
}

void CleanRoot(FolderConfigManager& manager)
{
    manager.CleanRootFolder(1);
}

void AddOutsideEveryRoot(FolderConfigManager& manager)
{
    manager.AddFolderAndParent("/r/a"_q, FolderConfiguration());
}

INSTANTIATE_TEST_SUITE_P(
    Operations,
    FolderCacheClearingTest,
    testing::Values(ClearingCase{"AddOfARoot", AddRoot, true},
                    ClearingCase{"AddOfARootWithAFailingUpdate", AddRoot, true, 2},
                    ClearingCase{"FailingAddOfARoot", AddRoot, false, 1},
                    ClearingCase{"AddOfAFolder", AddFolder, true},
                    ClearingCase{"FailingAddOfAFolder", AddFolder, false, 1},
                    ClearingCase{"RefusedAdd", AddNowhere, false},
                    ClearingCase{"Update", Update, false},
                    ClearingCase{"FailingUpdate", Update, false, 1},
                    ClearingCase{"AddFolderAndParentOutsideEveryRoot", AddOutsideEveryRoot, false},
                    ClearingCase{"Remove", Remove, true},
                    ClearingCase{"RemoveWithAFailingLookup", Remove, true, 1},
                    ClearingCase{"FailingRemove", Remove, false, 2},
                    ClearingCase{"RemoveFolderAndChildren", RemoveTree, true},
                    ClearingCase{"RemoveFolderAndChildrenFailingAtTheFiles", RemoveTree, true, 4},
                    ClearingCase{"RemoveFolderAndChildrenFailingAtTheFolder", RemoveTree, false, 3},
                    ClearingCase{"CleanRootFolder", CleanRoot, true},
                    ClearingCase{"CleanRootFolderFailingAtTheFiles", CleanRoot, true, 3},
                    ClearingCase{"CleanRootFolderFailingAtTheRoot", CleanRoot, false, 2},
                    ClearingCase{"ClearCaches", [](auto& manager) { manager.ClearCaches(); }, true},
                    ClearingCase{"RefreshOfAllRoots", [](auto& manager) { manager.RefreshNativeFileViewer(); }, false}),
    [](auto const& param) { return std::string(param.param.name); });

} // namespace
