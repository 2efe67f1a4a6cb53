#include "support/FakeClock.h"
#include "support/FolderManagerFixture.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <limits>
#include <ostream>
#include <string>

namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::ElementsAre;

constexpr int Any = -1;

// Local paths against roots

struct Root
{
    char const* clientPath;
    int account = 1;
    int option = 1;
};

struct ClientCase
{
    char const* name;
    char const* path;
    std::vector<Root> roots;
    bool inside;
    int account = Any;
    bool honourFolderOption = false;
};

void PrintTo(ClientCase const& client, std::ostream* out)
{
    *out << client.path;
}

template <class Case>
std::string CaseName(testing::TestParamInfo<Case> const& param)
{
    return param.param.name;
}

class FolderClientPathTest : public FolderManagerTest, public testing::WithParamInterface<ClientCase>
{
protected:
    /// Whether the case's path lies in its roots; "~" stands for `home` in both.
    bool IsInside(QString const& home = QString())
    {
        auto const expand = [&](char const* path) { return QString::fromUtf8(path).replace(QLatin1Char('~'), home); };
        std::vector<std::pair<int, FolderConfiguration>> roots;
        for (Root const& root : GetParam().roots) {
            FolderConfiguration folder = Folder(expand(root.clientPath));
            folder.setAuthenticationId(root.account);
            folder.setFolderOption(SynchronizationFolderOption(root.option));
            roots.emplace_back(int(roots.size()) + 1, folder);
        }
        PlayFolders(roots);
        manager.GetAllRootFolders(); // into the cache, which a temporary path never asks
        return manager.IsInExistingClientFolder(
            expand(GetParam().path), GetParam().account, GetParam().honourFolderOption);
    }

private:
    FakeClock _clock;
};

TEST_P(FolderClientPathTest, IsInsideOrNot)
{
    EXPECT_EQ(IsInside(), GetParam().inside);
}

constexpr bool In = true;
constexpr bool Out = false;
constexpr bool Honour = true;

INSTANTIATE_TEST_SUITE_P(Boundaries,
                         FolderClientPathTest,
                         testing::Values(ClientCase{"RootsOwnPath", "/r", {{"/r"}}, In},
                                         ClientCase{"DirectlyBelow", "/r/a", {{"/r"}}, In},
                                         ClientCase{"DeepBelow", "/r/a/b/c", {{"/r"}}, In},
                                         ClientCase{"SiblingWithTheSameBeginning", "/r2", {{"/r"}}, Out},
                                         ClientCase{"BelowASiblingWithTheSameBeginning", "/r2/a", {{"/r"}}, Out},
                                         ClientCase{"SiblingWithADot", "/r.old/a", {{"/r"}}, Out},
                                         ClientCase{"AboveTheRoot", "/r", {{"/r/a"}}, Out},
                                         ClientCase{"Elsewhere", "/x", {{"/r"}}, Out},
                                         ClientCase{"NoRoots", "/r", {}, Out},
                                         ClientCase{"OtherCaseOfThePath", "/R/A", {{"/r"}}, In},
                                         ClientCase{"OtherCaseOfTheRoot", "/r/a", {{"/R"}}, In},
                                         ClientCase{"OtherCaseBeyondAscii", "/ä/x", {{"/Ä"}}, In},
                                         ClientCase{"TrailingSlash", "/r/", {{"/r"}}, In},
                                         ClientCase{"DoubledSlashes", "/x//r///a", {{"/x/r"}}, In},
                                         ClientCase{"Dot", "/r/./a", {{"/r"}}, In},
                                         ClientCase{"DotsThatLeave", "/r/../x", {{"/r"}}, Out},
                                         ClientCase{"DotsThatEnter", "/x/../r/a", {{"/r"}}, In},
                                         ClientCase{"DotsThatEndAtTheRoot", "/r/a/..", {{"/r"}}, In},
                                         ClientCase{"StoredDotsAreNotCleaned", "/r/a", {{"/x/../r"}}, Out},
                                         ClientCase{"StoredDoubledSlashIsNotCleaned", "/x/r/a", {{"/x//r"}}, Out},
                                         ClientCase{"FileSystemsRoot", "/a/b", {{"/"}}, In},
                                         ClientCase{"FileSystemsRootItself", "/", {{"/"}}, In},
                                         ClientCase{"RootThatEndsInASlash", "/r/a/b", {{"/r/"}}, In},
                                         ClientCase{"RootThatEndsInASlashHasNoOwnPath", "/r", {{"/r/"}}, Out},
                                         ClientCase{"RootWithoutAPath", "/a/b", {{""}}, In},
                                         ClientCase{"SecondRoot", "/r/a", {{"/x"}, {"/r"}}, In},
                                         ClientCase{"DriveLetterIsAnOrdinaryNameHere", "/C:/r/a", {{"/c:/R"}}, In},
                                         ClientCase{"OddNames", "/r/\"'\n\U0001F4C1", {{"/r"}}, In},
                                         ClientCase{"OddRoot", "/\U0001F4C1\n/x", {{"/\U0001F4C1\n"}}, In}),
                         CaseName<ClientCase>);

INSTANTIATE_TEST_SUITE_P(
    Accounts,
    FolderClientPathTest,
    testing::Values(ClientCase{"ItsOwn", "/r/a", {{"/r", 3}}, In, 3},
                    ClientCase{"AnotherOne", "/r/a", {{"/r", 3}}, Out, 4},
                    ClientCase{"AnyByMinusOne", "/r/a", {{"/r", 3}}, In, -1},
                    ClientCase{"AnyByTheLeastNumber", "/r/a", {{"/r", 3}}, In, std::numeric_limits<int>::min()},
                    ClientCase{"ZeroIsAnAccount", "/r/a", {{"/r", 3}}, Out, 0},
                    ClientCase{"ZeroFindsItself", "/r/a", {{"/r", 0}}, In, 0},
                    ClientCase{"RootWithoutAccount", "/r/a", {{"/r", -1}}, Out, 3},
                    ClientCase{"SecondRootOfTheAccount", "/r/a", {{"/r", 3}, {"/r", 4}}, In, 4}),
    CaseName<ClientCase>);

INSTANTIATE_TEST_SUITE_P(TemporaryFiles,
                         FolderClientPathTest,
                         testing::Values(ClientCase{"Marker", "/r/a.{SyncTemp}", {{"/r"}}, Out},
                                         ClientCase{"MarkerInSmallLetters", "/r/a.{synctemp}", {{"/r"}}, Out},
                                         ClientCase{"MarkerInCapitals", "/r/a.{SYNCTEMP}.txt", {{"/r"}}, Out},
                                         ClientCase{"MarkerInAFolder", "/r/.{SyncTemp}/a", {{"/r"}}, Out},
                                         ClientCase{"MarkerInTheRoot", "/.{SyncTemp}/a", {{"/.{SyncTemp}"}}, Out},
                                         ClientCase{"MarkerUnderRootsThatEndInASlash", "/.{SyncTemp}", {{"/"}}, Out},
                                         ClientCase{"HalfAMarker", "/r/a.{SyncTemp", {{"/r"}}, In},
                                         ClientCase{"OtherMarker", "/r/a.{SyncBackup}", {{"/r"}}, In}),
                         CaseName<ClientCase>);

INSTANTIATE_TEST_SUITE_P(
    FolderOption,
    FolderClientPathTest,
    testing::Values(ClientCase{"NotAskedFor", "/r/a/b", {{"/r", 1, 1}}, In, Any},
                    ClientCase{"RootsOwnPath", "/r", {{"/r", 1, 1}}, In, Any, Honour},
                    ClientCase{"NonExistingCountsAsAFile", "/r/a", {{"/r", 1, 1}}, In, Any, Honour},
                    ClientCase{"NonExistingBelowAFolder", "/r/a/b", {{"/r", 1, 1}}, Out, Any, Honour},
                    ClientCase{"OptionZero", "/r/a/b", {{"/r", 1, 0}}, In, Any, Honour},
                    ClientCase{"OptionTwo", "/r/a/b", {{"/r", 1, 2}}, In, Any, Honour},
                    ClientCase{"OptionMinusOne", "/r/a/b", {{"/r", 1, -1}}, In, Any, Honour},
                    ClientCase{"RootThatEndsInASlash", "/r/a/b", {{"/r/", 1, 1}}, In, Any, Honour},
                    ClientCase{"FileSystemsRoot", "/a/b", {{"/", 1, 1}}, In, Any, Honour},
                    ClientCase{"NextRootOfTheSamePath", "/r/a/b", {{"/r", 1, 1}, {"/r", 2, 0}}, In, Any, Honour},
                    ClientCase{"NextRootOfAnotherAccount", "/r/a/b", {{"/r", 1, 1}, {"/r", 2, 0}}, Out, 1, Honour},
                    ClientCase{"NestedRoot", "/r/a/b", {{"/r", 1, 1}, {"/r/a", 1, 1}}, In, Any, Honour},
                    ClientCase{"RootWithoutAPathAndAFile", "/no-such-file", {{"", 1, 1}}, In, Any, Honour},
                    ClientCase{"RootWithoutAPathAndADeepFile", "/no-such/file", {{"", 1, 1}}, Out, Any, Honour}),
    CaseName<ClientCase>);

/// The same in a real folder, "~", that holds a file, a folder with a file, and a link to that folder.
class FolderRealPathTest : public FolderClientPathTest
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(home.isValid());
        ASSERT_TRUE(QDir(home.path()).mkdir("dir"_q));
        for (char const* name : {"/file", "/dir/file"}) {
            QFile file(home.path() + QString::fromUtf8(name));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        }
        ASSERT_TRUE(QFile::link(home.path() + "/dir"_q, home.path() + "/link"_q));
    }

    QTemporaryDir home;
};

TEST_P(FolderRealPathTest, IsInsideOrNot)
{
    EXPECT_EQ(IsInside(home.path()), GetParam().inside);
}

INSTANTIATE_TEST_SUITE_P(
    FolderOption,
    FolderRealPathTest,
    testing::Values(
        ClientCase{"FileInTheRoot", "~/file", {{"~"}}, In, Any, Honour},
        ClientCase{"FolderInTheRoot", "~/dir", {{"~"}}, Out, Any, Honour},
        ClientCase{"FolderInTheRootNotAskedFor", "~/dir", {{"~"}}, In, Any},
        ClientCase{"FolderInARootOfAnotherOption", "~/dir", {{"~", 1, 2}}, In, Any, Honour},
        ClientCase{"FileInAFolder", "~/dir/file", {{"~"}}, Out, Any, Honour},
        ClientCase{"LinkToAFolder", "~/link", {{"~"}}, Out, Any, Honour},
        ClientCase{"NothingThere", "~/nothing", {{"~"}}, In, Any, Honour},
        ClientCase{"NothingInAFolder", "~/dir/nothing", {{"~"}}, Out, Any, Honour},
        ClientCase{"RootItself", "~", {{"~"}}, In, Any, Honour},
        ClientCase{"FolderInARootThatEndsInASlash", "~/dir", {{"~/"}}, In, Any, Honour},
        // The slash that the first root appends to a folder stays for the roots behind it.
        ClientCase{"FolderThatIsARootAhead", "~/dir", {{"~/dir"}, {"~"}}, In, Any, Honour},
        ClientCase{"FolderThatIsARootBehindIsNoLongerItsOwnPath", "~/dir", {{"~"}, {"~/dir"}}, Out, Any, Honour},
        ClientCase{"FolderThatIsARootBehindOfAnotherOption", "~/dir", {{"~"}, {"~/dir", 1, 2}}, In, Any, Honour},
        ClientCase{"FolderThatIsARootBehindWithTheSlash", "~/dir", {{"~"}, {"~/dir/"}}, In, Any, Honour},
        ClientCase{"OneRootAppendsOneSlash", "~/dir", {{"~"}, {"~/dir//", 1, 2}}, Out, Any, Honour},
        ClientCase{"TwoRootsAppendTwoSlashes", "~/dir", {{"~"}, {"~"}, {"~/dir//", 1, 2}}, In, Any, Honour},
        ClientCase{"FileThatIsARootBehindKeepsItsPath", "~/file", {{"~/x"}, {"~/file"}}, In, Any, Honour}),
    CaseName<ClientCase>);

TEST_F(FolderManagerTest, TemporaryPathIsOutsideBeforeAnyRootIsLookedAt)
{
    EXPECT_FALSE(manager.IsInExistingClientFolder("/r/a.{synctemp}"_q, Any, false));
    EXPECT_EQ(store->QueriesCreated(), 0);
}

TEST_F(FolderManagerTest, NoPathIsInsideWhenTheRootsCannotBeRead)
{
    store->FailExec(1);
    EXPECT_FALSE(manager.IsInExistingClientFolder("/r"_q, Any, false));
}

TEST_F(FolderManagerTest, RelativePathIsTakenFromTheCurrentFolder)
{
    PlayFolders({{1, Folder(QDir::currentPath())}});
    EXPECT_TRUE(manager.IsInExistingClientFolder("C:/a"_q, Any, false));
}

TEST_F(FolderManagerTest, LoneSurrogatesMatchAsText)
{
    PlayFolders({{1, Folder("/r"_q + QChar(0xD83D))}});
    EXPECT_TRUE(manager.IsInExistingClientFolder("/R"_q + QChar(0xD83D) + "/a"_q, Any, false));
}

TEST_F(FolderEventsTest, PathRulesReadTheRootsThroughTheCachedListing)
{
    QString matching;
    logged.IsInExistingClientFolder("/r"_q, Any, false);
    logged.AncestorOrDescendantOfServerFolderExists("/t"_q, 1, matching);
    logged.GetFolderConfigurationsOfNonExistingRootFolders();
    std::vector<QString> const seen = events.Take();
    ASSERT_EQ(seen.size(), 8U);
    EXPECT_THAT(std::vector<QString>(seen.begin(), seen.begin() + 7),
                ElementsAre("IsInExistingClientFolder /r @0"_q,
                            "GetAllRootFolders @0"_q,
                            "exec SelectRoots @0"_q,
                            "AncestorOrDescendantOfServerFolderExists /t @0"_q,
                            "GetAllRootFolders @0"_q,
                            "GetFolderConfigurationsOfNonExistingRootFolders @0"_q,
                            "GetAllRootFolders @0"_q));
}

// Server paths against roots

struct ServerRoot
{
    char const* serverPath;
    int account = 1;
};

struct ServerCase
{
    char const* name;
    char const* path;
    std::vector<ServerRoot> roots;
    /// Server path of the root that overlaps, null for none.
    char const* matching;
    int account = 1;
};

void PrintTo(ServerCase const& server, std::ostream* out)
{
    *out << server.path;
}

class FolderServerPathTest : public FolderManagerTest, public testing::WithParamInterface<ServerCase>
{};

TEST_P(FolderServerPathTest, OverlapsARootOrNone)
{
    std::vector<std::pair<int, FolderConfiguration>> roots;
    for (ServerRoot const& root : GetParam().roots) {
        FolderConfiguration folder = Folder("/r"_q);
        folder.setServerPath(QString::fromUtf8(root.serverPath));
        folder.setAuthenticationId(root.account);
        roots.emplace_back(int(roots.size()) + 1, folder);
    }
    PlayFolders(roots);

    QString matching = "left over"_q;
    EXPECT_EQ(manager.AncestorOrDescendantOfServerFolderExists(
                  QString::fromUtf8(GetParam().path), GetParam().account, matching),
              GetParam().matching != nullptr);
    EXPECT_EQ(matching, QString::fromUtf8(GetParam().matching));
}

INSTANTIATE_TEST_SUITE_P(
    Paths,
    FolderServerPathTest,
    testing::Values(ServerCase{"RootAbove", "/a/b", {{"/a"}}, "/a"},
                    ServerCase{"RootItself", "/a/b", {{"/a/b"}}, "/a/b"},
                    ServerCase{"RootInOtherCase", "/a/b", {{"/A/B"}}, "/A/B"},
                    ServerCase{"RootBelow", "/a/b", {{"/a/b/c"}}, "/a/b/c"},
                    ServerCase{"RootFarBelowInOtherCase", "/a/b", {{"/A/b/C/d"}}, "/A/b/C/d"},
                    ServerCase{"LongerSibling", "/a/b", {{"/a/bc"}}, nullptr},
                    ServerCase{"ShorterSibling", "/a/bc", {{"/a/b"}}, nullptr},
                    ServerCase{"SiblingOfTheSameLength", "/a/b", {{"/a/c"}}, nullptr},
                    ServerCase{"Elsewhere", "/a/b", {{"/x"}}, nullptr},
                    ServerCase{"NoRoots", "/a/b", {}, nullptr},
                    ServerCase{"ServersRootAsked", "/", {{"/a"}}, "/a"},
                    ServerCase{"ServersRootRecorded", "/a", {{"/"}}, "/"},
                    ServerCase{"TrailingSlashAsked", "/a/", {{"/a"}}, "/a"},
                    ServerCase{"TrailingSlashRecorded", "/a", {{"/a/"}}, "/a/"},
                    ServerCase{"BelowATrailingSlashRecorded", "/a/b", {{"/a/"}}, "/a/"},
                    ServerCase{"AskedPathIsCleaned", "/a//b/../c/.", {{"/a/c"}}, "/a/c"},
                    ServerCase{"RecordedPathIsNotCleaned", "/a", {{"/x/../a"}}, nullptr},
                    ServerCase{"RecordedDoubledSlashOfTheSameLength", "/a/b", {{"/a//"}}, nullptr},
                    ServerCase{"RelativePaths", "a/b", {{"a"}}, "a"},
                    ServerCase{"DriveLetterInOtherCase", "c:/A/b", {{"C:/a"}}, "C:/a"},
                    ServerCase{"BeyondAscii", "/ä/x", {{"/Ä"}}, "/Ä"},
                    ServerCase{"OddNames", "/\"'\n\U0001F4C1/x", {{"/\"'\n\U0001F4C1"}}, "/\"'\n\U0001F4C1"},
                    ServerCase{"RootWithoutAServerPath", "/a", {{""}}, ""},
                    ServerCase{"RelativePathAndARootWithoutAServerPath", "a", {{""}}, nullptr},
                    ServerCase{"FirstRootInOrder", "/a/b", {{"/a/b/c"}, {"/a"}}, "/a/b/c"},
                    ServerCase{"OtherAccount", "/a", {{"/a", 2}}, nullptr},
                    ServerCase{"SecondRootOfTheAccount", "/a", {{"/a", 2}, {"/a/b", 1}}, "/a/b"},
                    ServerCase{"MinusOneIsNoWildcard", "/a", {{"/a", 2}}, nullptr, -1},
                    ServerCase{"MinusOneFindsItself", "/a", {{"/a", -1}}, "/a", -1},
                    ServerCase{"ZeroFindsItself", "/a", {{"/a", 0}}, "/a", 0}),
    CaseName<ServerCase>);

TEST_F(FolderManagerTest, EmptyServerPathOverlapsNothingAndRunsNoQuery)
{
    for (QString const& path : {QString(), ""_q}) {
        QString matching = "left over"_q;
        EXPECT_FALSE(manager.AncestorOrDescendantOfServerFolderExists(path, 1, matching));
        EXPECT_TRUE(matching.isEmpty());
    }
    EXPECT_EQ(store->QueriesCreated(), 0);
}

TEST_F(FolderManagerTest, FailingStoreOverlapsNothingAndClearsTheAnswer)
{
    store->FailExec(1);
    QString matching = "left over"_q;
    EXPECT_FALSE(manager.AncestorOrDescendantOfServerFolderExists("/a"_q, 1, matching));
    EXPECT_TRUE(matching.isEmpty());
}

} // namespace
