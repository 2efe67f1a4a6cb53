#include "config/ServerConfigManager.h"

#include "config/DefaultServerSetting.h"
#include "support/Conversation.h"
#include "support/TemporarySettings.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>

#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

namespace server_config_manager_test {
namespace {

using namespace tandry::test;
using sync::config::DefaultServerSetting;
using sync::config::ServerConfigManager;
using sync::config::ServerConfiguration;

// The shape that sets this manager apart from the others.
template <class Result, class... Arguments>
using Operation = Result (ServerConfigManager::*)(Arguments...);
static_assert(std::is_same_v<decltype(&ServerConfigManager::GetServerConfigById), //
                             Operation<ServerConfiguration, long long>>);
static_assert(std::is_same_v<decltype(&ServerConfigManager::GetServerConfigByServers),
                             Operation<ServerConfiguration, QString, QString>>);
static_assert(std::is_same_v<decltype(&ServerConfigManager::GetAll), //
                             Operation<std::vector<ServerConfiguration>>>);
static_assert(std::is_same_v<decltype(&ServerConfigManager::Update), Operation<bool, ServerConfiguration>>);
static_assert(std::is_same_v<decltype(&ServerConfigManager::Add), Operation<bool, ServerConfiguration&>>);
static_assert(std::is_same_v<decltype(&ServerConfigManager::Remove), Operation<bool, int>>);
static_assert(std::is_same_v<decltype(&ServerConfigManager::GetServerConfigByAuthenticationId),
                             Operation<ServerConfiguration, long long>>);
static_assert(std::is_same_v<decltype(&ServerConfigManager::GetServerConfigByFolderId),
                             Operation<ServerConfiguration, long long>>);
static_assert(
    std::is_same_v<decltype(&ServerConfigManager::GetServerConfigByFileId), Operation<ServerConfiguration, long long>>);
static_assert(std::is_same_v<decltype(&ServerConfigManager::GetDefaultServerConfig), Operation<ServerConfiguration>>);

char const* const SelectById = "SELECT id, alias, davUrl, webServiceUrl, nameValueProperties, binaryDiffEncoder "
                               "FROM ServerConfiguration WHERE id = :id;";
char const* const SelectByServers = "SELECT id, alias, davUrl, webServiceUrl, nameValueProperties, binaryDiffEncoder "
                                    "FROM ServerConfiguration WHERE davUrl = :davUrl AND "
                                    "webServiceUrl = :webServiceUrl;";
char const* const SelectAll = "SELECT id, alias, davUrl, webServiceUrl, nameValueProperties, binaryDiffEncoder "
                              "FROM ServerConfiguration;";
char const* const SelectByAuthenticationId =
    "SELECT SC.id, SC.alias, SC.davUrl, SC.webServiceUrl, SC.nameValueProperties, SC.binaryDiffEncoder "
    "FROM ServerConfiguration AS SC JOIN AuthenticationConfiguration AS AC ON SC.id = AC.ServerID WHERE AC.id = :id;";
char const* const SelectByFolderId =
    "SELECT SC.id, SC.alias, SC.davUrl, SC.webServiceUrl, SC.nameValueProperties, SC.binaryDiffEncoder "
    "FROM ServerConfiguration AS SC JOIN AuthenticationConfiguration AS AC ON SC.id = AC.ServerID "
    "JOIN FolderConfiguration AS FC ON FC.authenticationId = AC.id WHERE FC.id = :id;";
char const* const SelectByFileId =
    "SELECT SC.id, SC.alias, SC.davUrl, SC.webServiceUrl, SC.nameValueProperties, SC.binaryDiffEncoder "
    "FROM ServerConfiguration AS SC JOIN AuthenticationConfiguration AS AC ON SC.id = AC.ServerID "
    "JOIN FolderConfiguration AS FC ON FC.authenticationId = AC.id "
    "JOIN FileConfiguration AS FIC ON FIC.folderConfigurationId = FC.id WHERE FIC.id = :id;";
char const* const UpdateRow =
    "UPDATE ServerConfiguration SET alias = :alias, davUrl = :davUrl, webServiceUrl = :webServiceUrl, "
    "nameValueProperties = :nameValueProperties, binaryDiffEncoder = :binaryDiffEncoder WHERE id = :id;";
char const* const InsertRow =
    "INSERT INTO ServerConfiguration (alias, davUrl, webServiceUrl, nameValueProperties, binaryDiffEncoder) VALUES "
    "(:alias, :davUrl, :webServiceUrl, :nameValueProperties, :binaryDiffEncoder);";
char const* const DeleteRow = "DELETE FROM ServerConfiguration WHERE Id = :id;";

class ServerConfigManagerConversation : public testing::Test
{
protected:
    static Row StoredRow()
    {
        return {7, "Office"_q, "https://dav.example/"_q, "https://web.example/"_q, OneProperty("k", "v"), "encoder"_q};
    }

    static void ExpectStoredRow(ServerConfiguration const& server)
    {
        EXPECT_EQ(server.getId(), 7);
        EXPECT_EQ(server.getAlias(), "Office"_q);
        EXPECT_EQ(server.getDavUrl(), "https://dav.example/"_q);
        EXPECT_EQ(server.getWebServiceUrl(), "https://web.example/"_q);
        EXPECT_EQ(server.getBinaryDiffEncoder(), "encoder"_q);
    }

    static void ExpectDefault(ServerConfiguration const& server)
    {
        EXPECT_EQ(server.getId(), -1);
        EXPECT_TRUE(server.getAlias().isEmpty());
        EXPECT_TRUE(server.getDavUrl().isNull());
        EXPECT_TRUE(server.getWebServiceUrl().isNull());
        EXPECT_TRUE(server.getBinaryDiffEncoder().isNull());
    }

    void ExpectDefaultFromEachLookup()
    {
        ExpectDefault(manager.GetServerConfigById(7));
        ExpectDefault(manager.GetServerConfigByServers("a"_q, "b"_q));
        ExpectDefault(manager.GetServerConfigByAuthenticationId(7));
        ExpectDefault(manager.GetServerConfigByFolderId(7));
        ExpectDefault(manager.GetServerConfigByFileId(7));
        ExpectDefault(manager.GetDefaultServerConfig());
    }

    /// The text that an Update of this record would store as its name-value properties.
    QString PropertiesOf(ServerConfiguration const& server)
    {
        EXPECT_TRUE(manager.Update(server));
        return store->Executions().back().bindings.at(4).value.toString();
    }

    ServerConfiguration ServerWithProperties()
    {
        store->PlayRows({StoredRow()});
        return manager.GetServerConfigById(7);
    }

    TemporarySettings settings;
    std::shared_ptr<RecordingStore> store = std::make_shared<RecordingStore>();
    ServerConfigManager manager{store};
};

TEST_F(ServerConfigManagerConversation, ConstructionAndDestructionTouchNoStore)
{
    {
        ServerConfigManager const other(store);
        EXPECT_EQ(store.use_count(), 3);
    }
    EXPECT_EQ(store.use_count(), 2);
    EXPECT_EQ(store->QueriesCreated(), 0);
}

TEST_F(ServerConfigManagerConversation, GetServerConfigByIdReadsOneRow)
{
    store->PlayRows({StoredRow(), {8}});
    ExpectStoredRow(manager.GetServerConfigById(7));
    ExpectConversation(*store, {Read(SelectById, {{":id", 7LL}})});
}

TEST_F(ServerConfigManagerConversation, LookupsBindIdsBeyond32BitsInFull)
{
    for (long long const id :
         {0x100000001LL, -1LL, 0LL, std::numeric_limits<long long>::max(), std::numeric_limits<long long>::min()}) {
        store->Forget();
        static_cast<void>(manager.GetServerConfigById(id));
        static_cast<void>(manager.GetServerConfigByAuthenticationId(id));
        static_cast<void>(manager.GetServerConfigByFolderId(id));
        static_cast<void>(manager.GetServerConfigByFileId(id));
        ExpectConversation(*store,
                           {Read(SelectById, {{":id", id}}),
                            Read(SelectByAuthenticationId, {{":id", id}}),
                            Read(SelectByFolderId, {{":id", id}}),
                            Read(SelectByFileId, {{":id", id}})});
    }
}

TEST_F(ServerConfigManagerConversation, GetServerConfigByServersCutsOneSlashOfEachArgument)
{
    store->PlayRows({StoredRow()});
    ExpectStoredRow(manager.GetServerConfigByServers("https://dav.example/"_q, "https://web.example//"_q));
    ExpectConversation(
        *store,
        {Read(SelectByServers, {{":davUrl", "https://dav.example"_q}, {":webServiceUrl", "https://web.example/"_q}})});
}

TEST_F(ServerConfigManagerConversation, TrailingSlashIsCutOnceAndNothingElseIsChanged)
{
    struct
    {
        QString given;
        QString bound;
    } const cases[] = {
        {""_q, ""_q},
        {QString(), QString()},
        {"/"_q, ""_q},
        {"//"_q, "/"_q},
        {"https://a/"_q, "https://a"_q},
        {"https://a//"_q, "https://a/"_q},
        {"https://a///"_q, "https://a//"_q},
        {"https://a"_q, "https://a"_q},
        {"https://a\\"_q, "https://a\\"_q},
        {"https://a/\\"_q, "https://a/\\"_q},
        {"https://a/ "_q, "https://a/ "_q},
        {"HTTPS://A:443/b/../c?d=/"_q, "HTTPS://A:443/b/../c?d="_q},
        {"/a"_q, "/a"_q},
    };
    for (auto const& test : cases) {
        store->Forget();
        ServerConfiguration server;
        server.setAlias("alias"_q);
        server.setDavUrl(test.given);
        server.setWebServiceUrl(test.given);
        store->PlayInsertId(1);
        EXPECT_TRUE(manager.Add(server));
        static_cast<void>(manager.GetServerConfigByServers(test.given, test.given));
        ExpectConversation(*store,
                           {Written(InsertRow,
                                    {{":alias", "alias"_q},
                                     {":davUrl", test.bound},
                                     {":webServiceUrl", test.bound},
                                     {":nameValueProperties", NoProperties()},
                                     {":binaryDiffEncoder", QString()}}),
                            Read(SelectByServers, {{":davUrl", test.bound}, {":webServiceUrl", test.bound}})});
    }
}

TEST_F(ServerConfigManagerConversation, GetServerConfigByAuthenticationIdWalksFromTheAccount)
{
    store->PlayRows({StoredRow()});
    ExpectStoredRow(manager.GetServerConfigByAuthenticationId(3));
    ExpectConversation(*store, {Read(SelectByAuthenticationId, {{":id", 3LL}})});
}

TEST_F(ServerConfigManagerConversation, GetServerConfigByFolderIdWalksFromTheFolder)
{
    store->PlayRows({StoredRow()});
    ExpectStoredRow(manager.GetServerConfigByFolderId(4));
    ExpectConversation(*store, {Read(SelectByFolderId, {{":id", 4LL}})});
}

TEST_F(ServerConfigManagerConversation, GetServerConfigByFileIdWalksFromTheFile)
{
    store->PlayRows({StoredRow()});
    ExpectStoredRow(manager.GetServerConfigByFileId(5));
    ExpectConversation(*store, {Read(SelectByFileId, {{":id", 5LL}})});
}

TEST_F(ServerConfigManagerConversation, LookupsWithoutARowAnswerWithADefaultRecord)
{
    ExpectDefaultFromEachLookup();
}

TEST_F(ServerConfigManagerConversation, LookupsOnAFailingStoreAnswerWithADefaultRecord)
{
    store->FailAll();
    ExpectDefaultFromEachLookup();
    EXPECT_EQ(store->Executions().size(), 6U);
}

TEST_F(ServerConfigManagerConversation, NullColumnsReadAsZeroAndEmptyTexts)
{
    store->PlayRows({{QVariant(), QVariant(), QVariant(), QVariant(), QVariant(), QVariant()}});
    ServerConfiguration const server = manager.GetServerConfigById(7);
    EXPECT_EQ(server.getId(), 0);
    EXPECT_TRUE(server.getAlias().isEmpty());
    EXPECT_TRUE(server.getDavUrl().isEmpty());
    EXPECT_TRUE(server.getWebServiceUrl().isEmpty());
    EXPECT_TRUE(server.getBinaryDiffEncoder().isEmpty());
    EXPECT_EQ(PropertiesOf(server), NoProperties());
}

TEST_F(ServerConfigManagerConversation, EmptyStoredAliasIsDerivedOnReading)
{
    store->PlayRows({{7, ""_q, "https://dav.beta"_q, "https://alpha.beta"_q, QVariant(), ""_q}});
    EXPECT_EQ(manager.GetServerConfigById(7).getAlias(), "alpha"_q);
}

TEST_F(ServerConfigManagerConversation, GetAllReadsEachRowInTheStoresOrder)
{
    store->PlayRows({StoredRow(), {3, "b"_q, "c"_q, "d"_q, QVariant(), "e"_q}, {5}});
    std::vector<ServerConfiguration> const servers = manager.GetAll();
    ASSERT_EQ(servers.size(), 3U);
    ExpectStoredRow(servers[0]);
    EXPECT_EQ(servers[1].getId(), 3);
    EXPECT_EQ(servers[1].getBinaryDiffEncoder(), "e"_q);
    EXPECT_EQ(servers[2].getId(), 5);
    ExpectConversation(*store, {Read(SelectAll)});
    EXPECT_EQ(PropertiesOf(servers[0]), OneProperty("k", "v"));
    EXPECT_EQ(PropertiesOf(servers[1]), NoProperties());
}

TEST_F(ServerConfigManagerConversation, GetAllIsEmptyWithoutRowsAndOnAFailingStore)
{
    EXPECT_TRUE(manager.GetAll().empty());
    store->FailAll();
    EXPECT_TRUE(manager.GetAll().empty());
}

TEST_F(ServerConfigManagerConversation, UpdateBindsTheFieldsAsTheyStand)
{
    ServerConfiguration server = ServerWithProperties();
    store->Forget();
    server.setAlias(QString());
    server.setDavUrl("https://dav.example//"_q);
    EXPECT_TRUE(manager.Update(server));
    ExpectConversation(*store,
                       {Written(UpdateRow,
                                {{":id", 7},
                                 {":alias", QString()},
                                 {":davUrl", "https://dav.example//"_q},
                                 {":webServiceUrl", "https://web.example/"_q},
                                 {":nameValueProperties", OneProperty("k", "v")},
                                 {":binaryDiffEncoder", "encoder"_q}})});
}

TEST_F(ServerConfigManagerConversation, UpdateOfANewRecordBindsIdMinusOneAndAnswersTrue)
{
    EXPECT_TRUE(manager.Update(ServerConfiguration()));
    ExpectConversation(*store,
                       {Written(UpdateRow,
                                {{":id", -1},
                                 {":alias", QString()},
                                 {":davUrl", QString()},
                                 {":webServiceUrl", QString()},
                                 {":nameValueProperties", NoProperties()},
                                 {":binaryDiffEncoder", QString()}})});
}

TEST_F(ServerConfigManagerConversation, AddStoresTheDerivedAliasAndCutUrlsAndLeavesTheRecordAsItWas)
{
    ServerConfiguration server;
    server.setId(99);
    server.setDavUrl("https://dav.example/"_q);
    server.setWebServiceUrl("https://alpha.beta/"_q);
    server.setBinaryDiffEncoder("encoder"_q);
    store->PlayInsertId(12LL);
    EXPECT_TRUE(manager.Add(server));
    ExpectConversation(*store,
                       {Written(InsertRow,
                                {{":alias", "alpha"_q},
                                 {":davUrl", "https://dav.example"_q},
                                 {":webServiceUrl", "https://alpha.beta"_q},
                                 {":nameValueProperties", NoProperties()},
                                 {":binaryDiffEncoder", "encoder"_q}})});
    EXPECT_EQ(server.getId(), 12);
    EXPECT_EQ(server.getDavUrl(), "https://dav.example/"_q);
    EXPECT_EQ(server.getWebServiceUrl(), "https://alpha.beta/"_q);
    server.setWebServiceUrl(QString());
    EXPECT_TRUE(server.getAlias().isEmpty()) << "the derived alias was kept";
}

TEST_F(ServerConfigManagerConversation, AddStoresAnAliasThatWasSet)
{
    ServerConfiguration server;
    server.setAlias(" "_q);
    server.setWebServiceUrl("https://alpha.beta"_q);
    EXPECT_TRUE(manager.Add(server));
    EXPECT_EQ(store->Executions().at(0).bindings.at(0), (Bound{":alias", " "_q}));
}

TEST_F(ServerConfigManagerConversation, AddOnAFailingStoreAnswersFalseAndLeavesTheRecord)
{
    ServerConfiguration server;
    server.setId(99);
    store->FailExec(1);
    EXPECT_FALSE(manager.Add(server));
    EXPECT_EQ(server.getId(), 99);
}

TEST_F(ServerConfigManagerConversation, AddTwiceInsertsTwiceAndTakesTheNewId)
{
    ServerConfiguration server;
    EXPECT_TRUE(manager.Add(server));
    int const first = server.getId();
    EXPECT_TRUE(manager.Add(server));
    EXPECT_NE(server.getId(), first);
    EXPECT_EQ(store->Statements(), (std::vector<QString>{QString::fromUtf8(InsertRow), QString::fromUtf8(InsertRow)}));
}

TEST_F(ServerConfigManagerConversation, RemoveDeletesOneRowAndNothingElse)
{
    EXPECT_TRUE(manager.Remove(7));
    EXPECT_TRUE(manager.Remove(std::numeric_limits<int>::min()));
    ExpectConversation(
        *store, {Written(DeleteRow, {{":id", 7}}), Written(DeleteRow, {{":id", std::numeric_limits<int>::min()}})});
}

TEST_F(ServerConfigManagerConversation, UpdateAndRemoveOnAFailingStoreAnswerFalse)
{
    store->FailAll();
    EXPECT_FALSE(manager.Update(ServerConfiguration()));
    EXPECT_FALSE(manager.Remove(7));
    EXPECT_EQ(store->Executions().size(), 2U);
}

TEST_F(ServerConfigManagerConversation, WritesOfNoRowAnswerTrue)
{
    store->SetRowsAffected(0);
    EXPECT_TRUE(manager.Update(ServerConfiguration()));
    EXPECT_TRUE(manager.Remove(7));
}

TEST_F(ServerConfigManagerConversation, CopyCarriesTheProperties)
{
    ServerConfiguration const server = ServerWithProperties();
    ServerConfiguration const copy(server);
    ServerConfiguration assigned;
    assigned = server;
    EXPECT_EQ(PropertiesOf(copy), OneProperty("k", "v"));
    EXPECT_EQ(PropertiesOf(assigned), OneProperty("k", "v"));
    EXPECT_EQ(PropertiesOf(server), OneProperty("k", "v"));
}

TEST_F(ServerConfigManagerConversation, AssignmentReplacesThePropertiesOfTheTarget)
{
    ServerConfiguration server = ServerWithProperties();
    server = ServerConfiguration();
    EXPECT_EQ(PropertiesOf(server), NoProperties());
}

TEST_F(ServerConfigManagerConversation, AssignmentToItselfEmptiesThePropertiesAndKeepsTheRest)
{
    ServerConfiguration server = ServerWithProperties();
    ServerConfiguration const& same = server;
    server = same;
    ExpectStoredRow(server);
    EXPECT_EQ(PropertiesOf(server), NoProperties());
}

TEST_F(ServerConfigManagerConversation, DefaultServerIsTheOneWithId1WithoutASetting)
{
    store->PlayRows({StoredRow()});
    ExpectStoredRow(manager.GetDefaultServerConfig());
    ExpectConversation(*store, {Read(SelectById, {{":id", 1LL}})});
}

TEST_F(ServerConfigManagerConversation, DefaultServerIsTheOneThatTheSettingNames)
{
    settings.SetDefaultServer(42);
    static_cast<void>(manager.GetDefaultServerConfig());
    settings.SetDefaultServer(QString::number(std::numeric_limits<long long>::max()));
    static_cast<void>(manager.GetDefaultServerConfig());
    settings.SetDefaultServer(-1);
    static_cast<void>(manager.GetDefaultServerConfig());
    ExpectConversation(*store,
                       {Read(SelectById, {{":id", 42LL}}),
                        Read(SelectById, {{":id", std::numeric_limits<long long>::max()}}),
                        Read(SelectById, {{":id", -1LL}})});
}

TEST_F(ServerConfigManagerConversation, DefaultServerSettingThatIsNoNumberIsId0)
{
    for (QString const& value : {"first"_q, ""_q, "1.5"_q, "99999999999999999999"_q}) {
        store->Forget();
        settings.SetDefaultServer(value);
        ExpectDefault(manager.GetDefaultServerConfig());
        ExpectConversation(*store, {Read(SelectById, {{":id", 0LL}})});
    }
}

TEST_F(ServerConfigManagerConversation, DefaultServerThatDoesNotExistIsLookedForOnce)
{
    settings.SetDefaultServer(42);
    ExpectDefault(manager.GetDefaultServerConfig());
    EXPECT_EQ(store->Executions().size(), 1U);
}

TEST_F(ServerConfigManagerConversation, DefaultServerIsReadFromTheSettingThatClientsWrite)
{
    QSettings client(QSettings::UserScope, DefaultServerSetting::Organization, DefaultServerSetting::Application);
    client.setValue(DefaultServerSetting::Key, 42);
    client.sync();
    static_cast<void>(manager.GetDefaultServerConfig());
    ExpectConversation(*store, {Read(SelectById, {{":id", 42LL}})});
}

TEST_F(ServerConfigManagerConversation, DefaultServerSettingOfAnotherGroupIsNotRead)
{
    QSettings other(QSettings::UserScope, "Norvalis"_q, "Norvalis Sync"_q);
    other.setValue("DefaultServerConfigurationId"_q, 8);
    other.setValue("Other/DefaultServerConfigurationId"_q, 9);
    other.sync();
    static_cast<void>(manager.GetDefaultServerConfig());
    ExpectConversation(*store, {Read(SelectById, {{":id", 1LL}})});
}

TEST_F(ServerConfigManagerConversation, ReadingTheDefaultServerWritesNoSetting)
{
    static_cast<void>(manager.GetDefaultServerConfig());
    QDirIterator files(settings.Folder(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    EXPECT_FALSE(files.hasNext()) << qPrintable(files.next());
}

class ServerConfigManagerWithOwnLookup : public ServerConfigManager
{
public:
    using ServerConfigManager::ServerConfigManager;

    ServerConfiguration GetServerConfigById(long long id) override
    {
        ids.push_back(id);
        ServerConfiguration server;
        server.setAlias("own"_q);
        return server;
    }

    std::vector<long long> ids;
};

TEST_F(ServerConfigManagerConversation, DefaultServerIsLookedUpThroughAnOverride)
{
    ServerConfigManagerWithOwnLookup own(store);
    settings.SetDefaultServer(3);
    EXPECT_EQ(own.GetDefaultServerConfig().getAlias(), "own"_q);
    EXPECT_EQ(own.ids, std::vector<long long>{3});
    EXPECT_TRUE(store->Executions().empty());
}

class ServerConfigManagerWithOwnDocuments : public ServerConfigManager
{
public:
    using ServerConfigManager::ServerConfigManager;

    QMap<QString, QString> ToNameValuePropertyMap(QString text) const override { return {{"read"_q, text}}; }
    QString ToNameValuePropertyString(QMap<QString, QString> properties) override
    {
        return "written "_q + properties["read"_q];
    }
};

TEST_F(ServerConfigManagerConversation, PropertiesGoThroughOverridesOfTheBase)
{
    ServerConfigManagerWithOwnDocuments own(store);
    store->PlayRows({{7, ""_q, ""_q, ""_q, "text"_q, ""_q}});
    EXPECT_TRUE(own.Update(own.GetServerConfigById(7)));
    EXPECT_EQ(store->Executions().back().bindings.at(4), (Bound{":nameValueProperties", "written text"_q}));
}

} // namespace
} // namespace server_config_manager_test
