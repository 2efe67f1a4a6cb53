#include "config/AuthenticationConfigManager.h"
#include "config/ProductConfigManager.h"
#include "config/ScheduleEntryManager.h"
#include "config/ServerConfigManager.h"

#include "database/TransactionalScope.h"
#include "support/Conversation.h"
#include "support/TemporarySettings.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace manager_scopes_test {
namespace {

using namespace tandry::test;
using namespace sync::config;
using sync::database::TransactionalScope;
using Factory = std::shared_ptr<sync::interf::factory::IDatabaseFactory>;

/// Keeps the depth of scopes at which each query is made and released.
class LifetimeStore : public RecordingStore
{
public:
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() override
    {
        depthsAtCreation.push_back(TransactionalScope::Depth());
        auto query = RecordingStore::CreateQuery();
        auto* const plain = query.get();
        return {plain, [this, query = std::move(query)](sync::interf::IQSqlQueryWrapper*) mutable {
                    depthsAtRelease.push_back(TransactionalScope::Depth());
                    query.reset();
                }};
    }

    std::vector<int> depthsAtCreation;
    std::vector<int> depthsAtRelease;
};

struct ScopeCase
{
    char const* name;
    std::vector<int> depths; // of each query
    void (*call)(Factory const& store);
};

std::vector<int> const Reads = {0};
std::vector<int> const Writes = {1};

ServerConfiguration server;
AuthenticationConfiguration account;
ProductConfiguration product;

ScopeCase const Operations[] = {
    {"ServerGetById", Reads, [](auto& store) { ServerConfigManager(store).GetServerConfigById(1); }},
    {"ServerGetByServers",
     Reads,
     [](auto& store) { ServerConfigManager(store).GetServerConfigByServers(QString(), QString()); }},
    {"ServerGetAll", Reads, [](auto& store) { ServerConfigManager(store).GetAll(); }},
    {"ServerUpdate", Writes, [](auto& store) { ServerConfigManager(store).Update({}); }},
    {"ServerAdd", Writes, [](auto& store) { ServerConfigManager(store).Add(server); }},
    {"ServerRemove", Writes, [](auto& store) { ServerConfigManager(store).Remove(1); }},
    {"ServerGetByAuthenticationId",
     Reads,
     [](auto& store) { ServerConfigManager(store).GetServerConfigByAuthenticationId(1); }},
    {"ServerGetByFolderId", Reads, [](auto& store) { ServerConfigManager(store).GetServerConfigByFolderId(1); }},
    {"ServerGetByFileId", Reads, [](auto& store) { ServerConfigManager(store).GetServerConfigByFileId(1); }},
    {"ServerGetDefault", Reads, [](auto& store) { ServerConfigManager(store).GetDefaultServerConfig(); }},

    {"AccountGetById",
     Reads,
     [](auto& store) { AuthenticationConfigManager(store).GetAuthenticationConfigurationById(1); }},
    {"AccountGetByDomainAndUser",
     Reads,
     [](auto& store) {
         AuthenticationConfigManager(store).GetAuthenticationConfigurationByDomainAndUser(QString(), QString());
     }},
    {"AccountGetAll", Reads, [](auto& store) { AuthenticationConfigManager(store).GetAll(); }},
    {"AccountGetDistinct",
     Reads,
     [](auto& store) { AuthenticationConfigManager(store).GetDistinctAuthenticationConfigurations(); }},
    {"AccountUpdate", Writes, [](auto& store) { AuthenticationConfigManager(store).Update({}); }},
    {"AccountUpdatePassword",
     Writes,
     [](auto& store) { AuthenticationConfigManager(store).UpdatePassword(QString(), QString(), QString()); }},
    {"AccountAdd", Writes, [](auto& store) { AuthenticationConfigManager(store).Add(account); }},
    {"AccountRemove", Writes, [](auto& store) { AuthenticationConfigManager(store).Remove(1); }},

    {"ProductGetById", Reads, [](auto& store) { ProductConfigManager(store).GetProductConfigurationById(1); }},
    {"ProductGetByServerIdAndConsumerKey",
     Reads,
     [](auto& store) { ProductConfigManager(store).GetProductConfigurationByServerIdAndConsumerKey(1, QString()); }},
    {"ProductGetAll", Reads, [](auto& store) { ProductConfigManager(store).GetAll(); }},
    {"ProductUpdate", Writes, [](auto& store) { ProductConfigManager(store).Update({}); }},
    {"ProductAdd", Writes, [](auto& store) { ProductConfigManager(store).Add(product); }},
    {"ProductRemove", {0, 1}, [](auto& store) { ProductConfigManager(store).Remove(1); }},

    {"ScheduleGetById", Reads, [](auto& store) { ScheduleEntryManager(store).GetScheduleEntryById(1); }},
    {"ScheduleGetDefault", Reads, [](auto& store) { ScheduleEntryManager(store).GetDefaultScheduleEntry(); }},
    {"ScheduleUpdate", Writes, [](auto& store) { ScheduleEntryManager(store).Update({}); }},
    {"ScheduleRemove", Writes, [](auto& store) { ScheduleEntryManager(store).Remove(1); }},
};

class ManagerScopes : public testing::TestWithParam<ScopeCase>
{};

TEST_P(ManagerScopes, EncloseTheQueriesOfAWriteAndNoneOfARead)
{
    TemporarySettings const settings;
    for (bool const fails : {false, true}) {
        SCOPED_TRACE(fails ? "failing store" : "working store");
        auto const store = std::make_shared<LifetimeStore>();
        if (fails)
            store->FailAll();
        GetParam().call(store);
        EXPECT_EQ(store->depthsAtCreation, GetParam().depths);
        EXPECT_EQ(store->depthsAtRelease, GetParam().depths);
        EXPECT_EQ(TransactionalScope::Depth(), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, ManagerScopes, testing::ValuesIn(Operations), [](auto const& test) {
    return test.param.name;
});

} // namespace
} // namespace manager_scopes_test
