#include "database/TransactionalScope.h"

#include "database/ScopeParticipant.h"

#include <algorithm>
#include <atomic>
#include <vector>

namespace sync::database {

namespace {

std::atomic<quint64> rollbacks{0};

struct ThreadScopes
{
    int depth = 0;
    std::vector<ScopeParticipant*> participants;
};

ThreadScopes& Scopes() noexcept
{
    thread_local ThreadScopes scopes;
    return scopes;
}

bool CommitParticipants() noexcept
{
    // The list is taken first, so that a participant may join again for what follows a commit.
    std::vector<ScopeParticipant*> participants;
    participants.swap(Scopes().participants);

    bool succeeded = true;
    for (ScopeParticipant* participant : participants)
        succeeded = participant->CommitScope() && succeeded;
    return succeeded;
}

} // namespace

TransactionalScope::TransactionalScope()
{
    ++Scopes().depth;
}

TransactionalScope::~TransactionalScope()
{
    // The scope is over before its store commits: what hears of a failure and writes has a scope of its own.
    if (--Scopes().depth == 0)
        static_cast<void>(CommitParticipants()); // a destructor returns nothing; the store reports a failure
}

bool TransactionalScope::commit()
{
    return Depth() > 1 || CommitParticipants();
}

int TransactionalScope::Depth() noexcept
{
    return Scopes().depth;
}

void TransactionalScope::Join(ScopeParticipant& participant)
{
    Scopes().participants.push_back(&participant);
}

void TransactionalScope::Leave(ScopeParticipant& participant) noexcept
{
    auto& participants = Scopes().participants;
    participants.erase(std::remove(participants.begin(), participants.end(), &participant), participants.end());
}

quint64 TransactionalScope::Rollbacks() noexcept
{
    return rollbacks.load(std::memory_order_acquire);
}

void TransactionalScope::CountRollback() noexcept
{
    rollbacks.fetch_add(1, std::memory_order_release);
}

} // namespace sync::database
