#include "config/RecordColumns.h"
#include "support/FileRecords.h"
#include "support/FileStoreFixture.h"

#include <QTimeZone>

#include <algorithm>
#include <climits>
#include <functional>
#include <limits>

namespace file_store_test {
namespace {

using namespace sync::config;
using namespace sync::interf;
using namespace tandry::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

std::vector<int> Ids(QVector<FileConfiguration> const& files)
{
    std::vector<int> ids;
    for (FileConfiguration const& file : files)
        ids.push_back(file.id);
    return ids;
}

/// Returns the record that is read after this one was written.
FileConfiguration Stored(FileConfiguration file)
{
    file.resetSyncStatusChanged();
    file.setSyncSubStatus(FileSynchronizationSubStatus(0));
    for (QDateTime* time : {&file.createdDateTime, &file.lastModifiedDateTime, &file.lastOperationTime})
        time->setTimeSpec(Qt::UTC);
    for (FileLink& link : file.fileLinks)
        link.fileId = -1; // none of these tests' links leads to a file on disk
    return file;
}

// Each of the three tables.

struct Table
{
    FileConfigurationType fileType;
    char const* name;
};

class FileStoreTable : public FileStoreFixture, public testing::WithParamInterface<Table>
{
protected:
    QString TableName() const { return QString::fromUtf8(GetParam().name); }

    /// The only row of the table.
    FileConfiguration Only()
    {
        QVector<FileConfiguration> const all = files->GetAll(GetParam().fileType);
        EXPECT_THAT(all, SizeIs(1));
        return all.value(0);
    }
};

TEST_P(FileStoreTable, GivesAllMembersBack)
{
    FileConfiguration file = DistinctFile(GetParam().fileType);
    EXPECT_TRUE(files->Add(file));
    EXPECT_EQ(file.id, 1);
    Reopen();
    EXPECT_THAT(DifferingMembers(Only(), Stored(file)), IsEmpty());
}

TEST_P(FileStoreTable, KeepsEachMemberInTheColumnOfItsName)
{
    FileConfiguration file = DistinctFile(GetParam().fileType);
    EXPECT_TRUE(files->Add(file));
    RawStore raw(StorePath());
    FileConfiguration const stored = Stored(file);
    for (RecordColumn<FileConfiguration> const& column : RecordColumns<FileConfiguration>()) {
        QVariant const inRow = raw.Value("SELECT %1 FROM %2"_q.arg(column.name(), TableName()));
        QVariant const inRecord = column.Get(stored);
        std::string const name = column.name().toStdString();
        if (column.kind() == ColumnKind::Time)
            EXPECT_EQ(inRow, inRecord.toDateTime().toMSecsSinceEpoch()) << name;
        else if (column.kind() == ColumnKind::Links) // the order of a link's attributes is any
            EXPECT_TRUE(inRow.toString().contains("link ref id"_q)) << name;
        else
            EXPECT_EQ(inRow, ToStored(column.kind(), inRecord)) << name;
    }
}

TEST_P(FileStoreTable, UpdatesAllMembersOfOneRow)
{
    FileConfiguration other;
    other.clientPath = "/other"_q;
    other.fileType = GetParam().fileType;
    EXPECT_TRUE(files->Add(other));
    FileConfiguration file;
    file.clientPath = "/file"_q;
    file.fileType = GetParam().fileType;
    EXPECT_TRUE(files->Add(file));

    FileConfiguration changed = DistinctFile(GetParam().fileType);
    changed.id = file.id;
    EXPECT_TRUE(files->Update(changed));

    QVector<FileConfiguration> all = files->GetAll(GetParam().fileType);
    ASSERT_THAT(all, SizeIs(2));
    std::sort(all.begin(), all.end(), [](auto const& left, auto const& right) { return left.id < right.id; });
    EXPECT_THAT(DifferingMembers(all[0], Stored(other)), IsEmpty());
    EXPECT_THAT(DifferingMembers(all[1], Stored(changed)), IsEmpty());
}

TEST_P(FileStoreTable, UpdateOfAnIdWithoutARowSucceedsAndChangesNothing)
{
    FileConfiguration file = DistinctFile(GetParam().fileType);
    EXPECT_TRUE(files->Update(file));
    EXPECT_THAT(files->GetAll(GetParam().fileType), IsEmpty());
}

TEST_P(FileStoreTable, ReadsNullColumnsAsZeroEmptyAndInvalid)
{
    RawStore(StorePath()).Run("INSERT INTO %1 DEFAULT VALUES"_q.arg(TableName()));
    FileConfiguration const file = Only();
    EXPECT_EQ(file.id, 1);
    ExpectNullColumns(file);
}

TEST_P(FileStoreTable, KeepsNullAndEmptyTextsApart)
{
    FileConfiguration file;
    file.clientPath = "/file"_q;
    file.fileType = GetParam().fileType;
    file.name = QStringLiteral("");
    EXPECT_TRUE(files->Add(file));
    RawStore raw(StorePath());
    auto const row = raw.Rows("SELECT name, serverPath, checkSum, fileLinks FROM %1"_q.arg(TableName()));
    ASSERT_THAT(row, SizeIs(1));
    EXPECT_EQ(row[0][0], QVariant(QStringLiteral("")));
    EXPECT_FALSE(row[0][1].isValid());
    EXPECT_FALSE(row[0][2].isValid());
    EXPECT_EQ(row[0][3], QVariant(QStringLiteral(""))); // no links are an empty text, not NULL
}

TEST_P(FileStoreTable, KeepsExtremeNumbers)
{
    for (bool const greatest : {true, false}) {
        FileConfiguration file;
        file.clientPath = greatest ? "/max"_q : "/min"_q;
        file.fileType = GetParam().fileType;
        int const number = greatest ? INT_MAX : INT_MIN;
        file.size = greatest ? std::numeric_limits<qint64>::max() : std::numeric_limits<qint64>::min();
        for (int* member : {&file.folderConfigurationId,
                            &file.productConfigurationId,
                            &file.lastOperationType,
                            &file.rootFolderId,
                            &file.syncOption,
                            &file.parentFileId,
                            &file.privileges})
            *member = number;
        file.setSyncStatus(FileSynchronizationStatus(number));
        EXPECT_TRUE(files->Add(file));
        QVector<FileConfiguration> const all = files->GetAll(GetParam().fileType);
        EXPECT_THAT(DifferingMembers(all.last(), Stored(file)), IsEmpty());
    }
}

TEST_P(FileStoreTable, GivesNoIdTwice)
{
    for (int id : {1, 2}) {
        FileConfiguration file;
        file.clientPath = "/file"_q;
        file.fileType = GetParam().fileType;
        EXPECT_TRUE(files->Add(file));
        EXPECT_EQ(file.id, id);
        RawStore(StorePath()).Run("DELETE FROM %1"_q.arg(TableName()));
    }
}

INSTANTIATE_TEST_SUITE_P(Tables,
                         FileStoreTable,
                         testing::Values(Table{FileConfigurationTypeFile, "FileConfiguration"},
                                         Table{FileConfigurationTypeGenerated, "GeneratedFileConfiguration"},
                                         Table{FileConfigurationTypeBase, "BaseFileConfiguration"}),
                         [](auto const& test) { return std::string(test.param.name); });

class FileStore : public FileStoreFixture
{};

// Dates.

struct DateCase
{
    char const* name;
    QDateTime date;
};

class FileStoreDate : public FileStoreFixture, public testing::WithParamInterface<DateCase>
{};

TEST_P(FileStoreDate, ComesBackWithItsClockReadingInUtc)
{
    FileConfiguration file;
    file.clientPath = "/file"_q;
    file.createdDateTime = GetParam().date;
    file.lastModifiedDateTime = GetParam().date;
    file.lastOperationTime = GetParam().date;
    EXPECT_TRUE(files->Add(file));
    FileConfiguration const stored = files->GetFileConfigurationById(file.id);
    for (QDateTime const& time : {stored.createdDateTime, stored.lastModifiedDateTime, stored.lastOperationTime}) {
        EXPECT_EQ(time.isValid(), GetParam().date.isValid());
        EXPECT_EQ(time.date(), GetParam().date.date());
        EXPECT_EQ(time.time(), GetParam().date.time());
        EXPECT_EQ(time.timeSpec(), Qt::UTC);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Dates,
    FileStoreDate,
    testing::Values(DateCase{"Utc", QDateTime(QDate(2024, 7, 3), QTime(12, 30, 15, 250), Qt::UTC)},
                    DateCase{"LocalInSummer", QDateTime(QDate(2024, 7, 3), QTime(12, 30, 15, 250), Qt::LocalTime)},
                    DateCase{"LocalInWinter", QDateTime(QDate(2024, 1, 3), QTime(0, 0, 0, 1), Qt::LocalTime)},
                    DateCase{"OffsetEast",
                             QDateTime(QDate(2024, 7, 3), QTime(12, 30), Qt::OffsetFromUTC, 5 * 3600 + 1800)},
                    DateCase{"OffsetWest", QDateTime(QDate(2024, 7, 3), QTime(12, 30), Qt::OffsetFromUTC, -11 * 3600)},
                    DateCase{"TimeZone", QDateTime(QDate(2024, 7, 3), QTime(12, 30), QTimeZone("America/New_York"))},
                    DateCase{"UtcWhereLocalClocksJump", QDateTime(QDate(2024, 3, 31), QTime(2, 30), Qt::UTC)},
                    DateCase{"LocalWhereClocksGoBack", QDateTime(QDate(2024, 10, 27), QTime(2, 30), Qt::LocalTime)},
                    DateCase{"Epoch", QDateTime(QDate(1970, 1, 1), QTime(0, 0), Qt::UTC)},
                    DateCase{"JustBeforeTheEpoch", QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59, 999), Qt::UTC)},
                    DateCase{"YearOne", QDateTime(QDate(1, 1, 1), QTime(0, 0), Qt::UTC)},
                    DateCase{"YearTenThousand", QDateTime(QDate(10000, 1, 1), QTime(0, 0, 0, 1), Qt::UTC)},
                    DateCase{"Invalid", QDateTime()}),
    [](auto const& test) { return test.param.name; });

// Texts.

class FileStoreText : public FileStoreFixture, public testing::WithParamInterface<QString>
{};

TEST_P(FileStoreText, ComesBackExactlyFromEveryColumn)
{
    QString const odd = GetParam();
    if (odd.contains(QChar(0)) && !StoreKeepsNullCharacters)
        GTEST_SKIP() << "the store refuses null characters";
    FileConfiguration file;
    for (QString* member : {&file.name,
                            &file.clientPath,
                            &file.serverPath,
                            &file.checkSum,
                            &file.checkSumMD5,
                            &file.ownerId,
                            &file.serverFileId,
                            &file.serverFileVersionId})
        *member = odd;
    EXPECT_TRUE(files->Add(file));
    EXPECT_THAT(DifferingMembers(files->GetFileConfigurationById(file.id), Stored(file)), IsEmpty());
    EXPECT_EQ(files->GetFileConfigurationByClientPath(odd).id, file.id);
    EXPECT_EQ(files->GetFileConfigurationByServerId(odd).id, file.id);
}

INSTANTIATE_TEST_SUITE_P(Texts,
                         FileStoreText,
                         testing::Values("plain"_q,
                                         "it's \"quoted\"; DROP TABLE FileConfiguration; --"_q,
                                         "]]>&<a>"_q,
                                         "line\nbreak\ttab\r"_q,
                                         "nul\0inside"_q,
                                         "\u00e9 composed, e\u0301 decomposed"_q,
                                         "\U0001F4C4\U0001F468\u200D\U0001F469"_q,
                                         "\uFFFD\uFEFF"_q,
                                         " %1 ? :id @x $y "_q,
                                         QString(100'000, QLatin1Char('x'))));

TEST_F(FileStore, PathsAreHeldAgainstEachOtherCharacterByCharacter)
{
    FileConfiguration const file = AddFile("/r/Caf\u00e9"_q, 1, 1);
    EXPECT_EQ(files->GetFileConfigurationByClientPath("/r/Caf\u00e9"_q).id, file.id);
    for (QString const& other :
         {"/r/caf\u00e9"_q, "/r/Cafe\u0301"_q, "/r/Caf\u00e9 "_q, "/r/Caf\u00e9/"_q, "/r/Caf%"_q})
        EXPECT_EQ(files->GetFileConfigurationByClientPath(other).id, -1);
}

TEST_F(FileStore, ATextThatCannotBeKeptIsRefusedWholeAndTheStoreTellsWhy)
{
    FileConfiguration file = DistinctFile();
    file.fileLinks.clear();
    file.name = QString(QChar(0xD800));
    EXPECT_FALSE(files->Add(file));
    EXPECT_EQ(file.id, 101);
    EXPECT_TRUE(store->LastError());
    store->ClearError();
    EXPECT_THAT(files->GetAll(), IsEmpty());
}

// Lookups.

TEST_F(FileStore, LookUpsFindTheirRowInTheirTable)
{
    FileConfiguration file = DistinctFile();
    EXPECT_TRUE(files->Add(file));
    FileConfiguration generated = DistinctFile(FileConfigurationTypeGenerated);
    generated.clientPath = "/generated"_q;
    EXPECT_TRUE(files->Add(generated));
    FileConfiguration base = DistinctFile(FileConfigurationTypeBase);
    base.clientPath = "/base"_q;
    EXPECT_TRUE(files->Add(base));

    EXPECT_THAT(DifferingMembers(files->GetFileConfigurationById(file.id), Stored(file)), IsEmpty());
    EXPECT_THAT(DifferingMembers(files->GetFileConfigurationByServerId("server file id"_q), Stored(file)), IsEmpty());
    EXPECT_THAT(DifferingMembers(files->GetFileConfigurationByClientPath(file.clientPath), Stored(file)), IsEmpty());
    EXPECT_THAT(DifferingMembers(files->GetGeneratedFileConfigurationById(generated.id), Stored(generated)), IsEmpty());
    EXPECT_THAT(DifferingMembers(files->GetGeneratedFileConfigurationByClientPath("/generated"_q), Stored(generated)),
                IsEmpty());

    EXPECT_EQ(files->GetFileConfigurationByClientPath("/generated"_q).id, -1);
    EXPECT_EQ(files->GetGeneratedFileConfigurationByClientPath("/base"_q).id, -1);
    EXPECT_EQ(files->GetFileConfigurationByClientPath("/base"_q).id, -1);
}

TEST_F(FileStore, ABaseFileThatIsOnRecordIsNeverFound)
{
    FileConfiguration base = DistinctFile(FileConfigurationTypeBase);
    EXPECT_TRUE(files->Add(base));
    EXPECT_THAT(DifferingMembers(files->GetBaseFileConfigurationById(base.id), FileConfiguration()), IsEmpty());
    EXPECT_THAT(DifferingMembers(files->GetBaseFileConfigurationByParentFileId(base.parentFileId), FileConfiguration()),
                IsEmpty());
}

TEST_F(FileStore, AllFilesOfATypeAreTheRowsOfItsTable)
{
    AddFile("/own"_q, 1, 1);
    AddFile("/generated"_q, 1, 1, FileConfigurationTypeGenerated);
    AddFile("/generated too"_q, 1, 1, FileConfigurationTypeGenerated);
    AddFile("/base"_q, 1, 1, FileConfigurationTypeBase);
    EXPECT_THAT(files->GetAll(), SizeIs(1));
    EXPECT_THAT(files->GetAll(FileConfigurationTypeFile), SizeIs(1));
    EXPECT_THAT(files->GetAll(FileConfigurationTypeGenerated), SizeIs(2));
    ASSERT_THAT(files->GetAll(FileConfigurationTypeBase), SizeIs(1));
    EXPECT_EQ(files->GetAll(FileConfigurationTypeBase)[0].clientPath, "/base"_q);
}

TEST_F(FileStore, LookUpsOfWhatIsNotThereAreDefaultRecords)
{
    AddFile("/file"_q, 1, 1);
    FileConfiguration const none;
    EXPECT_THAT(DifferingMembers(files->GetFileConfigurationById(2), none), IsEmpty());
    EXPECT_THAT(DifferingMembers(files->GetFileConfigurationById(-1), none), IsEmpty());
    EXPECT_THAT(DifferingMembers(files->GetGeneratedFileConfigurationById(1), none), IsEmpty());
    EXPECT_THAT(DifferingMembers(files->GetFileConfigurationByServerId("s"_q), none), IsEmpty());
    EXPECT_THAT(DifferingMembers(files->GetFileConfigurationByServerId(QString()), none), IsEmpty());
    EXPECT_FALSE(store->LastError());
}

TEST_F(FileStore, AnUnknownTypeListsNothingAndTheStoreTellsWhy)
{
    AddFile("/file"_q, 1, 1);
    EXPECT_THAT(files->GetAll(FileConfigurationType(7)), IsEmpty());
    EXPECT_TRUE(store->LastError());
    store->ClearError();
    EXPECT_THAT(files->GetFileConfigurationsByRootFolderId(1, FileConfigurationType(7)), IsEmpty());
    EXPECT_TRUE(store->LastError());
    store->ClearError();
}

TEST_F(FileStore, AnUnknownTypeIsWrittenNowhere)
{
    FileConfiguration file = DistinctFile(FileConfigurationType(9));
    file.fileLinks.clear();
    EXPECT_FALSE(files->Add(file));
    EXPECT_FALSE(files->Update(file));
    EXPECT_EQ(file.id, 101);
    for (int type : {0, 1, 2})
        EXPECT_THAT(files->GetAll(FileConfigurationType(type)), IsEmpty());
}

TEST_F(FileStore, TheTypeOfARecordComesFromItsRow)
{
    AddFile("/generated"_q, 1, 1, FileConfigurationTypeGenerated);
    RawStore(StorePath()).Run("UPDATE GeneratedFileConfiguration SET fileType = 77"_q);
    EXPECT_EQ(files->GetGeneratedFileConfigurationById(1).fileType, 77);
}

// Listings.

struct OrderedColumn
{
    char const* name;
    FileConfigOrderByEnum ascending;
    std::function<bool(FileConfiguration const&, FileConfiguration const&)> less;
};

class FileStoreOrder : public FileStoreFixture, public testing::WithParamInterface<OrderedColumn>
{
protected:
    /// Files in the tables of files and of generated files, whose rows stand in another order by each column.
    void SetUp() override
    {
        FileStoreFixture::SetUp();
        ASSERT_TRUE(files->transaction());
        for (FileConfigurationType const fileType : {FileConfigurationTypeFile, FileConfigurationTypeGenerated}) {
            for (int row = 0; row < 7; ++row) {
                int column = 1;
                auto const rank = [&] { return row * column++ % 7; }; // a permutation of the rows for each column
                auto const text = [&] { return QString(rank() + 1, QLatin1Char('x')); };
                auto const time = [&] { return QDateTime(QDate(2024, 1, 1 + rank()), QTime(), Qt::UTC); };
                FileConfiguration file;
                file.fileType = fileType;
                file.rootFolderId = 9;
                file.folderConfigurationId = 10 + 3 * row % 7;
                file.lastOperationType = 6 - row;
                file.name = text();
                file.serverPath = text();
                file.checkSum = text();
                file.createdDateTime = time();
                file.lastModifiedDateTime = time();
                file.size = rank();
                file.setSyncStatus(FileSynchronizationStatus(2 * row % 7));
                file.clientPath = "%1/%2"_q.arg(5 * row % 7).arg(fileType);
                EXPECT_TRUE(files->Add(file));
            }
        }
        ASSERT_TRUE(files->commit());
    }

    void ExpectSorted(QVector<FileConfiguration> listed, bool descending)
    {
        ASSERT_THAT(listed, SizeIs(7));
        if (descending)
            std::reverse(listed.begin(), listed.end());
        for (int i = 1; i < listed.size(); ++i)
            EXPECT_TRUE(GetParam().less(listed[i - 1], listed[i])) << "row " << i;
    }
};

TEST_P(FileStoreOrder, SortsFilesAndGeneratedFilesUpwardsAndDownwards)
{
    FileConfigOrderByEnum const descending{GetParam().ascending + 1};
    ExpectSorted(files->GetFileConfigurationsByRootFolderId(9, GetParam().ascending), false);
    ExpectSorted(files->GetFileConfigurationsByRootFolderId(9, descending), true);
    ExpectSorted(files->GetGeneratedFileConfigurationsByRootFolderId(9, GetParam().ascending), false);
    ExpectSorted(files->GetGeneratedFileConfigurationsByRootFolderId(9, descending), true);
    EXPECT_THAT(files->GetFileConfigurationsByRootFolderId(8, GetParam().ascending), IsEmpty());
}

TEST_P(FileStoreOrder, SortsTheFilesOfAFolder)
{
    RawStore(StorePath()).Run("UPDATE FileConfiguration SET folderConfigurationId = 10"_q);
    if (GetParam().ascending == FileConfigOrderByFolderConfigurationId) { // by which they are all equal
        EXPECT_THAT(files->GetFileConfigurationsByFolderId(10, GetParam().ascending), SizeIs(7));
        return;
    }
    ExpectSorted(files->GetFileConfigurationsByFolderId(10, GetParam().ascending), false);
    ExpectSorted(files->GetFileConfigurationsByFolderId(10, FileConfigOrderByEnum(GetParam().ascending + 1)), true);
    EXPECT_THAT(files->GetFileConfigurationsByFolderId(11, GetParam().ascending), IsEmpty());
}

#define ORDERED_COLUMN(name, order, member)                                                                            \
    OrderedColumn                                                                                                      \
    {                                                                                                                  \
        name, order,                                                                                                   \
            [](FileConfiguration const& left, FileConfiguration const& right) { return left.member < right.member; }   \
    }

INSTANTIATE_TEST_SUITE_P(
    Columns,
    FileStoreOrder,
    testing::Values(ORDERED_COLUMN("Id", FileConfigOrderById, id),
                    ORDERED_COLUMN("Name", FileConfigOrderByName, name),
                    ORDERED_COLUMN("Folder", FileConfigOrderByFolderConfigurationId, folderConfigurationId),
                    ORDERED_COLUMN("ClientPath", FileConfigOrderByClientPath, clientPath),
                    ORDERED_COLUMN("ServerPath", FileConfigOrderByServerPath, serverPath),
                    ORDERED_COLUMN("CheckSum", FileConfigOrderByCheckSum, checkSum),
                    ORDERED_COLUMN("Created", FileConfigOrderByCreatedDateTime, createdDateTime),
                    ORDERED_COLUMN("LastModified", FileConfigOrderByLastModifiedDateTime, lastModifiedDateTime),
                    ORDERED_COLUMN("SyncStatus", FileConfigOrderBySyncStatus, getSyncStatus()),
                    ORDERED_COLUMN("LastOperation", FileConfigOrderByLastOperationType, lastOperationType),
                    ORDERED_COLUMN("Size", FileConfigOrderBySize, size)),
    [](auto const& test) { return test.param.name; });

TEST_F(FileStore, AnUnknownOrderSortsById)
{
    AddFile("/b"_q, 1, 9);
    AddFile("/c"_q, 1, 9);
    AddFile("/a"_q, 1, 9);
    for (int order : {99, 22, -1, INT_MAX, INT_MIN}) {
        EXPECT_THAT(Ids(files->GetFileConfigurationsByFolderId(1, FileConfigOrderByEnum(order))), ElementsAre(1, 2, 3));
        EXPECT_THAT(Ids(files->GetFileConfigurationsByRootFolderId(9, FileConfigOrderByEnum(order))),
                    ElementsAre(1, 2, 3));
    }
}

TEST_F(FileStore, FilesOfARootAreListedByTheirType)
{
    AddFile("/own"_q, 1, 9);
    AddFile("/generated"_q, 1, 9, FileConfigurationTypeGenerated);
    AddFile("/base"_q, 1, 9, FileConfigurationTypeBase);
    AddFile("/elsewhere"_q, 1, 8, FileConfigurationTypeBase);
    auto const paths = [&](FileConfigurationType fileType) {
        QStringList found;
        for (FileConfiguration const& file : files->GetFileConfigurationsByRootFolderId(9, fileType))
            found.append(file.clientPath);
        return found;
    };
    EXPECT_EQ(paths(FileConfigurationTypeFile), QStringList{"/own"_q});
    EXPECT_EQ(paths(FileConfigurationTypeGenerated), QStringList{"/generated"_q});
    EXPECT_EQ(paths(FileConfigurationTypeBase), QStringList{"/base"_q});
}

TEST_F(FileStore, ASyncOptionNeedsAllItsBitsAndTheOptionZeroNeedsNone)
{
    for (int option : {0, 1, 64, 65, -1}) {
        FileConfiguration file;
        file.clientPath = "/option %1"_q.arg(option);
        file.rootFolderId = 9;
        file.syncOption = option;
        EXPECT_TRUE(files->Add(file)); // ids 1 to 5
    }
    AddFile("/elsewhere"_q, 1, 8);
    auto const with = [&](int option) {
        return Ids(files->GetFileConfigurationsWithSyncOption(9, FileSyncOption(option)));
    };
    EXPECT_THAT(with(0), UnorderedElementsAre(1, 2, 3, 4, 5));
    EXPECT_THAT(with(1), UnorderedElementsAre(2, 4, 5));
    EXPECT_THAT(with(64), UnorderedElementsAre(3, 4, 5));
    EXPECT_THAT(with(65), UnorderedElementsAre(4, 5));
    EXPECT_THAT(with(66), UnorderedElementsAre(5));
    EXPECT_THAT(with(-1), UnorderedElementsAre(5));
    EXPECT_EQ(files->GetFileConfigurationById(4).syncOption, 65);
}

TEST_F(FileStore, FilesOfAFolderAndAStatusComeByName)
{
    for (QString const& name : {"/f/b"_q, "/f/c"_q, "/f/a"_q}) {
        FileConfiguration file = AddFile(name, 1, 9);
        file.setSyncStatus(FileSyncStatusSyncing);
        EXPECT_TRUE(files->Update(file));
    }
    AddFile("/f/not synced"_q, 1, 9);
    FileConfiguration elsewhere = AddFile("/g/a"_q, 2, 9);
    elsewhere.setSyncStatus(FileSyncStatusSyncing);
    EXPECT_TRUE(files->Update(elsewhere));
    EXPECT_THAT(Ids(files->GetFileConfigurationsByFolderIdAndSyncStatus(1, FileSyncStatusSyncing)),
                ElementsAre(3, 1, 2));
    EXPECT_THAT(files->GetFileConfigurationsByFolderIdAndSyncStatus(1, FileSynchronizationStatus(77)), IsEmpty());
}

TEST_F(FileStore, GeneratedFilesOfAParentComeById)
{
    for (int parent : {7, 8, 7, 7}) {
        FileConfiguration file;
        file.fileType = FileConfigurationTypeGenerated;
        file.clientPath = "/generated"_q;
        file.parentFileId = parent;
        EXPECT_TRUE(files->Add(file));
    }
    EXPECT_THAT(Ids(files->GetGeneratedFileConfigurationsByParentFileId(7)), ElementsAre(1, 3, 4));
    EXPECT_THAT(files->GetGeneratedFileConfigurationsByParentFileId(9), IsEmpty());
}

TEST_F(FileStore, AllFilesOfAPathAreListed)
{
    AddFile("/same"_q, 1, 9);
    AddFile("/other"_q, 1, 9);
    AddFile("/same"_q, 2, 9);
    EXPECT_THAT(Ids(files->GetAllFileConfigurationsByClientPath("/same"_q)), UnorderedElementsAre(1, 3));
    EXPECT_THAT(files->GetFileConfigurationByClientPath("/same"_q).id, testing::AnyOf(1, 3));
}

// Files of roots that aren't on record.

TEST_F(FileStore, FilesOfRootsThatAreNotOnRecordAreFoundAndThoseWithoutARootAreNot)
{
    int const root = AddRoot(rootPath).getId();
    AddFile("/r/file"_q, root, root);
    FileConfiguration const orphan = AddFile("/gone/file"_q, 77, 77);
    FileConfiguration const unplaced = AddFile("/unplaced"_q, -1, -1);
    AddFile("/rootless"_q, 1, 1);
    AddFile("/generated"_q, 77, 77, FileConfigurationTypeGenerated);
    RawStore(StorePath()).Run("UPDATE FileConfiguration SET rootFolderId = NULL WHERE clientPath = '/rootless'"_q);
    EXPECT_THAT(Ids(files->GetFileConfigurationsOfNonExistingRootFolders()),
                UnorderedElementsAre(orphan.id, unplaced.id));
}

TEST_F(FileStore, ARootThatWasJustAddedOrRemovedCountsAtOnce)
{
    FileConfiguration const file = AddFile("/r/file"_q, 1, 1);
    EXPECT_THAT(files->GetFileConfigurationsOfNonExistingRootFolders(), SizeIs(1));
    EXPECT_EQ(AddRoot(rootPath).getId(), file.rootFolderId);
    EXPECT_THAT(files->GetFileConfigurationsOfNonExistingRootFolders(), IsEmpty());
    EXPECT_TRUE(folders->Remove(1));
    EXPECT_THAT(files->GetFileConfigurationsOfNonExistingRootFolders(), SizeIs(1));
}

TEST_F(FileStore, WithoutRootsAllFilesAreFiledUnderRootsThatAreNotOnRecord)
{
    AddFile("/a"_q, 1, 1);
    AddFile("/b"_q, 2, 2);
    EXPECT_THAT(Ids(files->GetFileConfigurationsOfNonExistingRootFolders()), UnorderedElementsAre(1, 2));
    EXPECT_FALSE(store->LastError());
}

// By path and account.

TEST_F(FileStore, TheAccountOfAFileIsThatOfItsFolder)
{
    int const first = AddRoot("/first"_q, 4).getId();
    int const second = AddRoot("/second"_q, 5).getId();
    int const gone = AddRoot("/gone"_q, 6).getId();
    for (int folderId : {first, second, gone}) {
        FileConfiguration file;
        file.clientPath = "/same"_q;
        file.serverPath = "/same on the server"_q;
        file.folderConfigurationId = folderId;
        EXPECT_TRUE(files->Add(file)); // ids 1 to 3
    }
    EXPECT_TRUE(folders->Remove(gone));

    auto const byClientPath = [&](int account) {
        return files->GetFileConfigurationByClientPathAndAuthenticationId("/same"_q, account).id;
    };
    auto const byServerPath = [&](int account) {
        return files->GetFileConfigurationByServerPathAndAuthenticationId("/same on the server"_q, account).id;
    };
    for (auto const& [account, id] : {std::pair(4, 1), std::pair(5, 2), std::pair(6, -1), std::pair(-1, 3)}) {
        EXPECT_EQ(byClientPath(account), id) << account;
        EXPECT_EQ(byServerPath(account), id) << account;
    }
    EXPECT_THAT(
        DifferingMembers(files->GetFileConfigurationByClientPathAndAuthenticationId("/none"_q, 4), FileConfiguration()),
        IsEmpty());
}

// The file that a link points at.

TEST_F(FileStore, ALinkIsFollowedByIdAndElseByPath)
{
    FileConfiguration const target = AddFile("/r/target"_q, 1, 1);
    FileLink link;
    link.fileId = target.id;
    link.path = "nowhere"_q;
    EXPECT_EQ(files->GetFileConfiguration(link, "/r/linking"_q).id, target.id);
    link.fileId = 77;
    link.path = "../r/target"_q;
    EXPECT_EQ(files->GetFileConfiguration(link, "/r/linking"_q).id, target.id);
    link.fileId = -1;
    EXPECT_EQ(files->GetFileConfiguration(link, "/elsewhere/linking"_q).id, target.id);
    link.path = "target"_q;
    EXPECT_EQ(files->GetFileConfiguration(link, "/elsewhere/linking"_q).name, "/elsewhere/target"_q);
}

// Duplicates.

TEST_F(FileStore, AddingAPathThatItsFolderHoldsLeavesOneRowWithTheNewValues)
{
    FileConfiguration const known = AddFile("/r/file"_q, 1, 9);
    FileConfiguration file = DistinctFile();
    file.fileLinks.clear();
    file.clientPath = known.clientPath;
    file.folderConfigurationId = 1;
    EXPECT_TRUE(files->Add(file));
    EXPECT_EQ(file.id, known.id);
    EXPECT_THAT(files->GetAll(), SizeIs(1));
    EXPECT_THAT(DifferingMembers(files->GetFileConfigurationById(known.id), Stored(file)), IsEmpty());
}

TEST_F(FileStore, AddingAPathThatAnotherFolderHoldsMakesASecondRow)
{
    FileConfiguration const first = AddFile("/r/file"_q, 1, 9);
    FileConfiguration const second = AddFile("/r/file"_q, 2, 9);
    EXPECT_NE(first.id, second.id);
    EXPECT_THAT(files->GetAll(), SizeIs(2));
}

TEST_F(FileStore, AddingAGeneratedFileWhoseOwnFileIsOnRecordSucceedsAndInsertsNothing)
{
    FileConfiguration const own = AddFile("/r/file"_q, 1, 9);
    FileConfiguration generated = own;
    generated.id = -1;
    generated.fileType = FileConfigurationTypeGenerated;
    generated.name = "changed"_q;
    EXPECT_TRUE(files->Add(generated));
    EXPECT_EQ(generated.id, own.id);
    EXPECT_THAT(files->GetAll(FileConfigurationTypeGenerated), IsEmpty());
    EXPECT_EQ(files->GetFileConfigurationById(own.id).name, "file"_q);
}

TEST_F(FileStore, AddingAGeneratedFileWhoseOwnFileIsOnRecordMayChangeAnotherGeneratedFile)
{
    FileConfiguration const stranger = AddFile("/r/stranger"_q, 1, 9, FileConfigurationTypeGenerated);
    FileConfiguration const own = AddFile("/r/file"_q, 1, 9);
    ASSERT_EQ(stranger.id, own.id);
    FileConfiguration generated = own;
    generated.fileType = FileConfigurationTypeGenerated;
    EXPECT_TRUE(files->Add(generated));
    EXPECT_EQ(files->GetGeneratedFileConfigurationById(stranger.id).clientPath, "/r/file"_q);
}

TEST_F(FileStore, GeneratedFilesAreNotHeldAgainstEachOther)
{
    FileConfiguration const first = AddFile("/r/file"_q, 1, 9, FileConfigurationTypeGenerated);
    FileConfiguration const second = AddFile("/r/file"_q, 1, 9, FileConfigurationTypeGenerated);
    EXPECT_NE(first.id, second.id);
}

} // namespace
} // namespace file_store_test
