#include "support/FileStoreFixture.h"

namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::ElementsAre;
using testing::IsEmpty;

/// Files 1 and 2 in folder 10 and 3 in folder 11, all of root 20, and 4 of root 21; three generated files, 1 and 2 of
/// file 1 and 3 of file 2; one base file.
class FileStoreRemoval : public FileStoreFixture
{
protected:
    void SetUp() override
    {
        FileStoreFixture::SetUp();
        AddWith("own"_q, 10, 20, -1, FileConfigurationTypeFile);
        AddWith("other"_q, 10, 20, -1, FileConfigurationTypeFile);
        AddWith("elsewhere"_q, 11, 20, -1, FileConfigurationTypeFile);
        AddWith("stranger"_q, 12, 21, -1, FileConfigurationTypeFile);
        AddWith("first"_q, 10, 20, 1, FileConfigurationTypeGenerated);
        AddWith("second"_q, 10, 20, 1, FileConfigurationTypeGenerated);
        AddWith("third"_q, 10, 21, 2, FileConfigurationTypeGenerated);
        AddWith("base"_q, 10, 20, 1, FileConfigurationTypeBase);
    }

    void AddWith(QString const& name, int folderId, int rootId, int parentFileId, FileConfigurationType fileType)
    {
        FileConfiguration file;
        file.clientPath = MakeFile("root/"_q + name);
        file.folderConfigurationId = folderId;
        file.rootFolderId = rootId;
        file.parentFileId = parentFileId;
        file.fileType = fileType;
        EXPECT_TRUE(files->Add(file));
    }

    std::vector<int> Left(FileConfigurationType fileType)
    {
        std::vector<int> ids;
        for (FileConfiguration const& file : files->GetAll(fileType))
            ids.push_back(file.id);
        return ids;
    }

    QStringList OnDisk() const { return QDir(rootPath).entryList(QDir::Files, QDir::Name); }

    void ExpectLeft(std::vector<int> const& own, std::vector<int> const& generated)
    {
        EXPECT_EQ(Left(FileConfigurationTypeFile), own);
        EXPECT_EQ(Left(FileConfigurationTypeGenerated), generated);
        EXPECT_EQ(Left(FileConfigurationTypeBase), (std::vector<int>{1}));
    }

    void SetStatus(char const* table, int id, int status)
    {
        RawStore(StorePath())
            .Run("UPDATE %1 SET syncStatus = %2 WHERE id = %3"_q.arg(QString::fromUtf8(table)).arg(status).arg(id));
    }

    QStringList const everything{
        "base"_q, "elsewhere"_q, "first"_q, "other"_q, "own"_q, "second"_q, "stranger"_q, "third"_q};
};

TEST_F(FileStoreRemoval, OfAFileTakesItsGeneratedOnesAlongAndLeavesItselfOnDisk)
{
    EXPECT_TRUE(files->RemoveFileConfigurationAndLinkedConfigurations(1));
    ExpectLeft({2, 3, 4}, {3});
    EXPECT_EQ(OnDisk(), (QStringList{"base"_q, "elsewhere"_q, "other"_q, "own"_q, "stranger"_q, "third"_q}));
    EXPECT_THAT(refresh->paths, ElementsAre(rootPath));
}

TEST_F(FileStoreRemoval, OfAFileWhoseGeneratedOnesAreGoneFromDiskRemovesTheirRows)
{
    QFile::remove(rootPath + "/first"_q);
    EXPECT_TRUE(files->RemoveFileConfigurationAndLinkedConfigurations(1));
    ExpectLeft({2, 3, 4}, {3});
}

TEST_F(FileStoreRemoval, OfAFileWithoutGeneratedOnesRemovesItsRow)
{
    EXPECT_TRUE(files->RemoveFileConfigurationAndLinkedConfigurations(3));
    ExpectLeft({1, 2, 4}, {1, 2, 3});
    EXPECT_EQ(OnDisk(), everything);
}

TEST_F(FileStoreRemoval, OfAnUnknownFileSucceedsAndChangesNothing)
{
    EXPECT_TRUE(files->RemoveFileConfigurationAndLinkedConfigurations(77));
    ExpectLeft({1, 2, 3, 4}, {1, 2, 3});
    EXPECT_EQ(OnDisk(), everything);
}

TEST_F(FileStoreRemoval, OfAGeneratedFileTakesItsRowAlone)
{
    EXPECT_TRUE(files->RemoveGeneratedFileConfiguration(1));
    EXPECT_TRUE(files->RemoveGeneratedFileConfiguration(77));
    ExpectLeft({1, 2, 3, 4}, {2, 3});
    EXPECT_EQ(OnDisk(), everything);
    EXPECT_THAT(refresh->paths, IsEmpty());
}

TEST_F(FileStoreRemoval, OfABaseFileChangesNothing)
{
    EXPECT_TRUE(files->RemoveBaseFileConfiguration(1));
    ExpectLeft({1, 2, 3, 4}, {1, 2, 3});
}

TEST_F(FileStoreRemoval, ByFolderLeavesGeneratedFilesAndOtherFolders)
{
    EXPECT_TRUE(files->RemoveByFolderConfigurationId(10));
    ExpectLeft({3, 4}, {1, 2, 3});
    EXPECT_EQ(OnDisk(), everything);
    EXPECT_THAT(refresh->paths, IsEmpty());
}

TEST_F(FileStoreRemoval, ByRootLeavesGeneratedFilesAndOtherRoots)
{
    EXPECT_TRUE(files->RemoveByRootFolderId(20));
    ExpectLeft({4}, {1, 2, 3});
    EXPECT_EQ(OnDisk(), everything);
}

TEST_F(FileStoreRemoval, ByARootWithoutFilesSucceeds)
{
    EXPECT_TRUE(files->RemoveByRootFolderId(77));
    EXPECT_TRUE(files->RemoveByFolderConfigurationId(77));
    EXPECT_TRUE(files->RemoveGeneratedFileConfigurationsByRootFolderId(77));
    ExpectLeft({1, 2, 3, 4}, {1, 2, 3});
}

TEST_F(FileStoreRemoval, OfTheGeneratedFilesOfARootLeavesTheFilesOfItsOwn)
{
    EXPECT_TRUE(files->RemoveGeneratedFileConfigurationsByRootFolderId(20));
    ExpectLeft({1, 2, 3, 4}, {3});
    EXPECT_EQ(OnDisk(), everything);
}

TEST_F(FileStoreRemoval, ByRootAndStatusAnswersFalseAndLeavesTheMatchingRowsAndTheirFiles)
{
    // No generated row names a generated row as its parent: ids 1 and 2 match, and parents 1 and 2 are files' ids.
    RawStore(StorePath()).Run("UPDATE GeneratedFileConfiguration SET parentFileId = parentFileId + 100"_q);
    EXPECT_FALSE(files->RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(20, FileSyncStatusNotSynced));
    EXPECT_FALSE(files->RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(20, FileSyncStatusSyncing));
    ExpectLeft({1, 2, 3, 4}, {1, 2, 3});
    EXPECT_EQ(OnDisk(), everything);
}

TEST_F(FileStoreRemoval, ByRootAndStatusRemovesARowThatNamesAMatchingOneAsItsParent)
{
    SetStatus("GeneratedFileConfiguration", 2, 1);
    EXPECT_FALSE(files->RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(20, FileSyncStatusSyncing));
    ExpectLeft({1, 2, 3, 4}, {1, 2}); // row 2 matched; row 3, of another root, had the parent 2
}

TEST_F(FileStoreRemoval, ResettingSyncingFilesTouchesOneFolderAndOneStatusAndNoGeneratedFile)
{
    SetStatus("FileConfiguration", 1, 1);
    SetStatus("FileConfiguration", 2, 3);
    SetStatus("FileConfiguration", 3, 1);
    SetStatus("GeneratedFileConfiguration", 1, 1);
    EXPECT_TRUE(files->UpdateSyncStatusFromSyncingToNotSynced(10));
    EXPECT_EQ(files->GetFileConfigurationById(1).getSyncStatus(), FileSyncStatusNotSynced);
    EXPECT_EQ(files->GetFileConfigurationById(2).getSyncStatus(), FileSyncStatusLinkDiscovered);
    EXPECT_EQ(files->GetFileConfigurationById(3).getSyncStatus(), FileSyncStatusSyncing);
    EXPECT_EQ(files->GetGeneratedFileConfigurationById(1).getSyncStatus(), FileSyncStatusSyncing);
    EXPECT_THAT(refresh->paths, IsEmpty());
}

} // namespace
