#include "support/FileStoreFixture.h"

namespace file_store_links_test {
namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

FileLink Link(QString const& path, int fileId = -1)
{
    FileLink link;
    link.path = path;
    link.fileId = fileId;
    return link;
}

/// A root on record with the path `root` on disk, and links in a file `docs/linking` of that root.
class FileStoreLinks : public FileStoreFixture
{
protected:
    void SetUp() override
    {
        FileStoreFixture::SetUp();
        root = AddRoot(rootPath);
        MakeFile("root/docs/linking"_q);
    }

    FileConfiguration Linking(QList<FileLink> const& links)
    {
        FileConfiguration file;
        file.clientPath = rootPath + "/docs/linking"_q;
        file.folderConfigurationId = root.getId();
        file.rootFolderId = root.getId();
        file.fileLinks = links;
        return file;
    }

    /// Adds the linking file with one link, or updates it; the link as the store gives it back.
    FileLink Follow(FileLink const& link)
    {
        FileConfiguration file = Linking({link});
        EXPECT_TRUE(files->Add(file));
        FileConfiguration const stored = files->GetFileConfigurationById(file.id);
        EXPECT_THAT(stored.fileLinks, SizeIs(1));
        return stored.fileLinks.value(0);
    }

    QStringList FolderPaths()
    {
        QStringList paths;
        for (FolderConfiguration const& known : folders->GetAll())
            paths.append(known.getClientPath());
        paths.sort();
        return paths;
    }

    FolderConfiguration root;
};

TEST_F(FileStoreLinks, AFileWithoutARowGetsOneWithAllFoldersBetween)
{
    QString const target = MakeFile("root/a/b/target"_q);
    FileLink const link = Follow(Link("../a/b/target"_q));

    FileConfiguration const found = files->GetFileConfigurationByClientPath(target);
    EXPECT_EQ(link.fileId, found.id);
    EXPECT_EQ(found.getSyncStatus(), FileSyncStatusLinkDiscovered);
    EXPECT_EQ(found.fileType, FileConfigurationTypeFile);
    EXPECT_EQ(found.name, "target"_q);
    EXPECT_EQ(found.serverPath, "/server/a/b/target"_q);
    EXPECT_EQ(found.rootFolderId, root.getId());

    EXPECT_EQ(FolderPaths(), (QStringList{rootPath, rootPath + "/a"_q, rootPath + "/a/b"_q}));
    FolderConfiguration const inner = folders->GetFolderConfigurationByClientPath(rootPath + "/a/b"_q);
    FolderConfiguration const outer = folders->GetFolderConfigurationByClientPath(rootPath + "/a"_q);
    EXPECT_EQ(found.folderConfigurationId, inner.getId());
    EXPECT_EQ(inner.getParentId(), outer.getId());
    EXPECT_EQ(outer.getParentId(), root.getId());
    EXPECT_EQ(inner.getServerPath(), "/server/a/b"_q);
    EXPECT_THAT(refresh->paths, ElementsAre(rootPath + "/a/b"_q));
}

TEST_F(FileStoreLinks, AnAbsoluteLinkIntoTheRootIsFollowed)
{
    QString const target = MakeFile("root/target"_q);
    FileConfiguration file = Linking({Link(target)});
    EXPECT_TRUE(files->Add(file));
    FileLink const link = files->GetFileConfigurationById(file.id).fileLinks.value(0);
    EXPECT_EQ(link.fileId, file.fileLinks[0].fileId);
    EXPECT_EQ(files->GetFileConfigurationById(link.fileId).clientPath, target);
    EXPECT_EQ(files->GetFileConfigurationById(link.fileId).folderConfigurationId, root.getId());
    EXPECT_EQ(FolderPaths(), QStringList{rootPath});
}

TEST_F(FileStoreLinks, AFileThatHasARowGivesItsIdAndServerId)
{
    FileConfiguration target = AddFile(MakeFile("root/target"_q), root.getId(), root.getId());
    target.serverFileId = "from the row"_q;
    EXPECT_TRUE(files->Update(target));
    FileLink link = Link("../target"_q, target.id);
    link.serverFileId = "from the link"_q;
    link = Follow(link);
    EXPECT_EQ(link.fileId, target.id);
    EXPECT_EQ(link.serverFileId, "from the row"_q);
    EXPECT_EQ(link.path, "../target"_q);
    EXPECT_THAT(files->GetAll(), SizeIs(2));
}

TEST_F(FileStoreLinks, AStaleIdIsReplaced)
{
    FileConfiguration const target = AddFile(MakeFile("root/target"_q), root.getId(), root.getId());
    EXPECT_TRUE(files->RemoveFileConfigurationAndLinkedConfigurations(target.id));
    FileLink const link = Follow(Link("../target"_q, target.id));
    EXPECT_GT(link.fileId, target.id); // an id is never given again
    EXPECT_EQ(files->GetFileConfigurationById(link.fileId).clientPath, target.clientPath);
}

TEST_F(FileStoreLinks, TwoLinksToOneNewFileShareItsRow)
{
    MakeFile("root/target"_q);
    FileConfiguration file = Linking({Link("../target"_q), Link(rootPath + "/target"_q)});
    EXPECT_TRUE(files->Add(file));
    EXPECT_EQ(file.fileLinks[0].fileId, file.fileLinks[1].fileId);
    EXPECT_THAT(files->GetAll(), SizeIs(2));
}

TEST_F(FileStoreLinks, ALinkToTheLinkingFileItselfFindsTheRowMadeForIt)
{
    FileConfiguration file = Linking({Link("linking"_q)});
    file.folderConfigurationId = 77; // the file's folder isn't on record yet, so the link's row is no duplicate of it
    EXPECT_TRUE(files->Add(file));
    EXPECT_NE(file.fileLinks[0].fileId, file.id);
    EXPECT_THAT(files->GetAll(), SizeIs(2));
}

TEST_F(FileStoreLinks, UpdateFollowsLinksTooAndStoresTheirIds)
{
    FileConfiguration file = Linking({});
    EXPECT_TRUE(files->Add(file));
    QString const target = MakeFile("root/target"_q);
    file.fileLinks = {Link("../target"_q)};
    EXPECT_TRUE(files->Update(file));
    EXPECT_EQ(file.fileLinks[0].fileId, -1); // the caller's record is its own
    int const found = files->GetFileConfigurationByClientPath(target).id;
    EXPECT_GT(found, 0);
    EXPECT_EQ(files->GetFileConfigurationById(file.id).fileLinks.value(0).fileId, found);
}

TEST_F(FileStoreLinks, LinksThatLeadNowhereOrOutAreStoredWithoutAnIdAndMakeNothing)
{
    MakeFile("root2/target"_q);
    MakeFile("elsewhere/target"_q);
    for (QString const& path : {"../missing"_q,
                                "../../elsewhere/target"_q,
                                folder.filePath("elsewhere/target"_q),
                                folder.filePath("root2/target"_q),
                                folder.filePath("root2"_q),
                                rootPath,
                                rootPath + "/"_q,
                                ".."_q,
                                "/"_q}) {
        SCOPED_TRACE(path.toStdString());
        FileLink const link = Follow(Link(path, 77));
        EXPECT_EQ(link.fileId, -1);
        EXPECT_EQ(link.path, path);
        EXPECT_THAT(files->GetAll(), SizeIs(1));
    }
    EXPECT_EQ(FolderPaths(), QStringList{rootPath});
}

TEST_F(FileStoreLinks, OddNamesAreFollowed)
{
    for (QString const& name : {"it's \"odd\" & <b>]]>"_q, "line\nbreak"_q, "100%1"_q, "\u00fc\U0001F4C4"_q, " "_q}) {
        SCOPED_TRACE(name.toStdString());
        QString const target = MakeFile("root/"_q + name + "/"_q + name);
        FileLink const link = Follow(Link("../"_q + name + "/"_q + name));
        EXPECT_EQ(files->GetFileConfigurationById(link.fileId).clientPath, target);
        EXPECT_EQ(files->GetFileConfigurationById(link.fileId).name, name);
        EXPECT_THAT(FolderPaths(), Contains(rootPath + "/"_q + name));
    }
}

TEST_F(FileStoreLinks, ADriveAsRootHoldsEveryFile)
{
    FolderConfiguration const drive = AddRoot("/"_q);
    QString const target = MakeFile("root/target"_q);
    FileConfiguration file = Linking({Link("../target"_q)});
    file.rootFolderId = drive.getId();
    EXPECT_TRUE(files->Add(file));
    FileConfiguration const found = files->GetFileConfigurationById(file.fileLinks[0].fileId);
    EXPECT_EQ(found.clientPath, target);
    EXPECT_EQ(found.serverPath, target); // a prefix that is a slash alone is not replaced
    EXPECT_EQ(found.rootFolderId, drive.getId());
    EXPECT_EQ(found.folderConfigurationId, root.getId()); // the folder was on record already
}

TEST_F(FileStoreLinks, ADriveAsRootGetsTheFoldersDownToTheFile)
{
    EXPECT_TRUE(folders->Remove(root.getId()));
    FolderConfiguration const drive = AddRoot("/"_q);
    MakeFile("root/a/target"_q);
    FileConfiguration file = Linking({Link("../a/target"_q)});
    file.rootFolderId = drive.getId();
    EXPECT_TRUE(files->Add(file));
    EXPECT_THAT(FolderPaths(), Contains(folder.path()));
    EXPECT_THAT(FolderPaths(), Contains(rootPath + "/a"_q));
    EXPECT_EQ(files->GetFileConfigurationById(file.fileLinks[0].fileId).folderConfigurationId,
              folders->GetFolderConfigurationByClientPath(rootPath + "/a"_q).getId());
}

TEST_F(FileStoreLinks, WithoutARootOnRecordTheFileIsPlacedInNoFolder)
{
    MakeFile("elsewhere/target"_q);
    FileConfiguration file = Linking({Link(folder.filePath("elsewhere/target"_q))});
    file.rootFolderId = 77;
    EXPECT_TRUE(files->Add(file));
    EXPECT_EQ(files->GetFileConfigurationById(file.fileLinks[0].fileId).folderConfigurationId, -1);
    EXPECT_EQ(FolderPaths(), QStringList{rootPath});
}

TEST_F(FileStoreLinks, AFileDateAloneIsKept)
{
    FileConfiguration file = Linking({});
    file.fileDate = QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC);
    EXPECT_TRUE(files->Add(file));
    EXPECT_EQ(files->GetFileConfigurationById(file.id).fileDate, file.fileDate);
    EXPECT_THAT(files->GetFileConfigurationById(file.id).fileLinks, IsEmpty());
}

TEST_F(FileStoreLinks, WhatLinksMadeStaysWhenTheLinkingFileCannotBeStored)
{
    MakeFile("root/a/target"_q);
    FileConfiguration file = Linking({Link("../a/target"_q)});
    file.checkSum = QString(QChar(0xDC00)); // no text
    EXPECT_FALSE(files->Add(file));
    EXPECT_TRUE(store->LastError());
    store->ClearError();
    EXPECT_EQ(file.id, -1);
    EXPECT_GT(file.fileLinks[0].fileId, 0);
    EXPECT_THAT(files->GetAll(), SizeIs(1));
    EXPECT_THAT(FolderPaths(), SizeIs(2));
}

} // namespace
} // namespace file_store_links_test
