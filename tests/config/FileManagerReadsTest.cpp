#include "support/FileManagerFixture.h"
#include "support/QtPrinters.h"

#include <climits>
#include <type_traits>

namespace file_manager_reads_test {
namespace {

using namespace sync::config;
using namespace sync::interf;
using namespace tandry::test;
using testing::IsEmpty;
using testing::Return;
using testing::SizeIs;

// The class.

static_assert(std::is_base_of_v<DatabaseConfigurationManager, FileConfigManager>);
static_assert(std::is_base_of_v<IFileConfigManager, FileConfigManager>);
static_assert(std::is_same_v<decltype(&FileConfigManager::RemoveByRootFolderId), bool (FileConfigManager::*)(int)>);

class FileManager : public FileManagerFixture
{};

TEST_F(FileManager, BeginsWithTheBaseThatHoldsTheStore)
{
    DatabaseConfigurationManager* const base = &manager;
    IFileConfigManager* const interface = &manager;
    EXPECT_EQ(static_cast<void*>(base), static_cast<void*>(&manager));
    EXPECT_GT(static_cast<void*>(interface), static_cast<void*>(base));
}

TEST_F(FileManager, AnswersWithTheMetaObjectOfItsInterface)
{
    EXPECT_EQ(manager.metaObject(), &IFileConfigManager::staticMetaObject);
    EXPECT_EQ(manager.qt_metacast("sync::config::FileConfigManager"), nullptr);
    EXPECT_EQ(manager.qt_metacast("DatabaseConfigurationManager"), nullptr);
    EXPECT_EQ(manager.qt_metacast("sync::interf::IFileConfigManager"),
              static_cast<void*>(static_cast<IFileConfigManager*>(&manager)));
}

TEST_F(FileManager, KeepsAShareOfEachAndCallsNothingWhenMadeAndGone)
{
    {
        FileConfigManager const another(store, refresh, folders);
        EXPECT_EQ(store.use_count(), 3);
        EXPECT_EQ(refresh.use_count(), 3);
        EXPECT_EQ(folders.use_count(), 3);
    }
    EXPECT_EQ(store.use_count(), 2);
    EXPECT_EQ(refresh.use_count(), 2);
    EXPECT_EQ(folders.use_count(), 2);
    EXPECT_EQ(store->QueriesCreated(), 0);
    EXPECT_THAT(refresh->paths, IsEmpty());
}

// Lookups.

struct Lookup
{
    char const* name;
    FileConfiguration (*run)(FileConfigManager&);
    char const* from;
    Bound binding;
};

class FileLookup : public FileManagerFixture, public testing::WithParamInterface<Lookup>
{};

TEST_P(FileLookup, AsksItsStatementOutsideAnyScope)
{
    GetParam().run(manager);
    ExpectConversation(*store, {Read(FileSelect(GetParam().from), {GetParam().binding})});
}

TEST_P(FileLookup, TakesTheFirstOfSeveralRows)
{
    FileConfiguration other = DistinctFile();
    other.id = 1;
    store->PlayRows({ToRow(DistinctFile()), ToRow(other)});
    EXPECT_EQ(GetParam().run(manager).id, 101);
}

TEST_P(FileLookup, OfAFailingStoreIsADefaultRecord)
{
    store->FailExec(1);
    EXPECT_THAT(DifferingMembers(GetParam().run(manager), FileConfiguration()), IsEmpty());
}

TEST_P(FileLookup, ThatMissesHasNoId)
{
    FileConfiguration const file = GetParam().run(manager);
    EXPECT_EQ(file.id, -1);
    EXPECT_TRUE(file.clientPath.isNull());
}

INSTANTIATE_TEST_SUITE_P(
    Lookups,
    FileLookup,
    testing::Values(Lookup{"ById",
                           [](FileConfigManager& m) { return m.GetFileConfigurationById(7); },
                           "FileConfiguration WHERE id = :id",
                           {":id", 7}},
                    Lookup{"GeneratedById",
                           [](FileConfigManager& m) { return m.GetGeneratedFileConfigurationById(7); },
                           "GeneratedFileConfiguration WHERE id = :id",
                           {":id", 7}},
                    Lookup{"ByServerId",
                           [](FileConfigManager& m) { return m.GetFileConfigurationByServerId("s7"_q); },
                           "FileConfiguration WHERE serverFileId = :serverFileId",
                           {":serverFileId", "s7"_q}},
                    Lookup{"ByClientPath",
                           [](FileConfigManager& m) { return m.GetFileConfigurationByClientPath("/a"_q); },
                           "FileConfiguration WHERE clientPath = :clientPath",
                           {":clientPath", "/a"_q}},
                    Lookup{"GeneratedByClientPath",
                           [](FileConfigManager& m) { return m.GetGeneratedFileConfigurationByClientPath("/a"_q); },
                           "GeneratedFileConfiguration WHERE clientPath = :clientPath",
                           {":clientPath", "/a"_q}}),
    [](auto const& test) { return test.param.name; });

class FileManagerReads : public FileManagerFixture
{};

TEST_F(FileManagerReads, AMissByClientPathCarriesThePathInTheNameAndCountsAsSyncing)
{
    FileConfiguration expected;
    expected.name = "/unknown"_q;
    expected.setSyncStatus(FileSyncStatusSyncing);
    expected.resetSyncStatusChanged();
    EXPECT_THAT(DifferingMembers(manager.GetFileConfigurationByClientPath("/unknown"_q), expected), IsEmpty());
    EXPECT_FALSE(manager.GetFileConfigurationByClientPath("/unknown"_q).getSyncStatusChanged());
}

TEST_F(FileManagerReads, AFailureByClientPathIsAPlainDefaultRecord)
{
    store->FailExec(1);
    FileConfiguration const file = manager.GetFileConfigurationByClientPath("/unknown"_q);
    EXPECT_THAT(DifferingMembers(file, FileConfiguration()), IsEmpty());
    EXPECT_EQ(file.getSyncStatus(), 2);
}

TEST_F(FileManagerReads, AMissOfAGeneratedFileByClientPathIsAPlainDefaultRecord)
{
    EXPECT_THAT(DifferingMembers(manager.GetGeneratedFileConfigurationByClientPath("/unknown"_q), FileConfiguration()),
                IsEmpty());
}

TEST_F(FileManagerReads, BaseFilesAreNeverFoundAndNeverAskedFor)
{
    EXPECT_THAT(DifferingMembers(manager.GetBaseFileConfigurationById(101), FileConfiguration()), IsEmpty());
    EXPECT_THAT(DifferingMembers(manager.GetBaseFileConfigurationByParentFileId(101), FileConfiguration()), IsEmpty());
    EXPECT_EQ(store->QueriesCreated(), 0);
}

/// A query that has no row to go to and yet claims to stand on one.
class RowlessQuery : public IQSqlQueryWrapper
{
public:
    QVariant value(int) override { return 7; }
    bool next() override { return false; }
    bool isValid() override { return true; }
    bool prepare(QString const&) override { return true; }
    void bindValue(QString const&, QVariant const&) override {}
    bool exec() override { return true; }
    QVariant lastInsertId() override { return {}; }
    int numRowsAffected() override { return 0; }
};

class RowlessStore : public RecordingStore
{
public:
    std::shared_ptr<IQSqlQueryWrapper> CreateQuery() override { return std::make_shared<RowlessQuery>(); }
};

TEST_F(FileManagerReads, ALookupTrustsTheAnswerOfNext)
{
    FileConfigManager another(std::make_shared<RowlessStore>(), refresh, folders);
    EXPECT_EQ(another.GetFileConfigurationById(1).id, -1);
    EXPECT_EQ(another.GetFileConfigurationByClientPath("/a"_q).name, "/a"_q);
}

// Listings.

struct Listing
{
    char const* name;
    QVector<FileConfiguration> (*run)(FileConfigManager&);
    char const* from;
    std::vector<Bound> bindings;
};

class FileListing : public FileManagerFixture, public testing::WithParamInterface<Listing>
{};

TEST_P(FileListing, AsksItsStatementOutsideAnyScope)
{
    GetParam().run(manager);
    ExpectConversation(*store, {Read(FileSelect(GetParam().from), GetParam().bindings)});
}

TEST_P(FileListing, ReturnsAllRowsInTheirOrder)
{
    std::vector<Row> rows;
    for (int id : {3, 1, 2}) {
        FileConfiguration file = DistinctFile();
        file.id = id;
        rows.push_back(ToRow(file));
    }
    store->PlayRows(rows);

    QVector<FileConfiguration> const files = GetParam().run(manager);
    ASSERT_EQ(files.size(), 3);
    EXPECT_EQ(files[0].id, 3);
    EXPECT_EQ(files[1].id, 1);
    EXPECT_EQ(files[2].id, 2);
    EXPECT_EQ(files[2].checkSumMD5, "check sum MD5"_q);
}

TEST_P(FileListing, WithoutRowsIsEmpty)
{
    EXPECT_THAT(GetParam().run(manager), IsEmpty());
}

TEST_P(FileListing, OfAFailingStoreIsEmpty)
{
    store->FailExec(1);
    EXPECT_THAT(GetParam().run(manager), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Listings,
    FileListing,
    testing::Values(
        Listing{"All", [](FileConfigManager& m) { return m.GetAll(); }, "FileConfiguration", {}},
        Listing{"AllFiles",
                [](FileConfigManager& m) { return m.GetAll(FileConfigurationTypeFile); },
                "FileConfiguration",
                {}},
        Listing{"AllGenerated",
                [](FileConfigManager& m) { return m.GetAll(FileConfigurationTypeGenerated); },
                "GeneratedFileConfiguration",
                {}},
        Listing{"AllBase",
                [](FileConfigManager& m) { return m.GetAll(FileConfigurationTypeBase); },
                "BaseFileConfiguration",
                {}},
        Listing{"AllOfAnUnknownType", [](FileConfigManager& m) { return m.GetAll(FileConfigurationType(7)); }, "", {}},
        Listing{"AllOfANegativeType", [](FileConfigManager& m) { return m.GetAll(FileConfigurationType(-1)); }, "", {}},
        Listing{"ByClientPath",
                [](FileConfigManager& m) { return m.GetAllFileConfigurationsByClientPath("/a"_q); },
                "FileConfiguration WHERE clientPath = :clientPath",
                {{":clientPath", "/a"_q}}},
        Listing{
            "ByRootAndTypeFile",
            [](FileConfigManager& m) { return m.GetFileConfigurationsByRootFolderId(7, FileConfigurationTypeFile); },
            "FileConfiguration WHERE rootFolderId = :rootFolderId ",
            {{":rootFolderId", 7}}},
        Listing{"ByRootAndTypeGenerated",
                [](FileConfigManager& m) {
                    return m.GetFileConfigurationsByRootFolderId(7, FileConfigurationTypeGenerated);
                },
                "GeneratedFileConfiguration WHERE rootFolderId = :rootFolderId ",
                {{":rootFolderId", 7}}},
        Listing{
            "ByRootAndTypeBase",
            [](FileConfigManager& m) { return m.GetFileConfigurationsByRootFolderId(7, FileConfigurationTypeBase); },
            "BaseFileConfiguration WHERE rootFolderId = :rootFolderId ",
            {{":rootFolderId", 7}}},
        Listing{"ByRootAndUnknownType",
                [](FileConfigManager& m) { return m.GetFileConfigurationsByRootFolderId(7, FileConfigurationType(3)); },
                " WHERE rootFolderId = :rootFolderId ",
                {{":rootFolderId", 7}}},
        Listing{
            "WithSyncOption",
            [](FileConfigManager& m) { return m.GetFileConfigurationsWithSyncOption(7, FileSyncOptionRepathRequired); },
            "FileConfiguration WHERE rootFolderId = :rootFolderId AND (syncOption & 64) = 64",
            {{":rootFolderId", 7}}},
        Listing{"WithNoSyncOption",
                [](FileConfigManager& m) { return m.GetFileConfigurationsWithSyncOption(7, FileSyncOptionNone); },
                "FileConfiguration WHERE rootFolderId = :rootFolderId AND (syncOption & 0) = 0",
                {{":rootFolderId", 7}}},
        Listing{"WithEverySyncOption",
                [](FileConfigManager& m) { return m.GetFileConfigurationsWithSyncOption(7, FileSyncOption(-1)); },
                "FileConfiguration WHERE rootFolderId = :rootFolderId AND (syncOption & -1) = -1",
                {{":rootFolderId", 7}}},
        Listing{"ByFolderAndSyncStatus",
                [](FileConfigManager& m) {
                    return m.GetFileConfigurationsByFolderIdAndSyncStatus(7, FileSyncStatusSyncing);
                },
                "FileConfiguration WHERE folderConfigurationId = :folderConfigurationId  AND syncStatus = "
                ":syncStatus ORDER BY name",
                {{":folderConfigurationId", 7}, {":syncStatus", 1}}},
        Listing{"GeneratedByParent",
                [](FileConfigManager& m) { return m.GetGeneratedFileConfigurationsByParentFileId(7); },
                "GeneratedFileConfiguration WHERE parentFileId = :parentFileId ORDER BY id",
                {{":parentFileId", 7}}}),
    [](auto const& test) { return test.param.name; });

// Orders.

struct Order
{
    int value;
    char const* clause;
};

class FileOrder : public FileManagerFixture, public testing::WithParamInterface<Order>
{};

TEST_P(FileOrder, EndsTheThreeSortedListings)
{
    FileConfigOrderByEnum const order{GetParam().value};
    manager.GetFileConfigurationsByFolderId(7, order);
    manager.GetFileConfigurationsByRootFolderId(8, order);
    manager.GetGeneratedFileConfigurationsByRootFolderId(9, order);

    std::string const clause = GetParam().clause;
    ExpectConversation(
        *store,
        {Read(FileSelect("FileConfiguration WHERE folderConfigurationId = :folderConfigurationId " + clause),
              {{":folderConfigurationId", 7}}),
         Read(FileSelect("FileConfiguration WHERE rootFolderId = :rootFolderId " + clause), {{":rootFolderId", 8}}),
         Read(FileSelect("GeneratedFileConfiguration WHERE rootFolderId = :rootFolderId " + clause),
              {{":rootFolderId", 9}})});
}

INSTANTIATE_TEST_SUITE_P(Orders,
                         FileOrder,
                         testing::Values(Order{0, "ORDER BY Id"},
                                         Order{1, "ORDER BY Id DESC"},
                                         Order{2, "ORDER BY Name"},
                                         Order{3, "ORDER BY Name DESC"},
                                         Order{4, "ORDER BY FolderConfigurationId"},
                                         Order{5, "ORDER BY FolderConfigurationId DESC"},
                                         Order{6, "ORDER BY ClientPath"},
                                         Order{7, "ORDER BY ClientPath DESC"},
                                         Order{8, "ORDER BY ServerPath"},
                                         Order{9, "ORDER BY ServerPath DESC"},
                                         Order{10, "ORDER BY CheckSum"},
                                         Order{11, "ORDER BY CheckSum DESC"},
                                         Order{12, "ORDER BY CreatedDateTime"},
                                         Order{13, "ORDER BY CreatedDateTime DESC"},
                                         Order{14, "ORDER BY LastModifiedDateTime"},
                                         Order{15, "ORDER BY LastModifiedDateTime DESC"},
                                         Order{16, "ORDER BY SyncStatus"},
                                         Order{17, "ORDER BY SyncStatus DESC"},
                                         Order{18, "ORDER BY LastOperationType"},
                                         Order{19, "ORDER BY LastOperationType DESC"},
                                         Order{20, "ORDER BY Size"},
                                         Order{21, "ORDER BY Size DESC"},
                                         Order{22, "ORDER BY Id"},
                                         Order{99, "ORDER BY Id"},
                                         Order{-1, "ORDER BY Id"},
                                         Order{INT_MAX, "ORDER BY Id"},
                                         Order{INT_MIN, "ORDER BY Id"}),
                         [](auto const& test) {
                             return (test.param.value < 0 ? "Minus" : "Value") +
                                    std::to_string(std::abs(static_cast<long long>(test.param.value)));
                         });

// Rows.

TEST_F(FileManagerReads, ARowBecomesARecordWithTheStatusUnchanged)
{
    FileConfiguration expected = DistinctFile(FileConfigurationTypeBase);
    expected.resetSyncStatusChanged();
    expected.setSyncSubStatus(FileSynchronizationSubStatus(0));
    store->PlayRows({ToRow(DistinctFile(FileConfigurationTypeBase))});
    EXPECT_THAT(DifferingMembers(manager.GetFileConfigurationById(101), expected), IsEmpty());
}

TEST_F(FileManagerReads, EachColumnGoesToItsMember)
{
    QDateTime const created(QDate(2024, 2, 1), QTime(1, 2, 3, 4), Qt::UTC);
    store->PlayRows({{0,
                      1,
                      "two"_q,
                      "three"_q,
                      "four"_q,
                      "five"_q,
                      created.addDays(6),
                      created.addDays(7),
                      8,
                      9,
                      10'000'000'000LL,
                      "<a><eleven>x</eleven></a>"_q,
                      created.addDays(12),
                      13,
                      14,
                      15,
                      16,
                      "seventeen"_q,
                      18,
                      19,
                      "twenty"_q,
                      "twenty-one"_q,
                      "twenty-two"_q,
                      "<a FileDate=\"2024-02-25T01:02:03Z\"><b FileId=\"23\"/></a>"_q}});
    FileConfiguration const file = manager.GetFileConfigurationById(0);
    EXPECT_EQ(file.id, 0);
    EXPECT_EQ(file.folderConfigurationId, 1);
    EXPECT_EQ(file.name, "two"_q);
    EXPECT_EQ(file.clientPath, "three"_q);
    EXPECT_EQ(file.serverPath, "four"_q);
    EXPECT_EQ(file.checkSum, "five"_q);
    EXPECT_EQ(file.createdDateTime, created.addDays(6));
    EXPECT_EQ(file.lastModifiedDateTime, created.addDays(7));
    EXPECT_EQ(file.getSyncStatus(), 8);
    EXPECT_EQ(file.lastOperationType, 9);
    EXPECT_EQ(file.size, 10'000'000'000LL);
    EXPECT_EQ(file.nameValueProperties, (QMap<QString, QString>{{"eleven"_q, "x"_q}}));
    EXPECT_EQ(file.lastOperationTime, created.addDays(12));
    EXPECT_EQ(file.rootFolderId, 13);
    EXPECT_EQ(file.syncOption, 14);
    EXPECT_EQ(file.parentFileId, 15);
    EXPECT_EQ(file.fileType, 16);
    EXPECT_EQ(file.ownerId, "seventeen"_q);
    EXPECT_EQ(file.privileges, 18);
    EXPECT_EQ(file.productConfigurationId, 19);
    EXPECT_EQ(file.serverFileId, "twenty"_q);
    EXPECT_EQ(file.serverFileVersionId, "twenty-one"_q);
    EXPECT_EQ(file.checkSumMD5, "twenty-two"_q);
    ASSERT_THAT(file.fileLinks, SizeIs(1));
    EXPECT_EQ(file.fileLinks[0].fileId, 23);
    EXPECT_EQ(file.fileDate, QDateTime(QDate(2024, 2, 25), QTime(1, 2, 3), Qt::UTC));
    EXPECT_FALSE(file.getSyncStatusChanged());
    EXPECT_EQ(file.getSyncSubStatus(), 0);
}

TEST_F(FileManagerReads, NullColumnsReadAsZeroEmptyAndInvalid)
{
    store->PlayRows({Row(24)});
    FileConfiguration const file = manager.GetFileConfigurationById(1);
    EXPECT_EQ(file.id, 0);
    ExpectNullColumns(file);
}

TEST_F(FileManagerReads, TimesKeepTheirClockReadingAndBecomeUtc)
{
    FileConfiguration stored = DistinctFile();
    QTime const clock(12, 30, 15, 250);
    stored.createdDateTime = QDateTime(QDate(2024, 7, 3), clock, Qt::LocalTime);
    stored.lastModifiedDateTime = QDateTime(QDate(2024, 7, 3), clock, Qt::OffsetFromUTC, 7200);
    stored.lastOperationTime = QDateTime(QDate(2024, 7, 3), clock, Qt::UTC);
    store->PlayRows({ToRow(stored)});

    FileConfiguration const file = manager.GetFileConfigurationById(1);
    for (QDateTime const& time : {file.createdDateTime, file.lastModifiedDateTime, file.lastOperationTime}) {
        EXPECT_EQ(time, QDateTime(QDate(2024, 7, 3), clock, Qt::UTC));
        EXPECT_EQ(time.timeSpec(), Qt::UTC);
    }
}

TEST_F(FileManagerReads, TheTypeComesFromTheRowAndNotFromTheTable)
{
    store->PlayRows({ToRow(DistinctFile(FileConfigurationTypeFile))});
    EXPECT_EQ(manager.GetGeneratedFileConfigurationById(101).fileType, FileConfigurationTypeFile);
}

TEST_F(FileManagerReads, AllBitsOfTheStoredOptionComeBack)
{
    store->PlayRows({ToRow(DistinctFile())});
    EXPECT_EQ(manager.GetFileConfigurationById(101).syncOption, 65);
}

// Files of roots that aren't on record.

TEST_F(FileManagerReads, FilesOfNonExistingRootsAreAskedForWithTheIdsOfTheRootsInOrder)
{
    EXPECT_CALL(*folders, GetAllRootFolders())
        .WillOnce(Return(QVector<FolderConfiguration>{StoredFolder(3, Folder("/c"_q)),
                                                      StoredFolder(-1, Folder("/a"_q)),
                                                      StoredFolder(2'000'000'000, Folder("/b"_q))}));
    store->PlayRows({ToRow(DistinctFile())});
    EXPECT_THAT(manager.GetFileConfigurationsOfNonExistingRootFolders(), SizeIs(1));
    ExpectConversation(*store, {Read(FileSelect("FileConfiguration WHERE rootFolderId NOT IN (3,-1,2000000000)"))});
}

TEST_F(FileManagerReads, WithoutRootsTheListInTheStatementIsEmpty)
{
    EXPECT_CALL(*folders, GetAllRootFolders()).WillOnce(Return(QVector<FolderConfiguration>()));
    EXPECT_THAT(manager.GetFileConfigurationsOfNonExistingRootFolders(), IsEmpty());
    ExpectConversation(*store, {Read(FileSelect("FileConfiguration WHERE rootFolderId NOT IN ()"))});
}

TEST_F(FileManagerReads, FilesOfNonExistingRootsOfAFailingStoreAreNone)
{
    EXPECT_CALL(*folders, GetAllRootFolders()).WillOnce(Return(QVector<FolderConfiguration>()));
    store->FailExec(1);
    EXPECT_THAT(manager.GetFileConfigurationsOfNonExistingRootFolders(), IsEmpty());
}

// By path and account.

FolderConfiguration FolderOf(int authenticationId)
{
    FolderConfiguration folder;
    folder.setAuthenticationId(authenticationId);
    return folder;
}

FileConfiguration FileIn(int folderId, int id)
{
    FileConfiguration file;
    file.id = id;
    file.folderConfigurationId = folderId;
    return file;
}

struct ByAccount
{
    char const* name;
    FileConfiguration (FileConfigManager::*run)(QString, int);
    char const* from;
    char const* placeholder;
};

class FileByAccount : public FileManagerFixture, public testing::WithParamInterface<ByAccount>
{
protected:
    FileConfiguration Find(int authenticationId) { return (manager.*GetParam().run)("/a"_q, authenticationId); }
};

TEST_P(FileByAccount, IsTheFirstWhoseFolderBelongsToTheAccount)
{
    store->PlayRows({ToRow(FileIn(11, 1)), ToRow(FileIn(12, 2)), ToRow(FileIn(13, 3))});
    testing::InSequence const inOrder;
    EXPECT_CALL(*folders, GetFolderConfigurationById(11)).WillOnce(Return(FolderOf(4)));
    EXPECT_CALL(*folders, GetFolderConfigurationById(12)).WillOnce(Return(FolderOf(5)));
    EXPECT_EQ(Find(5).id, 2);
    ExpectConversation(*store, {Read(FileSelect(GetParam().from), {{GetParam().placeholder, "/a"_q}})});
}

TEST_P(FileByAccount, IsAPlainDefaultRecordWhenNoFolderBelongsToTheAccount)
{
    store->PlayRows({ToRow(FileIn(11, 1))});
    EXPECT_CALL(*folders, GetFolderConfigurationById(11)).WillOnce(Return(FolderOf(4)));
    EXPECT_THAT(DifferingMembers(Find(5), FileConfiguration()), IsEmpty());
}

TEST_P(FileByAccount, IsAPlainDefaultRecordForAnUnknownPath)
{
    EXPECT_THAT(DifferingMembers(Find(5), FileConfiguration()), IsEmpty());
}

TEST_P(FileByAccount, WhoseFolderIsGoneBelongsToTheAccountMinusOne)
{
    EXPECT_CALL(*folders, GetFolderConfigurationById(11)).WillRepeatedly(Return(FolderConfiguration()));
    store->PlayRows({ToRow(FileIn(11, 1))});
    EXPECT_EQ(Find(-1).id, 1);
    store->PlayRows({ToRow(FileIn(11, 1))});
    EXPECT_EQ(Find(0).id, -1);
}

INSTANTIATE_TEST_SUITE_P(
    Paths,
    FileByAccount,
    testing::Values(ByAccount{"ClientPath",
                              &FileConfigManager::GetFileConfigurationByClientPathAndAuthenticationId,
                              "FileConfiguration WHERE clientPath = :clientPath",
                              ":clientPath"},
                    ByAccount{"ServerPath",
                              &FileConfigManager::GetFileConfigurationByServerPathAndAuthenticationId,
                              "FileConfiguration WHERE serverPath = :serverPath",
                              ":serverPath"}),
    [](auto const& test) { return test.param.name; });

/// A manager whose lookups answer from a client's own override.
class OverridingManager : public FileConfigManager
{
public:
    using FileConfigManager::FileConfigManager;

    FileConfiguration GetFileConfigurationById(int id) override { return FileIn(11, id == 404 ? -1 : id); }
    FileConfiguration GetFileConfigurationByClientPath(QString clientPath) override
    {
        FileConfiguration file = FileIn(11, 42);
        file.clientPath = clientPath;
        return file;
    }
    QVector<FileConfiguration> GetAllFileConfigurationsByClientPath(QString) override { return {FileIn(11, 43)}; }
};

TEST_F(FileManagerReads, CompositeLookupsFollowAnOverride)
{
    OverridingManager overriding(store, refresh, folders);
    EXPECT_CALL(*folders, GetFolderConfigurationById(11)).WillOnce(Return(FolderOf(4)));
    EXPECT_EQ(overriding.GetFileConfigurationByClientPathAndAuthenticationId("/a"_q, 4).id, 43);

    FileLink link;
    link.fileId = 7;
    EXPECT_EQ(overriding.GetFileConfiguration(link, "/r/file"_q).id, 7);
    link.fileId = 404;
    EXPECT_EQ(overriding.GetFileConfiguration(link, "/r/file"_q).id, 42);
    EXPECT_EQ(store->QueriesCreated(), 0);
}

// The file that a link points at.

TEST_F(FileManagerReads, ALinkWithAGoodIdIsFollowedByItsIdAlone)
{
    FileLink link;
    link.fileId = 101;
    link.path = "elsewhere"_q;
    store->PlayRows({ToRow(DistinctFile())});
    EXPECT_EQ(manager.GetFileConfiguration(link, "/r/file"_q).id, 101);
    ExpectConversation(*store, {Read(FileSelect("FileConfiguration WHERE id = :id"), {{":id", 101}})});
}

TEST_F(FileManagerReads, ALinkWithAStaleIdAndAGoodPathIsFollowedByItsPath)
{
    FileLink link;
    link.fileId = 7;
    link.path = "/r/target"_q;
    store->PlayRows({});
    store->PlayRows({ToRow(DistinctFile())});
    EXPECT_EQ(manager.GetFileConfiguration(link, "/r/file"_q).id, 101);
    ExpectConversation(
        *store,
        {Read(FileSelect("FileConfiguration WHERE id = :id"), {{":id", 7}}),
         Read(FileSelect("FileConfiguration WHERE clientPath = :clientPath"), {{":clientPath", "/r/target"_q}})});
}

TEST_F(FileManagerReads, ALinkThatLeadsNowhereAnswersLikeALookupByPath)
{
    FileLink link;
    link.path = "target"_q;
    link.serverFileId = "known to the server"_q;
    FileConfiguration const file = manager.GetFileConfiguration(link, "/r/file"_q);
    EXPECT_EQ(file.id, -1);
    EXPECT_EQ(file.name, "/r/target"_q);
    EXPECT_EQ(file.getSyncStatus(), 1);
    EXPECT_THAT(store->Executions(), SizeIs(1)); // the server's id isn't searched for
}

struct Resolution
{
    char const* name;
    char const* path;
    char const* linkingFile;
    char const* expected;
};

class FileLinkPath : public FileManagerFixture, public testing::WithParamInterface<Resolution>
{};

TEST_P(FileLinkPath, CountsFromTheFolderOfTheLinkingFile)
{
    FileLink link;
    link.path = QString::fromUtf8(GetParam().path);
    manager.GetFileConfiguration(link, QString::fromUtf8(GetParam().linkingFile));
    EXPECT_EQ(LastBound(":clientPath").toString(), QString::fromUtf8(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(Paths,
                         FileLinkPath,
                         testing::Values(Resolution{"Absolute", "/a/b", "/r/file", "/a/b"},
                                         Resolution{"AbsoluteUnclean", "/a//x/../b/", "/r/file", "/a/b"},
                                         Resolution{"Relative", "b", "/no such folder/file", "/no such folder/b"},
                                         Resolution{"RelativeBelow", "a/b", "/r/file", "/r/a/b"},
                                         Resolution{"RelativeUp", "../b", "/r/a/file", "/r/b"},
                                         Resolution{"RelativeFromTheRootFolder", "b", "/file", "/b"},
                                         Resolution{"RelativeFromAnUncleanFolder", "./b", "/r//x/../file", "/r/b"},
                                         Resolution{"FolderThatLooksLikeAMarker", "b", "/%2/%1/file", "/%2/%1/b"},
                                         Resolution{"PathThatLooksLikeAMarker", "%1", "/r/file", "/r/%1"},
                                         Resolution{"Empty", "", "/r/file", "/r"},
                                         Resolution{"Dot", ".", "/r/file", "/r"}),
                         [](auto const& test) { return test.param.name; });

} // namespace
} // namespace file_manager_reads_test
