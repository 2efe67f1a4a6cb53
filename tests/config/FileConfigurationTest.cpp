#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/RecordColumns.h"
#include "support/FileRecords.h"
#include "support/QtPrinters.h"

#include <gmock/gmock.h>

#include <QObject>
#include <QVector>

#include <type_traits>

namespace file_configuration_test {
namespace {

using namespace sync::config;
using tandry::test::DifferingMembers;
using tandry::test::DistinctFile;
using tandry::test::TextsOf;
using testing::IsEmpty;
using testing::SizeIs;

static_assert(std::has_virtual_destructor_v<FileConfiguration>);
static_assert(!std::is_base_of_v<QObject, FileConfiguration>);
static_assert(std::is_same_v<std::underlying_type_t<FileConfigurationType>, int>);
static_assert(std::is_same_v<std::underlying_type_t<FileSynchronizationStatus>, int>);
static_assert(std::is_same_v<std::underlying_type_t<FileSynchronizationSubStatus>, int>);
static_assert(std::is_same_v<std::underlying_type_t<FileSyncOption>, int>);
static_assert(FileConfigurationTypeFile == 0 && FileConfigurationTypeGenerated == 1 && FileConfigurationTypeBase == 2);
static_assert(FileSyncStatusSyncing == 1 && FileSyncStatusNotSynced == 2 && FileSyncStatusLinkDiscovered == 3);
static_assert(FileSyncOptionNone == 0 && FileSyncOptionRepathRequired == 64);
static_assert(FileSyncSubStatusNone == 0);
static_assert(std::is_same_v<std::underlying_type_t<FilePrivileges>, int>);
// A client copies the rights of a folder to its files.
static_assert(FilePrivilegeView == int(FolderPrivilegeView) && FilePrivilegeDownload == int(FolderPrivilegeDownload) &&
              FilePrivilegeUpdate == int(FolderPrivilegeUpdate) && FilePrivilegeDelete == int(FolderPrivilegeDelete) &&
              FilePrivilegeShare == int(FolderPrivilegeShare));

TEST(FileConfiguration, DefaultRecordHasAllRightsAndIsNotSynced)
{
    FileConfiguration const file;
    EXPECT_EQ(file.id, -1);
    EXPECT_EQ(file.privileges, 31);
    EXPECT_EQ(file.getSyncStatus(), 2);
    EXPECT_FALSE(file.getSyncStatusChanged());
    EXPECT_FALSE(file.fileDate.isValid());
    EXPECT_EQ(file.fileDate.timeSpec(), Qt::UTC);
}

TEST(FileConfiguration, DefaultRecordHasNoValueInTheOtherMembers)
{
    FileConfiguration const file;
    for (int id : {file.folderConfigurationId, file.productConfigurationId, file.rootFolderId, file.parentFileId})
        EXPECT_EQ(id, -1);
    for (QString const& text : TextsOf(file))
        EXPECT_TRUE(text.isNull());
    for (QDateTime const& time : {file.createdDateTime, file.lastModifiedDateTime, file.lastOperationTime}) {
        EXPECT_FALSE(time.isValid());
        EXPECT_EQ(time.timeSpec(), Qt::LocalTime);
    }
    EXPECT_EQ(file.size, 0);
    EXPECT_EQ(file.lastOperationType, 0);
    EXPECT_EQ(file.syncOption, 0);
    EXPECT_EQ(file.fileType, FileConfigurationTypeFile);
    EXPECT_EQ(file.getSyncSubStatus(), 0);
    EXPECT_TRUE(file.nameValueProperties.isEmpty());
    EXPECT_TRUE(file.fileLinks.isEmpty());
}

TEST(FileConfiguration, SettingTheSameStatusCountsAsChange)
{
    FileConfiguration file;
    file.setSyncStatus(FileSyncStatusNotSynced);
    EXPECT_EQ(file.getSyncStatus(), FileSyncStatusNotSynced);
    EXPECT_TRUE(file.getSyncStatusChanged());
}

TEST(FileConfiguration, ResetTakesTheChangeBackAndKeepsTheStatus)
{
    FileConfiguration file;
    file.setSyncStatus(FileSyncStatusSyncing);
    file.resetSyncStatusChanged();
    EXPECT_FALSE(file.getSyncStatusChanged());
    EXPECT_EQ(file.getSyncStatus(), FileSyncStatusSyncing);
}

TEST(FileConfiguration, SubStatusIsKeptAndCountsAsNoChange)
{
    FileConfiguration file;
    file.setSyncSubStatus(FileSynchronizationSubStatus(5));
    EXPECT_EQ(file.getSyncSubStatus(), 5);
    EXPECT_FALSE(file.getSyncStatusChanged());
}

struct PrivilegeCase
{
    char const* name;
    QString text;
    int privileges;
};

class FilePrivilegeWords : public testing::TestWithParam<PrivilegeCase>
{};

TEST_P(FilePrivilegeWords, AreTheBitsOfTheKnownWords)
{
    FileConfiguration file;
    file.setPrivileges(GetParam().text);
    EXPECT_EQ(file.privileges, GetParam().privileges);
}

INSTANTIATE_TEST_SUITE_P(Texts,
                         FilePrivilegeWords,
                         testing::Values(PrivilegeCase{"NullText", QString(), 0},
                                         PrivilegeCase{"EmptyText", QStringLiteral(""), 0},
                                         PrivilegeCase{"BlanksAlone", QStringLiteral("   "), 0},
                                         PrivilegeCase{"View", QStringLiteral("view"), 1},
                                         PrivilegeCase{"Download", QStringLiteral("download"), 2},
                                         PrivilegeCase{"Update", QStringLiteral("update"), 4},
                                         PrivilegeCase{"Delete", QStringLiteral("delete"), 8},
                                         PrivilegeCase{"Share", QStringLiteral("share"), 16},
                                         PrivilegeCase{"OneBlankBetween", QStringLiteral("view delete"), 9},
                                         PrivilegeCase{"TwoBlanksBetween", QStringLiteral("view  delete"), 9},
                                         PrivilegeCase{"BlanksAround", QStringLiteral(" view delete "), 9},
                                         PrivilegeCase{"Capitals", QStringLiteral("VIEW"), 1},
                                         PrivilegeCase{"MixedCase", QStringLiteral("dOwnLoad"), 2},
                                         PrivilegeCase{"CommaBetween", QStringLiteral("view,delete"), 0},
                                         PrivilegeCase{"TabBetween", QStringLiteral("view\tdelete"), 0},
                                         PrivilegeCase{"UnknownWordSkipped", QStringLiteral("view fly delete"), 9},
                                         PrivilegeCase{"WordWithMoreBehind", QStringLiteral("views"), 0},
                                         PrivilegeCase{"SameWordTwice", QStringLiteral("share share"), 16},
                                         PrivilegeCase{
                                             "AllInAnyOrder", QStringLiteral("share delete update download view"), 31}),
                         [](auto const& test) { return test.param.name; });

TEST(FileConfiguration, OptionWordsSetTheBitInAnyCaseAndAnEmptyListLeavesIt)
{
    FileConfiguration file;
    file.setSyncOptionPersistentAcrossMachines({QStringLiteral("repathrequired")});
    EXPECT_EQ(file.syncOption, 64);
    file.setSyncOptionPersistentAcrossMachines(QStringList());
    EXPECT_EQ(file.syncOption, 64);
}

TEST(FileConfiguration, UnknownAndEmptyOptionWordsAreIgnored)
{
    FileConfiguration file;
    file.syncOption = 1;
    file.setSyncOptionPersistentAcrossMachines({QString(), QStringLiteral("Repath"), QStringLiteral("")});
    EXPECT_EQ(file.syncOption, 1);
    file.setSyncOptionPersistentAcrossMachines({QStringLiteral("Repath"), QStringLiteral("RepathRequired")});
    EXPECT_EQ(file.syncOption, 65);
}

TEST(FileConfiguration, OptionAccessorsShowOnlyTheBitThatOtherMachinesKnow)
{
    FileConfiguration file;
    file.syncOption = 65;
    EXPECT_EQ(file.getSyncOptionPersistentAcrossMachines(), 64);
    QStringList words;
    file.getSyncOptionPersistentAcrossMachines(words);
    EXPECT_EQ(words, QStringList{QStringLiteral("RepathRequired")});
}

TEST(FileConfiguration, OptionWordsOfARecordWithoutTheBitEmptyTheList)
{
    FileConfiguration file;
    file.syncOption = 1;
    EXPECT_EQ(file.getSyncOptionPersistentAcrossMachines(), FileSyncOptionNone);
    QStringList words{QStringLiteral("left over")};
    file.getSyncOptionPersistentAcrossMachines(words);
    EXPECT_THAT(words, IsEmpty());
}

TEST(FileConfiguration, SettingAnOptionAddsAllItsBitsAndTakesNoneAway)
{
    FileConfiguration file;
    file.setSyncOptionPersistentAcrossMachines(FileSyncOption(66));
    file.setSyncOptionPersistentAcrossMachines(FileSyncOptionNone);
    EXPECT_EQ(file.syncOption, 66);
}

TEST(FileConfiguration, RecordsThatDifferEverywhereDifferInAllMembers)
{
    EXPECT_THAT(DifferingMembers(FileConfiguration(), DistinctFile(FileConfigurationTypeBase)),
                SizeIs(std::size_t(RecordColumns<FileConfiguration>().size()) + 2)); // with sub-status and changed flag
}

TEST(FileConfiguration, CopyAndAssignmentCarryAllMembers)
{
    FileConfiguration const source = DistinctFile(FileConfigurationTypeBase);
    FileConfiguration const copy(source);
    FileConfiguration assigned;
    assigned = source;
    EXPECT_THAT(DifferingMembers(source, copy), IsEmpty());
    EXPECT_THAT(DifferingMembers(source, assigned), IsEmpty());
}

TEST(FileConfiguration, AssignmentToItselfChangesNothing)
{
    FileConfiguration file = DistinctFile(FileConfigurationTypeBase);
    FileConfiguration& self = file;
    file = self;
    EXPECT_THAT(DifferingMembers(file, DistinctFile(FileConfigurationTypeBase)), IsEmpty());
}

TEST(FileConfiguration, CopiesAreIndependent)
{
    FileConfiguration const source = DistinctFile();
    FileConfiguration copy(source);
    copy.name += QLatin1Char('x');
    copy.fileLinks[0].fileId = 1;
    copy.nameValueProperties.clear();
    EXPECT_THAT(DifferingMembers(source, DistinctFile()), IsEmpty());
}

TEST(FileConfiguration, RecordsSurviveTheGrowthOfTheirVector)
{
    QVector<FileConfiguration> files;
    for (int i = 0; i < 100; ++i)
        files.append(DistinctFile());
    for (FileConfiguration const& file : files)
        EXPECT_THAT(DifferingMembers(file, DistinctFile()), IsEmpty());
}

} // namespace
} // namespace file_configuration_test
