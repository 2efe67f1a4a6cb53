#include "config/PathRules.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using sync::config::ReplacePathPrefix;
using namespace tandry::test;

struct PrefixCase
{
    char const* name;
    char const* path;
    char const* oldPrefix;
    char const* newPrefix;
    char const* result;
};

void PrintTo(PrefixCase const& prefix, std::ostream* out)
{
    *out << prefix.path << ", " << prefix.oldPrefix << " -> " << prefix.newPrefix;
}

class ReplacePathPrefixTest : public testing::TestWithParam<PrefixCase>
{};

TEST_P(ReplacePathPrefixTest, GivesThePathInItsNewPlace)
{
    PrefixCase const& prefix = GetParam();
    EXPECT_EQ(ReplacePathPrefix(QString::fromUtf8(prefix.path),
                                QString::fromUtf8(prefix.oldPrefix),
                                QString::fromUtf8(prefix.newPrefix)),
              QString::fromUtf8(prefix.result));
}

INSTANTIATE_TEST_SUITE_P(Paths,
                         ReplacePathPrefixTest,
                         testing::Values(PrefixCase{"Below", "/r/a/b", "/r", "/t", "/t/a/b"},
                                         PrefixCase{"TheFolderItself", "/r", "/r", "/t", "/t"},
                                         PrefixCase{"Elsewhere", "/x/a", "/r", "/t", "/x/a"},
                                         PrefixCase{"SiblingWithTheSameBeginning", "/r2/a", "/r", "/t", "/r2/a"},
                                         PrefixCase{"OtherCase", "/R/a", "/r", "/t", "/R/a"},
                                         PrefixCase{"PathIsCleaned", "/r//a/../b/", "/r", "/t", "/t/b"},
                                         PrefixCase{"PathIsCleanedWithoutAMatch", "/x//a/./b/", "/r", "/t", "/x/a/b"},
                                         PrefixCase{"PathThatLeavesTheFolder", "/r/../x", "/r", "/t", "/x"},
                                         PrefixCase{"OldPrefixIsNotCleaned", "/r/a", "/r/", "/t", "/r/a"},
                                         PrefixCase{"OldPrefixWithDots", "/r/a", "/x/../r", "/t", "/r/a"},
                                         PrefixCase{"NewPrefixIsNotCleaned", "/r/a", "/r", "/t//", "/t///a"},
                                         PrefixCase{"ShorterNewPrefix", "/long/tree/a", "/long/tree", "", "/a"},
                                         PrefixCase{"LongerNewPrefix", "/r/a", "/r", "/long/tree", "/long/tree/a"},
                                         PrefixCase{"OnlyTheFirstOccurrence", "/r/r/r", "/r", "/t", "/t/r/r"},
                                         PrefixCase{"OldPrefixIsTheFileSystemsRoot", "/a", "/", "/t", "/a"},
                                         PrefixCase{"RootToRoot", "/", "/", "/t", "/t"},
                                         PrefixCase{"EmptyOldPrefixOfAnAbsolutePath", "/a", "", "/t", "/t/a"},
                                         PrefixCase{"EmptyOldPrefixOfARelativePath", "a", "", "/t", "a"},
                                         PrefixCase{"EmptyPath", "", "/r", "/t", ""},
                                         PrefixCase{"DriveLetter", "C:/r/a", "C:/r", "/t", "/t/a"},
                                         PrefixCase{"DriveLetterOfOtherCase", "c:/r/a", "C:/r", "/t", "c:/r/a"},
                                         PrefixCase{"LongerThanThePath", "/r", "/r/a", "/t", "/r"},
                                         PrefixCase{
                                             "NamesAreText", "/r/\U0001F4C1 'a'\n", "/r", "/t", "/t/\U0001F4C1 'a'\n"}),
                         [](auto const& param) { return std::string(param.param.name); });

TEST(ReplacePathPrefix, LoneSurrogatesStayAsTheyAre)
{
    QString const name = "/r/"_q + QChar(0xD83D);
    EXPECT_EQ(ReplacePathPrefix(name, "/r"_q, "/t"_q), "/t/"_q + QChar(0xD83D));
}

} // namespace
