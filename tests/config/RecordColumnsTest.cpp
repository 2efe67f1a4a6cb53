#include "config/RecordColumns.h"

#include "config/AuthenticationConfigManager.h"
#include "config/AuthenticationConfiguration.h"
#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfigManager.h"
#include "config/ProductConfiguration.h"
#include "config/ScheduleEntry.h"
#include "config/ServerConfiguration.h"
#include "storesuite/RecordValues.h"
#include "support/Conversation.h"
#include "support/FileRecords.h"
#include "support/FolderRecords.h"
#include "support/QtPrinters.h"

#include <QVariantList>
#include <QVariantMap>

#include <gmock/gmock.h>

#include <climits>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace record_columns_test {
namespace {

using namespace sync::config;
using namespace tandry::test;
using tandry::storesuite::DistinctValue;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::NotNull;

// Names, order and kinds are written out here, so that a column that moves in the library's list is found.

std::string NameOf(ColumnKind kind)
{
    switch (kind) {
    case ColumnKind::Integer:
        return "integer";
    case ColumnKind::LongInteger:
        return "long integer";
    case ColumnKind::Enumeration:
        return "enumeration";
    case ColumnKind::BitField:
        return "bit field";
    case ColumnKind::Text:
        return "text";
    case ColumnKind::Time:
        return "time";
    case ColumnKind::Properties:
        return "properties";
    case ColumnKind::Links:
        return "links";
    }
    return "no kind";
}

/// "name: kind", and what sets the column apart.
template <class Record>
std::vector<std::string> Described()
{
    std::vector<std::string> texts;
    for (RecordColumn<Record> const& column : RecordColumns<Record>()) {
        texts.push_back(column.name().toStdString() + ": " + NameOf(column.kind()) +
                        (column.isReadOnly() ? ", read-only" : "") + (column.isReceived() ? "" : ", not received") +
                        (column.isSecret() ? ", secret" : ""));
    }
    return texts;
}

template <class Record>
RecordColumn<Record> const& ColumnOf(char const* name)
{
    RecordColumn<Record> const* column = FindRecordColumn<Record>(QString::fromUtf8(name));
    EXPECT_THAT(column, NotNull()) << name;
    return *column;
}

template <class Record>
QVariant Get(Record const& record, char const* name)
{
    return ColumnOf<Record>(name).Get(record);
}

template <class Record>
bool Set(Record& record, char const* name, QVariant const& value)
{
    return ColumnOf<Record>(name).Set(record, value);
}

TEST(RecordColumns, OfServersStandInTableOrder)
{
    EXPECT_THAT(Described<ServerConfiguration>(),
                ElementsAre("id: integer, read-only",
                            "alias: text",
                            "davUrl: text",
                            "webServiceUrl: text",
                            "nameValueProperties: properties",
                            "binaryDiffEncoder: text"));
}

TEST(RecordColumns, OfAccountsStandInTableOrder)
{
    EXPECT_THAT(Described<AuthenticationConfiguration>(),
                ElementsAre("id: integer, read-only",
                            "domain: text",
                            "domainId: text",
                            "userName: text",
                            "encryptedPassword: text, read-only, not received, secret",
                            "nameValueProperties: properties",
                            "serverId: integer"));
}

TEST(RecordColumns, OfProductsStandInTableOrder)
{
    EXPECT_THAT(Described<ProductConfiguration>(),
                ElementsAre("id: integer, read-only",
                            "name: text",
                            "consumerKey: text",
                            "consumerSecret: text, secret",
                            "serverId: integer",
                            "nameValueProperties: properties, not received"));
}

TEST(RecordColumns, OfFoldersStandInTableOrder)
{
    EXPECT_THAT(Described<FolderConfiguration>(),
                ElementsAre("id: integer, read-only",
                            "authenticationId: integer",
                            "name: text",
                            "remoteShortKey: text",
                            "remoteLongKey: text",
                            "clientPath: text",
                            "serverPath: text",
                            "syncStatus: enumeration",
                            "nameValueProperties: properties",
                            "parentId: integer",
                            "lastOperationTime: time",
                            "lastSyncTime: time",
                            "folderOption: enumeration",
                            "lastOperationType: enumeration",
                            "syncDriveType: enumeration",
                            "rootId: integer",
                            "syncOption: enumeration",
                            "ownerId: text",
                            "privileges: bit field",
                            "serverRoot: text",
                            "productConfigurationId: integer",
                            "serverFolderId: text"));
}

TEST(RecordColumns, OfFilesStandInTableOrder)
{
    EXPECT_THAT(Described<FileConfiguration>(),
                ElementsAre("id: integer, read-only",
                            "folderConfigurationId: integer",
                            "name: text",
                            "clientPath: text",
                            "serverPath: text",
                            "checkSum: text",
                            "createdDateTime: time",
                            "lastModifiedDateTime: time",
                            "syncStatus: enumeration",
                            "lastOperationType: integer",
                            "size: long integer",
                            "nameValueProperties: properties",
                            "lastOperationTime: time",
                            "rootFolderId: integer",
                            "syncOption: bit field",
                            "parentFileId: integer",
                            "fileType: enumeration",
                            "ownerId: text",
                            "privileges: bit field",
                            "productConfigurationId: integer",
                            "serverFileId: text",
                            "serverFileVersionId: text",
                            "checkSumMD5: text",
                            "fileLinks: links"));
}

TEST(RecordColumns, OfSchedulesStandInTableOrder)
{
    EXPECT_THAT(Described<ScheduleEntry>(),
                ElementsAre("id: integer, read-only",
                            "folderConfigurationId: integer",
                            "startTime: time",
                            "expireTime: time",
                            "syncScheduleType: enumeration",
                            "syncInterval: integer"));
}

template <class Record>
class RecordColumnsOfEachKind : public testing::Test
{};

using Records = testing::Types<ServerConfiguration,
                               AuthenticationConfiguration,
                               ProductConfiguration,
                               FolderConfiguration,
                               FileConfiguration,
                               ScheduleEntry>;
TYPED_TEST_SUITE(RecordColumnsOfEachKind, Records);

TYPED_TEST(RecordColumnsOfEachKind, GiveBackWhatEachWasSetToInItsOwnType)
{
    auto const& columns = RecordColumns<TypeParam>();
    TypeParam record;
    for (int i = 0; i < columns.size(); ++i) {
        if (!columns[i].isReadOnly()) {
            EXPECT_TRUE(columns[i].Set(record, DistinctValue(columns[i].kind(), i))) << columns[i].name().toStdString();
        }
    }
    for (int i = 0; i < columns.size(); ++i) {
        if (columns[i].isReadOnly())
            continue;
        QVariant const value = columns[i].Get(record);
        QVariant const expected = DistinctValue(columns[i].kind(), i);
        EXPECT_EQ(value.userType(), expected.userType()) << columns[i].name().toStdString();
        if (columns[i].kind() == ColumnKind::Time) // the table says in which time spec a clock reading comes back
            EXPECT_EQ(value.toDateTime().time(), expected.toDateTime().time()) << columns[i].name().toStdString();
        else
            EXPECT_EQ(value, expected) << columns[i].name().toStdString();
    }
}

TYPED_TEST(RecordColumnsOfEachKind, ReadOnlyOnesRefuseAndKeepTheRecord)
{
    TypeParam record;
    EXPECT_FALSE(Set(record, "id", 7));
    EXPECT_EQ(Get(record, "id"), QVariant(-1));
}

TYPED_TEST(RecordColumnsOfEachKind, AreFoundByNameInAnyCase)
{
    EXPECT_EQ(FindRecordColumn<TypeParam>("ID"_q), &RecordColumns<TypeParam>().front());
    EXPECT_EQ(FindRecordColumn<TypeParam>("no such column"_q), nullptr);
    EXPECT_EQ(FindRecordColumn<TypeParam>(QString()), nullptr);
}

// The members behind the columns.

TEST(RecordColumns, OfFilesAnswerWithTheMembersOfTheirNames)
{
    FileConfiguration const file = DistinctFile(FileConfigurationTypeBase);
    EXPECT_EQ(Get(file, "id"), QVariant(file.id));
    EXPECT_EQ(Get(file, "folderConfigurationId"), QVariant(file.folderConfigurationId));
    EXPECT_EQ(Get(file, "name"), QVariant(file.name));
    EXPECT_EQ(Get(file, "clientPath"), QVariant(file.clientPath));
    EXPECT_EQ(Get(file, "serverPath"), QVariant(file.serverPath));
    EXPECT_EQ(Get(file, "checkSum"), QVariant(file.checkSum));
    EXPECT_EQ(Get(file, "createdDateTime"), QVariant(file.createdDateTime));
    EXPECT_EQ(Get(file, "lastModifiedDateTime"), QVariant(file.lastModifiedDateTime));
    EXPECT_EQ(Get(file, "syncStatus"), QVariant(int(file.getSyncStatus())));
    EXPECT_EQ(Get(file, "lastOperationType"), QVariant(file.lastOperationType));
    EXPECT_EQ(Get(file, "size"), QVariant(file.size));
    EXPECT_EQ(Get(file, "nameValueProperties"), QVariant(QVariantMap{{"Key"_q, "value"_q}}));
    EXPECT_EQ(Get(file, "lastOperationTime"), QVariant(file.lastOperationTime));
    EXPECT_EQ(Get(file, "rootFolderId"), QVariant(file.rootFolderId));
    EXPECT_EQ(Get(file, "syncOption"), QVariant(file.syncOption));
    EXPECT_EQ(Get(file, "parentFileId"), QVariant(file.parentFileId));
    EXPECT_EQ(Get(file, "fileType"), QVariant(int(file.fileType)));
    EXPECT_EQ(Get(file, "ownerId"), QVariant(file.ownerId));
    EXPECT_EQ(Get(file, "privileges"), QVariant(file.privileges));
    EXPECT_EQ(Get(file, "productConfigurationId"), QVariant(file.productConfigurationId));
    EXPECT_EQ(Get(file, "serverFileId"), QVariant(file.serverFileId));
    EXPECT_EQ(Get(file, "serverFileVersionId"), QVariant(file.serverFileVersionId));
    EXPECT_EQ(Get(file, "checkSumMD5"), QVariant(file.checkSumMD5));
    EXPECT_EQ(Get(file, "fileLinks"),
              QVariant(QVariantMap{{"fileDate"_q, file.fileDate},
                                   {"fileLinks"_q,
                                    QVariantList{QVariantMap{{"fileId"_q, 108},
                                                             {"path"_q, "link path"_q},
                                                             {"refId"_q, "link ref id"_q},
                                                             {"serverFileId"_q, "link server file id"_q}}}}}));
}

TEST(RecordColumns, OfFoldersAnswerWithTheMembersOfTheirNames)
{
    FolderConfiguration const folder = StoredFolder(101, DistinctFolder());
    EXPECT_EQ(Get(folder, "id"), QVariant(101));
    EXPECT_EQ(Get(folder, "authenticationId"), QVariant(folder.getAuthenticationId()));
    EXPECT_EQ(Get(folder, "name"), QVariant(folder.getName()));
    EXPECT_EQ(Get(folder, "remoteShortKey"), QVariant(folder.getRemoteShortKey()));
    EXPECT_EQ(Get(folder, "remoteLongKey"), QVariant(folder.getRemoteLongKey()));
    EXPECT_EQ(Get(folder, "clientPath"), QVariant(folder.getClientPath()));
    EXPECT_EQ(Get(folder, "serverPath"), QVariant(folder.getServerPath()));
    EXPECT_EQ(Get(folder, "syncStatus"), QVariant(int(folder.getSyncStatus())));
    EXPECT_EQ(Get(folder, "nameValueProperties"), QVariant(QVariantMap{{"FeatureName"_q, "feature"_q}}));
    EXPECT_EQ(Get(folder, "parentId"), QVariant(folder.getParentId()));
    EXPECT_EQ(Get(folder, "lastOperationTime"), QVariant(folder.getLastOperationTime()));
    EXPECT_EQ(Get(folder, "lastSyncTime"), QVariant(folder.getLastSyncTime()));
    EXPECT_EQ(Get(folder, "folderOption"), QVariant(int(folder.getFolderOption())));
    EXPECT_EQ(Get(folder, "lastOperationType"), QVariant(int(folder.getLastOperationType())));
    EXPECT_EQ(Get(folder, "syncDriveType"), QVariant(int(folder.getSyncDriveType())));
    EXPECT_EQ(Get(folder, "rootId"), QVariant(folder.getRootId()));
    EXPECT_EQ(Get(folder, "syncOption"), QVariant(int(folder.getSyncOption())));
    EXPECT_EQ(Get(folder, "ownerId"), QVariant(folder.getOwnerId()));
    EXPECT_EQ(Get(folder, "privileges"), QVariant(int(folder.getPrivileges())));
    EXPECT_EQ(Get(folder, "serverRoot"), QVariant(folder.getServerRoot()));
    EXPECT_EQ(Get(folder, "productConfigurationId"), QVariant(folder.getProductConfigurationId()));
    EXPECT_EQ(Get(folder, "serverFolderId"), QVariant(folder.getServerFolderId()));
}

TEST(RecordColumns, ServerIdOfAProductIsTheServerWhereItsAccessorAnswersWithTheId)
{
    ProductConfiguration product;
    product.setServerId(7);
    EXPECT_EQ(product.getServerId(), -1);
    EXPECT_EQ(Get(product, "serverId"), QVariant(7));
}

TEST(RecordColumns, AliasOfAServerIsTheStoredOneWhereItsAccessorDerivesOne)
{
    ServerConfiguration server;
    server.setWebServiceUrl("https://web.example/"_q);
    EXPECT_EQ(server.getAlias(), "web"_q);
    EXPECT_EQ(Get(server, "alias"), QVariant(QString()));
}

TEST(RecordColumns, PropertiesOfAProductAreLostInACopy)
{
    ProductConfiguration product;
    EXPECT_TRUE(Set(product, "nameValueProperties", QVariantMap{{"Key"_q, "value"_q}}));
    EXPECT_EQ(Get(product, "nameValueProperties"), QVariant(QVariantMap{{"Key"_q, "value"_q}}));
    EXPECT_EQ(Get(ProductConfiguration(product), "nameValueProperties"), QVariant(QVariantMap()));
}

TEST(RecordColumns, PropertiesOfAReceivedProductAreEmptyAndThoseOfAReceivedAccountAreThere)
{
    auto const store = std::make_shared<RecordingStore>();
    store->PlayRows({{1, "name"_q, "key"_q, "secret"_q, 7, OneProperty("Key", "value")}});
    ProductConfiguration const product = ProductConfigManager(store).GetProductConfigurationById(1);
    EXPECT_EQ(Get(product, "consumerSecret"), QVariant("secret"_q));
    EXPECT_EQ(Get(product, "nameValueProperties"), QVariant(QVariantMap()));

    store->PlayRows({{1, "domain"_q, "domain id"_q, "user"_q, "password"_q, OneProperty("Key", "value"), 7}});
    AuthenticationConfiguration const account =
        AuthenticationConfigManager(store).GetAuthenticationConfigurationById(1);
    EXPECT_EQ(Get(account, "nameValueProperties"), QVariant(QVariantMap{{"Key"_q, "value"_q}}));
}

TEST(RecordColumns, EncryptedPasswordOfAnAccountNeverHoldsThePassword)
{
    AuthenticationConfiguration account;
    account.setPassword("password"_q);
    EXPECT_FALSE(Get(account, "encryptedPassword").isValid());
    EXPECT_FALSE(Set(account, "encryptedPassword", "other"_q));
    EXPECT_EQ(account.getPassword(), "password"_q);
}

TEST(RecordColumns, SettingAStatusCountsAsAChangeAndARefusedValueDoesNot)
{
    FileConfiguration file;
    EXPECT_FALSE(Set(file, "syncStatus", "synced"_q));
    EXPECT_FALSE(file.getSyncStatusChanged());
    EXPECT_TRUE(Set(file, "syncStatus", int(file.getSyncStatus())));
    EXPECT_TRUE(file.getSyncStatusChanged());

    FolderConfiguration folder;
    EXPECT_TRUE(Set(folder, "syncStatus", int(FolderStatusOutOfSync)));
    EXPECT_TRUE(folder.getSyncStatusChanged());
    EXPECT_FALSE(Set(folder, "syncStatus", QVariant()));
    EXPECT_EQ(folder.getSyncStatus(), FolderStatusOutOfSync);
    EXPECT_TRUE(folder.getSyncStatusChanged());
}

// Values that columns take.

struct NumberCase
{
    char const* name;
    QVariant value;
    bool isTaken;
    int number;
};

class NumberColumn : public testing::TestWithParam<NumberCase>
{};

TEST_P(NumberColumn, TakesWholeNumbersInRangeAndKeepsItsValueElse)
{
    FileConfiguration file;
    file.rootFolderId = 42;
    EXPECT_EQ(Set(file, "rootFolderId", GetParam().value), GetParam().isTaken);
    EXPECT_EQ(file.rootFolderId, GetParam().isTaken ? GetParam().number : 42);
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    NumberColumn,
    testing::Values(NumberCase{"Int", 7, true, 7},
                    NumberCase{"Negative", -7, true, -7},
                    NumberCase{"LongInRange", 7LL, true, 7},
                    NumberCase{"Greatest", qlonglong(INT_MAX), true, INT_MAX},
                    NumberCase{"TooGreat", qlonglong(INT_MAX) + 1, false, 0},
                    NumberCase{"Least", qlonglong(INT_MIN), true, INT_MIN},
                    NumberCase{"TooSmall", qlonglong(INT_MIN) - 1, false, 0},
                    NumberCase{"Unsigned", 7U, true, 7},
                    NumberCase{"UnsignedTooGreat", std::numeric_limits<qulonglong>::max(), false, 0},
                    NumberCase{"Enumeration", QVariant::fromValue(FolderStatusPlaced), true, 3},
                    NumberCase{"WholeDouble", 7.0, true, 7},
                    NumberCase{"Fraction", 7.5, false, 0},
                    NumberCase{"Infinity", std::numeric_limits<double>::infinity(), false, 0},
                    NumberCase{"NoNumber", std::nan(""), false, 0},
                    NumberCase{"DecimalText", QStringLiteral("7"), true, 7},
                    NumberCase{"OtherText", QStringLiteral("0x7"), false, 0},
                    NumberCase{"EmptyText", QStringLiteral(""), false, 0},
                    NumberCase{"Bool", true, false, 0},
                    NumberCase{"Time", QDateTime(QDate(2024, 1, 1), QTime(0, 0), Qt::UTC), false, 0},
                    NumberCase{"Null", QVariant(), false, 0}),
    [](auto const& test) { return test.param.name; });

TEST(RecordColumns, LongIntegersTakeTheirWholeRange)
{
    FileConfiguration file;
    for (qint64 const size : {std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min()}) {
        EXPECT_TRUE(Set(file, "size", size));
        EXPECT_EQ(file.size, size);
        EXPECT_TRUE(Set(file, "size", QString::number(size)));
        EXPECT_EQ(Get(file, "size"), QVariant(size));
    }
    EXPECT_FALSE(Set(file, "size", std::numeric_limits<qulonglong>::max()));
    EXPECT_FALSE(Set(file, "size", 9223372036854775808.0));
    EXPECT_TRUE(Set(file, "size", -9223372036854775808.0));
}

TEST(RecordColumns, EnumerationsAndBitsTakeValuesWithoutAName)
{
    FolderConfiguration folder;
    EXPECT_TRUE(Set(folder, "folderOption", 4711));
    EXPECT_EQ(folder.getFolderOption(), 4711);
    EXPECT_TRUE(Set(folder, "privileges", -1));
    EXPECT_EQ(folder.getPrivileges(), -1);
}

TEST(RecordColumns, TextsKeepNullAndEmptyApartAndTakeNothingElse)
{
    FileConfiguration file;
    file.name = "name"_q;
    EXPECT_TRUE(Set(file, "name", QStringLiteral("")));
    EXPECT_FALSE(file.name.isNull());
    EXPECT_TRUE(Set(file, "name", QVariant()));
    EXPECT_TRUE(file.name.isNull());
    for (QVariant const& other : {QVariant(7), QVariant(true), QVariant(QByteArray("name"))})
        EXPECT_FALSE(Set(file, "name", other));
    EXPECT_TRUE(file.name.isNull());
}

TEST(RecordColumns, TimesTakeTheClockReadingInTheSpecOfTheirTable)
{
    QDateTime const noonInDelhi(QDate(2024, 7, 1), QTime(12, 0, 0, 250), Qt::OffsetFromUTC, 19800);
    FolderConfiguration folder;
    EXPECT_TRUE(Set(folder, "lastOperationTime", noonInDelhi));
    EXPECT_EQ(folder.getLastOperationTime(), QDateTime(QDate(2024, 7, 1), QTime(12, 0, 0, 250), Qt::UTC));
    EXPECT_EQ(folder.getLastOperationTime().timeSpec(), Qt::UTC);

    ScheduleEntry schedule;
    EXPECT_TRUE(Set(schedule, "startTime", noonInDelhi));
    EXPECT_EQ(schedule.getStartTime(), QDateTime(QDate(2024, 7, 1), QTime(12, 0, 0, 250), Qt::LocalTime));
    EXPECT_EQ(schedule.getStartTime().timeSpec(), Qt::LocalTime);
}

TEST(RecordColumns, TimesTakeIsoTextsAndRefuseOthers)
{
    FileConfiguration file;
    EXPECT_TRUE(Set(file, "createdDateTime", "2024-07-01T12:00:00.250Z"_q));
    EXPECT_EQ(file.createdDateTime, QDateTime(QDate(2024, 7, 1), QTime(12, 0, 0, 250), Qt::UTC));
    for (QVariant const& other : {QVariant("yesterday"_q), QVariant(1719835200), QVariant(QDate(2024, 7, 1))})
        EXPECT_FALSE(Set(file, "createdDateTime", other));
    EXPECT_TRUE(file.createdDateTime.isValid());
}

TEST(RecordColumns, TimesTakeNullAndEmptyTextAsNoTime)
{
    FileConfiguration file;
    for (QVariant const& none : {QVariant(), QVariant(QStringLiteral("")), QVariant(QDateTime())}) {
        file.createdDateTime = QDateTime(QDate(2024, 7, 1), QTime(12, 0), Qt::UTC);
        EXPECT_TRUE(Set(file, "createdDateTime", none));
        EXPECT_FALSE(file.createdDateTime.isValid());
    }
}

TEST(RecordColumns, PropertiesTakeMapsOfTextsAlone)
{
    FileConfiguration file;
    EXPECT_TRUE(Set(file, "nameValueProperties", QVariantMap{{"One"_q, "1"_q}, {"Two"_q, QVariant()}}));
    EXPECT_EQ(file.nameValueProperties, (QMap<QString, QString>{{"One"_q, "1"_q}, {"Two"_q, QString()}}));
    EXPECT_FALSE(Set(file, "nameValueProperties", QVariantMap{{"One"_q, 1}}));
    EXPECT_FALSE(Set(file, "nameValueProperties", "<NameValueXml/>"_q));
    EXPECT_EQ(file.nameValueProperties.size(), 2);
    EXPECT_TRUE(Set(file, "nameValueProperties", QVariant()));
    EXPECT_THAT(file.nameValueProperties, IsEmpty());
}

TEST(RecordColumns, LinksTakeTheDefaultsForWhatIsLeftOut)
{
    FileConfiguration file = DistinctFile();
    EXPECT_TRUE(Set(file, "fileLinks", QVariantMap{{"fileLinks"_q, QVariantList{QVariantMap{{"path"_q, "p"_q}}}}}));
    ASSERT_EQ(file.fileLinks.size(), 1);
    EXPECT_EQ(file.fileLinks[0].fileId, -1);
    EXPECT_EQ(file.fileLinks[0].path, "p"_q);
    EXPECT_TRUE(file.fileLinks[0].refId.isNull());
    EXPECT_FALSE(file.fileDate.isValid());
    EXPECT_EQ(file.fileDate.timeSpec(), Qt::UTC);

    EXPECT_TRUE(Set(file, "fileLinks", QVariantMap{{"fileDate"_q, "2024-07-01T12:00:00Z"_q}}));
    EXPECT_THAT(file.fileLinks, IsEmpty());
    EXPECT_TRUE(file.fileDate.isValid());
    EXPECT_TRUE(Set(file, "fileLinks", QVariant()));
    EXPECT_FALSE(file.fileDate.isValid());
}

TEST(RecordColumns, LinksRefuseWhatIsNotTheirsAndKeepTheRecord)
{
    QVariantMap const link{{"path"_q, "p"_q}};
    for (QVariant const& other : {QVariant("<FileLinks/>"_q),
                                  QVariant(QVariantList{link}),
                                  QVariant(QVariantMap{{"links"_q, QVariantList{link}}}),
                                  QVariant(QVariantMap{{"fileLinks"_q, link}}),
                                  QVariant(QVariantMap{{"fileLinks"_q, QVariantList{link, "p"_q}}}),
                                  QVariant(QVariantMap{{"fileLinks"_q, QVariantList{QVariantMap{{"Path"_q, "p"_q}}}}}),
                                  QVariant(QVariantMap{{"fileLinks"_q, QVariantList{QVariantMap{{"fileId"_q, 1.5}}}}}),
                                  QVariant(QVariantMap{{"fileDate"_q, "yesterday"_q}})}) {
        FileConfiguration file = DistinctFile();
        EXPECT_FALSE(Set(file, "fileLinks", other));
        EXPECT_THAT(DifferingMembers(file, DistinctFile()), IsEmpty());
    }
}

} // namespace
} // namespace record_columns_test
