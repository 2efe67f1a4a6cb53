#include "support/Conversation.h"
#include "support/FolderManagerFixture.h"

#include <QTimeZone>

#include <functional>
#include <limits>
#include <ostream>
#include <string>

namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
namespace texts = tandry::test::folder_texts;

using Folders = QVector<FolderConfiguration>;

// Look-ups and listings: one SELECT each

struct SelectCase
{
    char const* name;
    QString statement;
    std::vector<Binding> bindings;
    /// Returns the records found; a look-up's default record counts as none.
    std::function<Folders(FolderConfigManager&)> find;
};

void PrintTo(SelectCase const& select, std::ostream* out)
{
    *out << select.name;
}

std::string SelectName(testing::TestParamInfo<SelectCase> const& param)
{
    return param.param.name;
}

Folders One(FolderConfiguration const& folder)
{
    return DifferingMembers(folder, FolderConfiguration()).empty() ? Folders() : Folders{folder};
}

constexpr int Max = std::numeric_limits<int>::max();
constexpr int Min = std::numeric_limits<int>::min();

std::vector<SelectCase> const Lookups = {
    {"ById",
     texts::SelectById,
     {Bound(":id", 7)},
     [](auto& manager) { return One(manager.GetFolderConfigurationById(7)); }},
    {"ByGreatestId",
     texts::SelectById,
     {Bound(":id", Max)},
     [](auto& manager) { return One(manager.GetFolderConfigurationById(Max)); }},
    {"ByLeastId",
     texts::SelectById,
     {Bound(":id", Min)},
     [](auto& manager) { return One(manager.GetFolderConfigurationById(Min)); }},
    {"ByServerId",
     texts::SelectByServerId,
     {Bound(":serverFolderId", "id \"7\" \U0001F4C1"_q)},
     [](auto& manager) { return One(manager.GetFolderConfigurationByServerId("id \"7\" \U0001F4C1"_q)); }},
    {"ByNullServerId",
     texts::SelectByServerId,
     {Bound(":serverFolderId", QString())},
     [](auto& manager) { return One(manager.GetFolderConfigurationByServerId(QString())); }},
    {"ByClientPathAsItComes",
     texts::SelectByClientPath,
     {Bound(":clientPath", "/R//a/../'b'\n/"_q)},
     [](auto& manager) { return One(manager.GetFolderConfigurationByClientPath("/R//a/../'b'\n/"_q)); }},
    {"ByEmptyClientPath",
     texts::SelectByClientPath,
     {Bound(":clientPath", ""_q)},
     [](auto& manager) { return One(manager.GetFolderConfigurationByClientPath(""_q)); }},
    {"ByClientPathAndAuthenticationId",
     texts::SelectByClientPathAndAuthenticationId,
     {Bound(":clientPath", "C:\\r"_q), Bound(":authenticationId", -1)},
     [](auto& manager) { return One(manager.GetFolderConfigurationByClientPathAndAuthenticationId("C:\\r"_q, -1)); }},
};

std::vector<SelectCase> const Listings = {
    {"ByParentId",
     texts::SelectByParentId,
     {Bound(":parentId", 0)},
     [](auto& manager) { return manager.GetFolderConfigurationByParentId(0); }},
    {"ByAuthenticationId",
     texts::SelectByAuthenticationId,
     {Bound(":authenticationId", 3)},
     [](auto& manager) { return manager.GetFolderConfigurationsByAuthenticationId(3); }},
    {"ByRootId",
     texts::SelectByRootId,
     {Bound(":rootId", 4)},
     [](auto& manager) { return manager.GetFolderConfigurationsByRootId(4); }},
    {"All", texts::SelectAll, {}, [](auto& manager) { return manager.GetAll(); }},
    {"AllRoots", texts::SelectRoots, {}, [](auto& manager) { return manager.GetAllRootFolders(); }},
};

class FolderSelectTest : public FolderManagerTest, public testing::WithParamInterface<SelectCase>
{};

TEST_P(FolderSelectTest, SendsItsStatementOnceAndOpensNoScope)
{
    GetParam().find(manager);
    ASSERT_THAT(store->Executions(), SizeIs(1));
    Execution const& execution = store->Executions().front();
    EXPECT_EQ(execution.statement, GetParam().statement);
    EXPECT_EQ(execution.bindings, GetParam().bindings);
    EXPECT_EQ(execution.scopeDepth, 0);
    EXPECT_EQ(store->QueriesCreated(), 1);
}

TEST_P(FolderSelectTest, FindsNothingWhenNothingMatches)
{
    EXPECT_TRUE(GetParam().find(manager).isEmpty());
}

TEST_P(FolderSelectTest, FindsNothingWhenTheStatementFails)
{
    store->FailExec(1);
    EXPECT_TRUE(GetParam().find(manager).isEmpty());
}

TEST_P(FolderSelectTest, ReadsEveryColumnIntoItsMember)
{
    PlayFolders({{101, DistinctFolder()}});
    Folders const found = GetParam().find(manager);
    ASSERT_EQ(found.size(), 1);
    FolderConfiguration expected = DistinctFolder();
    expected.resetSyncStatusChanged();
    EXPECT_THAT(DifferingMembers(found[0], expected), ElementsAre("Id"));
    EXPECT_EQ(found[0].getId(), 101);
    EXPECT_FALSE(found[0].getLastServerSyncRequestTime().isValid());
}

INSTANTIATE_TEST_SUITE_P(Lookups, FolderSelectTest, testing::ValuesIn(Lookups), SelectName);
INSTANTIATE_TEST_SUITE_P(Listings, FolderSelectTest, testing::ValuesIn(Listings), SelectName);

class FolderLookupTest : public FolderSelectTest
{};

TEST_P(FolderLookupTest, TakesTheFirstOfSeveralRows)
{
    PlayFolders({{5, Folder("/first"_q)}, {6, Folder("/second"_q)}});
    Folders const found = GetParam().find(manager);
    ASSERT_EQ(found.size(), 1);
    EXPECT_EQ(found[0].getId(), 5);
}

INSTANTIATE_TEST_SUITE_P(Lookups, FolderLookupTest, testing::ValuesIn(Lookups), SelectName);

class FolderListingTest : public FolderSelectTest
{};

TEST_P(FolderListingTest, KeepsTheOrderOfTheRows)
{
    PlayFolders({{6, Folder("/b"_q)}, {5, Folder("/a"_q)}, {6, Folder("/b"_q)}});
    std::vector<int> ids;
    for (FolderConfiguration const& folder : GetParam().find(manager))
        ids.push_back(folder.getId());
    EXPECT_THAT(ids, ElementsAre(6, 5, 6));
}

INSTANTIATE_TEST_SUITE_P(Listings, FolderListingTest, testing::ValuesIn(Listings), SelectName);

/// A query that says it stands on a row although `next` found none.
class StubbornQuery : public sync::interf::IQSqlQueryWrapper
{
public:
    QVariant value(int) override { return 7; }
    bool next() override { return false; }
    bool isValid() override { return true; }
    bool prepare(QString const&) override { return false; }
    void bindValue(QString const&, QVariant const&) override {}
    bool exec() override { return true; }
    QVariant lastInsertId() override { return 0; }
    int numRowsAffected() override { return 0; }
};

class StubbornStore : public RecordingStore
{
public:
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() override
    {
        return std::make_shared<StubbornQuery>();
    }
};

TEST(FolderLookup, OnlyTheOneByServerIdAsksWhetherThereIsANextRow)
{
    FolderConfigManager manager(std::make_shared<StubbornStore>(), nullptr);
    EXPECT_EQ(manager.GetFolderConfigurationByServerId("id"_q).getId(), -1);
    EXPECT_EQ(manager.GetFolderConfigurationById(1).getId(), 7);
    EXPECT_EQ(manager.GetFolderConfigurationByClientPath("/a"_q).getId(), 7);
    EXPECT_EQ(manager.GetFolderConfigurationByClientPathAndAuthenticationId("/a"_q, 1).getId(), 7);
}

TEST(FolderLookup, AnswerOfPrepareIsNotLookedAt)
{
    // The stubborn store's `prepare` says false, and the look-up goes on.
    FolderConfigManager manager(std::make_shared<StubbornStore>(), nullptr);
    EXPECT_EQ(manager.GetFolderConfigurationById(1).getName(), "7"_q);
}

// Reading rows

class FolderRowTest : public FolderManagerTest
{
protected:
    FolderConfiguration Read(Row const& row)
    {
        store->PlayRows({row});
        return manager.GetFolderConfigurationById(1);
    }
};

TEST_F(FolderRowTest, UnknownIdGivesADefaultRecord)
{
    FolderConfiguration const folder = manager.GetFolderConfigurationById(4711);
    EXPECT_EQ(folder.getId(), -1);
    EXPECT_EQ(folder.getParentId(), -1);
    EXPECT_EQ(folder.getPrivileges(), 31);
    EXPECT_THAT(DifferingMembers(folder, FolderConfiguration()), IsEmpty());
}

TEST_F(FolderRowTest, NullColumnsGiveZeroEmptyTextsAndInvalidTimes)
{
    FolderConfiguration const folder = Read(Row(22));
    for (int number : {folder.getId(),
                       folder.getAuthenticationId(),
                       int(folder.getSyncStatus()),
                       folder.getParentId(),
                       int(folder.getFolderOption()),
                       int(folder.getLastOperationType()),
                       int(folder.getSyncDriveType()),
                       folder.getRootId(),
                       int(folder.getSyncOption()),
                       int(folder.getPrivileges()),
                       folder.getProductConfigurationId()})
        EXPECT_EQ(number, 0);
    for (QString const& text : TextsOf(folder))
        EXPECT_TRUE(text.isEmpty());
    EXPECT_FALSE(folder.getLastOperationTime().isValid());
    EXPECT_FALSE(folder.getLastSyncTime().isValid());
}

TEST_F(FolderRowTest, RowFromTheStoreHasNoChangedStatusNoRequestTimeAndUtcTimes)
{
    FolderConfiguration const folder = Read(ToRow(1, DistinctFolder()));
    EXPECT_FALSE(folder.getSyncStatusChanged());
    EXPECT_FALSE(folder.getLastServerSyncRequestTime().isValid());
    EXPECT_EQ(folder.getLastOperationTime().timeSpec(), Qt::UTC);
    EXPECT_EQ(folder.getLastSyncTime().timeSpec(), Qt::UTC);
}

TEST_F(FolderRowTest, TimesOfAnySpecKeepTheirClockReadingAndBecomeUtc)
{
    QDate const day(2024, 7, 3);
    QTime const time(12, 30, 15, 250);
    for (QDateTime const& stored : {QDateTime(day, time, Qt::LocalTime),
                                    QDateTime(day, time, Qt::UTC),
                                    QDateTime(day, time, Qt::OffsetFromUTC, -5 * 3600),
                                    QDateTime(day, time, QTimeZone("Asia/Tokyo"))}) {
        Row row = ToRow(1, Folder("/a"_q));
        row[10] = stored;
        row[11] = stored;
        FolderConfiguration const folder = Read(row);
        EXPECT_EQ(folder.getLastOperationTime(), QDateTime(day, time, Qt::UTC));
        EXPECT_EQ(folder.getLastOperationTime().timeSpec(), Qt::UTC);
        EXPECT_EQ(folder.getLastSyncTime(), QDateTime(day, time, Qt::UTC));
        EXPECT_EQ(folder.getLastSyncTime().timeSpec(), Qt::UTC);
    }
}

TEST_F(FolderRowTest, AnyNumberPassesAsAnEnumeration)
{
    for (int value : {Min, -1, 0, 4711, Max}) {
        Row row = ToRow(1, Folder("/a"_q));
        for (int column : {7, 12, 13, 14, 16, 18})
            row[column] = value;
        FolderConfiguration const folder = Read(row);
        EXPECT_EQ(folder.getSyncStatus(), value);
        EXPECT_EQ(folder.getFolderOption(), value);
        EXPECT_EQ(folder.getLastOperationType(), value);
        EXPECT_EQ(folder.getSyncDriveType(), value);
        EXPECT_EQ(folder.getSyncOption(), value);
        EXPECT_EQ(folder.getPrivileges(), value);
    }
}

TEST_F(FolderRowTest, PropertiesThatAreNoDocumentAreEmpty)
{
    Row row = ToRow(1, Folder("/a"_q));
    row[8] = "no document"_q;
    EXPECT_TRUE(Read(row).getFeatureName().isNull());
}

// Writes

/// The bindings of `Add` for a record, in order. `Update` binds the id before them.
std::vector<Binding> BindingsOf(FolderConfiguration const& folder, QString const& properties)
{
    return {
        Bound(":authenticationId", folder.getAuthenticationId()),
        Bound(":name", folder.getName()),
        Bound(":remoteShortKey", folder.getRemoteShortKey()),
        Bound(":remoteLongKey", folder.getRemoteLongKey()),
        Bound(":clientPath", folder.getClientPath()),
        Bound(":serverPath", folder.getServerPath()),
        Bound(":syncStatus", int(folder.getSyncStatus())),
        Bound(":nameValueProperties", properties),
        Bound(":parentId", folder.getParentId()),
        Bound(":lastOperationTime", folder.getLastOperationTime()),
        Bound(":lastSyncTime", folder.getLastSyncTime()),
        Bound(":folderOption", int(folder.getFolderOption())),
        Bound(":lastOperationType", int(folder.getLastOperationType())),
        Bound(":syncDriveType", int(folder.getSyncDriveType())),
        Bound(":rootId", folder.getRootId()),
        Bound(":syncOption", int(folder.getSyncOption())),
        Bound(":ownerId", folder.getOwnerId()),
        Bound(":privileges", int(folder.getPrivileges())),
        Bound(":serverRoot", folder.getServerRoot()),
        Bound(":productConfigurationId", folder.getProductConfigurationId()),
        Bound(":serverFolderId", folder.getServerFolderId()),
    };
}

std::vector<Binding> BindingsWithId(int id, FolderConfiguration const& folder, QString const& properties)
{
    std::vector<Binding> bindings = BindingsOf(folder, properties);
    bindings.insert(bindings.begin(), Bound(":id", id));
    return bindings;
}

struct RecordCase
{
    char const* name;
    std::function<void(FolderConfiguration&)> change;
    QString properties = OneProperty("FeatureName", "feature");
};

void PrintTo(RecordCase const& record, std::ostream* out)
{
    *out << record.name;
}

QString const LoneSurrogate = QString(QChar(0xD83D));

/// A record with distinct values, changed in what the case is about.
class FolderWriteTest : public FolderManagerTest, public testing::WithParamInterface<RecordCase>
{
protected:
    FolderConfiguration Record() const
    {
        FolderConfiguration folder = DistinctFolder();
        GetParam().change(folder);
        return folder;
    }
};

TEST_P(FolderWriteTest, UpdateBindsTheIdAndThenAllColumnsInOrder)
{
    store->PlayRows({ToRow(7, Record())});
    FolderConfiguration folder = manager.GetFolderConfigurationById(7);
    // A row read back has its times relabelled; the case is about what is set on the record.
    GetParam().change(folder);
    store->Forget();

    EXPECT_TRUE(manager.Update(folder));
    ASSERT_THAT(store->Executions(), SizeIs(1));
    Execution const& execution = store->Executions().front();
    EXPECT_EQ(execution.statement, texts::Update);
    EXPECT_EQ(execution.bindings, BindingsWithId(7, folder, GetParam().properties));
    EXPECT_EQ(execution.scopeDepth, 1);
}

TEST_P(FolderWriteTest, AddBindsAllColumnsInOrderAndNoId)
{
    FolderConfiguration folder = Record();
    std::vector<Binding> const expected = BindingsOf(folder, GetParam().properties);

    EXPECT_TRUE(manager.Add(folder));
    ASSERT_THAT(store->Executions(), SizeIs(1));
    Execution const& execution = store->Executions().front();
    EXPECT_EQ(execution.statement, texts::Insert);
    EXPECT_EQ(execution.bindings, expected);
    EXPECT_EQ(execution.scopeDepth, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Records,
    FolderWriteTest,
    testing::Values(RecordCase{"DistinctValues", [](FolderConfiguration&) {}},
                    RecordCase{"NullTexts",
                               [](FolderConfiguration& folder) {
                                   folder.setName(QString());
                                   folder.setClientPath(QString());
                                   folder.setServerFolderId(QString());
                               }},
                    RecordCase{"EmptyTexts",
                               [](FolderConfiguration& folder) {
                                   folder.setName(""_q);
                                   folder.setClientPath(""_q);
                                   folder.setServerFolderId(""_q);
                               }},
                    RecordCase{"OddTexts",
                               [](FolderConfiguration& folder) {
                                   folder.setName("'; DROP TABLE FolderConfiguration; --\n\t\"\U0001F4C1\""_q);
                                   folder.setClientPath("/r/ä\u0308/:name/%1"_q);
                                   folder.setServerPath(LoneSurrogate);
                               }},
                    RecordCase{"ExtremeNumbers",
                               [](FolderConfiguration& folder) {
                                   folder.setAuthenticationId(Min);
                                   folder.setProductConfigurationId(Max);
                                   folder.setParentId(Max);
                                   folder.setRootId(Min);
                                   folder.setSyncStatus(FolderSynchronizationStatus(Min));
                                   folder.setPrivileges(FolderPrivileges(Max));
                               }},
                    RecordCase{"InvalidTimes",
                               [](FolderConfiguration& folder) {
                                   folder.setLastOperationTime(QDateTime());
                                   folder.setLastSyncTime(QDateTime());
                               }},
                    RecordCase{"LocalTimes",
                               [](FolderConfiguration& folder) {
                                   folder.setLastOperationTime(
                                       QDateTime(QDate(2024, 7, 1), QTime(2, 30), Qt::LocalTime));
                                   folder.setLastSyncTime(QDateTime(QDate(2024, 7, 1), QTime(2, 30), Qt::LocalTime));
                               }},
                    RecordCase{"TimesWithAnOffset",
                               [](FolderConfiguration& folder) {
                                   folder.setLastOperationTime(
                                       QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59, 999), Qt::OffsetFromUTC, 3600));
                               }},
                    RecordCase{"TimesInAZone",
                               [](FolderConfiguration& folder) {
                                   folder.setLastOperationTime(
                                       QDateTime(QDate(9999, 12, 31), QTime(0, 0), QTimeZone("Asia/Tokyo")));
                               }},
                    RecordCase{"PropertiesWithMarkup",
                               [](FolderConfiguration& folder) { folder.setFeatureName("<a & \"b\">"_q); },
                               OneProperty("FeatureName", "<a & \"b\">")},
                    RecordCase{"EmptyProperty",
                               [](FolderConfiguration& folder) { folder.setFeatureName(""_q); },
                               OneProperty("FeatureName", "")}),
    [](auto const& param) { return std::string(param.param.name); });

TEST_F(FolderManagerTest, UpdateOfARecordWithoutARowBindsMinusOne)
{
    EXPECT_TRUE(manager.Update(FolderConfiguration()));
    EXPECT_EQ(store->Executions().at(0).bindings.at(0), Bound(":id", -1));
}

TEST_F(FolderManagerTest, UpdateOfAMissingRowSucceeds)
{
    store->SetRowsAffected(0);
    EXPECT_TRUE(manager.Update(DistinctFolder()));
}

TEST_F(FolderManagerTest, ConstructionAndDestructionMakeNoQuery)
{
    {
        FolderConfigManager const other(store, refresh);
    }
    EXPECT_EQ(store->QueriesCreated(), 0);
    EXPECT_TRUE(refresh->paths.isEmpty());
}

TEST_F(FolderManagerTest, KeepsAShareOfTheStoreAndTheRefreshObject)
{
    long const storeShares = store.use_count();
    long const refreshShares = refresh.use_count();
    {
        FolderConfigManager const other(store, refresh);
        EXPECT_EQ(store.use_count(), storeShares + 1);
        EXPECT_EQ(refresh.use_count(), refreshShares + 1);
    }
    EXPECT_EQ(store.use_count(), storeShares);
    EXPECT_EQ(refresh.use_count(), refreshShares);
}

// Counts

struct CountCase
{
    char const* name;
    QString statement;
    std::vector<Binding> bindings;
    std::function<int(FolderConfigManager&)> count;
    int whenNone;
    int whenThree;
    int whenFailing;
};

void PrintTo(CountCase const& count, std::ostream* out)
{
    *out << count.name;
}

class FolderCountTest : public FolderManagerTest, public testing::WithParamInterface<CountCase>
{};

TEST_P(FolderCountTest, SendsItsStatementOnceAndOpensNoScope)
{
    GetParam().count(manager);
    ASSERT_THAT(store->Executions(), SizeIs(1));
    EXPECT_EQ(store->Executions()[0].statement, GetParam().statement);
    EXPECT_EQ(store->Executions()[0].bindings, GetParam().bindings);
    EXPECT_EQ(store->Executions()[0].scopeDepth, 0);
}

TEST_P(FolderCountTest, CountsNone)
{
    store->PlayRows({{0}});
    EXPECT_EQ(GetParam().count(manager), GetParam().whenNone);
}

TEST_P(FolderCountTest, CountsThree)
{
    store->PlayRows({{3}});
    EXPECT_EQ(GetParam().count(manager), GetParam().whenThree);
}

TEST_P(FolderCountTest, StatementWithoutARowCountsNone)
{
    EXPECT_EQ(GetParam().count(manager), GetParam().whenNone);
}

TEST_P(FolderCountTest, FailingStoreHasItsOwnAnswer)
{
    store->FailExec(1);
    EXPECT_EQ(GetParam().count(manager), GetParam().whenFailing);
}

TEST_P(FolderCountTest, AsksTheStoreEachTime)
{
    GetParam().count(manager);
    GetParam().count(manager);
    EXPECT_THAT(store->Executions(), SizeIs(2));
}

INSTANTIATE_TEST_SUITE_P(Counts,
                         FolderCountTest,
                         testing::Values(CountCase{"IsInExistingAuthentication",
                                                   texts::CountByAuthentication,
                                                   {Bound(":authenticationId", 3)},
                                                   [](auto& manager) { return manager.IsInExistingAuthentication(3); },
                                                   false,
                                                   true,
                                                   true},
                                         CountCase{"IsAnyFolderConfigOutOfSync",
                                                   texts::CountOutOfSync,
                                                   {},
                                                   [](auto& manager) { return manager.IsAnyFolderConfigOutOfSync(); },
                                                   false,
                                                   true,
                                                   true},
                                         CountCase{
                                             "GetRootFolderConfigurationCount",
                                             texts::CountRoots,
                                             {},
                                             [](auto& manager) { return manager.GetRootFolderConfigurationCount(); },
                                             0,
                                             3,
                                             -1}),
                         [](auto const& param) { return std::string(param.param.name); });

// Folders whose root is not on record

TEST_F(FolderManagerTest, FoldersWithoutARootAreThoseOfNoIdInTheListing)
{
    PlayFolders({{12, Folder("/a"_q)}, {-3, Folder("/b"_q)}, {Max, Folder("/c"_q)}});
    PlayFolders({{20, Folder("/lost"_q, 5, 99)}});
    Folders const lost = manager.GetFolderConfigurationsOfNonExistingRootFolders();
    ASSERT_EQ(lost.size(), 1);
    EXPECT_EQ(lost[0].getClientPath(), "/lost"_q);
    EXPECT_THAT(store->Statements(),
                ElementsAre(texts::SelectRoots, texts::SelectNotInRoots.arg("12,-3,2147483647"_q)));
    EXPECT_THAT(store->Executions()[1].bindings, IsEmpty());
    EXPECT_EQ(store->Executions()[1].scopeDepth, 0);
}

TEST_F(FolderManagerTest, FoldersWithoutARootAreAskedForWithAnEmptyListWhenThereIsNoRoot)
{
    manager.GetFolderConfigurationsOfNonExistingRootFolders();
    EXPECT_EQ(store->Statements().back(), texts::SelectNotInRoots.arg(QString()));
}

TEST_F(FolderManagerTest, FoldersWithoutARootTakeTheRootsFromTheCache)
{
    PlayFolders({{12, Folder("/a"_q)}});
    manager.GetAllRootFolders();
    store->Forget();
    manager.GetFolderConfigurationsOfNonExistingRootFolders();
    EXPECT_THAT(store->Executions(), SizeIs(1));
}

TEST_F(FolderManagerTest, FoldersWithoutARootAreNoneWhenTheStatementFails)
{
    store->FailExec(2);
    EXPECT_TRUE(manager.GetFolderConfigurationsOfNonExistingRootFolders().isEmpty());
}

} // namespace
