#include "support/FileManagerFixture.h"
#include "support/QtPrinters.h"

#include <QFile>
#include <QTemporaryDir>

namespace file_manager_removal_test {
namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// One statement each.

struct Removal
{
    char const* name;
    bool (*run)(FileConfigManager&);
    std::vector<Execution> conversation;
};

class FileRemoval : public FileManagerFixture, public testing::WithParamInterface<Removal>
{};

TEST_P(FileRemoval, SaysItsStatementInAScopeAndAnswersTrueWhenNoRowMatches)
{
    store->SetRowsAffected(0);
    EXPECT_TRUE(GetParam().run(manager));
    ExpectConversation(*store, GetParam().conversation);
    EXPECT_THAT(refresh->paths, IsEmpty());
}

TEST_P(FileRemoval, AnswersFalseWhenItsStatementFails)
{
    store->FailExec(static_cast<int>(GetParam().conversation.size()));
    EXPECT_FALSE(GetParam().run(manager));
}

INSTANTIATE_TEST_SUITE_P(
    Operations,
    FileRemoval,
    testing::Values(
        Removal{"GeneratedFile",
                [](FileConfigManager& m) { return m.RemoveGeneratedFileConfiguration(7); },
                {Read(FileSelect("GeneratedFileConfiguration WHERE id = :id"), {{":id", 7}}),
                 Written("DELETE FROM GeneratedFileConfiguration WHERE Id = :id;", {{":id", 7}})}},
        Removal{"ByFolder",
                [](FileConfigManager& m) { return m.RemoveByFolderConfigurationId(7); },
                {Written("DELETE FROM FileConfiguration WHERE folderConfigurationId = :folderConfigurationId;",
                         {{":folderConfigurationId", 7}})}},
        Removal{"ByRoot",
                [](FileConfigManager& m) { return m.RemoveByRootFolderId(7); },
                {Written("DELETE FROM FileConfiguration WHERE rootFolderId = :rootFolderId;", {{":rootFolderId", 7}})}},
        Removal{"GeneratedByRoot",
                [](FileConfigManager& m) { return m.RemoveGeneratedFileConfigurationsByRootFolderId(7); },
                {Written("DELETE FROM GeneratedFileConfiguration WHERE rootFolderId = :rootFolderId;",
                         {{":rootFolderId", 7}})}},
        Removal{"SyncStatus",
                [](FileConfigManager& m) { return m.UpdateSyncStatusFromSyncingToNotSynced(7); },
                {Written("UPDATE FileConfiguration SET syncStatus = :syncStatusNotSynced WHERE folderConfigurationId = "
                         ":folderConfigurationId AND syncStatus = :syncStatusSyncing;",
                         {{":syncStatusNotSynced", 2}, {":folderConfigurationId", 7}, {":syncStatusSyncing", 1}})}}),
    [](auto const& test) { return test.param.name; });

class FileManagerRemoval : public FileManagerFixture
{
protected:
    QString MakeFile(char const* name)
    {
        QString path = directory.filePath(QString::fromUtf8(name));
        EXPECT_TRUE(QFile(path).open(QIODevice::WriteOnly));
        return path;
    }

    static Row GeneratedRow(int id, QString const& clientPath, int syncStatus = 2)
    {
        FileConfiguration file = DistinctFile(FileConfigurationTypeGenerated);
        file.id = id;
        file.clientPath = clientPath;
        file.setSyncStatus(FileSynchronizationStatus(syncStatus));
        return ToRow(file);
    }

    QTemporaryDir const directory;

    static Execution GeneratedOfParent(int id)
    {
        return Read(FileSelect("GeneratedFileConfiguration WHERE parentFileId = :parentFileId ORDER BY id"),
                    {{":parentFileId", id}});
    }
    static Execution GeneratedOfParentRemoved(int id)
    {
        return Written("DELETE FROM GeneratedFileConfiguration WHERE parentFileId = :parentFileId;",
                       {{":parentFileId", id}});
    }
    static Execution LookedUp(int id) { return Read(FileSelect("FileConfiguration WHERE id = :id"), {{":id", id}}); }
    static Execution Removed(int id) { return Written("DELETE FROM FileConfiguration WHERE Id = :id;", {{":id", id}}); }
};

// A file with all that was generated from it.

TEST_F(FileManagerRemoval, OfAFileWithoutGeneratedOnesRemovesItsRowAlone)
{
    EXPECT_TRUE(manager.RemoveFileConfigurationAndLinkedConfigurations(7));
    ExpectConversation(*store, {GeneratedOfParent(7), LookedUp(7), Removed(7)});
}

TEST_F(FileManagerRemoval, OfAFileWithoutGeneratedOnesAnswersWhatRemovingItsRowAnswered)
{
    store->FailExec(3);
    EXPECT_FALSE(manager.RemoveFileConfigurationAndLinkedConfigurations(7));
    EXPECT_THAT(refresh->paths, IsEmpty());
}

TEST_F(FileManagerRemoval, DeletesTheGeneratedFilesAndLeavesTheFileItself)
{
    QString const own = MakeFile("own");
    QString const first = MakeFile("first");
    QString const second = MakeFile("second");
    FileConfiguration file = DistinctFile();
    file.clientPath = own;
    store->PlayRows({GeneratedRow(1, first), GeneratedRow(2, second)});
    store->PlayRows({ToRow(file)});

    EXPECT_TRUE(manager.RemoveFileConfigurationAndLinkedConfigurations(101));
    EXPECT_TRUE(QFile::exists(own));
    EXPECT_FALSE(QFile::exists(first));
    EXPECT_FALSE(QFile::exists(second));
    ExpectConversation(*store, {GeneratedOfParent(101), GeneratedOfParentRemoved(101), LookedUp(101), Removed(101)});
}

TEST_F(FileManagerRemoval, OfGeneratedFilesThatAreMissingOnDiskSucceedsAllTheSame)
{
    QString const present = MakeFile("present");
    store->PlayRows({GeneratedRow(1, directory.filePath("missing"_q)),
                     GeneratedRow(2, QString()),
                     GeneratedRow(3, directory.path()), // a folder: it can't be removed as a file
                     GeneratedRow(4, present)});
    EXPECT_TRUE(manager.RemoveFileConfigurationAndLinkedConfigurations(7));
    EXPECT_FALSE(QFile::exists(present));
    ExpectConversation(*store, {GeneratedOfParent(7), GeneratedOfParentRemoved(7), LookedUp(7), Removed(7)});
}

TEST_F(FileManagerRemoval, GoesOnWhenTheGeneratedRowsCannotBeRemovedAndAnswersFalse)
{
    QString const generated = MakeFile("generated");
    store->PlayRows({GeneratedRow(1, generated)});
    store->FailExec(2);
    EXPECT_FALSE(manager.RemoveFileConfigurationAndLinkedConfigurations(7));
    ExpectConversation(*store, {GeneratedOfParent(7), GeneratedOfParentRemoved(7), LookedUp(7), Removed(7)});
    EXPECT_FALSE(QFile::exists(generated)); // what was deleted stays deleted
    EXPECT_THAT(refresh->paths, SizeIs(1));
}

TEST_F(FileManagerRemoval, AnswersFalseWhenOnlyTheOwnRowCannotBeRemoved)
{
    store->PlayRows({GeneratedRow(1, QString())});
    store->FailExec(4);
    EXPECT_FALSE(manager.RemoveFileConfigurationAndLinkedConfigurations(7));
}

// The shell.

TEST_F(FileManagerRemoval, RefreshesTheFolderThatTheFileStoodInWhateverItsFlag)
{
    store->PlayRows({});
    store->PlayRows({ToRow(DistinctFile())});
    EXPECT_TRUE(manager.RemoveFileConfigurationAndLinkedConfigurations(101));
    EXPECT_THAT(refresh->paths, ElementsAre("/tree/folder"_q));
}

TEST_F(FileManagerRemoval, OfAnUnknownIdAnswersTrueAndRefreshesTheFolderOfAnEmptyPath)
{
    EXPECT_TRUE(manager.RemoveFileConfigurationAndLinkedConfigurations(7));
    EXPECT_THAT(refresh->paths, ElementsAre(QFileInfo(QString()).absolutePath()));
}

TEST_F(FileManagerRemoval, WithoutARefreshObjectRemovesAllTheSame)
{
    FileConfigManager unseen(store, nullptr, folders);
    EXPECT_TRUE(unseen.RemoveFileConfigurationAndLinkedConfigurations(7));
    ExpectConversation(*store, {GeneratedOfParent(7), LookedUp(7), Removed(7)});
}

// One generated file.

TEST_F(FileManagerRemoval, OfAGeneratedFileLeavesItOnDiskAndTellsNobody)
{
    QString const generated = MakeFile("generated");
    store->PlayRows({GeneratedRow(7, generated)});
    EXPECT_TRUE(manager.RemoveGeneratedFileConfiguration(7));
    EXPECT_TRUE(QFile::exists(generated));
    EXPECT_THAT(refresh->paths, IsEmpty());
}

TEST_F(FileManagerRemoval, OfAGeneratedFileDiscardsWhatItsLookUpAnswers)
{
    store->FailExec(1);
    EXPECT_TRUE(manager.RemoveGeneratedFileConfiguration(7));
    EXPECT_THAT(store->Executions(), SizeIs(2));
}

// Base files.

TEST_F(FileManagerRemoval, OfABaseFileDoesNothingAndAnswersTrue)
{
    for (int id : {-1, 0, 7})
        EXPECT_TRUE(manager.RemoveBaseFileConfiguration(id));
    EXPECT_EQ(store->QueriesCreated(), 0);
}

// Generated files of a root by their status.

TEST_F(FileManagerRemoval, ByRootAndStatusRemovesTheChildrenOfMatchingRowsAndAnswersFalse)
{
    store->PlayRows({GeneratedRow(1, QString(), 1), GeneratedRow(2, QString(), 2), GeneratedRow(3, QString(), 1)});
    EXPECT_FALSE(manager.RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(7, FileSyncStatusSyncing));
    ExpectConversation(*store,
                       {Read(FileSelect("GeneratedFileConfiguration WHERE rootFolderId = :rootFolderId ORDER BY Id"),
                             {{":rootFolderId", 7}}),
                        GeneratedOfParentRemoved(1),
                        GeneratedOfParentRemoved(3)});
}

TEST_F(FileManagerRemoval, ByRootAndStatusGoesOnAfterAFailure)
{
    store->PlayRows({GeneratedRow(1, QString(), 1), GeneratedRow(3, QString(), 1)});
    store->FailExec(2);
    EXPECT_FALSE(manager.RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(7, FileSyncStatusSyncing));
    EXPECT_THAT(store->Executions(), SizeIs(3));
}

TEST_F(FileManagerRemoval, ByRootAndAStatusThatNoRowHasRemovesNothingAndAnswersFalse)
{
    store->PlayRows({GeneratedRow(1, QString(), 1)});
    EXPECT_FALSE(manager.RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(7, FileSyncStatusNotSynced));
    EXPECT_THAT(store->Executions(), SizeIs(1));
}

// Overrides.

class OverridingManager : public FileConfigManager
{
public:
    using FileConfigManager::FileConfigManager;

    FileConfiguration GetFileConfigurationById(int id) override
    {
        asked.append("file %1"_q.arg(id));
        FileConfiguration file;
        file.clientPath = "/overridden/file"_q;
        return file;
    }
    FileConfiguration GetGeneratedFileConfigurationById(int id) override
    {
        asked.append("generated %1"_q.arg(id));
        return {};
    }
    QVector<FileConfiguration> GetGeneratedFileConfigurationsByParentFileId(int id) override
    {
        asked.append("children of %1"_q.arg(id));
        return {};
    }
    QVector<FileConfiguration>
    GetGeneratedFileConfigurationsByRootFolderId(int id, sync::interf::FileConfigOrderByEnum order) override
    {
        asked.append("generated of root %1 in order %2"_q.arg(id).arg(order));
        return {};
    }
    bool RemoveByRootFolderId(int id) override
    {
        asked.append("root %1"_q.arg(id));
        return false;
    }

    QStringList asked;
};

TEST_F(FileManagerRemoval, ByRootCanBeOverridden)
{
    OverridingManager overriding(store, refresh, folders);
    FileConfigManager& seenAsManager = overriding;
    EXPECT_FALSE(seenAsManager.RemoveByRootFolderId(7));
    EXPECT_EQ(overriding.asked, QStringList{"root 7"_q});
}

TEST_F(FileManagerRemoval, GoesThroughOverridesOfTheLookUps)
{
    OverridingManager overriding(store, refresh, folders);
    overriding.RemoveFileConfigurationAndLinkedConfigurations(7);
    overriding.RemoveGeneratedFileConfiguration(8);
    overriding.RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(9, FileSyncStatusSyncing);
    EXPECT_EQ(overriding.asked,
              (QStringList{"children of 7"_q, "file 7"_q, "generated 8"_q, "generated of root 9 in order 0"_q}));
    EXPECT_THAT(refresh->paths, ElementsAre("/overridden"_q));
}

// Client transactions.

TEST_F(FileManagerRemoval, TransactionCallsGoToADatabaseObjectThatIsReleasedAndReturnItsResult)
{
    for (bool answer : {true, false}) {
        store->SetTransactionResult(answer);
        EXPECT_EQ(manager.transaction(), answer);
        EXPECT_EQ(manager.commit(), answer);
        EXPECT_EQ(manager.rollback(), answer);
        EXPECT_EQ(store->LiveObjects(), 0);
    }
    EXPECT_THAT(store->TransactionCalls(),
                ElementsAre("transaction"_q, "commit"_q, "rollback"_q, "transaction"_q, "commit"_q, "rollback"_q));
    EXPECT_EQ(store->QueriesCreated(), 0);
}

} // namespace
} // namespace file_manager_removal_test
