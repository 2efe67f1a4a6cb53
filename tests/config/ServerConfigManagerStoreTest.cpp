#include "config/ServerConfigManager.h"

#include "support/Conversation.h"
#include "support/StoreFixture.h"
#include "support/TemporarySettings.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace tandry::test;
using sync::config::ServerConfigManager;
using sync::config::ServerConfiguration;

class ServersInAStore : public StoreFixture
{
protected:
    static ServerConfiguration Server(QString const& davUrl, QString const& webServiceUrl)
    {
        ServerConfiguration server;
        server.setDavUrl(davUrl);
        server.setWebServiceUrl(webServiceUrl);
        return server;
    }

    ServerConfiguration Added(QString const& davUrl, QString const& webServiceUrl)
    {
        ServerConfiguration server = Server(davUrl, webServiceUrl);
        EXPECT_TRUE(Manager().Add(server));
        return server;
    }

    ServerConfigManager Manager() { return ServerConfigManager(store); }
    RawStore Raw() const { return RawStore(StorePath()); }

    TemporarySettings settings;
};

TEST_F(ServersInAStore, AllFieldsComeBackAfterTheStoreWasReopened)
{
    ServerConfiguration server = Server("https://dav.example"_q, "https://web.example"_q);
    server.setAlias("alias"_q);
    server.setBinaryDiffEncoder("encoder"_q);
    EXPECT_TRUE(Manager().Add(server));
    EXPECT_GT(server.getId(), 0);
    ReopenStore();
    ServerConfiguration const read = Manager().GetServerConfigById(server.getId());
    EXPECT_EQ(read.getId(), server.getId());
    EXPECT_EQ(read.getAlias(), "alias"_q);
    EXPECT_EQ(read.getDavUrl(), "https://dav.example"_q);
    EXPECT_EQ(read.getWebServiceUrl(), "https://web.example"_q);
    EXPECT_EQ(read.getBinaryDiffEncoder(), "encoder"_q);
}

TEST_F(ServersInAStore, OddTextsComeBackAsTheyWereGiven)
{
    for (QString const& text : {"'"_q,
                                "\" OR 1=1; --"_q,
                                "%1 %2"_q,
                                ":id"_q,
                                "]]>"_q,
                                "a"_q + QChar(0) + "b"_q,
                                "\xf0\x9f\x98\x80"_q,
                                "\xd8\xa7\xd9\x84 \xe4\xbe\x8b"_q,
                                "\n\t "_q,
                                QString(100000, QLatin1Char('x'))}) {
        if (text.contains(QChar(0)) && !StoreKeepsNullCharacters)
            continue;
        ServerConfiguration server = Server(text, text);
        server.setAlias(text);
        server.setBinaryDiffEncoder(text);
        EXPECT_TRUE(Manager().Add(server));
        ServerConfiguration const read = Manager().GetServerConfigByServers(text, text);
        EXPECT_EQ(read.getId(), server.getId());
        EXPECT_EQ(read.getAlias(), text);
        EXPECT_EQ(read.getDavUrl(), text);
        EXPECT_EQ(read.getWebServiceUrl(), text);
        EXPECT_EQ(read.getBinaryDiffEncoder(), text);
    }
}

TEST_F(ServersInAStore, NullTextIsNullAndEmptyTextIsEmptyInTheRow)
{
    ServerConfiguration server;
    server.setAlias("a"_q);
    server.setBinaryDiffEncoder(""_q);
    EXPECT_TRUE(Manager().Add(server));
    auto const row =
        Raw().Rows("SELECT davUrl, binaryDiffEncoder, nameValueProperties FROM ServerConfiguration"_q).at(0);
    EXPECT_FALSE(row[0].isValid());
    EXPECT_EQ(row[1], QVariant(""_q));
    EXPECT_EQ(row[2], QVariant(NoProperties()));
}

TEST_F(ServersInAStore, NullColumnsReadAsEmptyTexts)
{
    Raw().Run("INSERT INTO ServerConfiguration (id) VALUES (7)"_q);
    ServerConfiguration const server = Manager().GetServerConfigById(7);
    EXPECT_EQ(server.getId(), 7);
    EXPECT_TRUE(server.getAlias().isEmpty());
    EXPECT_TRUE(server.getDavUrl().isEmpty());
    EXPECT_TRUE(server.getWebServiceUrl().isEmpty());
    EXPECT_TRUE(server.getBinaryDiffEncoder().isEmpty());
}

TEST_F(ServersInAStore, UrlsWithOneSlashFindRowsAddedWithoutAndWithIt)
{
    int const without = Added("https://dav.a"_q, "https://web.a"_q).getId();
    int const with = Added("https://dav.b/"_q, "https://web.b/"_q).getId();
    EXPECT_EQ(Manager().GetServerConfigByServers("https://dav.a/"_q, "https://web.a/"_q).getId(), without);
    EXPECT_EQ(Manager().GetServerConfigByServers("https://dav.b/"_q, "https://web.b/"_q).getId(), with);
    EXPECT_EQ(Manager().GetServerConfigByServers("https://dav.b"_q, "https://web.b/"_q).getId(), with);
    EXPECT_EQ(Manager().GetServerConfigByServers("https://dav.a"_q, "https://web.b"_q).getId(), -1);
}

TEST_F(ServersInAStore, UrlsWithTwoSlashesFindTheRowAddedWithTheSame)
{
    int const id = Added("https://dav.a//"_q, "https://web.a//"_q).getId();
    EXPECT_EQ(Raw().Value("SELECT davUrl FROM ServerConfiguration"_q), QVariant("https://dav.a/"_q));
    EXPECT_EQ(Manager().GetServerConfigByServers("https://dav.a//"_q, "https://web.a//"_q).getId(), id);
}

TEST_F(ServersInAStore, UrlsStoredByUpdateKeepTheirSlashAndAreNotFoundByTheSameUrls)
{
    ServerConfiguration server = Added("https://dav.a"_q, "https://web.a"_q);
    server.setDavUrl("https://dav.a/"_q);
    server.setWebServiceUrl("https://web.a/"_q);
    EXPECT_TRUE(Manager().Update(server));
    EXPECT_EQ(Manager().GetServerConfigById(server.getId()).getDavUrl(), "https://dav.a/"_q);
    EXPECT_EQ(Manager().GetServerConfigByServers("https://dav.a/"_q, "https://web.a/"_q).getId(), -1);
}

TEST_F(ServersInAStore, DerivedAliasIsStoredByAddAndOverwrittenByAnUpdateThatWasNotReadBack)
{
    ServerConfiguration server = Added("https://dav.a"_q, "https://alpha.beta"_q);
    EXPECT_EQ(Raw().Value("SELECT alias FROM ServerConfiguration"_q), QVariant("alpha"_q));
    EXPECT_TRUE(Manager().Update(server));
    EXPECT_FALSE(Raw().Value("SELECT alias FROM ServerConfiguration"_q).isValid());
    EXPECT_EQ(Manager().GetServerConfigById(server.getId()).getAlias(), "alpha"_q);

    server.setAlias(""_q);
    EXPECT_TRUE(Manager().Update(server));
    EXPECT_EQ(Raw().Value("SELECT alias FROM ServerConfiguration"_q), QVariant(""_q));
}

TEST_F(ServersInAStore, AddOfTheSameRecordTwiceMakesTwoRowsAndTheLookupTakesOneOfThem)
{
    ServerConfiguration server = Added("https://dav.a"_q, "https://web.a"_q);
    int const first = server.getId();
    EXPECT_TRUE(Manager().Add(server));
    EXPECT_NE(server.getId(), first);
    EXPECT_EQ(Raw().Count("ServerConfiguration"_q), 2);
    int const found = Manager().GetServerConfigByServers("https://dav.a"_q, "https://web.a"_q).getId();
    EXPECT_TRUE(found == first || found == server.getId());
}

TEST_F(ServersInAStore, WritesOfAMissingRowAnswerTrueAndChangeNothing)
{
    Added("https://dav.a"_q, "https://web.a"_q);
    auto const before = Raw().Rows("SELECT * FROM ServerConfiguration"_q);
    for (int const id : {-1, 0, 999, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        ServerConfiguration server = Server("x"_q, "y"_q);
        server.setId(id);
        EXPECT_TRUE(Manager().Update(server));
        EXPECT_TRUE(Manager().Remove(id));
    }
    EXPECT_EQ(Raw().Rows("SELECT * FROM ServerConfiguration"_q), before);
}

TEST_F(ServersInAStore, UpdateWritesItsOwnRowOnly)
{
    ServerConfiguration first = Added("https://dav.a"_q, "https://web.a"_q);
    ServerConfiguration const second = Added("https://dav.b"_q, "https://web.b"_q);
    first.setBinaryDiffEncoder("new"_q);
    EXPECT_TRUE(Manager().Update(first));
    EXPECT_EQ(Manager().GetServerConfigById(first.getId()).getBinaryDiffEncoder(), "new"_q);
    EXPECT_TRUE(Manager().GetServerConfigById(second.getId()).getBinaryDiffEncoder().isEmpty());
}

TEST_F(ServersInAStore, StoredPropertiesTravelThroughLookupAndUpdate)
{
    int const id = Added("https://dav.a"_q, "https://web.a"_q).getId();
    Raw().Run("UPDATE ServerConfiguration SET nameValueProperties = '"_q + OneProperty("k", "v") + "'"_q);
    EXPECT_TRUE(Manager().Update(Manager().GetServerConfigById(id)));
    EXPECT_TRUE(Manager().Update(Manager().GetAll().at(0)));
    EXPECT_EQ(Raw().Value("SELECT nameValueProperties FROM ServerConfiguration"_q), QVariant(OneProperty("k", "v")));
}

TEST_F(ServersInAStore, UpdateOfANewRecordWithTheIdOfARowReplacesItsProperties)
{
    int const id = Added("https://dav.a"_q, "https://web.a"_q).getId();
    Raw().Run("UPDATE ServerConfiguration SET nameValueProperties = '"_q + OneProperty("k", "v") + "'"_q);
    ServerConfiguration server;
    server.setId(id);
    EXPECT_TRUE(Manager().Update(server));
    EXPECT_EQ(Raw().Value("SELECT nameValueProperties FROM ServerConfiguration"_q), QVariant(NoProperties()));
}

TEST_F(ServersInAStore, AccountFolderAndFileLeadToTheirServer)
{
    Added("https://dav.a"_q, "https://web.a"_q);
    int const id = Added("https://dav.b"_q, "https://web.b"_q).getId();
    Raw().Run(QStringLiteral("INSERT INTO AuthenticationConfiguration (id, serverId) VALUES (30, %1);"
                             "INSERT INTO FolderConfiguration (id, authenticationId) VALUES (40, 30);"
                             "INSERT INTO FileConfiguration (id, folderConfigurationId) VALUES (50, 40)")
                  .arg(id));
    EXPECT_EQ(Manager().GetServerConfigByAuthenticationId(30).getId(), id);
    EXPECT_EQ(Manager().GetServerConfigByFolderId(40).getId(), id);
    EXPECT_EQ(Manager().GetServerConfigByFileId(50).getId(), id);
    EXPECT_EQ(Manager().GetServerConfigByFileId(50).getWebServiceUrl(), "https://web.b"_q);
    EXPECT_EQ(Manager().GetServerConfigByAuthenticationId(40).getId(), -1);
    EXPECT_EQ(Manager().GetServerConfigByFolderId(50).getId(), -1);
    EXPECT_EQ(Manager().GetServerConfigByFileId(30).getId(), -1);
}

TEST_F(ServersInAStore, FolderAndFileWhoseAccountIsGoneFindNoServer)
{
    int const id = Added("https://dav.a"_q, "https://web.a"_q).getId();
    Raw().Run(QStringLiteral("INSERT INTO AuthenticationConfiguration (id, serverId) VALUES (30, %1);"
                             "INSERT INTO FolderConfiguration (id, authenticationId) VALUES (40, 30);"
                             "INSERT INTO FileConfiguration (id, folderConfigurationId) VALUES (50, 40);"
                             "DELETE FROM AuthenticationConfiguration")
                  .arg(id));
    EXPECT_EQ(Manager().GetServerConfigByFolderId(40).getId(), -1);
    EXPECT_EQ(Manager().GetServerConfigByFileId(50).getId(), -1);
}

TEST_F(ServersInAStore, RemoveLeavesTheAccountBehindAndItsServerIsNotFound)
{
    int const id = Added("https://dav.a"_q, "https://web.a"_q).getId();
    Raw().Run(QStringLiteral("INSERT INTO AuthenticationConfiguration (id, serverId) VALUES (30, %1);"
                             "INSERT INTO ProductConfiguration (id, serverId) VALUES (60, %1)")
                  .arg(id));
    EXPECT_TRUE(Manager().Remove(id));
    EXPECT_EQ(Manager().GetServerConfigById(id).getId(), -1);
    EXPECT_EQ(Manager().GetServerConfigByAuthenticationId(30).getId(), -1);
    EXPECT_EQ(Raw().Count("AuthenticationConfiguration"_q), 1);
    EXPECT_EQ(Raw().Count("ProductConfiguration"_q), 1);
}

TEST_F(ServersInAStore, IdBeyond32BitsIsNotCutToThatOfAnotherRow)
{
    int const id = Added("https://dav.a"_q, "https://web.a"_q).getId();
    EXPECT_EQ(Manager().GetServerConfigById(0x100000000LL + id).getId(), -1);
    EXPECT_EQ(Manager().GetServerConfigById(id).getId(), id);
}

TEST_F(ServersInAStore, GetAllListsEachRowAndNothingInAnEmptyTable)
{
    EXPECT_TRUE(Manager().GetAll().empty());
    int const first = Added("https://dav.a"_q, "https://web.a"_q).getId();
    int const second = Added("https://dav.b"_q, "https://web.b"_q).getId();
    std::vector<ServerConfiguration> const servers = Manager().GetAll();
    ASSERT_EQ(servers.size(), 2U);
    EXPECT_EQ(servers[0].getId(), first);
    EXPECT_EQ(servers[1].getId(), second);
}

TEST_F(ServersInAStore, DefaultServerIsRow1WithoutASettingOrADefaultRecordWhereThereIsNone)
{
    EXPECT_EQ(Manager().GetDefaultServerConfig().getId(), -1);
    int const id = Added("https://dav.a"_q, "https://web.a"_q).getId();
    ASSERT_EQ(id, 1);
    EXPECT_EQ(Manager().GetDefaultServerConfig().getId(), 1);
}

TEST_F(ServersInAStore, DefaultServerIsTheOneThatTheSettingNamesAndNoOther)
{
    Added("https://dav.a"_q, "https://web.a"_q);
    int const id = Added("https://dav.b"_q, "https://web.b"_q).getId();
    settings.SetDefaultServer(id);
    EXPECT_EQ(Manager().GetDefaultServerConfig().getId(), id);
    settings.SetDefaultServer(999);
    EXPECT_EQ(Manager().GetDefaultServerConfig().getId(), -1);
}

TEST_F(ServersInAStore, FailingStoreShowsInTheAnswersAndInTheStoresError)
{
    ServerConfiguration server = Added("https://dav.a"_q, "https://web.a"_q);
    int const id = server.getId();
    Raw().Run("ALTER TABLE ServerConfiguration RENAME TO Elsewhere"_q);
    EXPECT_EQ(Manager().GetServerConfigById(id).getId(), -1);
    EXPECT_TRUE(Manager().GetAll().empty());
    EXPECT_FALSE(Manager().Update(server));
    EXPECT_FALSE(Manager().Add(server));
    EXPECT_FALSE(Manager().Remove(id));
    EXPECT_EQ(server.getId(), id);
    EXPECT_TRUE(store->LastError());
    store->ClearError();
}

} // namespace
