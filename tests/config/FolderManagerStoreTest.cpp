#include "interf/IQSqlDatabaseWrapper.h"
#include "support/Conversation.h"
#include "support/FakeClock.h"
#include "support/FaultyFiles.h"
#include "support/FolderManagerFixture.h"
#include "support/SmallStack.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <QDir>
#include <QTimeZone>

#include <algorithm>
#include <atomic>
#include <limits>
#include <optional>
#include <ostream>
#include <string>
#include <thread>

/// The folder manager over a store on disk. What the statements say is tested apart; here it is what they do.
namespace folder_manager_store_test {
namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::SizeIs;
using testing::UnorderedElementsAre;

/// How many folders may lie in one another on a small stack; a longer path could not be opened.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int DeepTree = 300; // frames are larger under a sanitizer
#else
constexpr int DeepTree = 2'046;
#endif

class FolderStoreTest : public StoreFixture
{
protected:
    using Folders = QVector<FolderConfiguration>;

    void SetUp() override
    {
        StoreFixture::SetUp();
        MakeManager();
    }

    void MakeManager() { manager = std::make_unique<FolderConfigManager>(store, refresh); }

    /// Later reads come from the disk.
    void Reopen()
    {
        manager.reset();
        RawStore(StorePath()).AllowToDelete(); // with the refusal, the store is refused
        ReopenStore();
        MakeManager();
    }

    FolderConfiguration AddFolder(QString const& clientPath, int parentId = 0, int rootId = -1)
    {
        FolderConfiguration record = Folder(clientPath, parentId, rootId);
        record.setName(clientPath.section(QLatin1Char('/'), -1));
        EXPECT_TRUE(manager->Add(record));
        return record;
    }

    FolderConfiguration AddBelow(FolderConfiguration const& parent, char const* name)
    {
        return AddFolder(
            parent.getClientPath() + QLatin1Char('/') + QString::fromUtf8(name), parent.getId(), parent.getRootId());
    }

    /// A file's row, in one of its tables.
    void AddFile(FolderConfiguration const& record, char const* table)
    {
        RawStore(StorePath())
            .Run(QStringLiteral("INSERT INTO %1 (folderConfigurationId, rootFolderId) VALUES (%2, %3)")
                     .arg(QLatin1String(table))
                     .arg(record.getId())
                     .arg(record.getRootId()));
    }

    /// Has every delete of this row fail.
    void RefuseToDelete(char const* table, char const* condition)
    {
        RawStore(StorePath()).RefuseToDelete(QString::fromUtf8(table), QString::fromUtf8(condition));
    }

    qlonglong Count(char const* table) { return RawStore(StorePath()).Count(QString::fromLatin1(table)); }

    /// The paths on record.
    std::vector<QString> Paths()
    {
        std::vector<QString> paths;
        for (QVector<QVariant> const& row : RawStore(StorePath()).Rows("SELECT clientPath FROM FolderConfiguration"_q))
            paths.push_back(row[0].toString());
        return paths;
    }

    static std::vector<int> Ids(Folders const& folders)
    {
        std::vector<int> ids;
        for (FolderConfiguration const& record : folders)
            ids.push_back(record.getId());
        return ids;
    }

    FakeClock clock; // stands still, so a listing stays cached until something clears it
    std::shared_ptr<RecordingRefresh> refresh = std::make_shared<RecordingRefresh>();
    std::unique_ptr<FolderConfigManager> manager;
};

// One row and back

struct RoundTripCase
{
    char const* name;
    void (*change)(FolderConfiguration&);
};

void PrintTo(RoundTripCase const& trip, std::ostream* out)
{
    *out << trip.name;
}

class FolderRoundTripTest : public FolderStoreTest, public testing::WithParamInterface<RoundTripCase>
{
protected:
    static bool IsKept()
    {
        FolderConfiguration record;
        GetParam().change(record);
        return StoreKeepsNullCharacters || !record.getOwnerId().contains(QChar(0));
    }

    /// Returns the record that must be read after this one was written.
    static FolderConfiguration Expected(FolderConfiguration const& written)
    {
        FolderConfiguration expected(written);
        expected.resetSyncStatusChanged();
        expected.setLastServerSyncRequestTime(QDateTime());
        QDateTime const time = written.getLastOperationTime();
        expected.setLastOperationTime(QDateTime(time.date(), time.time(), Qt::UTC));
        return expected;
    }
};

TEST_P(FolderRoundTripTest, AddedRecordComesBackFromTheDisk)
{
    if (!IsKept())
        GTEST_SKIP() << "the store refuses null characters";
    FolderConfiguration record = DistinctFolder();
    record.setLastServerSyncRequestTime(QDateTime::currentDateTime());
    GetParam().change(record);
    ASSERT_TRUE(manager->Add(record));
    Reopen();
    EXPECT_THAT(DifferingMembers(manager->GetFolderConfigurationById(record.getId()), Expected(record)), IsEmpty());
}

TEST_P(FolderRoundTripTest, UpdatedRecordComesBackFromTheDisk)
{
    if (!IsKept())
        GTEST_SKIP() << "the store refuses null characters";
    FolderConfiguration record = AddFolder("/other"_q);
    FolderConfiguration const other = AddFolder("/another"_q);
    FolderConfiguration const stored = StoredFolder(record.getId(), DistinctFolder());
    record = stored;
    GetParam().change(record);
    ASSERT_TRUE(manager->Update(record));
    Reopen();
    EXPECT_THAT(DifferingMembers(manager->GetFolderConfigurationById(record.getId()), Expected(record)), IsEmpty());
    EXPECT_EQ(manager->GetFolderConfigurationById(other.getId()).getClientPath(), "/another"_q);
}

constexpr int Max = std::numeric_limits<int>::max();
constexpr int Min = std::numeric_limits<int>::min();

INSTANTIATE_TEST_SUITE_P(
    Records,
    FolderRoundTripTest,
    testing::Values(
        RoundTripCase{"DistinctValues", [](FolderConfiguration&) {}},
        RoundTripCase{"NullTexts",
                      [](FolderConfiguration& record) {
                          record.setName(QString());
                          record.setRemoteShortKey(QString());
                          record.setServerFolderId(QString());
                      }},
        RoundTripCase{"EmptyTexts",
                      [](FolderConfiguration& record) {
                          record.setName(""_q);
                          record.setRemoteShortKey(""_q);
                          record.setServerFolderId(""_q);
                      }},
        RoundTripCase{"OddTexts",
                      [](FolderConfiguration& record) {
                          record.setName("'; DROP TABLE FolderConfiguration; --"_q);
                          record.setClientPath("/r/\n\t\r\"\U0001F4C1\"/a\u0308/\uFFFD/:id/%1"_q);
                          record.setFeatureName("<a & 'b'> \U0001F4C1"_q);
                      }},
        RoundTripCase{"NullCharacter", [](FolderConfiguration& record) { record.setOwnerId("a\0b"_q); }},
        RoundTripCase{"LongText",
                      [](FolderConfiguration& record) { record.setClientPath(QString(100'000, QLatin1Char('/'))); }},
        RoundTripCase{"GreatestNumbers",
                      [](FolderConfiguration& record) {
                          record.setAuthenticationId(Max);
                          record.setParentId(Max);
                          record.setRootId(Max);
                          record.setProductConfigurationId(Max);
                          record.setSyncStatus(FolderSynchronizationStatus(Max));
                          record.setPrivileges(FolderPrivileges(Max));
                      }},
        RoundTripCase{"LeastNumbers",
                      [](FolderConfiguration& record) {
                          record.setAuthenticationId(Min);
                          record.setParentId(Min);
                          record.setRootId(Min);
                          record.setProductConfigurationId(Min);
                          record.setSyncStatus(FolderSynchronizationStatus(Min));
                          record.setFolderOption(SynchronizationFolderOption(Min));
                      }},
        RoundTripCase{"LocalTimes",
                      [](FolderConfiguration& record) {
                          record.setLastOperationTime(QDateTime(QDate(2024, 7, 1), QTime(2, 30, 0, 1), Qt::LocalTime));
                          // A clock reading that summer time skips where the tests run.
                          record.setLastSyncTime(QDateTime(QDate(2024, 3, 31), QTime(2, 30, 0, 1), Qt::UTC));
                      }},
        RoundTripCase{"TimesWithAnOffset",
                      [](FolderConfiguration& record) {
                          record.setLastOperationTime(
                              QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59, 999), Qt::OffsetFromUTC, 3600));
                          record.setLastSyncTime(
                              QDateTime(QDate(1900, 1, 1), QTime(0, 0), Qt::OffsetFromUTC, -12 * 3600));
                      }},
        RoundTripCase{"TimesInAZone",
                      [](FolderConfiguration& record) {
                          record.setLastOperationTime(
                              QDateTime(QDate(9999, 12, 31), QTime(23, 59, 59, 999), QTimeZone("Asia/Tokyo")));
                          record.setLastSyncTime(QDateTime(QDate(2024, 2, 29), QTime(0, 0), QTimeZone("Asia/Tokyo")));
                      }},
        RoundTripCase{"InvalidTimes",
                      [](FolderConfiguration& record) {
                          record.setLastOperationTime(QDateTime());
                          record.setLastSyncTime(QDateTime());
                      }}),
    [](auto const& param) { return std::string(param.param.name); });

TEST_F(FolderStoreTest, NullColumnsGiveZeroEmptyTextsAndInvalidTimes)
{
    RawStore(StorePath()).Run("INSERT INTO FolderConfiguration (id) VALUES (7)"_q);
    FolderConfiguration const record = manager->GetFolderConfigurationById(7);
    EXPECT_EQ(record.getId(), 7);
    EXPECT_EQ(record.getParentId(), 0);
    EXPECT_EQ(record.getRootId(), 0);
    EXPECT_EQ(record.getPrivileges(), 0);
    EXPECT_TRUE(record.getClientPath().isEmpty());
    EXPECT_TRUE(record.getFeatureName().isNull());
    EXPECT_FALSE(record.getLastOperationTime().isValid());
    EXPECT_FALSE(record.getLastSyncTime().isValid());
}

TEST_F(FolderStoreTest, RecordWithoutPropertiesHasNoneWhenItComesBack)
{
    FolderConfiguration const root = AddFolder("/r"_q);
    EXPECT_TRUE(manager->GetFolderConfigurationById(root.getId()).getFeatureName().isNull());
    EXPECT_EQ(RawStore(StorePath()).Value("SELECT nameValueProperties FROM FolderConfiguration"_q).toString(),
              NoProperties());
}

TEST_F(FolderStoreTest, EmptyPropertyComesBackEmpty)
{
    FolderConfiguration record = Folder("/r"_q);
    record.setFeatureName(""_q);
    ASSERT_TRUE(manager->Add(record));
    FolderConfiguration const stored = manager->GetFolderConfigurationById(record.getId());
    EXPECT_TRUE(stored.getFeatureName().isEmpty());
    EXPECT_EQ(RawStore(StorePath()).Value("SELECT nameValueProperties FROM FolderConfiguration"_q).toString(),
              OneProperty("FeatureName", ""));
}

TEST_F(FolderStoreTest, TextThatCannotBeKeptIsRefusedAndTheStoreSaysWhy)
{
    FolderConfiguration record = Folder("/r"_q);
    record.setName(QString(QChar(0xD83D)));
    EXPECT_FALSE(manager->Add(record));
    EXPECT_EQ(record.getId(), -1);
    EXPECT_TRUE(store->LastError().has_value());
    store->ClearError();
    EXPECT_EQ(Count("FolderConfiguration"), 0);
}

// Looking up

TEST_F(FolderStoreTest, EachLookupFindsItsFolderAndNoOther)
{
    FolderConfiguration first = DistinctFolder();
    first.setParentId(0);
    first.setRootId(-1);
    ASSERT_TRUE(manager->Add(first));
    FolderConfiguration second = DistinctFolder();
    second.setParentId(first.getId());
    second.setRootId(first.getId());
    second.setAuthenticationId(7);
    second.setServerFolderId("other id"_q);
    ASSERT_TRUE(manager->Add(second));

    QString const path = first.getClientPath();
    EXPECT_EQ(manager->GetFolderConfigurationById(second.getId()).getId(), second.getId());
    EXPECT_EQ(manager->GetFolderConfigurationByServerId("other id"_q).getId(), second.getId());
    EXPECT_EQ(manager->GetFolderConfigurationByClientPathAndAuthenticationId(path, 7).getId(), second.getId());
    EXPECT_EQ(manager->GetFolderConfigurationByClientPathAndAuthenticationId(path, 102).getId(), first.getId());
    EXPECT_EQ(manager->GetFolderConfigurationByClientPathAndAuthenticationId(path, 8).getId(), -1);
    EXPECT_NE(manager->GetFolderConfigurationByClientPath(path).getId(), -1);
    EXPECT_THAT(Ids(manager->GetFolderConfigurationsByAuthenticationId(7)), ElementsAre(second.getId()));
    EXPECT_THAT(Ids(manager->GetFolderConfigurationByParentId(first.getId())), ElementsAre(second.getId()));
    EXPECT_THAT(Ids(manager->GetFolderConfigurationByParentId(0)), ElementsAre(first.getId()));
    EXPECT_THAT(Ids(manager->GetFolderConfigurationsByRootId(first.getId())),
                UnorderedElementsAre(first.getId(), second.getId()));
}

TEST_F(FolderStoreTest, UnknownIdGivesADefaultRecord)
{
    FolderConfiguration const record = manager->GetFolderConfigurationById(4711);
    EXPECT_THAT(DifferingMembers(record, FolderConfiguration()), IsEmpty());
}

TEST_F(FolderStoreTest, PathIsFoundOnlyAsItWasStored)
{
    AddFolder("/Root"_q);
    EXPECT_NE(manager->GetFolderConfigurationByClientPath("/Root"_q).getId(), -1);
    for (QString const& other : {"/Root/"_q, "/root"_q, "/ROOT"_q, "//Root"_q, "/Root "_q, ""_q, QString()})
        EXPECT_EQ(manager->GetFolderConfigurationByClientPath(other).getId(), -1) << qPrintable(other);
}

TEST_F(FolderStoreTest, NullPathFindsNoFolderWithoutAPath)
{
    AddFolder(QString());
    EXPECT_EQ(manager->GetFolderConfigurationByClientPath(QString()).getId(), -1);
}

TEST_F(FolderStoreTest, ChildrenComeOrderedByName)
{
    FolderConfiguration const root = AddFolder("/r"_q);
    for (char const* name : {"b", "ä", "B", "a", "", "a b"})
        AddBelow(root, name);
    std::vector<QString> names;
    for (FolderConfiguration const& child : manager->GetFolderConfigurationByParentId(root.getId()))
        names.push_back(child.getName());
    EXPECT_THAT(names, ElementsAre(""_q, "B"_q, "a"_q, "a b"_q, "b"_q, "ä"_q));
}

// Adding and updating

TEST_F(FolderStoreTest, NewRootIsItsOwnRootInTheRecordAndInTheRow)
{
    FolderConfiguration const root = AddFolder("/r"_q);
    EXPECT_EQ(root.getRootId(), root.getId());
    Reopen();
    EXPECT_EQ(manager->GetFolderConfigurationById(root.getId()).getRootId(), root.getId());
}

TEST_F(FolderStoreTest, RefusedRecordsLeaveNoRow)
{
    FolderConfiguration lost = Folder("/lost"_q, 5, -1);
    EXPECT_FALSE(manager->Add(lost));
    FolderConfiguration blank;
    EXPECT_FALSE(manager->Add(blank));
    EXPECT_EQ(Count("FolderConfiguration"), 0);
}

TEST_F(FolderStoreTest, UpdateOfAMissingRowSucceedsAndMakesNone)
{
    EXPECT_TRUE(manager->Update(FolderConfiguration()));
    EXPECT_TRUE(manager->Update(StoredFolder(4711, DistinctFolder())));
    EXPECT_EQ(Count("FolderConfiguration"), 0);
}

TEST_F(FolderStoreTest, IdOfARemovedFolderIsNotGivenAgain)
{
    int const first = AddFolder("/r"_q).getId();
    EXPECT_TRUE(manager->Remove(first));
    EXPECT_GT(AddFolder("/r"_q).getId(), first);
}

// Cached listings

TEST_F(FolderStoreTest, ListingsShowAnAddAndARemoveAtOnce)
{
    EXPECT_THAT(manager->GetAll(), IsEmpty());
    EXPECT_THAT(manager->GetAllRootFolders(), IsEmpty());
    FolderConfiguration const root = AddFolder("/r"_q);
    FolderConfiguration const below = AddBelow(root, "a");
    EXPECT_THAT(Ids(manager->GetAll()), UnorderedElementsAre(root.getId(), below.getId()));
    EXPECT_THAT(Ids(manager->GetAllRootFolders()), ElementsAre(root.getId()));
    EXPECT_TRUE(manager->Remove(root.getId()));
    EXPECT_THAT(Ids(manager->GetAll()), ElementsAre(below.getId()));
    EXPECT_THAT(manager->GetAllRootFolders(), IsEmpty());
}

TEST_F(FolderStoreTest, ListingsShowAnUpdateOnlyOnceTheyExpireOrAreCleared)
{
    FolderConfiguration root = AddFolder("/r"_q);
    manager->GetAll();
    manager->GetAllRootFolders();
    root.setName("changed"_q);
    ASSERT_TRUE(manager->Update(root));
    EXPECT_EQ(manager->GetFolderConfigurationById(root.getId()).getName(), "changed"_q);
    EXPECT_EQ(manager->GetAll().at(0).getName(), "r"_q);
    EXPECT_EQ(manager->GetAllRootFolders().at(0).getName(), "r"_q);

    FakeClock::Move(2'000);
    EXPECT_EQ(manager->GetAll().at(0).getName(), "changed"_q);
    root.setName("changed again"_q);
    ASSERT_TRUE(manager->Update(root));
    manager->ClearCaches();
    EXPECT_EQ(manager->GetAll().at(0).getName(), "changed again"_q);
    EXPECT_EQ(manager->GetAllRootFolders().at(0).getName(), "changed again"_q);
}

TEST_F(FolderStoreTest, RootsAreTheFoldersWithTheParentZeroWhateverTheirRootIs)
{
    AddFolder("/r"_q);
    FolderConfiguration const foreign = AddFolder("/foreign"_q, 0, 4711);
    RawStore(StorePath())
        .Run("INSERT INTO FolderConfiguration (clientPath, parentId) VALUES ('/minus', -1), ('/null', NULL), "
             "('/below', 1)"_q);
    manager->ClearCaches();
    EXPECT_THAT(Ids(manager->GetAllRootFolders()), UnorderedElementsAre(foreign.getId() - 1, foreign.getId()));
    EXPECT_EQ(manager->GetRootFolderConfigurationCount(), 2);
    EXPECT_THAT(manager->GetAll(), SizeIs(5));
}

TEST_F(FolderStoreTest, RefreshOfAllRootsReadsThemFromTheStore)
{
    AddFolder("/a"_q);
    manager->GetAllRootFolders();
    FolderConfigManager(store, nullptr).Remove(1);
    FolderConfiguration other = Folder("/b"_q);
    ASSERT_TRUE(FolderConfigManager(store, nullptr).Add(other));
    manager->RefreshNativeFileViewer();
    EXPECT_THAT(refresh->paths, ElementsAre("/b"_q));
}

TEST_F(FolderStoreTest, ChainOfTwoThousandFoldersIsRemovedOnASmallStack)
{
    RawStore(StorePath())
        .Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
             "INSERT INTO FolderConfiguration (id, parentId, rootId) SELECT i, i - 1, 1 FROM n"_q.arg(DeepTree));
    ASSERT_EQ(Count("FolderConfiguration"), DeepTree);
    EXPECT_TRUE(OnSmallStack([&] {
        auto const database = store->CreateDatabase(); // thousands of commits by themselves would take long
        return database->transaction() && manager->RemoveFolderAndChildren(1) && database->commit();
    }));
    EXPECT_EQ(Count("FolderConfiguration"), 0);
}

TEST_F(FolderStoreTest, RingOfParentsIsNotRemovedUntilItIsBroken)
{
    FolderConfiguration const root = AddFolder("/r"_q);
    FolderConfiguration first = AddBelow(root, "a");
    FolderConfiguration const second = AddBelow(first, "b");
    FolderConfiguration const third = AddBelow(second, "c");
    first.setParentId(third.getId());
    ASSERT_TRUE(manager->Update(first));

    EXPECT_FALSE(manager->RemoveFolderAndChildren(first.getId()));
    EXPECT_FALSE(manager->RemoveFolderAndChildren(second.getId()));
    EXPECT_EQ(Count("FolderConfiguration"), 4);
    EXPECT_TRUE(manager->Remove(second.getId()));
    EXPECT_TRUE(manager->RemoveFolderAndChildren(third.getId()));
    EXPECT_THAT(Paths(), ElementsAre("/r"_q));
}

// Counts and questions

TEST_F(FolderStoreTest, CountsFollowTheRows)
{
    EXPECT_EQ(manager->GetRootFolderConfigurationCount(), 0);
    EXPECT_FALSE(manager->IsAnyFolderConfigOutOfSync());
    EXPECT_FALSE(manager->IsInExistingAuthentication(3));

    FolderConfiguration root = Folder("/r"_q);
    root.setAuthenticationId(3);
    ASSERT_TRUE(manager->Add(root));
    EXPECT_EQ(manager->GetRootFolderConfigurationCount(), 1);
    EXPECT_FALSE(manager->IsAnyFolderConfigOutOfSync());
    EXPECT_TRUE(manager->IsInExistingAuthentication(3));
    EXPECT_FALSE(manager->IsInExistingAuthentication(4));

    root.setSyncStatus(FolderSynchronizationStatus(2));
    ASSERT_TRUE(manager->Update(root));
    EXPECT_TRUE(manager->IsAnyFolderConfigOutOfSync());
    root.setSyncStatus(FolderSynchronizationStatus(3));
    ASSERT_TRUE(manager->Update(root));
    EXPECT_FALSE(manager->IsAnyFolderConfigOutOfSync());
}

TEST_F(FolderStoreTest, FailingStoreHasItsAnswers)
{
    AddFolder("/r"_q);
    RawStore(StorePath()).Run("ALTER TABLE FolderConfiguration RENAME TO Elsewhere"_q);
    EXPECT_EQ(manager->GetRootFolderConfigurationCount(), -1);
    EXPECT_TRUE(manager->IsAnyFolderConfigOutOfSync());
    EXPECT_TRUE(manager->IsInExistingAuthentication(3));
    EXPECT_EQ(manager->GetFolderConfigurationById(1).getId(), -1);
    EXPECT_THAT(manager->GetAll(), IsEmpty());
    EXPECT_FALSE(manager->Update(DistinctFolder()));
    EXPECT_FALSE(manager->Remove(1));
    EXPECT_TRUE(store->LastError().has_value());
    store->ClearError();
}

TEST_F(FolderStoreTest, FoldersWithoutTheirRootAreFound)
{
    FolderConfiguration const kept = AddFolder("/kept"_q);
    AddBelow(kept, "a");
    FolderConfiguration const gone = AddFolder("/gone"_q);
    FolderConfiguration const lost = AddBelow(gone, "a");
    FolderConfiguration const foreign = AddFolder("/foreign"_q, 0, 4711);
    EXPECT_THAT(Ids(manager->GetFolderConfigurationsOfNonExistingRootFolders()), ElementsAre(foreign.getId()));
    EXPECT_TRUE(manager->Remove(gone.getId()));
    EXPECT_THAT(Ids(manager->GetFolderConfigurationsOfNonExistingRootFolders()),
                UnorderedElementsAre(lost.getId(), foreign.getId()));
}

TEST_F(FolderStoreTest, WithoutAnyRootAllFoldersHaveLostTheirs)
{
    FolderConfiguration const root = AddFolder("/r"_q);
    FolderConfiguration const below = AddBelow(root, "a");
    EXPECT_TRUE(manager->Remove(root.getId()));
    EXPECT_THAT(Ids(manager->GetFolderConfigurationsOfNonExistingRootFolders()), ElementsAre(below.getId()));
}

TEST_F(FolderStoreTest, PathRulesSeeAnAddAtOnceAndAnUpdateOnlyLater)
{
    EXPECT_FALSE(manager->IsInExistingClientFolder("/r/a"_q, -1, false));
    FolderConfiguration root = AddFolder("/r"_q);
    EXPECT_TRUE(manager->IsInExistingClientFolder("/r/a"_q, -1, false));
    root.setClientPath("/moved"_q);
    ASSERT_TRUE(manager->Update(root));
    EXPECT_TRUE(manager->IsInExistingClientFolder("/r/a"_q, -1, false));
    FakeClock::Move(2'000);
    EXPECT_FALSE(manager->IsInExistingClientFolder("/r/a"_q, -1, false));
    EXPECT_TRUE(manager->IsInExistingClientFolder("/moved/a"_q, -1, false));
}

// Rollbacks

/// The clock stands still, so a listing that is read anew is read anew because of the rollback.
class FolderRollback : public FolderStoreTest
{
protected:
    void SetUp() override
    {
        FolderStoreTest::SetUp();
        kept = AddFolder("/kept"_q);
        AddBelow(kept, "a");
    }

    FolderConfiguration kept;
};

TEST_F(FolderRollback, OfAClientTransactionShowsInTheCachedListingsAtOnce)
{
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    AddFolder("/taken back"_q);
    EXPECT_THAT(manager->GetAllRootFolders(), SizeIs(2));
    EXPECT_THAT(manager->GetAll(), SizeIs(3));
    ASSERT_TRUE(database->rollback());
    EXPECT_THAT(manager->GetAllRootFolders(), SizeIs(1));
    EXPECT_THAT(manager->GetAll(), SizeIs(2));
}

TEST_F(FolderRollback, BringsARemovedRootBackSoThatNothingIsOrphaned)
{
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    ASSERT_TRUE(manager->Remove(kept.getId()));
    EXPECT_THAT(manager->GetFolderConfigurationsOfNonExistingRootFolders(), SizeIs(1));
    ASSERT_TRUE(database->rollback());
    EXPECT_THAT(manager->GetFolderConfigurationsOfNonExistingRootFolders(), IsEmpty());
    EXPECT_TRUE(manager->IsInExistingClientFolder("/kept/a"_q, -1, false));
}

TEST_F(FolderRollback, LeavesTheIdOfAnAddedFolderToTheNextOne)
{
    if (!StoreGivesRolledBackIdsAgain)
        GTEST_SKIP() << "the store gives no id twice";
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    int const id = AddFolder("/taken back"_q).getId();
    ASSERT_TRUE(database->rollback());
    EXPECT_EQ(AddFolder("/next"_q).getId(), id);
}

TEST_F(FolderRollback, OnAnotherThreadShowsInEveryManager)
{
    FolderConfigManager other(store, nullptr);
    std::thread([&] {
        auto const database = store->CreateDatabase();
        ASSERT_TRUE(database->transaction());
        AddFolder("/taken back"_q);
        EXPECT_THAT(manager->GetAll(), SizeIs(3));
        EXPECT_THAT(other.GetAll(), SizeIs(3));
    }).join(); // with the transaction open: the end of the thread rolls it back
    EXPECT_THAT(manager->GetAll(), SizeIs(2));
    EXPECT_THAT(other.GetAll(), SizeIs(2));
}

TEST_F(FolderRollback, OfALostScopeShowsInTheCachedListingsAtOnce)
{
    if (!StoreIsFile)
        GTEST_SKIP() << "the store has no file whose flush can fail";
    manager.reset();
    store.reset();
    {
        FaultyFiles files;
        OpenStore();
        MakeManager();
        {
            sync::database::TransactionalScope const scope;
            AddFolder("/lost"_q);
            EXPECT_THAT(manager->GetAll(), SizeIs(3));
            files.Fail(1, SQLITE_IOERR, {FileOperation::Sync});
        }
        EXPECT_TRUE(files.Recover());
        EXPECT_TRUE(store->LastError());
        EXPECT_THAT(manager->GetAll(), SizeIs(2));
        store->ClearError();
        manager.reset();
        store.reset();
    }
}

// Failed refills

/// The listing of the roots was read once while the store could not be read, which it can be again since.
class FailedFolderRefill : public FolderRollback
{
protected:
    void SetUp() override
    {
        FolderRollback::SetUp();
        FailToRefill();
    }

    void FailToRefill()
    {
        manager->ClearCaches();
        Rename("FolderConfiguration", "Elsewhere");
        EXPECT_THAT(manager->GetAllRootFolders(), IsEmpty());
        EXPECT_TRUE(store->LastError());
        Rename("Elsewhere", "FolderConfiguration");
        store->ClearError();
    }

    void Rename(char const* from, char const* to)
    {
        RawStore(StorePath())
            .Run(QStringLiteral("ALTER TABLE %1 RENAME TO %2").arg(QLatin1String(from), QLatin1String(to)));
    }

    /// The steps before a client removes what is orphaned; returns the orphans if it may remove them.
    std::optional<Folders> OrphansToRemove()
    {
        manager->ClearCaches();
        store->ClearError();
        return OrphansIfTrusted();
    }

    /// The steps behind the clearing.
    std::optional<Folders> OrphansIfTrusted()
    {
        Folders const orphans = manager->GetFolderConfigurationsOfNonExistingRootFolders();
        if (store->LastError() || manager->GetRootFolderConfigurationCount() != manager->GetAllRootFolders().size())
            return std::nullopt;
        return orphans;
    }
};

TEST_F(FailedFolderRefill, StaysCachedAsAnEmptyListingThatSetsNoError)
{
    FakeClock::Move(1'999);
    EXPECT_THAT(manager->GetAllRootFolders(), IsEmpty());
    EXPECT_THAT(manager->GetFolderConfigurationsOfNonExistingRootFolders(), SizeIs(2)) << "all that is on record";
    EXPECT_FALSE(store->LastError());
    FakeClock::Move(1);
    EXPECT_THAT(manager->GetAllRootFolders(), SizeIs(1));
    EXPECT_THAT(manager->GetFolderConfigurationsOfNonExistingRootFolders(), IsEmpty());
}

TEST_F(FailedFolderRefill, OfBeforeIsGoneOnceAClientClearsTheCaches)
{
    EXPECT_THAT(OrphansToRemove().value_or(Folders{kept}), IsEmpty());
}

TEST_F(FailedFolderRefill, OfTheClientItselfShowsInTheError)
{
    Rename("FolderConfiguration", "Elsewhere");
    EXPECT_FALSE(OrphansToRemove());
    EXPECT_TRUE(store->LastError());
    Rename("Elsewhere", "FolderConfiguration");
    store->ClearError();
}

TEST_F(FailedFolderRefill, OfAnotherThreadBehindTheClearingShowsInTheCountOfRoots)
{
    manager->ClearCaches();
    store->ClearError();
    std::thread([&] { FailToRefill(); }).join();
    EXPECT_FALSE(OrphansIfTrusted());
    EXPECT_FALSE(store->LastError());
    FakeClock::Move(2'000);
    EXPECT_THAT(OrphansIfTrusted().value_or(Folders{kept}), IsEmpty());
}

// AddFolderAndParent

TEST_F(FolderStoreTest, MissingFoldersAreMadeOnceAndFoundLater)
{
    FolderConfiguration root = Folder("/r"_q);
    root.setServerPath("/t"_q);
    ASSERT_TRUE(manager->Add(root));

    FolderConfiguration const b = manager->AddFolderAndParent("/r/a/b"_q, root);
    ASSERT_NE(b.getId(), -1);
    EXPECT_THAT(Paths(), UnorderedElementsAre("/r"_q, "/r/a"_q, "/r/a/b"_q));
    FolderConfiguration const stored = manager->GetFolderConfigurationById(b.getId());
    EXPECT_EQ(stored.getServerPath(), "/t/a/b"_q);
    EXPECT_EQ(stored.getRemoteLongKey(), "/t/a/b"_q);
    EXPECT_EQ(stored.getSyncStatus(), 3);
    EXPECT_EQ(stored.getRootId(), root.getId());
    EXPECT_EQ(stored.getParentId(), manager->GetFolderConfigurationByClientPath("/r/a"_q).getId());
    EXPECT_THAT(refresh->paths, ElementsAre("/r/a"_q, "/r/a/b"_q));

    FolderConfiguration const again = manager->AddFolderAndParent("/r//a/./b/"_q, root);
    EXPECT_THAT(DifferingMembers(again, stored), IsEmpty());
    EXPECT_EQ(Count("FolderConfiguration"), 3);
}

TEST_F(FolderStoreTest, FolderOutsideEveryRootIsNotMade)
{
    FolderConfiguration const root = AddFolder("/r"_q);
    for (QString const& path : {"/x/y"_q, "/R/a"_q, "/r2"_q, "/"_q}) {
        EXPECT_EQ(manager->AddFolderAndParent(path, root).getId(), -1) << qPrintable(path);
        EXPECT_EQ(Count("FolderConfiguration"), 1);
    }
}

TEST_F(FolderStoreTest, DeepPathIsMadeWhole)
{
    FolderConfiguration const root = AddFolder("/r"_q);
    QString path = "/r"_q;
    for (int level = 0; level < 200; ++level)
        path += "/d"_q;
    EXPECT_NE(manager->AddFolderAndParent(path, root).getId(), -1);
    EXPECT_EQ(Count("FolderConfiguration"), 201);
}

TEST_F(FolderStoreTest, PathOfTwoThousandFoldersIsMadeOnASmallStack)
{
    FolderConfiguration const root = AddFolder("/r"_q);
    QString const path = "/r"_q + "/a"_q.repeated(DeepTree);
    int const id = OnSmallStack([&] {
        auto const database = store->CreateDatabase(); // thousands of commits by themselves would take long
        bool const began = database->transaction();
        int const last = manager->AddFolderAndParent(path, root).getId();
        return began && database->commit() ? last : -1;
    });
    EXPECT_EQ(manager->GetFolderConfigurationById(id).getClientPath(), path);
    EXPECT_EQ(Count("FolderConfiguration"), DeepTree + 1);
}

// Removal

/// Two roots: /r with /r/a, /r/a/x and /r/b, and /s with /s/a; a file in each folder and table.
class FolderTreeTest : public FolderStoreTest
{
protected:
    void SetUp() override
    {
        FolderStoreTest::SetUp();
        r = AddFolder("/r"_q);
        b = AddBelow(r, "b");
        a = AddBelow(r, "a");
        ax = AddBelow(a, "x");
        s = AddFolder("/s"_q);
        sa = AddBelow(s, "a");
        for (FolderConfiguration const& record : {r, a, ax, b, s, sa}) {
            AddFile(record, "FileConfiguration");
            AddFile(record, "GeneratedFileConfiguration");
            AddFile(record, "BaseFileConfiguration");
        }
        // Cached, so that a removal which leaves the caches alone shows.
        manager->GetAll();
        manager->GetAllRootFolders();
    }

    void TearDown() override
    {
        EXPECT_EQ(Count("GeneratedFileConfiguration"), 6);
        EXPECT_EQ(Count("BaseFileConfiguration"), 6);
        EXPECT_EQ(Count("Schedules"), 1);
        std::vector<QString> listed;
        for (FolderConfiguration const& record : manager->GetAll())
            listed.push_back(record.getClientPath());
        EXPECT_THAT(listed, testing::UnorderedElementsAreArray(Paths()));
        FolderStoreTest::TearDown();
    }

    /// The folders that have files on record.
    std::vector<int> FoldersWithFiles()
    {
        std::vector<int> ids;
        for (QVector<QVariant> const& row :
             RawStore(StorePath()).Rows("SELECT folderConfigurationId FROM FileConfiguration"_q))
            ids.push_back(row[0].toInt());
        return ids;
    }

    FolderConfiguration r, a, ax, b, s, sa;
};

TEST_F(FolderTreeTest, RemoveTakesOneRowAndLeavesChildrenAndFiles)
{
    EXPECT_TRUE(manager->Remove(r.getId()));
    EXPECT_THAT(Paths(), UnorderedElementsAre("/r/a"_q, "/r/a/x"_q, "/r/b"_q, "/s"_q, "/s/a"_q));
    EXPECT_EQ(Count("FileConfiguration"), 6);
    EXPECT_EQ(manager->GetFolderConfigurationById(a.getId()).getParentId(), r.getId());
    EXPECT_EQ(manager->GetFolderConfigurationById(a.getId()).getRootId(), r.getId());
    EXPECT_THAT(refresh->paths, ElementsAre("/r"_q));
}

TEST_F(FolderTreeTest, RemoveOfAnUnknownIdSucceedsAndTakesNothing)
{
    EXPECT_TRUE(manager->Remove(4711));
    EXPECT_TRUE(manager->Remove(0));
    EXPECT_EQ(Count("FolderConfiguration"), 6);
    EXPECT_THAT(refresh->paths, ElementsAre(QString(), QString()));
}

TEST_F(FolderTreeTest, RemoveFolderAndChildrenTakesTheTreeAndItsFiles)
{
    EXPECT_TRUE(manager->RemoveFolderAndChildren(r.getId()));
    EXPECT_THAT(Paths(), UnorderedElementsAre("/s"_q, "/s/a"_q));
    EXPECT_THAT(FoldersWithFiles(), UnorderedElementsAre(s.getId(), sa.getId()));
    EXPECT_THAT(refresh->paths, ElementsAre("/r/a/x"_q, "/r/a"_q, "/r/b"_q, "/r"_q));
}

TEST_F(FolderTreeTest, RemoveFolderAndChildrenOfAnInnerFolderLeavesTheRest)
{
    EXPECT_TRUE(manager->RemoveFolderAndChildren(a.getId()));
    EXPECT_THAT(Paths(), UnorderedElementsAre("/r"_q, "/r/b"_q, "/s"_q, "/s/a"_q));
    EXPECT_THAT(FoldersWithFiles(), UnorderedElementsAre(r.getId(), b.getId(), s.getId(), sa.getId()));
}

TEST_F(FolderTreeTest, FailureAtTheSecondChildLeavesTheFolderAndTheFirstChildGone)
{
    RefuseToDelete("FolderConfiguration", "OLD.clientPath = '/r/b'");
    EXPECT_FALSE(manager->RemoveFolderAndChildren(r.getId()));
    EXPECT_THAT(Paths(), UnorderedElementsAre("/r"_q, "/r/b"_q, "/s"_q, "/s/a"_q));
    EXPECT_THAT(FoldersWithFiles(), UnorderedElementsAre(r.getId(), b.getId(), s.getId(), sa.getId()));
    store->ClearError();
}

TEST_F(FolderTreeTest, CleanRootFolderTakesTheRootItsFilesAndItsFolders)
{
    EXPECT_TRUE(manager->CleanRootFolder(r.getId()));
    EXPECT_THAT(Paths(), UnorderedElementsAre("/s"_q, "/s/a"_q));
    EXPECT_THAT(FoldersWithFiles(), UnorderedElementsAre(s.getId(), sa.getId()));
    EXPECT_THAT(Ids(manager->GetAllRootFolders()), ElementsAre(s.getId()));
    EXPECT_THAT(refresh->paths, IsSupersetOf({"/r"_q, "/r/a"_q, "/r/a/x"_q, "/r/b"_q}));
    EXPECT_THAT(refresh->paths, SizeIs(4));
}

TEST_F(FolderTreeTest, CleanRootFolderThatFailsAtTheFilesLeavesTheSubFolders)
{
    RefuseToDelete("FileConfiguration", "OLD.id > 0");
    EXPECT_FALSE(manager->CleanRootFolder(r.getId()));
    EXPECT_THAT(Paths(), UnorderedElementsAre("/r/a"_q, "/r/a/x"_q, "/r/b"_q, "/s"_q, "/s/a"_q));
    EXPECT_EQ(Count("FileConfiguration"), 6);
    store->ClearError();
    Reopen();
    EXPECT_EQ(manager->GetFolderConfigurationById(r.getId()).getId(), -1);
}

TEST_F(FolderTreeTest, CleanRootFolderThatFailsAtTheSubFoldersLeavesThemWithoutFiles)
{
    RefuseToDelete("FolderConfiguration", "OLD.clientPath = '/r/a/x'");
    EXPECT_FALSE(manager->CleanRootFolder(r.getId()));
    EXPECT_THAT(Paths(), UnorderedElementsAre("/r/a"_q, "/r/a/x"_q, "/r/b"_q, "/s"_q, "/s/a"_q));
    EXPECT_THAT(FoldersWithFiles(), UnorderedElementsAre(s.getId(), sa.getId()));
    store->ClearError();
}

TEST_F(FolderTreeTest, CleanRootFolderOfASubFolderTakesThatRowOnly)
{
    EXPECT_TRUE(manager->CleanRootFolder(a.getId()));
    EXPECT_THAT(Paths(), UnorderedElementsAre("/r"_q, "/r/a/x"_q, "/r/b"_q, "/s"_q, "/s/a"_q));
    EXPECT_EQ(Count("FileConfiguration"), 6);
}

TEST_F(FolderTreeTest, CleanRootFolderInATransactionIsRolledBackWithIt)
{
    ASSERT_TRUE(store->CreateDatabase()->transaction());
    EXPECT_TRUE(manager->CleanRootFolder(r.getId()));
    ASSERT_TRUE(store->CreateDatabase()->rollback());
    manager->ClearCaches();
    EXPECT_EQ(Count("FolderConfiguration"), 6);
    EXPECT_EQ(Count("FileConfiguration"), 6);
}

// Many folders

class ManyFoldersTest : public FolderStoreTest
{
protected:
    static constexpr int Width = 20'000;

    /// A root with sub-folders side by side, each with a file. The root's id is 1.
    void FillWide()
    {
        RawStore(StorePath())
            .Run("BEGIN;"
                 "INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId) VALUES (1, '/r', 0, 1);"
                 "WITH RECURSIVE n(i) AS (SELECT 2 UNION ALL SELECT i + 1 FROM n WHERE i <= %1) "
                 "INSERT INTO FolderConfiguration (id, name, clientPath, parentId, rootId) "
                 "SELECT i, 'folder ' || i, '/r/folder ' || i, 1, 1 FROM n;"
                 "INSERT INTO FileConfiguration (folderConfigurationId, rootFolderId) "
                 "SELECT id, 1 FROM FolderConfiguration;"
                 "COMMIT"_q.arg(Width));
    }
};

TEST_F(ManyFoldersTest, AreListed)
{
    FillWide();
    EXPECT_THAT(manager->GetAll(), SizeIs(Width + 1));
    EXPECT_THAT(manager->GetFolderConfigurationByParentId(1), SizeIs(Width));
    EXPECT_THAT(manager->GetFolderConfigurationsByRootId(1), SizeIs(Width + 1));
}

TEST_F(ManyFoldersTest, AreCleanedWithTheirRoot)
{
    FillWide();
    EXPECT_TRUE(manager->CleanRootFolder(1));
    EXPECT_EQ(Count("FolderConfiguration"), 0);
    EXPECT_EQ(Count("FileConfiguration"), 0);
    EXPECT_THAT(refresh->paths, SizeIs(Width + 1));
}

TEST_F(ManyFoldersTest, AreRemovedOneByOneInATransaction)
{
    FillWide();
    ASSERT_TRUE(store->CreateDatabase()->transaction());
    EXPECT_TRUE(manager->RemoveFolderAndChildren(1));
    ASSERT_TRUE(store->CreateDatabase()->commit());
    EXPECT_EQ(Count("FolderConfiguration"), 0);
    EXPECT_EQ(Count("FileConfiguration"), 0);
    EXPECT_THAT(refresh->paths, SizeIs(Width + 1));
}

TEST_F(ManyFoldersTest, InsideOneAnotherAreRemovedDeepestFirst)
{
    constexpr int Depth = 500;
    RawStore(StorePath())
        .Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
             "INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId) SELECT i, i, i - 1, 1 FROM n"_q.arg(
                 Depth));
    ASSERT_TRUE(store->CreateDatabase()->transaction());
    EXPECT_TRUE(manager->RemoveFolderAndChildren(1));
    ASSERT_TRUE(store->CreateDatabase()->commit());
    EXPECT_EQ(Count("FolderConfiguration"), 0);
    ASSERT_THAT(refresh->paths, SizeIs(Depth));
    EXPECT_EQ(refresh->paths.first(), QString::number(Depth));
    EXPECT_EQ(refresh->paths.last(), "1"_q);
}

// Threads

TEST_F(FolderStoreTest, ThreadsShareOneManager)
{
    FolderConfigManager shared(store, nullptr);
    FolderConfiguration root = Folder("/r"_q);
    ASSERT_TRUE(shared.Add(root));
    constexpr int Threads = 4;
    constexpr int Rounds = 20;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < Threads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < Rounds; ++i) {
                FolderConfiguration record = Folder("/r/%1-%2"_q.arg(thread).arg(i), root.getId(), root.getId());
                // A listing may be empty: another thread's change can clear the cache between refill and read.
                bool const right =
                    shared.Add(record) &&
                    shared.GetFolderConfigurationById(record.getId()).getClientPath() == record.getClientPath() &&
                    shared.GetAll().size() <= 1 + Threads * Rounds && shared.GetAllRootFolders().size() <= 1 &&
                    (i % 2 == 0 || shared.Remove(record.getId()));
                wrong += right ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(Count("FolderConfiguration"), 1 + Threads * Rounds / 2);
    EXPECT_THAT(shared.GetAll(), SizeIs(1 + Threads * Rounds / 2));
}

} // namespace
} // namespace folder_manager_store_test
