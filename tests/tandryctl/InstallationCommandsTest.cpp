// Servers, accounts and products.

#include "ToolFixture.h"

#include "support/FolderContents.h"
#include "support/RawStore.h"

#include <QDir>
#include <QFile>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class ServerCommandsTest : public ToolTest
{
protected:
    void SetUp() override { Init(); }

    QJsonObject AddServer(QString const& name)
    {
        return JsonObject({"server"_q,
                           "add"_q,
                           "--dav-url"_q,
                           "https://%1.example/dav"_q.arg(name),
                           "--web-service-url"_q,
                           "https://%1.example/api"_q.arg(name)});
    }

    /// `kind` is the command of a kind of records, and `option` one that takes a text.
    void ExpectUnknownToFindNothing(QString const& kind, QString const& option)
    {
        EXPECT_EQ(Run({kind, "show"_q, "7"_q}).status, 1);
        EXPECT_EQ(Run({kind, "update"_q, "7"_q, option, "x"_q}).status, 1);
        EXPECT_EQ(Run({kind, "remove"_q, "7"_q, "--yes"_q}).status, 1);
    }

    QVariant Value(QString const& statement) { return RawStore(StorePath()).Value(statement); }
    void Sql(QString const& statements) { RawStore(StorePath()).Run(statements); }
};

class AccountCommandsTest : public ServerCommandsTest
{
protected:
    void SetUp() override
    {
        ServerCommandsTest::SetUp();
        AddServer("a"_q);
        AddServer("b"_q);
    }

    QJsonObject AddAccount(QString const& user, QStringList const& more = {})
    {
        return JsonObject(QStringList{"account"_q, "add"_q, "--user"_q, user, "--server"_q, "1"_q} + more);
    }
};

class ProductCommandsTest : public AccountCommandsTest
{
protected:
    RunResult
    AddProduct(QString const& name, QString const& key, QStringList const& more = {}, QByteArray const& input = {})
    {
        return Run(QStringList{"product"_q, "add"_q, "--name"_q, name, "--key"_q, key, "--server"_q, "2"_q} + more,
                   input);
    }

    /// Returns the only product as it is stored.
    QVector<QVariant> Row()
    {
        return RawStore(StorePath())
            .Rows("SELECT name, consumerKey, consumerSecret, serverId, nameValueProperties FROM ProductConfiguration"_q)
            .at(0);
    }
};

} // namespace

TEST_F(ServerCommandsTest, AddedServerIsShownWithADerivedAlias)
{
    EXPECT_TRUE(RunSuccessfully({"server"_q,
                                 "add"_q,
                                 "--dav-url"_q,
                                 "https://files.example/dav/"_q,
                                 "--web-service-url"_q,
                                 "https://files.example/api"_q,
                                 "--encoder"_q,
                                 "e"_q})
                    .contains("server 1 'files'"_q));
    EXPECT_EQ(JsonObject({"server"_q, "show"_q, "1"_q}),
              (QJsonObject{{"id"_q, 1},
                           {"alias"_q, "files"_q},
                           {"davUrl"_q, "https://files.example/dav"_q},
                           {"webServiceUrl"_q, "https://files.example/api"_q},
                           {"binaryDiffEncoder"_q, "e"_q}}));
}

TEST_F(ServerCommandsTest, AddWithoutAUrlIsWrongUsage)
{
    EXPECT_EQ(Run({"server"_q, "add"_q, "--alias"_q, "x"_q}).status, 2);
    EXPECT_EQ(Run({"server"_q, "list"_q}).status, 1);
}

TEST_F(ServerCommandsTest, AddRefusesTheSameUrlsTwiceWithOrWithoutASlash)
{
    AddServer("a"_q);
    RunResult const ran = Run({"server"_q,
                               "add"_q,
                               "--dav-url"_q,
                               "https://a.example/dav/"_q,
                               "--web-service-url"_q,
                               "https://a.example/api/"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains("server 1 'a'"_q)) << ran.err.toStdString();
}

TEST_F(ServerCommandsTest, ListShowsAllServers)
{
    AddServer("a"_q);
    AddServer("b"_q);
    EXPECT_EQ(Json({"server"_q, "list"_q}).size(), 2);
    EXPECT_EQ(RunSuccessfully({"server"_q, "list"_q}).count(QLatin1Char('\n')), 3);
}

TEST_F(ServerCommandsTest, ListOfNoneFindsNothing)
{
    EXPECT_EQ(Run({"server"_q, "list"_q}).status, 1);
}

TEST_F(ServerCommandsTest, UpdateChangesOnlyWhatIsGiven)
{
    AddServer("a"_q);
    Sql("UPDATE ServerConfiguration SET nameValueProperties = '<N><K>v</K></N>';"_q);
    RunSuccessfully({"server"_q, "update"_q, "1"_q, "--alias"_q, "Office"_q});
    QJsonObject const server = JsonObject({"server"_q, "show"_q, "1"_q});
    EXPECT_EQ(server.value("alias"_q).toString(), "Office"_q);
    EXPECT_EQ(server.value("davUrl"_q).toString(), "https://a.example/dav"_q);
    EXPECT_TRUE(Value("SELECT nameValueProperties FROM ServerConfiguration"_q).toString().contains("[v]"_q));
}

TEST_F(ServerCommandsTest, UpdateCutsTheTrailingSlash)
{
    AddServer("a"_q);
    RunSuccessfully({"server"_q, "update"_q, "1"_q, "--dav-url"_q, "https://new.example/dav/"_q});
    EXPECT_EQ(JsonObject({"server"_q, "show"_q, "1"_q}).value("davUrl"_q).toString(), "https://new.example/dav"_q);
}

TEST_F(ServerCommandsTest, UpdateToAnEmptyAliasDerivesOneAgain)
{
    AddServer("a"_q);
    RunSuccessfully({"server"_q, "update"_q, "1"_q, "--alias"_q, "Office"_q});
    RunSuccessfully({"server"_q, "update"_q, "1"_q, "--alias"_q, ""_q});
    EXPECT_EQ(JsonObject({"server"_q, "show"_q, "1"_q}).value("alias"_q).toString(), "a"_q);
}

TEST_F(ServerCommandsTest, UpdateRefusesTheUrlsOfAnotherServer)
{
    AddServer("a"_q);
    AddServer("b"_q);
    EXPECT_EQ(Run({"server"_q,
                   "update"_q,
                   "2"_q,
                   "--dav-url"_q,
                   "https://a.example/dav"_q,
                   "--web-service-url"_q,
                   "https://a.example/api"_q})
                  .status,
              1);
    EXPECT_EQ(Run({"server"_q, "update"_q, "1"_q, "--dav-url"_q, "https://a.example/dav"_q}).status, 0);
}

TEST_F(ServerCommandsTest, ShowUpdateAndRemoveOfAnUnknownServerFindNothing)
{
    ExpectUnknownToFindNothing("server"_q, "--alias"_q);
}

TEST_F(ServerCommandsTest, RemoveListsOrphanedAccountsAndProducts)
{
    AddServer("a"_q);
    RunSuccessfully({"account"_q, "add"_q, "--user"_q, "anna"_q, "--server"_q, "1"_q});
    RunSuccessfully({"account"_q, "add"_q, "--user"_q, "bert"_q, "--server"_q, "1"_q});
    RunSuccessfully({"product"_q, "add"_q, "--name"_q, "n"_q, "--key"_q, "k"_q, "--server"_q, "1"_q});
    RunResult const refused = Run({"server"_q, "remove"_q, "1"_q});
    EXPECT_EQ(refused.status, 2);
    EXPECT_TRUE(refused.err.contains(
        "leaving 2 accounts (account 1 'anna' and account 2 'bert') and 1 product (product 1 'n') that belong to nothing"_q))
        << refused.err.toStdString();
    RunSuccessfully({"server"_q, "remove"_q, "1"_q, "--yes"_q});
    EXPECT_EQ(Run({"server"_q, "list"_q}).status, 1);
    EXPECT_EQ(Json({"account"_q, "list"_q}).size(), 2);
}

TEST_F(ServerCommandsTest, RemoveNamesTheRootsOfItsAccountsAndTheDefaultServer)
{
    AddServer("a"_q);
    AddServer("b"_q);
    RunSuccessfully({"account"_q, "add"_q, "--user"_q, "anna"_q, "--server"_q, "1"_q});
    MakeDirectory("docs"_q);
    RunSuccessfully({"root"_q, "add"_q, At("docs"), "--server-path"_q, "/d"_q, "--account"_q, "1"_q});
    QString const expected =
        "server 1 'a' from the store, leaving 1 account (account 1 'anna') that belongs to nothing and 1 root (root 1 '"_q +
        At("docs") + "') without a server; it is the default server"_q;
    RunResult const refused = Run({"server"_q, "remove"_q, "1"_q});
    EXPECT_TRUE(refused.err.contains(expected)) << refused.err.toStdString();
    EXPECT_FALSE(Run({"server"_q, "remove"_q, "2"_q}).err.contains("default"_q));
    EXPECT_EQ(RunSuccessfully({"server"_q, "remove"_q, "1"_q, "--yes"_q}), "removed "_q + expected + "\n"_q);
}

TEST_F(ServerCommandsTest, RemoveAsksOnATerminal)
{
    AddServer("a"_q);
    EXPECT_EQ(RunOnTerminal({"server"_q, "remove"_q, "1"_q}, "n\n").status, 1);
    EXPECT_EQ(RunOnTerminal({"server"_q, "remove"_q, "1"_q}, "y\n").status, 0);
    EXPECT_EQ(Run({"server"_q, "list"_q}).status, 1);
}

TEST_F(ServerCommandsTest, DefaultWithoutASettingIsServerOne)
{
    AddServer("a"_q);
    QJsonObject const server = JsonObject({"server"_q, "default"_q});
    EXPECT_EQ(server.value("id"_q).toInt(), 1);
    EXPECT_TRUE(server.value("setting"_q).toString().startsWith("server 1, since '"_q));
}

TEST_F(ServerCommandsTest, DefaultFollowsTheUsersSettingAndShowsItsFile)
{
    AddServer("a"_q);
    AddServer("b"_q);
    QString const file = At(".config/Norvalis/Norvalis Sync.conf");
    MakeDirectory(".config/Norvalis"_q);
    WriteFile(".config/Norvalis/Norvalis Sync.conf"_q, "[Tandry]\nDefaultServerConfigurationId=2\n");
    QJsonObject const server = JsonObject({"server"_q, "default"_q});
    EXPECT_EQ(server.value("alias"_q).toString(), "b"_q);
    EXPECT_EQ(server.value("setting"_q).toString(), "Tandry/DefaultServerConfigurationId = 2 in '%1'"_q.arg(file));
}

TEST_F(ServerCommandsTest, DefaultThatIsNotOnRecordFindsNothing)
{
    EXPECT_EQ(Run({"server"_q, "default"_q}).status, 1);
}

TEST_F(ServerCommandsTest, WritesReportThatTheStoreRefuses)
{
    AddServer("a"_q);
    SpoilIndex("ServerConfiguration_urls");
    EXPECT_EQ(Run({"server"_q, "add"_q, "--dav-url"_q, "https://x.example"_q}).status, 3);
    EXPECT_EQ(Run({"server"_q, "update"_q, "1"_q, "--alias"_q, "x"_q}).status, 3);
    EXPECT_EQ(Run({"server"_q, "remove"_q, "1"_q, "--yes"_q}).status, 3);
}

TEST_F(AccountCommandsTest, AddedAccountIsShownWithItsServer)
{
    AddAccount("anna"_q, {"--domain"_q, "corp"_q, "--domain-id"_q, "d7"_q});
    EXPECT_EQ(JsonObject({"account"_q, "show"_q, "1"_q}),
              (QJsonObject{{"id"_q, 1},
                           {"domain"_q, "corp"_q},
                           {"domainId"_q, "d7"_q},
                           {"userName"_q, "anna"_q},
                           {"serverId"_q, 1},
                           {"server"_q, "a"_q}}));
}

TEST_F(AccountCommandsTest, MessageNamesAnAccountByAWordOfTheShell)
{
    QString const out =
        RunSuccessfully({"account"_q, "add"_q, "--user"_q, "ada"_q, "--domain"_q, "example"_q, "--server"_q, "1"_q});
    EXPECT_EQ(out, "added account 1 'example\\ada'\n"_q);
}

TEST_F(AccountCommandsTest, AddAsksForNoPasswordOnATerminal)
{
    RunResult const ran = RunOnTerminal({"account"_q, "add"_q, "--user"_q, "anna"_q, "--server"_q, "1"_q});
    EXPECT_EQ(ran.status, 0);
    EXPECT_FALSE(ran.out.contains("assword"_q)) << ran.out.toStdString();
}

TEST_F(AccountCommandsTest, AddWithoutUserOrServerIsWrongUsage)
{
    EXPECT_EQ(Run({"account"_q, "add"_q, "--server"_q, "1"_q}).status, 2);
    EXPECT_EQ(Run({"account"_q, "add"_q, "--user"_q, "anna"_q}).status, 2);
    EXPECT_EQ(Run({"account"_q, "add"_q, "--user"_q, ""_q, "--server"_q, "1"_q}).status, 2);
}

TEST_F(AccountCommandsTest, AddRefusesAnUnknownServer)
{
    EXPECT_EQ(Run({"account"_q, "add"_q, "--user"_q, "anna"_q, "--server"_q, "7"_q}).status, 1);
    EXPECT_EQ(Run({"account"_q, "list"_q}).status, 1);
}

TEST_F(AccountCommandsTest, AddRefusesTheSameUserOnTheSameServerTwice)
{
    AddAccount("anna"_q);
    EXPECT_EQ(Run({"account"_q, "add"_q, "--user"_q, "anna"_q, "--server"_q, "1"_q}).status, 1);
    EXPECT_EQ(Run({"account"_q, "add"_q, "--user"_q, "anna"_q, "--server"_q, "2"_q}).status, 0);
    EXPECT_EQ(Run({"account"_q, "add"_q, "--user"_q, "anna"_q, "--domain"_q, "corp"_q, "--server"_q, "1"_q}).status, 0);
}

TEST_F(AccountCommandsTest, UpdateChangesOnlyWhatIsGiven)
{
    AddAccount("anna"_q, {"--domain"_q, "corp"_q});
    RunSuccessfully({"account"_q, "update"_q, "1"_q, "--server"_q, "2"_q});
    QJsonObject const account = JsonObject({"account"_q, "show"_q, "1"_q});
    EXPECT_EQ(account.value("serverId"_q).toInt(), 2);
    EXPECT_EQ(account.value("userName"_q).toString(), "anna"_q);
    EXPECT_EQ(account.value("domain"_q).toString(), "corp"_q);
}

TEST_F(AccountCommandsTest, UpdateRefusesAnUnknownServerAndAnEmptyUser)
{
    AddAccount("anna"_q);
    EXPECT_EQ(Run({"account"_q, "update"_q, "1"_q, "--server"_q, "7"_q}).status, 1);
    EXPECT_EQ(Run({"account"_q, "update"_q, "1"_q, "--user"_q, ""_q}).status, 2);
}

TEST_F(AccountCommandsTest, ShowUpdateAndRemoveOfAnUnknownAccountFindNothing)
{
    ExpectUnknownToFindNothing("account"_q, "--user"_q);
}

TEST_F(AccountCommandsTest, RemoveCountsOrphanedFolders)
{
    AddAccount("anna"_q);
    MakeDirectory("docs/a"_q);
    RunSuccessfully({"root"_q, "add"_q, At("docs"), "--server-path"_q, "/s"_q, "--account"_q, "1"_q});
    RunSuccessfully({"scan"_q});
    RunResult const refused = Run({"account"_q, "remove"_q, "1"_q});
    EXPECT_EQ(refused.status, 2);
    EXPECT_TRUE(refused.err.contains("leaving 2 folders (root 1 '%1') that belong to nothing"_q.arg(At("docs"))))
        << refused.err.toStdString();
    RunSuccessfully({"account"_q, "remove"_q, "1"_q, "--yes"_q});
    EXPECT_EQ(Run({"account"_q, "list"_q}).status, 1);
}

TEST_F(AccountCommandsTest, ShowOfAnAccountWhoseServerIsMissingShowsNone)
{
    AddAccount("anna"_q);
    RunSuccessfully({"server"_q, "remove"_q, "1"_q, "--yes"_q});
    EXPECT_TRUE(JsonObject({"account"_q, "show"_q, "1"_q}).value("server"_q).isNull());
}

TEST_F(ProductCommandsTest, AddedProductIsShownWithItsServer)
{
    EXPECT_EQ(AddProduct("Notes"_q, "n-1"_q).status, 0);
    EXPECT_EQ(JsonObject({"product"_q, "show"_q, "1"_q}),
              (QJsonObject{{"id"_q, 1},
                           {"name"_q, "Notes"_q},
                           {"consumerKey"_q, "n-1"_q},
                           {"consumerSecret"_q, QJsonValue()},
                           {"serverId"_q, 2},
                           {"server"_q, "b"_q}}));
}

TEST_F(ProductCommandsTest, SecretComesFromAFileOrStandardInput)
{
    WriteFile("secret"_q, "from-a-file\nsecond line\n");
    EXPECT_EQ(AddProduct("A"_q, "a"_q, {"--secret-file"_q, At("secret")}).status, 0);
    EXPECT_EQ(AddProduct("B"_q, "b"_q, {"--secret-file"_q, "-"_q}, "from-input\n").status, 0);
    EXPECT_EQ(Value("SELECT consumerSecret FROM ProductConfiguration WHERE id = 1"_q).toString(), "from-a-file"_q);
    EXPECT_EQ(Value("SELECT consumerSecret FROM ProductConfiguration WHERE id = 2"_q).toString(), "from-input"_q);
}

TEST_F(ProductCommandsTest, MissingSecretFileAddsNothing)
{
    EXPECT_EQ(AddProduct("A"_q, "a"_q, {"--secret-file"_q, At("missing")}).status, 1);
    EXPECT_EQ(Run({"product"_q, "list"_q}).status, 1);
}

TEST_F(ProductCommandsTest, SecretIsShownOnlyOnDemand)
{
    EXPECT_EQ(AddProduct("A"_q, "a"_q, {"--secret-file"_q, "-"_q}, "s3cret\n").status, 0);
    for (QStringList const& command : {QStringList{"product"_q, "list"_q}, QStringList{"product"_q, "show"_q, "1"_q}}) {
        EXPECT_FALSE(RunSuccessfully(command).contains("s3cret"_q));
        EXPECT_FALSE(Run(command + QStringList{"--json"_q}).out.contains("s3cret"_q));
        EXPECT_FALSE(JsonObject(command).contains("consumerSecret"_q));
    }
    EXPECT_TRUE(RunSuccessfully({"product"_q, "show"_q, "1"_q}).contains("(hidden)"_q));
    EXPECT_EQ(JsonObject({"product"_q, "show"_q, "1"_q, "--show-secret"_q}).value("consumerSecret"_q).toString(),
              "s3cret"_q);
}

TEST_F(ProductCommandsTest, AddRefusesTheSameKeyOnTheSameServerTwice)
{
    AddProduct("A"_q, "k"_q);
    RunResult const ran = AddProduct("B"_q, "k"_q);
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains("product 1 'A'"_q)) << ran.err.toStdString();
    EXPECT_EQ(Run({"product"_q, "add"_q, "--name"_q, "B"_q, "--key"_q, "k"_q, "--server"_q, "1"_q}).status, 0);
}

TEST_F(ProductCommandsTest, AddWithoutNameKeyOrServerIsWrongUsage)
{
    EXPECT_EQ(Run({"product"_q, "add"_q, "--key"_q, "k"_q, "--server"_q, "1"_q}).status, 2);
    EXPECT_EQ(Run({"product"_q, "add"_q, "--name"_q, "A"_q, "--server"_q, "1"_q}).status, 2);
    EXPECT_EQ(Run({"product"_q, "add"_q, "--name"_q, "A"_q, "--key"_q, "k"_q}).status, 2);
    EXPECT_EQ(AddProduct(""_q, "k"_q).status, 2);
}

TEST_F(ProductCommandsTest, UpdateChangesOnlyWhatIsGiven)
{
    AddProduct("A"_q, "k"_q);
    RunSuccessfully({"product"_q, "update"_q, "1"_q, "--name"_q, "B"_q});
    QJsonObject const product = JsonObject({"product"_q, "show"_q, "1"_q});
    EXPECT_EQ(product.value("name"_q).toString(), "B"_q);
    EXPECT_EQ(product.value("consumerKey"_q).toString(), "k"_q);
    EXPECT_EQ(product.value("serverId"_q).toInt(), 2);
}

TEST_F(ProductCommandsTest, UpdateKeepsTheSecretAndTheProperties)
{
    AddProduct("A"_q, "k"_q, {"--secret-file"_q, "-"_q}, "s3cret\n");
    Sql("UPDATE ProductConfiguration SET nameValueProperties = '<properties><a>1</a></properties>'"_q);
    RunSuccessfully({"product"_q, "update"_q, "1"_q, "--name"_q, "B"_q});
    EXPECT_EQ(Row(), (QVector<QVariant>{"B"_q, "k"_q, "s3cret"_q, 2LL, "<properties><a>1</a></properties>"_q}));
}

TEST_F(ProductCommandsTest, UpdateKeepsWhatIsNullOrEmpty)
{
    AddProduct("A"_q, "k"_q);
    Sql("UPDATE ProductConfiguration SET nameValueProperties = NULL"_q);
    RunSuccessfully({"product"_q, "update"_q, "1"_q, "--name"_q, "B"_q});
    EXPECT_EQ(Row(), (QVector<QVariant>{"B"_q, "k"_q, QVariant(), 2LL, QVariant()}));
    Sql("UPDATE ProductConfiguration SET consumerSecret = '', nameValueProperties = ''"_q);
    RunSuccessfully({"product"_q, "update"_q, "1"_q, "--name"_q, "C"_q});
    EXPECT_EQ(Row(), (QVector<QVariant>{"C"_q, "k"_q, ""_q, 2LL, ""_q}));
}

TEST_F(ProductCommandsTest, UpdateReplacesOrRemovesTheSecretByAFile)
{
    AddProduct("A"_q, "k"_q, {"--secret-file"_q, "-"_q}, "s3cret\n");
    EXPECT_EQ(Run({"product"_q, "update"_q, "1"_q, "--secret-file"_q, "-"_q}, "from-input\n").status, 0);
    EXPECT_EQ(Value("SELECT consumerSecret FROM ProductConfiguration"_q).toString(), "from-input"_q);
    WriteFile("secret"_q, "from-a-file\n");
    RunSuccessfully({"product"_q, "update"_q, "1"_q, "--secret-file"_q, At("secret")});
    EXPECT_EQ(Value("SELECT consumerSecret FROM ProductConfiguration"_q).toString(), "from-a-file"_q);
    EXPECT_EQ(Run({"product"_q, "update"_q, "1"_q, "--secret-file"_q, At("missing"), "--name"_q, "B"_q}).status, 1);
    EXPECT_EQ(Value("SELECT name FROM ProductConfiguration"_q).toString(), "A"_q);
    RunSuccessfully({"product"_q, "update"_q, "1"_q, "--secret-file"_q, "/dev/null"_q});
    EXPECT_TRUE(Value("SELECT consumerSecret FROM ProductConfiguration"_q).isNull());
}

TEST_F(ProductCommandsTest, ReplacedSecretIsFoundNowhereInTheStore)
{
    AddProduct("A"_q, "k"_q, {"--secret-file"_q, "-"_q}, "s3cret-of-old\n");
    EXPECT_EQ(Run({"product"_q, "update"_q, "1"_q, "--secret-file"_q, "-"_q}, "new\n").status, 0);
    QFile file(StorePath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_FALSE(file.readAll().contains("s3cret-of-old"));
}

TEST_F(ProductCommandsTest, UpdateThatCannotWriteTheSecretBackChangesNothing)
{
    AddProduct("A"_q, "k"_q, {"--secret-file"_q, "-"_q}, "s3cret\n");
    // A list of free pages that leads out of the file fails whatever needs a new page, which only a long secret does.
    constexpr int inTheHeader = 32;
    tandry::test::Overwrite(StorePath(), inTheHeader, QByteArray::fromHex("000f424000000001"));
    RunSuccessfully({"product"_q, "update"_q, "1"_q, "--name"_q, "B"_q});

    RunResult const ran = Run({"product"_q, "update"_q, "1"_q, "--name"_q, "C"_q, "--secret-file"_q, "-"_q},
                              QByteArray(10'000, 's') + '\n');
    EXPECT_EQ(ran.status, 3);
    EXPECT_TRUE(ran.err.contains("damaged"_q)) << ran.err.toStdString();
    EXPECT_EQ(Row().mid(0, 3), (QVector<QVariant>{"B"_q, "k"_q, "s3cret"_q}));
}

TEST_F(ProductCommandsTest, UpdateRefusesTheKeyOfAnotherProductOnItsServer)
{
    AddProduct("A"_q, "a"_q);
    AddProduct("B"_q, "b"_q);
    EXPECT_EQ(Run({"product"_q, "update"_q, "2"_q, "--key"_q, "a"_q}).status, 1);
}

TEST_F(ProductCommandsTest, RemoveListsOrphans)
{
    AddProduct("A"_q, "k"_q);
    AddRoot("docs"_q, "/s"_q);
    Sql("UPDATE FolderConfiguration SET productConfigurationId = 1;"
        "INSERT INTO FileConfiguration (productConfigurationId) VALUES (1), (1);"_q);
    RunResult const refused = Run({"product"_q, "remove"_q, "1"_q});
    EXPECT_EQ(refused.status, 2);
    EXPECT_TRUE(
        refused.err.contains("leaving 1 folder (root 1 '%1') and 2 files that belong to nothing"_q.arg(At("docs"))))
        << refused.err.toStdString();
    RunSuccessfully({"product"_q, "remove"_q, "1"_q, "--yes"_q});
    EXPECT_EQ(Run({"product"_q, "list"_q}).status, 1);
}

TEST_F(ProductCommandsTest, ShowUpdateAndRemoveOfAnUnknownProductFindNothing)
{
    ExpectUnknownToFindNothing("product"_q, "--name"_q);
}
