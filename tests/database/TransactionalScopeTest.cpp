#include "database/TransactionalScope.h"
#include "database/ScopeParticipant.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using sync::database::ScopeParticipant;
using sync::database::TransactionalScope;

/// Counts its commits and notes the depth at each.
class Participant : public ScopeParticipant
{
public:
    bool CommitScope() noexcept override
    {
        depths.push_back(TransactionalScope::Depth());
        if (joinsAgain) {
            joinsAgain = false;
            TransactionalScope::Join(*this);
        }
        return answer;
    }

    bool answer = true;
    bool joinsAgain = false;
    std::vector<int> depths;
};

TEST(TransactionalScope, DepthCountsTheOpenScopesOfTheThread)
{
    EXPECT_EQ(TransactionalScope::Depth(), 0);
    {
        TransactionalScope const outer;
        EXPECT_EQ(TransactionalScope::Depth(), 1);
        {
            TransactionalScope const inner;
            EXPECT_EQ(TransactionalScope::Depth(), 2);
        }
        EXPECT_EQ(TransactionalScope::Depth(), 1);
    }
    EXPECT_EQ(TransactionalScope::Depth(), 0);
}

TEST(TransactionalScope, EndOfTheOutermostScopeCommitsOnceAndOutsideOfIt)
{
    Participant participant;
    {
        TransactionalScope const outer;
        {
            TransactionalScope const inner;
            TransactionalScope::Join(participant);
        }
        EXPECT_TRUE(participant.depths.empty());
    }
    EXPECT_EQ(participant.depths, std::vector<int>{0});
    {
        TransactionalScope const next;
    }
    EXPECT_EQ(participant.depths.size(), 1u);
}

TEST(TransactionalScope, CommitOfAnInnerScopeSaysTrueAndEndsNothing)
{
    Participant participant;
    participant.answer = false;
    TransactionalScope outer;
    TransactionalScope::Join(participant);
    TransactionalScope inner;
    EXPECT_TRUE(inner.commit());
    EXPECT_TRUE(participant.depths.empty());
    TransactionalScope::Leave(participant);
}

TEST(TransactionalScope, CommitOfTheOutermostScopeTellsWhatTheParticipantsAnswer)
{
    Participant good;
    Participant bad;
    bad.answer = false;
    TransactionalScope scope;
    EXPECT_TRUE(scope.commit());

    TransactionalScope::Join(bad);
    TransactionalScope::Join(good);
    EXPECT_FALSE(scope.commit());
    EXPECT_EQ(bad.depths.size(), 1u);
    EXPECT_EQ(good.depths.size(), 1u) << "one store's failure keeps no other from its commit";
    EXPECT_TRUE(scope.commit()) << "after a commit everything begins anew";
}

TEST(TransactionalScope, ParticipantThatJoinsAgainDuringACommitIsToldAtTheNextOne)
{
    Participant participant;
    participant.joinsAgain = true;
    {
        TransactionalScope scope;
        TransactionalScope::Join(participant);
        EXPECT_TRUE(scope.commit());
        EXPECT_EQ(participant.depths.size(), 1u);
    }
    EXPECT_EQ(participant.depths, (std::vector<int>{1, 0}));
}

TEST(TransactionalScope, ParticipantThatLeftIsNotTold)
{
    Participant left;
    Participant stayed;
    {
        TransactionalScope const scope;
        TransactionalScope::Join(left);
        TransactionalScope::Join(stayed);
        TransactionalScope::Leave(left);
        TransactionalScope::Leave(left);
    }
    EXPECT_TRUE(left.depths.empty());
    EXPECT_EQ(stayed.depths.size(), 1u);
}

TEST(TransactionalScope, EndsLikeAnyOtherWhenAnExceptionPasses)
{
    Participant participant;
    EXPECT_THROW(
        {
            TransactionalScope const outer;
            TransactionalScope const inner;
            TransactionalScope::Join(participant);
            throw std::runtime_error("passes");
        },
        std::runtime_error);
    EXPECT_EQ(participant.depths.size(), 1u);
    EXPECT_EQ(TransactionalScope::Depth(), 0);
}

TEST(TransactionalScope, ThreadsHaveScopesOfTheirOwn)
{
    Participant participant;
    TransactionalScope const scope;
    TransactionalScope::Join(participant);
    std::thread([] {
        EXPECT_EQ(TransactionalScope::Depth(), 0);
        TransactionalScope const own;
        EXPECT_EQ(TransactionalScope::Depth(), 1);
    }).join();
    EXPECT_EQ(TransactionalScope::Depth(), 1);
    EXPECT_TRUE(participant.depths.empty());
    TransactionalScope::Leave(participant);
}

} // namespace
