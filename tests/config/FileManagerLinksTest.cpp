#include "database/TransactionalScope.h"
#include "support/FileManagerFixture.h"
#include "support/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::_;
using testing::ElementsAre;
using testing::Property;
using testing::Return;
using testing::SizeIs;

constexpr int RootId = 106;
constexpr int FolderId = 55;

FileLink Link(QString const& path, int fileId = -1)
{
    FileLink link;
    link.fileId = fileId;
    link.path = path;
    link.refId = "ref"_q;
    link.serverFileId = "link's server id"_q;
    return link;
}

/// A root on disk with the server path /server, in which the file `docs/linking` has the links of a test.
class FileManagerLinks : public FileManagerFixture
{
protected:
    FileManagerLinks()
        : base(directory.path())
        , rootPath(base + "/tree"_q)
    {
        MakeFile("tree/docs/linking"_q);
        RootIs(rootPath);
        ON_CALL(*folders, GetFolderConfigurationById(RootId)).WillByDefault([this](int) { return root; });
    }

    void RootIs(QString const& clientPath)
    {
        FolderConfiguration folder = Folder(clientPath);
        folder.setServerPath("/server"_q);
        root = StoredFolder(RootId, folder);
    }

    void MakeFile(QString const& path)
    {
        QString const absolute = base + QLatin1Char('/') + path;
        QDir().mkpath(QFileInfo(absolute).path());
        EXPECT_TRUE(QFile(absolute).open(QIODevice::WriteOnly));
    }

    FileConfiguration Linking(QList<FileLink> const& links)
    {
        FileConfiguration file;
        file.folderConfigurationId = FolderId;
        file.rootFolderId = RootId;
        file.productConfigurationId = 103;
        file.name = "linking"_q;
        file.clientPath = rootPath + "/docs/linking"_q;
        file.fileLinks = links;
        return file;
    }

    /// The folder side answers for the root, as often as it is asked.
    void ExpectRoot() { EXPECT_CALL(*folders, GetFolderConfigurationById(RootId)).Times(testing::AtLeast(1)); }

    /// The folder side makes the folder with this path.
    void ExpectFolder(QString const& path, int id)
    {
        EXPECT_CALL(*folders, AddFolderAndParent(path, Property(&FolderConfiguration::getId, RootId)))
            .WillOnce(Return(StoredFolder(id, Folder(path))));
    }

    /// There is a file `target` in the root, for which the folder side answers.
    void ExpectTarget()
    {
        MakeFile("tree/target"_q);
        ExpectRoot();
        ExpectFolder(rootPath, RootId);
    }

    QTemporaryDir const directory;
    QString const base;
    QString const rootPath;
    FolderConfiguration root;
};

// A file that has no row yet.

class FileLinkDiscovery : public FileManagerLinks, public testing::WithParamInterface<FileConfigurationType>
{};

TEST_P(FileLinkDiscovery, MakesARowOfTheClientsOwnFilesAndPutsItsIdIntoTheLink)
{
    MakeFile("tree/new/folder/target"_q);
    QString const targetPath = rootPath + "/new/folder/target"_q;
    EXPECT_CALL(*folders, GetFolderConfigurationById(RootId)).Times(2);
    ExpectFolder(rootPath + "/new/folder"_q, 66);
    store->PlayInsertId(77);
    store->PlayInsertId(78);

    FileConfiguration file = Linking({Link("../new/folder/target"_q)});
    file.fileType = GetParam();
    EXPECT_TRUE(manager.Add(file));

    EXPECT_EQ(file.id, 78);
    ASSERT_THAT(file.fileLinks, SizeIs(1));
    EXPECT_EQ(file.fileLinks[0].fileId, 77);
    EXPECT_EQ(file.fileLinks[0].path, "../new/folder/target"_q);
    EXPECT_EQ(file.fileLinks[0].refId, "ref"_q);
    EXPECT_EQ(file.fileLinks[0].serverFileId, "link's server id"_q);

    ASSERT_THAT(store->Executions(), SizeIs(5));
    EXPECT_THAT(LastBound(":fileLinks").toString().toStdString(), testing::HasSubstr("FileId=\"77\""));
    std::vector<Execution> const said = store->Executions();
    EXPECT_THAT(said[4].statement.toStdString(), testing::StartsWith("INSERT INTO "));
    EXPECT_EQ(said[4].scopeDepth, 1);
    EXPECT_EQ(said[3].scopeDepth, 1);
    EXPECT_THAT(said[3].statement.toStdString(), testing::StartsWith("INSERT INTO FileConfiguration "));
    FileConfiguration target;
    target.folderConfigurationId = 66;
    target.name = "target"_q;
    target.clientPath = targetPath;
    target.serverPath = "/server/new/folder/target"_q;
    target.setSyncStatus(FileSyncStatusLinkDiscovered);
    target.rootFolderId = RootId;
    target.productConfigurationId = 103;
    target.serverFileId = "link's server id"_q;
    std::vector<Bound> const bindings = ToBindings(target);
    EXPECT_EQ(said[3].bindings, std::vector<Binding>(bindings.begin(), bindings.end()));
    for (int i : {1, 2}) { // the link is followed, and the new file held against known ones
        EXPECT_EQ(said[std::size_t(i)].statement, FileSelect("FileConfiguration WHERE clientPath = :clientPath"));
        EXPECT_EQ(said[std::size_t(i)].bindings, (std::vector<Binding>{Bound(":clientPath", targetPath)}));
        EXPECT_EQ(said[std::size_t(i)].scopeDepth, 0);
    }
}

INSTANTIATE_TEST_SUITE_P(TypesOfTheLinkingFile,
                         FileLinkDiscovery,
                         testing::Values(FileConfigurationTypeFile,
                                         FileConfigurationTypeGenerated,
                                         FileConfigurationTypeBase));

TEST_F(FileManagerLinks, AnAbsoluteLinkIsFollowed)
{
    ExpectTarget();
    FileConfiguration file = Linking({Link(rootPath + "/target"_q)});
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.fileLinks[0].fileId, 1);
    EXPECT_EQ(file.id, 2);
}

TEST_F(FileManagerLinks, UpdateFollowsLinksAsWellAndStoresTheirIds)
{
    ExpectTarget();
    store->PlayInsertId(77);
    EXPECT_TRUE(manager.Update(Linking({Link("../target"_q)})));
    EXPECT_THAT(store->Statements().back().toStdString(), testing::StartsWith("UPDATE FileConfiguration "));
    EXPECT_THAT(LastBound(":fileLinks").toString().toStdString(), testing::HasSubstr("FileId=\"77\""));
}

TEST_F(FileManagerLinks, ANewFileIsToldToTheShellEvenWhenTheLinkingOneIsNot)
{
    MakeFile("tree/new/target"_q);
    ExpectRoot();
    ExpectFolder(rootPath + "/new"_q, 66);
    FileConfiguration file = Linking({Link("../new/target"_q)});
    EXPECT_TRUE(manager.Add(file));
    EXPECT_THAT(refresh->paths, ElementsAre(rootPath + "/new"_q));
}

TEST_F(FileManagerLinks, LinksAreFollowedInOrderAndOutsideAnyScope)
{
    MakeFile("tree/a/one"_q);
    MakeFile("tree/b/two"_q);
    ExpectRoot();
    std::vector<QString> made;
    EXPECT_CALL(*folders, AddFolderAndParent(_, _))
        .Times(2)
        .WillRepeatedly([&](QString const& path, FolderConfiguration const&) {
            made.push_back(path);
            EXPECT_EQ(sync::database::TransactionalScope::Depth(), 0);
            return FolderConfiguration();
        });
    FileConfiguration file = Linking({Link("../b/two"_q), Link("../a/one"_q)});
    EXPECT_TRUE(manager.Add(file));
    EXPECT_THAT(made, ElementsAre(rootPath + "/b"_q, rootPath + "/a"_q));
    EXPECT_EQ(file.fileLinks[0].fileId, 1);
    EXPECT_EQ(file.fileLinks[1].fileId, 2);
    EXPECT_EQ(file.id, 3);
}

TEST_F(FileManagerLinks, AStaleIdIsReplacedByTheFileAtThePath)
{
    ExpectTarget();
    store->PlayInsertId(77);
    FileConfiguration file = Linking({Link("../target"_q, 5)});
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.fileLinks[0].fileId, 77);
    ASSERT_THAT(store->Executions(), SizeIs(6));
    EXPECT_EQ(store->Statements()[1], FileSelect("FileConfiguration WHERE id = :id"));
    EXPECT_EQ(store->Statements()[2], FileSelect("FileConfiguration WHERE clientPath = :clientPath"));
}

// A file that has a row.

TEST_F(FileManagerLinks, AFileThatHasARowGivesTheLinkItsIdAndItsServerId)
{
    MakeFile("tree/target"_q);
    ExpectRoot();
    store->PlayRows({}); // no duplicate of the linking file
    store->PlayRows({ToRow(DistinctFile())});
    FileConfiguration file = Linking({Link("../target"_q)});
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.fileLinks[0].fileId, 101);
    EXPECT_EQ(file.fileLinks[0].serverFileId, "server file id"_q);
    EXPECT_EQ(file.fileLinks[0].path, "../target"_q);
    EXPECT_EQ(file.fileLinks[0].refId, "ref"_q);
    EXPECT_THAT(store->Executions(), SizeIs(3));
}

TEST_F(FileManagerLinks, AGoodIdTakesTheServerIdOfItsRowWhateverThePathLeadsTo)
{
    MakeFile("tree/target"_q);
    ExpectRoot();
    store->PlayRows({});
    store->PlayRows({ToRow(DistinctFile())});
    FileConfiguration file = Linking({Link("../target"_q, 101)});
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.fileLinks[0].fileId, 101);
    EXPECT_EQ(file.fileLinks[0].serverFileId, "server file id"_q);
    EXPECT_EQ(store->Statements()[1], FileSelect("FileConfiguration WHERE id = :id"));
    EXPECT_THAT(store->Executions(), SizeIs(3));
}

// Links that aren't followed.

struct Outside
{
    char const* name;
    /// %1 is the folder in which the root lies.
    char const* path;
};

class FileLinkOutside : public FileManagerLinks, public testing::WithParamInterface<Outside>
{};

TEST_P(FileLinkOutside, LosesItsIdAndIsNotFollowed)
{
    MakeFile("tree2/target"_q);
    MakeFile("ROOT/target"_q);
    MakeFile("elsewhere/target"_q);
    MakeFile("tree/target"_q);
    QFile::link(rootPath + "/nothing"_q, rootPath + "/broken"_q);
    EXPECT_CALL(*folders, GetFolderConfigurationById(RootId)).Times(1);

    FileConfiguration file = Linking({Link(QString::fromUtf8(GetParam().path).replace("%1"_q, base), 101)});
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.fileLinks[0].fileId, -1);
    EXPECT_EQ(file.fileLinks[0].serverFileId, "link's server id"_q);
    EXPECT_THAT(store->Executions(), SizeIs(2)); // the linking file's own look-up and insert
    EXPECT_THAT(LastBound(":fileLinks").toString().toStdString(), testing::HasSubstr("FileId=\"-1\""));
}

INSTANTIATE_TEST_SUITE_P(Paths,
                         FileLinkOutside,
                         testing::Values(Outside{"AbsoluteElsewhere", "%1/elsewhere/target"},
                                         Outside{"RelativeElsewhere", "../../elsewhere/target"},
                                         Outside{"OutThroughTheRoot", "%1/tree/../elsewhere/target"},
                                         Outside{"MissingFile", "../missing"},
                                         Outside{"FileInAMissingFolder", "missing/target"},
                                         Outside{"BrokenSymbolicLink", "../broken"},
                                         Outside{"TheRootItself", "%1/tree"},
                                         Outside{"TheRootItselfWithASlash", "%1/tree/"},
                                         Outside{"TheRootItselfRelative", ".."},
                                         Outside{"AboveTheRoot", "%1"},
                                         Outside{"SiblingWithACommonPrefix", "%1/tree2/target"},
                                         Outside{"SiblingFolderWithACommonPrefix", "%1/tree2"},
                                         Outside{"RootInAnotherCase", "%1/ROOT/target"},
                                         Outside{"DriveRoot", "/"}),
                         [](auto const& test) { return test.param.name; });

TEST_F(FileManagerLinks, AnEmptyPathLeadsToTheFolderOfTheLinkingFile)
{
    ExpectRoot();
    store->PlayRows({});
    store->PlayRows({ToRow(DistinctFile())});
    FileConfiguration file = Linking({Link(QString())});
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.fileLinks[0].fileId, 101);
    EXPECT_EQ(store->Executions()[1].bindings, (std::vector<Binding>{Bound(":clientPath", rootPath + "/docs"_q)}));
}

// Roots of every shape.

struct RootCase
{
    char const* name;
    /// %1 is the folder in which the root lies.
    char const* clientPath;
    /// Of the file docs/target in the root; a prefix that doesn't end before a slash isn't replaced.
    char const* serverPath;
};

class FileLinkRoot : public FileManagerLinks, public testing::WithParamInterface<RootCase>
{};

TEST_P(FileLinkRoot, HoldsTheLinkedFile)
{
    MakeFile("tree/docs/target"_q);
    RootIs(QString::fromUtf8(GetParam().clientPath).replace("%1"_q, base));
    ExpectRoot();
    ExpectFolder(rootPath + "/docs"_q, 66);
    store->PlayInsertId(77);

    FileConfiguration file = Linking({Link("target"_q)});
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.fileLinks[0].fileId, 77);
    EXPECT_EQ(store->Executions()[3].bindings[3],
              Bound(":serverPath", QString::fromUtf8(GetParam().serverPath).replace("%1"_q, base)));
}

INSTANTIATE_TEST_SUITE_P(Roots,
                         FileLinkRoot,
                         testing::Values(RootCase{"Plain", "%1/tree", "/server/docs/target"},
                                         RootCase{"WithASlashAtItsEnd", "%1/tree/", "%1/tree/docs/target"},
                                         RootCase{"Unclean", "%1//tree", "%1/tree/docs/target"},
                                         RootCase{"Drive", "/", "%1/tree/docs/target"}),
                         [](auto const& test) { return test.param.name; });

TEST_F(FileManagerLinks, WithoutARootOnRecordAnyFileOnDiskIsInside)
{
    MakeFile("elsewhere/target"_q);
    EXPECT_CALL(*folders, GetFolderConfigurationById(RootId)).WillRepeatedly(Return(FolderConfiguration()));
    EXPECT_CALL(*folders, AddFolderAndParent(base + "/elsewhere"_q, Property(&FolderConfiguration::getId, -1)))
        .WillOnce(Return(FolderConfiguration()));
    FileConfiguration file = Linking({Link(base + "/elsewhere/target"_q)});
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.fileLinks[0].fileId, 1);
}

TEST_F(FileManagerLinks, AFolderInsideTheRootCountsLikeAFile)
{
    ExpectRoot();
    ExpectFolder(rootPath, RootId);
    FileConfiguration file = Linking({Link("../docs"_q)});
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.fileLinks[0].fileId, 1);
    EXPECT_EQ(store->Executions()[3].bindings[1], Bound(":name", "docs"_q));
}

// Failures on the way.

TEST_F(FileManagerLinks, ALinkedFileThatCannotBeInsertedCostsTheLinkItsIdAndNothingElse)
{
    ExpectTarget();
    store->FailExec(4);
    FileConfiguration file = Linking({Link("../target"_q, 5)});
    store->PlayRows({});
    store->FailExec(5);
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.fileLinks[0].fileId, -1);
    EXPECT_EQ(file.id, 1);
    EXPECT_THAT(store->Executions(), SizeIs(6));
}

TEST_F(FileManagerLinks, AFolderThatCannotBeMadeGivesTheNewRowWhateverIdCameBack)
{
    MakeFile("tree/new/target"_q);
    ExpectRoot();
    EXPECT_CALL(*folders, AddFolderAndParent(rootPath + "/new"_q, _)).WillOnce(Return(FolderConfiguration()));
    FileConfiguration file = Linking({Link("../new/target"_q)});
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(store->Executions()[3].bindings[0], Bound(":folderConfigurationId", -1));
    EXPECT_EQ(file.fileLinks[0].fileId, 1);
}

TEST_F(FileManagerLinks, AFailedInsertOfTheLinkingFileLeavesTheLinksResolved)
{
    ExpectTarget();
    store->PlayInsertId(77);
    store->FailExec(5);
    FileConfiguration file = Linking({Link("../target"_q)});
    file.setSyncStatus(FileSyncStatusSyncing);
    EXPECT_FALSE(manager.Add(file));
    EXPECT_EQ(file.id, -1);
    EXPECT_EQ(file.fileLinks[0].fileId, 77);
    EXPECT_THAT(refresh->paths, ElementsAre(rootPath)); // of the linked file alone
}

TEST_F(FileManagerLinks, LinksThatAreNotFollowedStayInTheListAndInTheStore)
{
    ExpectTarget();
    FileConfiguration file = Linking({Link("../missing"_q, 9), Link(".."_q), Link("../target"_q)});
    EXPECT_TRUE(manager.Add(file));
    EXPECT_THAT(file.fileLinks, SizeIs(3));
    EXPECT_EQ(file.fileLinks[0].fileId, -1);
    EXPECT_EQ(file.fileLinks[1].fileId, -1);
    EXPECT_EQ(file.fileLinks[2].fileId, 1);
    EXPECT_EQ(LastBound(":fileLinks").toString().count("<FileLink "_q), 3);
}

// Overrides.

class OverridingManager : public FileConfigManager
{
public:
    using FileConfigManager::FileConfigManager;

    bool Add(FileConfiguration& file) override
    {
        added.append(file.clientPath);
        file.id = 4711;
        return true;
    }
    FileConfiguration GetFileConfiguration(FileLink link, QString const& linkingFilePath) override
    {
        asked.append(link.path);
        asked.append(linkingFilePath);
        return {};
    }

    QStringList added;
    QStringList asked;
};

TEST_F(FileManagerLinks, FollowingGoesThroughOverridesOfTheLookUpAndOfAdd)
{
    ExpectTarget();
    OverridingManager overriding(store, refresh, folders);
    EXPECT_TRUE(overriding.Update(Linking({Link("../target"_q)})));
    EXPECT_EQ(overriding.asked, (QStringList{"../target"_q, rootPath + "/docs/linking"_q}));
    EXPECT_EQ(overriding.added, QStringList{rootPath + "/target"_q});
    EXPECT_THAT(LastBound(":fileLinks").toString().toStdString(), testing::HasSubstr("FileId=\"4711\""));
}

/// Copies the client's record in the middle of `AddFileLinks`, as an application's own bookkeeping may.
class CopyingManager : public FileConfigManager
{
public:
    using FileConfigManager::FileConfigManager;

    FileConfiguration GetFileConfiguration(FileLink link, QString const& linkingFilePath) override
    {
        copiesBeforeLookUp.append(record->fileLinks);
        return FileConfigManager::GetFileConfiguration(link, linkingFilePath);
    }
    bool Add(FileConfiguration& file) override
    {
        if (&file != record)
            copiesBeforeInsert.append(record->fileLinks);
        return FileConfigManager::Add(file);
    }

    FileConfiguration* record = nullptr;
    QList<QList<FileLink>> copiesBeforeLookUp;
    QList<QList<FileLink>> copiesBeforeInsert;
};

QList<int> FileIdsOf(QList<FileLink> const& links)
{
    QList<int> ids;
    for (FileLink const& link : links)
        ids.append(link.fileId);
    return ids;
}

TEST_F(FileManagerLinks, ACopyOfTheRecordTakenWhileLinksAreFollowedDoesNotChangeAfterwards)
{
    MakeFile("tree/one"_q);
    MakeFile("tree/two"_q);
    ExpectRoot();
    EXPECT_CALL(*folders, AddFolderAndParent(_, _)).WillRepeatedly(Return(StoredFolder(66, Folder(rootPath))));
    store->PlayInsertId(77);
    store->PlayInsertId(78);
    store->PlayInsertId(79);

    CopyingManager copying(store, refresh, folders);
    FileConfiguration file = Linking({Link("../one"_q), Link("../two"_q), Link("../missing"_q, 9)});
    copying.record = &file;
    EXPECT_TRUE(copying.Add(file));

    EXPECT_EQ(FileIdsOf(file.fileLinks), (QList<int>{77, 78, -1}));
    ASSERT_THAT(copying.copiesBeforeLookUp, SizeIs(2));
    EXPECT_EQ(FileIdsOf(copying.copiesBeforeLookUp[0]), (QList<int>{-1, -1, 9}));
    EXPECT_EQ(FileIdsOf(copying.copiesBeforeLookUp[1]), (QList<int>{77, -1, 9}));
    ASSERT_THAT(copying.copiesBeforeInsert, SizeIs(2));
    EXPECT_EQ(FileIdsOf(copying.copiesBeforeInsert[0]), (QList<int>{-1, -1, 9}));
    EXPECT_EQ(FileIdsOf(copying.copiesBeforeInsert[1]), (QList<int>{77, -1, 9}));
}

} // namespace
