#include "database/file/OwnCommits.h"

#include <gtest/gtest.h>

#include <memory>

namespace own_commits_test {

namespace {

using sync::database::FileIdentity;
using sync::database::OwnCommits;
using sync::database::schema::AllTables;
using sync::database::schema::TableSet;

constexpr TableSet Servers = 1;
constexpr TableSet Folders = 8;

class AWatcherOfOwnCommits : public testing::Test
{
protected:
    AWatcherOfOwnCommits() { watcher.StartAt(100); }

    void Commit(quint32 number, TableSet tables)
    {
        commits->Announce(number, tables);
        commits->Settle(number, true);
    }

    void ExpectAdvance(quint32 number, TableSet tables, bool isComplete = true)
    {
        OwnCommits::Watcher::Advance const advance = watcher.AdvanceTo(number);
        EXPECT_EQ(advance.tables, tables) << "up to " << number;
        EXPECT_EQ(advance.isComplete, isComplete) << "up to " << number;
    }

    std::shared_ptr<OwnCommits> const commits = std::make_shared<OwnCommits>();
    OwnCommits::Watcher watcher{commits};
};

TEST_F(AWatcherOfOwnCommits, WithoutACommitSeesNothing)
{
    ExpectAdvance(100, 0);
}

TEST_F(AWatcherOfOwnCommits, UnitesTheTablesOfSeveralCommitsAndReportsThemOnce)
{
    Commit(101, Servers);
    Commit(102, Folders);
    ExpectAdvance(102, Servers | Folders);
    ExpectAdvance(102, 0);
}

TEST_F(AWatcherOfOwnCommits, CommitOfAnotherProcessAmongThemIsAllTables)
{
    Commit(101, Servers);
    Commit(103, Servers);
    ExpectAdvance(103, AllTables);
    Commit(104, Folders);
    ExpectAdvance(104, Folders);
    ExpectAdvance(105, AllTables);
}

TEST_F(AWatcherOfOwnCommits, CommitThatIsJustBeingFinishedComesWithALaterLook)
{
    Commit(101, Servers);
    commits->Announce(102, Folders);
    Commit(103, Servers); // another thread, before the first has settled
    ExpectAdvance(103, Servers, false);
    commits->Settle(102, true);
    ExpectAdvance(103, Servers | Folders);
}

TEST_F(AWatcherOfOwnCommits, NumberOfAFailedCommitBelongsToWhoeverTakesIt)
{
    commits->Announce(101, Servers);
    ExpectAdvance(100, 0);
    commits->Settle(101, false);
    ExpectAdvance(101, AllTables);
    commits->Announce(102, Servers);
    commits->Settle(102, false);
    Commit(102, Folders);
    ExpectAdvance(102, Folders);
}

TEST_F(AWatcherOfOwnCommits, CommitThatSettlesAfterTheCounterWasReadIsSeenAtOnce)
{
    Commit(101, Servers);
    ExpectAdvance(100, Servers);
    ExpectAdvance(101, 0);
    Commit(103, Folders); // and another process has taken 102
    ExpectAdvance(101, AllTables);
}

TEST_F(AWatcherOfOwnCommits, IndexThatWasMadeAnewIsAllTables)
{
    Commit(101, Servers);
    ExpectAdvance(101, Servers);
    ExpectAdvance(1, AllTables);
    Commit(2, Folders);
    ExpectAdvance(2, Folders);
}

TEST_F(AWatcherOfOwnCommits, CountsPastTheLargestNumber)
{
    watcher.StartAt(0xffffffffu);
    Commit(0, Servers);
    Commit(1, Folders);
    ExpectAdvance(1, Servers | Folders);
}

TEST_F(AWatcherOfOwnCommits, StartingAmongCommitsSeesOnlyTheLaterOnes)
{
    Commit(101, Servers);
    watcher.StartAt(101);
    ExpectAdvance(101, 0);
    Commit(102, Folders);
    ExpectAdvance(102, Folders);
}

TEST_F(AWatcherOfOwnCommits, ThatNeverLooksIsToldOfAllTables)
{
    for (quint32 number = 101; number < 100101; number += 2)
        Commit(number, Servers);
    ExpectAdvance(100100, AllTables);
}

TEST_F(AWatcherOfOwnCommits, IsOneOfSeveral)
{
    OwnCommits::Watcher second(commits);
    second.StartAt(100);
    Commit(101, Servers);
    ExpectAdvance(101, Servers);
    EXPECT_EQ(second.AdvanceTo(101).tables, Servers);
}

TEST(OwnCommitsOfAFile, AreSharedByIdentityWhileOneIsHeld)
{
    std::shared_ptr<OwnCommits> const first = OwnCommits::Of(FileIdentity{1, 2});
    EXPECT_EQ(OwnCommits::Of(FileIdentity{1, 2}), first);
    EXPECT_NE(OwnCommits::Of(FileIdentity{1, 3}), first);
    EXPECT_FALSE(first->isWatched());
    OwnCommits::Watcher const watcher(first);
    EXPECT_TRUE(first->isWatched());
}

} // namespace

} // namespace own_commits_test
