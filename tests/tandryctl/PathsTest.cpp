#include "tools/tandryctl/Paths.h"
#include "support/QtPrinters.h"
#include "tools/tandryctl/Failure.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tandryctl;
using namespace tandry::test;
using sync::config::FolderConfiguration;

namespace paths_test {
namespace {

QString FromUtf8(char const* text)
{
    return QString::fromUtf8(text);
}

FolderConfiguration Root(QString const& path, int account = -1)
{
    FolderConfiguration root;
    root.setParentId(0);
    root.setClientPath(path);
    root.setAuthenticationId(account);
    return root;
}

struct ConflictRow
{
    char const* directory;
    char const* root;
    /// Empty for no conflict.
    char const* relation;
};

class RootConflictTest : public testing::TestWithParam<ConflictRow>
{};

TEST_P(RootConflictTest, ReturnsHowDirectoryAndRootOverlap)
{
    auto const conflict = FindRootConflict(FromUtf8(GetParam().directory), {Root(FromUtf8(GetParam().root))});
    EXPECT_EQ(conflict ? std::string(conflict->relation) : std::string(), GetParam().relation);
}

INSTANTIATE_TEST_SUITE_P(Paths,
                         RootConflictTest,
                         testing::Values(ConflictRow{"/r", "/r", "is"},
                                         ConflictRow{"/r/a", "/r", "lies inside"},
                                         ConflictRow{"/r/a/b/c", "/r", "lies inside"},
                                         ConflictRow{"/r", "/r/a", "encloses"},
                                         ConflictRow{"/", "/r", "encloses"},
                                         ConflictRow{"/r", "/", "lies inside"},
                                         ConflictRow{"/", "/", "is"},
                                         ConflictRow{"/r2", "/r", ""},
                                         ConflictRow{"/r", "/r2", ""},
                                         ConflictRow{"/a/r", "/r", ""},
                                         ConflictRow{"/R", "/r", "is"},
                                         ConflictRow{"/R/a", "/r", "lies inside"},
                                         ConflictRow{"/r", "/r/", "is"},
                                         ConflictRow{"/r/a", "/r//", "lies inside"},
                                         ConflictRow{"/x/r", "/x/y/../r", "is"}));

TEST(FindRootConflict, WithoutRootsIsNothing)
{
    EXPECT_FALSE(FindRootConflict("/r"_q, {}));
}

TEST(FindRootConflict, SkipsARootWithoutAPath)
{
    EXPECT_FALSE(FindRootConflict("/r"_q, {Root(QString())}));
}

TEST(FindRootConflict, ReturnsTheConflictingRoot)
{
    auto const conflict = FindRootConflict("/b/c"_q, {Root("/a"_q), Root("/b"_q)});
    ASSERT_TRUE(conflict);
    EXPECT_EQ(conflict->root.getClientPath(), "/b"_q);
}

TEST(FindRootConflict, ResolvesSymbolicLinks)
{
    QTemporaryDir const folder;
    ASSERT_TRUE(QDir(folder.path()).mkpath("real/sub"_q));
    ASSERT_TRUE(QFile::link(folder.filePath("real"_q), folder.filePath("link"_q)));
    auto const conflict = FindRootConflict(folder.filePath("link/sub"_q), {Root(folder.filePath("real"_q))});
    ASSERT_TRUE(conflict);
    EXPECT_STREQ(conflict->relation, "lies inside");
}

TEST(FindRootOf, ReturnsTheLongestRoot)
{
    auto const root = FindRootOf("/a/b/c"_q, {Root("/a"_q), Root("/a/b"_q)}, {});
    ASSERT_TRUE(root);
    EXPECT_EQ(root->getClientPath(), "/a/b"_q);
}

TEST(FindRootOf, PrefersARootThatMatchesInCase)
{
    auto const root = FindRootOf("/a/b/c"_q, {Root("/A/b"_q), Root("/a"_q)}, {});
    ASSERT_TRUE(root);
    EXPECT_EQ(root->getClientPath(), "/a"_q);
}

TEST(FindRootOf, FallsBackToARootInAnotherCase)
{
    EXPECT_TRUE(FindRootOf("/data/x"_q, {Root("/Data"_q)}, {}));
}

TEST(FindRootOf, ConsidersOnlyTheGivenAccount)
{
    QVector<FolderConfiguration> const roots{Root("/a"_q, 1), Root("/b"_q, 2)};
    EXPECT_FALSE(FindRootOf("/a/x"_q, roots, 2));
    EXPECT_TRUE(FindRootOf("/a/x"_q, roots, 1));
    EXPECT_TRUE(FindRootOf("/a/x"_q, roots, {}));
}

TEST(FindRootOf, IgnoresASiblingWithTheSamePrefix)
{
    EXPECT_FALSE(FindRootOf("/r2/x"_q, {Root("/r"_q)}, {}));
}

TEST(AbsolutePath, OfARelativePathStartsAtTheWorkingDirectory)
{
    EXPECT_EQ(AbsolutePath("a/../b"_q), QDir::currentPath() + "/b"_q);
}

TEST(AbsolutePath, IsCleaned)
{
    EXPECT_EQ(AbsolutePath("/a//b/./c/../"_q), "/a/b"_q);
}

TEST(AbsolutePath, OfANameThatBeginsWithAColonIsAFilePath)
{
    EXPECT_EQ(AbsolutePath(":/a"_q), QDir::currentPath() + "/:/a"_q);
}

TEST(AbsolutePath, OfNothingIsWrongUsage)
{
    try {
        static_cast<void>(AbsolutePath(QString()));
        FAIL();
    }
    catch (Failure const& failure) {
        EXPECT_EQ(failure.code(), FailureCode::WrongUsage);
    }
}

TEST(AbsolutePath, OfAPathThatTheSystemCannotKeepIsWrongUsage)
{
    try {
        static_cast<void>(AbsolutePath("a"_q + QChar(0xd83d)));
        FAIL();
    }
    catch (Failure const& failure) {
        EXPECT_EQ(failure.code(), FailureCode::WrongUsage);
    }
}

TEST(ChildPath, OfTheFileSystemRootHasOneSlash)
{
    EXPECT_EQ(ChildPath("/"_q, "a"_q), "/a"_q);
    EXPECT_EQ(ChildPath("/a"_q, "b"_q), "/a/b"_q);
}

struct ServerPathRow
{
    char const* root;
    char const* server;
    char const* path;
    /// Null if the path has no server path.
    char const* expected;
};

class ServerPathTest : public testing::TestWithParam<ServerPathRow>
{};

TEST_P(ServerPathTest, FollowsTheManagersRule)
{
    FolderConfiguration root = Root(FromUtf8(GetParam().root));
    root.setServerPath(FromUtf8(GetParam().server));
    EXPECT_EQ(ServerPathIn(root, FromUtf8(GetParam().path)), FromUtf8(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(Paths,
                         ServerPathTest,
                         testing::Values(ServerPathRow{"/r", "/s", "/r", "/s"},
                                         ServerPathRow{"/r", "/s", "/r/a/b", "/s/a/b"},
                                         ServerPathRow{"/r", "", "/r/a", "/a"},
                                         ServerPathRow{"/r", "/", "/r/a", "//a"},
                                         ServerPathRow{"/", "/s", "/a", "/a"},
                                         ServerPathRow{"/", "/s", "/", "/s"},
                                         ServerPathRow{"/r", "/s", "/r2", nullptr},
                                         ServerPathRow{"/r", "/s", "/R/a", nullptr}));

} // namespace
} // namespace paths_test
