#include "config/FolderConfiguration.h"

#include "config/FolderConfigManager.h"
#include "support/Conversation.h"
#include "support/FolderRecords.h"
#include "support/RecordingStore.h"

#include <gmock/gmock.h>

#include <QMetaProperty>

#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

namespace folder_configuration_test {
namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

static_assert(std::is_base_of_v<QObject, FolderConfiguration>);
static_assert(std::is_copy_constructible_v<FolderConfiguration> && std::is_copy_assignable_v<FolderConfiguration>);
static_assert(std::is_same_v<std::underlying_type_t<FolderSynchronizationStatus>, int>);
static_assert(std::is_same_v<std::underlying_type_t<SynchronizationFolderOption>, int>);
static_assert(std::is_same_v<std::underlying_type_t<FolderOperationType>, int>);
static_assert(std::is_same_v<std::underlying_type_t<DriveType>, int>);
static_assert(std::is_same_v<std::underlying_type_t<FolderSyncOption>, int>);
static_assert(std::is_same_v<std::underlying_type_t<FolderPrivileges>, int>);
static_assert(FolderPrivilegeView == 1 && FolderPrivilegeDownload == 2 && FolderPrivilegeUpdate == 4 &&
              FolderPrivilegeDelete == 8 && FolderPrivilegeShare == 16);
static_assert(FolderSyncOptionNone == 0);

QDateTime LocalNoon()
{
    return QDateTime(QDate(2024, 7, 3), QTime(12, 0, 0, 250), Qt::LocalTime);
}

QDateTime UtcNoon()
{
    return QDateTime(QDate(2024, 7, 3), QTime(12, 0, 0, 250), Qt::UTC);
}

TEST(FolderConfiguration, DefaultRecordHasNoPlaceAndAllRights)
{
    FolderConfiguration const folder;
    EXPECT_EQ(folder.getId(), -1);
    EXPECT_FALSE(folder.isRoot());
    EXPECT_EQ(folder.getPrivileges(), 31);
    EXPECT_EQ(folder.getSyncStatus(), 1);
    EXPECT_FALSE(folder.getSyncStatusChanged());
    EXPECT_EQ(folder.getFolderOption(), 1);
}

TEST(FolderConfiguration, DefaultRecordHasNoValueInTheOtherMembers)
{
    FolderConfiguration const folder;
    for (int id :
         {folder.getAuthenticationId(), folder.getProductConfigurationId(), folder.getRootId(), folder.getParentId()})
        EXPECT_EQ(id, -1);
    for (QString const& text : TextsOf(folder))
        EXPECT_TRUE(text.isNull());
    for (QDateTime const& time :
         {folder.getLastOperationTime(), folder.getLastSyncTime(), folder.getLastServerSyncRequestTime()})
        EXPECT_TRUE(time.isNull());
    EXPECT_EQ(folder.getLastOperationType(), 0);
    EXPECT_EQ(folder.getSyncDriveType(), 0);
    EXPECT_EQ(folder.getSyncOption(), 0);
    EXPECT_EQ(folder.parent(), nullptr);
}

TEST(FolderConfiguration, EachSetterReachesItsOwnGetter)
{
    // Distinct values, so that a setter that reaches another member shows.
    FolderConfiguration const folder = DistinctFolder();
    EXPECT_EQ(folder.getAuthenticationId(), 102);
    EXPECT_EQ(folder.getProductConfigurationId(), 103);
    EXPECT_EQ(folder.getRootId(), 104);
    EXPECT_EQ(folder.getName(), "name"_q);
    EXPECT_EQ(folder.getRemoteShortKey(), "short key"_q);
    EXPECT_EQ(folder.getRemoteLongKey(), "long key"_q);
    EXPECT_EQ(folder.getClientPath(), "/tree/client path"_q);
    EXPECT_EQ(folder.getServerPath(), "/server path"_q);
    EXPECT_EQ(folder.getParentId(), 105);
    EXPECT_EQ(folder.getLastOperationTime(), QDateTime(QDate(2024, 1, 2), QTime(3, 4, 5, 678), Qt::UTC));
    EXPECT_EQ(folder.getLastSyncTime(), QDateTime(QDate(2024, 7, 8), QTime(9, 10, 11, 121), Qt::UTC));
    EXPECT_EQ(folder.getFolderOption(), 106);
    EXPECT_EQ(folder.getLastOperationType(), 107);
    EXPECT_EQ(folder.getSyncDriveType(), 108);
    EXPECT_EQ(folder.getSyncOption(), 109);
    EXPECT_EQ(folder.getOwnerId(), "owner id"_q);
    EXPECT_EQ(folder.getPrivileges(), 9);
    EXPECT_EQ(folder.getServerRoot(), "/server root"_q);
    EXPECT_EQ(folder.getServerFolderId(), "server folder id"_q);
    EXPECT_EQ(folder.getFeatureName(), "feature"_q);
    EXPECT_EQ(folder.getSyncStatus(), 110);
}

TEST(FolderConfiguration, RootIsAFolderWithTheParentZero)
{
    FolderConfiguration folder;
    for (int parentId : {-1, 1, 0}) {
        folder.setParentId(parentId);
        EXPECT_EQ(folder.isRoot(), parentId == 0) << parentId;
    }
    folder.setRootId(7);
    EXPECT_TRUE(folder.isRoot());
}

// The changed status

TEST(FolderConfiguration, SettingTheStatusItHasCountsAsAChange)
{
    FolderConfiguration folder;
    folder.setSyncStatus(FolderSynchronizationStatus(1));
    EXPECT_EQ(folder.getSyncStatus(), 1);
    EXPECT_TRUE(folder.getSyncStatusChanged());
}

TEST(FolderConfiguration, ResetTakesTheChangeBackAndKeepsTheStatus)
{
    FolderConfiguration folder;
    folder.setSyncStatus(FolderSynchronizationStatus(2));
    folder.resetSyncStatusChanged();
    EXPECT_EQ(folder.getSyncStatus(), 2);
    EXPECT_FALSE(folder.getSyncStatusChanged());
}

TEST(FolderConfiguration, NoOtherSetterCountsAsAChangeOfTheStatus)
{
    FolderConfiguration folder = DistinctFolder();
    folder.resetSyncStatusChanged();
    folder.setName("other"_q);
    folder.setFolderOption(SynchronizationFolderOption(2));
    folder.setPrivileges("view"_q);
    folder.setLastSyncTime(UtcNoon());
    EXPECT_FALSE(folder.getSyncStatusChanged());
}

TEST(FolderConfiguration, CopyOfAChangedRecordIsChanged)
{
    FolderConfiguration folder;
    folder.setSyncStatus(FolderSynchronizationStatus(1));
    FolderConfiguration const copy(folder);
    EXPECT_TRUE(copy.getSyncStatusChanged());
}

// Copies

TEST(FolderConfiguration, CopyAndAssignmentCarryAllMembersAndNothingOfTheObject)
{
    FolderConfiguration source = StoredFolder(101, DistinctFolder());
    source.setSyncStatus(FolderSynchronizationStatus(110));
    source.setLastServerSyncRequestTime(UtcNoon());
    source.setObjectName("source"_q);
    source.setProperty("dynamic", 1);
    ASSERT_EQ(source.getId(), 101);

    FolderConfiguration const copy(source);
    FolderConfiguration assigned;
    assigned.setFeatureName("replaced"_q);
    assigned.setObjectName("assigned"_q);
    EXPECT_EQ(&(assigned = source), &assigned);

    EXPECT_THAT(DifferingMembers(copy, source), IsEmpty());
    EXPECT_THAT(DifferingMembers(assigned, source), IsEmpty());
    EXPECT_TRUE(copy.objectName().isEmpty());
    EXPECT_THAT(copy.dynamicPropertyNames(), IsEmpty());
    EXPECT_EQ(copy.parent(), nullptr);
    EXPECT_EQ(assigned.objectName(), "assigned"_q);
}

TEST(FolderConfiguration, AssignmentReplacesThePropertiesAsAWhole)
{
    FolderConfiguration folder;
    folder.setFeatureName("feature"_q);
    folder = FolderConfiguration();
    EXPECT_TRUE(folder.getFeatureName().isNull());
}

TEST(FolderConfiguration, ChangeOfACopyLeavesTheSourceAlone)
{
    FolderConfiguration const source = DistinctFolder();
    FolderConfiguration copy(source);
    copy.setFeatureName("other"_q);
    copy.setName("other"_q);
    EXPECT_EQ(source.getFeatureName(), "feature"_q);
    EXPECT_EQ(source.getName(), "name"_q);
}

TEST(FolderConfiguration, AssignmentToItselfEmptiesThePropertiesAndNothingElse)
{
    FolderConfiguration folder = StoredFolder(101, DistinctFolder());
    folder.setSyncStatus(FolderSynchronizationStatus(110));
    folder.setLastServerSyncRequestTime(UtcNoon());
    FolderConfiguration const before(folder);
    FolderConfiguration const& itself = folder;
    folder = itself;
    EXPECT_THAT(DifferingMembers(folder, before), ElementsAre("FeatureName"));
    EXPECT_TRUE(folder.getFeatureName().isNull());
}

// Times

TEST(FolderConfiguration, LastSyncTimeTakesTheClockReadingAsUtc)
{
    FolderConfiguration folder;
    folder.setLastSyncTime(LocalNoon());
    EXPECT_EQ(folder.getLastSyncTime(), UtcNoon());
    EXPECT_EQ(folder.getLastSyncTime().timeSpec(), Qt::UTC);
}

TEST(FolderConfiguration, LastServerSyncRequestTimeTakesTheClockReadingAsUtc)
{
    FolderConfiguration folder;
    folder.setLastServerSyncRequestTime(QDateTime(LocalNoon().date(), LocalNoon().time(), Qt::OffsetFromUTC, 3600));
    EXPECT_EQ(folder.getLastServerSyncRequestTime(), UtcNoon());
    EXPECT_EQ(folder.getLastServerSyncRequestTime().timeSpec(), Qt::UTC);
}

TEST(FolderConfiguration, LastOperationTimeKeepsItsZone)
{
    FolderConfiguration folder;
    folder.setLastOperationTime(LocalNoon());
    EXPECT_EQ(folder.getLastOperationTime(), LocalNoon());
    EXPECT_EQ(folder.getLastOperationTime().timeSpec(), Qt::LocalTime);
}

TEST(FolderConfiguration, InvalidTimesStayInvalid)
{
    FolderConfiguration folder = DistinctFolder();
    folder.setLastOperationTime(QDateTime());
    folder.setLastSyncTime(QDateTime());
    folder.setLastServerSyncRequestTime(QDateTime());
    EXPECT_FALSE(folder.getLastOperationTime().isValid());
    EXPECT_FALSE(folder.getLastSyncTime().isValid());
    EXPECT_FALSE(folder.getLastServerSyncRequestTime().isValid());
}

// Feature name

TEST(FolderConfiguration, FeatureNameIsNullWithoutTheKeyAndReadingItAddsNone)
{
    // The properties are visible only in the document that the manager writes.
    auto const store = std::make_shared<RecordingStore>();
    FolderConfiguration folder;
    EXPECT_TRUE(folder.getFeatureName().isNull());
    ASSERT_TRUE(FolderConfigManager(store, nullptr).Update(folder));
    EXPECT_EQ(store->Executions().front().bindings.at(8).value.toString(), NoProperties());
}

TEST(FolderConfiguration, FeatureNameIsTheOnePropertyOnceItIsSet)
{
    auto const store = std::make_shared<RecordingStore>();
    FolderConfiguration folder;
    folder.setFeatureName("first"_q);
    folder.setFeatureName("second"_q);
    EXPECT_EQ(folder.getFeatureName(), "second"_q);
    ASSERT_TRUE(FolderConfigManager(store, nullptr).Update(folder));
    EXPECT_EQ(store->Executions().front().bindings.at(8).value.toString(), OneProperty("FeatureName", "second"));
}

// Rights by name

struct PrivilegeCase
{
    char const* name;
    char const* text;
    int privileges;
};

void PrintTo(PrivilegeCase const& privilege, std::ostream* out)
{
    *out << '"' << privilege.text << '"';
}

class FolderPrivilegeTest : public testing::TestWithParam<PrivilegeCase>
{};

TEST_P(FolderPrivilegeTest, TextGivesTheBitsOfItsWords)
{
    FolderConfiguration folder;
    folder.setPrivileges(QString::fromUtf8(GetParam().text));
    EXPECT_EQ(folder.getPrivileges(), GetParam().privileges);
}

INSTANTIATE_TEST_SUITE_P(Texts,
                         FolderPrivilegeTest,
                         testing::Values(PrivilegeCase{"Empty", "", 15},
                                         PrivilegeCase{"ThreeBlanks", "   ", 15},
                                         PrivilegeCase{"OtherWhiteSpace", "\t\r\n\u00a0", 15},
                                         PrivilegeCase{"UnknownWord", "rename", 0},
                                         PrivilegeCase{"View", "view", 1},
                                         PrivilegeCase{"Download", "download", 2},
                                         PrivilegeCase{"Update", "update", 4},
                                         PrivilegeCase{"Delete", "delete", 8},
                                         PrivilegeCase{"Share", "share", 16},
                                         PrivilegeCase{"All", "share delete update download view", 31},
                                         PrivilegeCase{"ViewAndDelete", "view delete", 9},
                                         PrivilegeCase{"BlanksAround", "  view   delete ", 9},
                                         PrivilegeCase{"Capitals", "VIEW", 1},
                                         PrivilegeCase{"MixedCase", "DownLoad", 2},
                                         PrivilegeCase{"CommaStaysInTheWord", "view, delete", 8},
                                         PrivilegeCase{"TabStaysInTheWord", "view\tdelete", 0},
                                         PrivilegeCase{"WordTwice", "share share", 16},
                                         PrivilegeCase{"BeginningOfAWord", "up", 0},
                                         PrivilegeCase{"MoreThanAWord", "views", 0},
                                         PrivilegeCase{"UnknownAmongKnown", "view \U0001F4C1 share", 17}),
                         [](auto const& param) { return std::string(param.param.name); });

TEST(FolderConfiguration, NullTextGivesTheRightsOfABlankOne)
{
    FolderConfiguration folder;
    folder.setPrivileges(QString());
    EXPECT_EQ(folder.getPrivileges(), 15);
}

TEST(FolderConfiguration, TextReplacesTheRightsItHad)
{
    FolderConfiguration folder;
    folder.setPrivileges("view"_q);
    folder.setPrivileges("delete"_q);
    EXPECT_EQ(folder.getPrivileges(), 8);
}

// Properties by name

struct PropertyCase
{
    char const* name;
    /// Of an enumeration: the value in a distinct record.
    int distinctValue = 0;
};

void PrintTo(PropertyCase const& property, std::ostream* out)
{
    *out << property.name;
}

// All but the id, in any order.
std::vector<PropertyCase> const Properties = {
    {"AuthenticationId"},
    {"ProductConfigurationId"},
    {"Name"},
    {"RemoteShortKey"},
    {"RemoteLongKey"},
    {"ClientPath"},
    {"SyncStatus", 110},
    {"ServerPath"},
    {"LastOperationTime"},
    {"ParentId"},
    {"LastSyncTime"},
    {"FolderOption", 106},
    {"LastOperationType", 107},
    {"SyncDriveType", 108},
    {"RootId"},
    {"SyncOption", 109},
    {"OwnerId"},
    {"Privileges", 9},
    {"ServerRoot"},
    {"ServerFolderId"},
};

TEST(FolderConfiguration, IdCannotBeWrittenByName)
{
    FolderConfiguration folder;
    EXPECT_FALSE(folder.setProperty("Id", 5));
    EXPECT_EQ(folder.getId(), -1);
    EXPECT_EQ(folder.property("Id").toInt(), -1);
}

class FolderPropertyTest : public testing::TestWithParam<PropertyCase>
{};

std::string PropertyName(testing::TestParamInfo<PropertyCase> const& param)
{
    return param.param.name;
}

TEST_P(FolderPropertyTest, WritesTheMemberOfItsNameAndNoOther)
{
    std::string const name = GetParam().name;
    FolderConfiguration const source = DistinctFolder();
    QVariant value = source.property(name.c_str());
    if (GetParam().distinctValue != 0)
        value = value.toInt(); // as a client has it

    FolderConfiguration target;
    EXPECT_TRUE(target.setProperty(name.c_str(), value));
    EXPECT_THAT(DifferingMembers(target, source), Not(Contains(name)));
    if (name == "SyncStatus")
        EXPECT_THAT(DifferingMembers(target, FolderConfiguration()), ElementsAre(name, "SyncStatusChanged"));
    else
        EXPECT_THAT(DifferingMembers(target, FolderConfiguration()), ElementsAre(name));
}

INSTANTIATE_TEST_SUITE_P(Properties, FolderPropertyTest, testing::ValuesIn(Properties), PropertyName);

class FolderEnumerationTest : public FolderPropertyTest
{};

// Each case runs as a program of its own under CTest, so that no other case can have registered the type before.

TEST_P(FolderEnumerationTest, IsReadAsAnIntegerWithoutRegistration)
{
    FolderConfiguration const folder = DistinctFolder();
    EXPECT_EQ(folder.property(GetParam().name).toInt(), GetParam().distinctValue);
}

TEST_P(FolderEnumerationTest, IsWrittenFromAnIntegerWithoutRegistration)
{
    FolderConfiguration folder;
    EXPECT_TRUE(folder.setProperty(GetParam().name, 3));
    EXPECT_EQ(folder.property(GetParam().name).toInt(), 3);
}

TEST_P(FolderEnumerationTest, TakesAnyInteger)
{
    FolderConfiguration folder;
    for (int value : {0, -1, 4711, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_TRUE(folder.setProperty(GetParam().name, value));
        EXPECT_EQ(folder.property(GetParam().name).toInt(), value);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Enumerations,
    FolderEnumerationTest,
    testing::Values(Properties[6], Properties[11], Properties[12], Properties[13], Properties[15], Properties[17]),
    PropertyName);

TEST(FolderConfiguration, StatusWrittenByNameCountsAsAChange)
{
    FolderConfiguration folder;
    EXPECT_TRUE(folder.setProperty("SyncStatus", 3));
    EXPECT_EQ(folder.getSyncStatus(), 3);
    EXPECT_TRUE(folder.getSyncStatusChanged());
}

TEST(FolderConfiguration, PrivilegesWrittenByNameNeverGoThroughTheWords)
{
    FolderConfiguration folder;
    EXPECT_FALSE(folder.setProperty("Privileges", "view"_q));
    EXPECT_EQ(folder.getPrivileges(), 31);
}

TEST(FolderConfiguration, LastSyncTimeWrittenByNameTakesTheClockReadingAsUtc)
{
    FolderConfiguration folder;
    EXPECT_TRUE(folder.setProperty("LastSyncTime", LocalNoon()));
    EXPECT_EQ(folder.getLastSyncTime(), UtcNoon());
    EXPECT_EQ(folder.getLastSyncTime().timeSpec(), Qt::UTC);
}

TEST(FolderConfiguration, LastOperationTimeWrittenByNameKeepsItsZone)
{
    FolderConfiguration folder;
    EXPECT_TRUE(folder.setProperty("LastOperationTime", LocalNoon()));
    EXPECT_EQ(folder.getLastOperationTime().timeSpec(), Qt::LocalTime);
}

TEST(FolderConfiguration, MembersThatAreNoPropertiesHaveNoName)
{
    QMetaObject const& meta = FolderConfiguration::staticMetaObject;
    for (char const* name : {"LastServerSyncRequestTime", "SyncStatusChanged", "NameValueProperties", "FeatureName"})
        EXPECT_EQ(meta.indexOfProperty(name), -1) << name;
}

} // namespace
} // namespace folder_configuration_test
