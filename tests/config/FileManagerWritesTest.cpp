#include "database/TransactionalScope.h"
#include "support/FileManagerFixture.h"
#include "support/QtPrinters.h"

#include <algorithm>

namespace file_manager_writes_test {
namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Return;
using testing::SizeIs;

/// Without links, so that writing it asks the folder side nothing.
FileConfiguration FileWithoutLinks(FileConfigurationType fileType = FileConfigurationTypeFile)
{
    FileConfiguration file = DistinctFile(fileType);
    file.fileLinks.clear();
    return file;
}

std::vector<Bound> IdAndColumnsOf(FileConfiguration const& file)
{
    std::vector<Bound> bindings{{":id", file.id}};
    for (Bound const& binding : ToBindings(file))
        bindings.push_back(binding);
    return bindings;
}

/// Returns the UPDATE of all columns in this table.
QString FileUpdate(std::string const& table)
{
    return ListedStatement("UPDATE " + table + " SET folderConfigurationId = ", " WHERE id = :id");
}

Execution LookedUp(QString const& clientPath)
{
    return Read(FileSelect("FileConfiguration WHERE clientPath = :clientPath"), {{":clientPath", clientPath}});
}

struct Table
{
    FileConfigurationType fileType;
    std::string name;
};

class FileTable : public FileManagerFixture, public testing::WithParamInterface<Table>
{
protected:
    QString UpdateStatement() const { return FileUpdate(GetParam().name); }
    QString InsertStatement() const { return ListedStatement("INSERT INTO " + GetParam().name + " (", ");"); }
};

TEST_P(FileTable, IsUpdatedWithAllColumnsInOrder)
{
    FileConfiguration const file = FileWithoutLinks(GetParam().fileType);
    EXPECT_TRUE(manager.Update(file));
    ExpectConversation(*store, {Written(UpdateStatement(), IdAndColumnsOf(file))});
}

TEST_P(FileTable, IsInsertedIntoWithAllColumnsInOrderAndNoId)
{
    FileConfiguration file = FileWithoutLinks(GetParam().fileType);
    store->PlayInsertId(77);
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.id, 77);
    ExpectConversation(*store, {LookedUp(file.clientPath), Written(InsertStatement(), ToBindings(file))});
}

TEST_P(FileTable, TakesADefaultRecordWithItsNullsAndItsMinusOnes)
{
    FileConfiguration file;
    file.fileType = GetParam().fileType;
    EXPECT_TRUE(manager.Update(file));
    ExpectConversation(*store, {Written(UpdateStatement(), IdAndColumnsOf(file))});
    EXPECT_TRUE(LastBound(":name").toString().isNull());
    EXPECT_TRUE(LastBound(":createdDateTime").toDateTime().isNull());
    EXPECT_FALSE(LastBound(":fileLinks").toString().isNull());
}

TEST_P(FileTable, KeepsTheRecordsIdWhenTheInsertFails)
{
    FileConfiguration file = FileWithoutLinks(GetParam().fileType);
    store->FailExec(2);
    EXPECT_FALSE(manager.Add(file));
    EXPECT_THAT(DifferingMembers(file, FileWithoutLinks(GetParam().fileType)), IsEmpty());
    EXPECT_THAT(refresh->paths, IsEmpty());
}

TEST_P(FileTable, AnswersFalseAndRefreshesNothingWhenTheUpdateFails)
{
    store->FailExec(1);
    EXPECT_FALSE(manager.Update(FileWithoutLinks(GetParam().fileType)));
    EXPECT_THAT(refresh->paths, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Tables,
                         FileTable,
                         testing::Values(Table{FileConfigurationTypeFile, "FileConfiguration"},
                                         Table{FileConfigurationTypeGenerated, "GeneratedFileConfiguration"},
                                         Table{FileConfigurationTypeBase, "BaseFileConfiguration"}),
                         [](auto const& test) { return test.param.name; });

class FileManagerWrites : public FileManagerFixture
{};

// Refused writes.

TEST_F(FileManagerWrites, AddOfAnEmptyPathIsRefusedBeforeTheStoreIsAsked)
{
    FileConfiguration file = FileWithoutLinks();
    for (QString const& path : {QString(), QStringLiteral("")}) {
        file.clientPath = path;
        EXPECT_FALSE(manager.Add(file));
    }
    EXPECT_EQ(file.id, 101);
    EXPECT_EQ(store->QueriesCreated(), 0);
}

TEST_F(FileManagerWrites, AddOfAnUnknownTypeAndAFreshPathIsRefusedWithItsLinksUntouched)
{
    FileConfiguration file = DistinctFile(FileConfigurationType(9));
    EXPECT_FALSE(manager.Add(file));
    EXPECT_THAT(DifferingMembers(file, DistinctFile(FileConfigurationType(9))), IsEmpty());
    ExpectConversation(*store, {LookedUp(file.clientPath)});
}

TEST_F(FileManagerWrites, UpdateOfAnUnknownTypeIsRefusedBeforeTheStoreIsAsked)
{
    for (int fileType : {9, 3, -1})
        EXPECT_FALSE(manager.Update(DistinctFile(FileConfigurationType(fileType))));
    EXPECT_EQ(store->QueriesCreated(), 0);
}

TEST_F(FileManagerWrites, AddOfAnUnknownTypeThatIsADuplicateIsRefusedByUpdateAndStillTakesTheId)
{
    FileConfiguration known = FileWithoutLinks();
    known.id = 7;
    store->PlayRows({ToRow(known)});
    FileConfiguration file = FileWithoutLinks(FileConfigurationType(9));
    EXPECT_FALSE(manager.Add(file));
    EXPECT_EQ(file.id, 7);
    ExpectConversation(*store, {LookedUp(file.clientPath)});
}

// Duplicates.

class FileDuplicates : public FileManagerFixture
{
protected:
    /// Has the look-up of the path find these ids, each in its folder.
    void PlayKnown(std::vector<std::pair<int, int>> const& idsAndFolders)
    {
        std::vector<Row> rows;
        for (auto const& [id, folder] : idsAndFolders) {
            FileConfiguration file = FileWithoutLinks();
            file.id = id;
            file.folderConfigurationId = folder;
            rows.push_back(ToRow(file));
        }
        store->PlayRows(rows);
    }
};

TEST_F(FileDuplicates, APathThatItsFolderHoldsIsUpdatedAndTheRecordTakesItsId)
{
    PlayKnown({{5, 1}, {7, 102}, {8, 102}});
    FileConfiguration file = FileWithoutLinks();
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.id, 7);
    ExpectConversation(*store,
                       {LookedUp(file.clientPath), Written(FileUpdate("FileConfiguration"), IdAndColumnsOf(file))});
}

TEST_F(FileDuplicates, TheAnswerIsThatOfUpdateAndTheIdStaysTakenWhenItFails)
{
    PlayKnown({{7, 102}});
    FileConfiguration file = FileWithoutLinks();
    store->FailExec(2);
    EXPECT_FALSE(manager.Add(file));
    EXPECT_EQ(file.id, 7);
}

TEST_F(FileDuplicates, APathInAnotherFolderIsInserted)
{
    PlayKnown({{5, 1}, {6, 2}});
    FileConfiguration file = FileWithoutLinks();
    EXPECT_TRUE(manager.Add(file));
    EXPECT_THAT(store->Statements().back().toStdString(), testing::StartsWith("INSERT INTO FileConfiguration "));
}

TEST_F(FileDuplicates, WhatALookUpThatFailsWouldHaveFoundIsInserted)
{
    FileConfiguration file = FileWithoutLinks();
    store->FailExec(1);
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.id, 1);
}

TEST_F(FileDuplicates, AGeneratedFileUpdatesTheIdOfAnotherTablesRow)
{
    PlayKnown({{7, 102}});
    FileConfiguration file = FileWithoutLinks(FileConfigurationTypeGenerated);
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.id, 7);
    ExpectConversation(
        *store, {LookedUp(file.clientPath), Written(FileUpdate("GeneratedFileConfiguration"), IdAndColumnsOf(file))});
}

TEST_F(FileDuplicates, TheCallersLinksStayUntouched)
{
    PlayKnown({{7, 102}});
    EXPECT_CALL(*folders, GetFolderConfigurationById(106)).WillOnce(Return(FolderConfiguration()));
    FileConfiguration file = DistinctFile();
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.fileLinks[0].fileId, 108); // the copy's link leads to no file and lost its id
    EXPECT_THAT(LastBound(":fileLinks").toString().toStdString(), testing::HasSubstr("FileId=\"-1\""));
}

QStringList& Messages()
{
    static QStringList messages;
    return messages;
}

TEST_F(FileDuplicates, AreToldToNobody)
{
    PlayKnown({{7, 102}});
    FileConfiguration file = FileWithoutLinks();
    Messages().clear();
    auto* const previous = qInstallMessageHandler(
        [](QtMsgType, QMessageLogContext const&, QString const& message) { Messages().append(message); });
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    bool const added = manager.Add(file);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    qInstallMessageHandler(previous);
    EXPECT_TRUE(added);
    EXPECT_THAT(Messages(), IsEmpty());
}

// Links that aren't there.

TEST_F(FileManagerWrites, WithoutLinksTheFolderSideIsNotAskedAndTheDateAloneIsStored)
{
    FileConfiguration file = FileWithoutLinks();
    EXPECT_TRUE(manager.Add(file)); // the folder side fails the test when it is asked
    EXPECT_EQ(LastBound(":fileLinks").toString(), "<FileLinks FileDate=\"2024-01-04T10:20:30Z\"/>\n"_q);
    EXPECT_TRUE(manager.Update(file));
    EXPECT_EQ(LastBound(":fileLinks").toString(), "<FileLinks FileDate=\"2024-01-04T10:20:30Z\"/>\n"_q);
}

// Dates.

TEST_F(FileManagerWrites, DatesAreBoundAsTheyStand)
{
    FileConfiguration file = FileWithoutLinks();
    file.createdDateTime = QDateTime(QDate(2024, 7, 3), QTime(12, 0), Qt::LocalTime);
    file.lastModifiedDateTime = QDateTime(QDate(2024, 7, 3), QTime(12, 0), Qt::OffsetFromUTC, 7200);
    file.lastOperationTime = QDateTime();
    EXPECT_TRUE(manager.Update(file));
    EXPECT_EQ(LastBound(":createdDateTime").toDateTime().timeSpec(), Qt::LocalTime);
    EXPECT_EQ(LastBound(":createdDateTime").toDateTime().time(), QTime(12, 0));
    EXPECT_EQ(LastBound(":lastModifiedDateTime").toDateTime().offsetFromUtc(), 7200);
    EXPECT_EQ(LastBound(":lastModifiedDateTime").toDateTime().time(), QTime(12, 0));
    EXPECT_EQ(LastBound(":lastOperationTime").userType(), int(QMetaType::QDateTime));
    EXPECT_FALSE(LastBound(":lastOperationTime").toDateTime().isValid());
}

// The shell.

TEST_F(FileManagerWrites, AddOfAChangedStatusRefreshesTheFolderOfTheFileOnce)
{
    FileConfiguration file = FileWithoutLinks();
    EXPECT_TRUE(manager.Add(file));
    EXPECT_THAT(refresh->paths, ElementsAre("/tree/folder"_q));
    EXPECT_TRUE(file.getSyncStatusChanged());
}

TEST_F(FileManagerWrites, AddTakesTheNewIdAndRefreshesNothingWhenTheStatusWasNotSet)
{
    FileConfiguration file = FileWithoutLinks();
    file.resetSyncStatusChanged();
    store->PlayInsertId(77);
    EXPECT_TRUE(manager.Add(file));
    EXPECT_EQ(file.id, 77);
    EXPECT_THAT(refresh->paths, IsEmpty());
}

TEST_F(FileManagerWrites, UpdateRefreshesAgainForTheSameRecordUntilItIsReset)
{
    FileConfiguration file = FileWithoutLinks();
    EXPECT_TRUE(manager.Update(file));
    EXPECT_TRUE(manager.Update(file));
    EXPECT_THAT(refresh->paths, ElementsAre("/tree/folder"_q, "/tree/folder"_q));
    file.resetSyncStatusChanged();
    EXPECT_TRUE(manager.Update(file));
    EXPECT_THAT(refresh->paths, SizeIs(2));
}

TEST_F(FileManagerWrites, WithoutARefreshObjectTheWritesSucceedAllTheSame)
{
    FileConfigManager unseen(store, nullptr, folders);
    FileConfiguration file = FileWithoutLinks();
    EXPECT_TRUE(unseen.Update(file));
    EXPECT_TRUE(unseen.Add(file));
}

/// Keeps how many scopes were open at each refresh.
class ScopeWatchingRefresh : public sync::interf::IRefreshNativeFileViewer
{
public:
    void Refresh(QString) override { depths.push_back(sync::database::TransactionalScope::Depth()); }

    std::vector<int> depths;
};

TEST_F(FileManagerWrites, TheShellIsToldBeforeTheScopeEnds)
{
    auto const watcher = std::make_shared<ScopeWatchingRefresh>();
    FileConfigManager watched(store, watcher, folders);
    FileConfiguration file = FileWithoutLinks();
    EXPECT_TRUE(watched.Update(file));
    EXPECT_TRUE(watched.Add(file));
    EXPECT_TRUE(watched.RemoveFileConfigurationAndLinkedConfigurations(1));
    EXPECT_THAT(watcher->depths, ElementsAre(1, 1, 1));
}

// Overrides.

class OverridingManager : public FileConfigManager
{
public:
    using FileConfigManager::FileConfigManager;

    QVector<FileConfiguration> GetAllFileConfigurationsByClientPath(QString) override { return known; }
    bool Update(FileConfiguration file) override
    {
        updated.append(file);
        return FileConfigManager::Update(file);
    }
    QString ToNameValuePropertyString(QMap<QString, QString>) override { return "the client's own"_q; }
    QMap<QString, QString> ToNameValuePropertyMap(QString text) const override { return {{"own"_q, text}}; }

    QVector<FileConfiguration> known;
    QVector<FileConfiguration> updated;
};

TEST_F(FileManagerWrites, AddFollowsOverridesOfTheLookUpAndOfUpdate)
{
    OverridingManager overriding(store, refresh, folders);
    FileConfiguration file = FileWithoutLinks();
    overriding.known = {file};
    overriding.known[0].id = 7;
    EXPECT_TRUE(overriding.Add(file));
    ASSERT_THAT(overriding.updated, SizeIs(1));
    EXPECT_THAT(DifferingMembers(overriding.updated[0], file), IsEmpty());
    EXPECT_EQ(file.id, 7);
}

TEST_F(FileManagerWrites, PropertiesGoThroughOverridesOfTheirDocument)
{
    OverridingManager overriding(store, refresh, folders);
    FileConfiguration file = FileWithoutLinks();
    EXPECT_TRUE(overriding.Update(file));
    EXPECT_EQ(LastBound(":nameValueProperties").toString(), "the client's own"_q);
    EXPECT_TRUE(overriding.Add(file));
    EXPECT_EQ(LastBound(":nameValueProperties").toString(), "the client's own"_q);
    store->PlayRows({ToRow(FileConfiguration())});
    EXPECT_EQ(overriding.GetFileConfigurationById(1).nameValueProperties.firstKey(), "own"_q);
}

TEST_F(FileManagerWrites, UpdateTakesACopyAndLeavesTheCallersLinksAlone)
{
    EXPECT_CALL(*folders, GetFolderConfigurationById(106)).WillOnce(Return(FolderConfiguration()));
    FileConfiguration const file = DistinctFile();
    EXPECT_TRUE(manager.Update(file));
    EXPECT_THAT(DifferingMembers(file, DistinctFile()), IsEmpty());
}

} // namespace
} // namespace file_manager_writes_test
