#include "ToolFixture.h"

#include "support/RawStore.h"

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class PathCommandsTest : public ToolTest
{
protected:
    /// Records root 1, docs, with the folder 2, docs/a. The root belongs to account 1 on server 1.
    void SetUp() override
    {
        Init();
        RunSuccessfully({"server"_q, "add"_q, "--web-service-url"_q, "https://office.example/api"_q});
        RunSuccessfully({"account"_q, "add"_q, "--user"_q, "anna"_q, "--server"_q, "1"_q});
        MakeDirectory("docs/a"_q);
        RunSuccessfully({"root"_q, "add"_q, At("docs"), "--server-path"_q, "/team/docs"_q, "--account"_q, "1"_q});
        RunSuccessfully({"scan"_q});
    }

    QJsonObject Where(QString const& path, QStringList const& more = {})
    {
        return JsonObject(QStringList{"where"_q, path} + more);
    }
};

} // namespace

TEST_F(PathCommandsTest, WhereShowsRootFolderServerPathAccountAndServer)
{
    EXPECT_EQ(Where(At("docs/a/new/file")),
              (QJsonObject{{"path"_q, At("docs/a/new/file")},
                           {"rootId"_q, 1},
                           {"root"_q, At("docs")},
                           {"folderId"_q, 2},
                           {"folder"_q, At("docs/a")},
                           {"inside"_q, true},
                           {"insideByFolderOption"_q, false},
                           {"serverPath"_q, "/team/docs/a/new/file"_q},
                           {"accountId"_q, 1},
                           {"account"_q, "anna"_q},
                           {"serverId"_q, 1},
                           {"server"_q, "office"_q}}));
}

TEST_F(PathCommandsTest, WhereOfAFileDirectlyInTheRootIsInsideByItsOptionToo)
{
    QJsonObject const place = Where(At("docs/file"));
    EXPECT_TRUE(place.value("insideByFolderOption"_q).toBool());
    EXPECT_EQ(place.value("folderId"_q).toInt(), 1);
}

TEST_F(PathCommandsTest, WhereOfTheRootShowsItsServerPath)
{
    QJsonObject const place = Where(At("docs"));
    EXPECT_EQ(place.value("serverPath"_q).toString(), "/team/docs"_q);
    EXPECT_TRUE(place.value("inside"_q).toBool());
}

TEST_F(PathCommandsTest, WhereOfARecordedFolderShowsItsRecordedServerPath)
{
    RawStore(StorePath()).Run("UPDATE FolderConfiguration SET serverPath = '/moved' WHERE id = 2;"_q);
    EXPECT_EQ(Where(At("docs/a")).value("serverPath"_q).toString(), "/moved"_q);
}

TEST_F(PathCommandsTest, WhereOfATemporaryFileDoesNotCountAsInside)
{
    QJsonObject const place = Where(At("docs/a.{synctemp}"));
    EXPECT_FALSE(place.value("inside"_q).toBool());
    EXPECT_EQ(place.value("rootId"_q).toInt(), 1);
}

TEST_F(PathCommandsTest, WhereInAnotherCaseIsInsideButHasNoServerPath)
{
    QJsonObject const place = Where(At("DOCS/a"));
    EXPECT_TRUE(place.value("inside"_q).toBool());
    EXPECT_TRUE(place.value("serverPath"_q).isNull());
}

TEST_F(PathCommandsTest, WhereOutsideOfAllRootsFindsNothing)
{
    for (char const* name : {"elsewhere", "docs2", "."}) {
        RunResult const ran = Run({"where"_q, At(name)});
        EXPECT_EQ(ran.status, 1) << name;
        EXPECT_TRUE(ran.err.contains("lies in no root"_q));
    }
}

TEST_F(PathCommandsTest, WhereConsidersOnlyTheGivenAccount)
{
    RunSuccessfully({"account"_q, "add"_q, "--user"_q, "bert"_q, "--server"_q, "1"_q});
    EXPECT_EQ(Where(At("docs/a"), {"--account"_q, "1"_q}).value("rootId"_q).toInt(), 1);
    RunResult const other = Run({"where"_q, At("docs/a"), "--account"_q, "2"_q});
    EXPECT_EQ(other.status, 1);
    EXPECT_TRUE(other.err.contains("account 2"_q));
    EXPECT_EQ(Run({"where"_q, At("docs/a"), "--account"_q, "77"_q}).status, 1);
}

TEST_F(PathCommandsTest, WhereAcceptsOddNames)
{
    QString const name = "docs/{} 'x'\n日本"_q;
    EXPECT_EQ(Where(At(name)).value("path"_q).toString(), At(name));
    QString const out = RunSuccessfully({"where"_q, At(name)});
    EXPECT_TRUE(out.contains("'x'\\n日本"_q)) << out.toStdString();
}

TEST_F(PathCommandsTest, WhereOfNothingIsWrongUsage)
{
    EXPECT_EQ(Run({"where"_q, ""_q}).status, 2);
    EXPECT_EQ(Run({"where"_q}).status, 2);
}

TEST_F(PathCommandsTest, OverlapFindsTheRootThatIsContainsOrLiesInAServerPath)
{
    for (char const* path : {"/team", "/team/docs", "/TEAM/Docs", "/team/docs/deeper", "/team//docs/"}) {
        EXPECT_EQ(RunSuccessfully({"overlap"_q, QString::fromUtf8(path), "--account"_q, "1"_q}), "/team/docs\n"_q)
            << path;
    }
    EXPECT_EQ(JsonObject({"overlap"_q, "/team"_q, "--account"_q, "1"_q}),
              (QJsonObject{{"serverPath"_q, "/team/docs"_q}}));
}

TEST_F(PathCommandsTest, OverlapWithoutARootFindsNothing)
{
    EXPECT_EQ(Run({"overlap"_q, "/team/docs2"_q, "--account"_q, "1"_q}).status, 1);
    EXPECT_EQ(Run({"overlap"_q, "/other"_q, "--account"_q, "1"_q}).status, 1);
}

TEST_F(PathCommandsTest, OverlapConsidersOnlyOneAccount)
{
    RunSuccessfully({"account"_q, "add"_q, "--user"_q, "bert"_q, "--server"_q, "1"_q});
    EXPECT_EQ(Run({"overlap"_q, "/team/docs"_q, "--account"_q, "2"_q}).status, 1);
    EXPECT_EQ(Run({"overlap"_q, "/team/docs"_q, "--account"_q, "77"_q}).status, 1);
}

TEST_F(PathCommandsTest, OverlapWithoutAnAccountOrAPathIsWrongUsage)
{
    EXPECT_EQ(Run({"overlap"_q, "/team"_q}).status, 2);
    EXPECT_EQ(Run({"overlap"_q, ""_q, "--account"_q, "1"_q}).status, 2);
}
