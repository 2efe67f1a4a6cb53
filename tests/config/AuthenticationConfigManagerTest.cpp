#include "config/AuthenticationConfigManager.h"

#include "support/Conversation.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

namespace authentication_config_manager_test {
namespace {

using namespace tandry::test;
using sync::config::AuthenticationConfigManager;
using sync::config::AuthenticationConfiguration;

// Three of the reads are const, the fourth and the writes aren't.
template <class Result, class... Arguments>
using Operation = Result (AuthenticationConfigManager::*)(Arguments...);
template <class Result, class... Arguments>
using ConstOperation = Result (AuthenticationConfigManager::*)(Arguments...) const;
static_assert(std::is_same_v<decltype(&AuthenticationConfigManager::GetAuthenticationConfigurationById),
                             ConstOperation<AuthenticationConfiguration, int>>);
static_assert(std::is_same_v<decltype(&AuthenticationConfigManager::GetAuthenticationConfigurationByDomainAndUser),
                             ConstOperation<AuthenticationConfiguration, QString, QString>>);
static_assert(std::is_same_v<decltype(&AuthenticationConfigManager::GetAll),
                             ConstOperation<QVector<AuthenticationConfiguration>>>);
static_assert(std::is_same_v<decltype(&AuthenticationConfigManager::GetDistinctAuthenticationConfigurations),
                             Operation<QVector<AuthenticationConfiguration>>>);
static_assert(std::is_same_v<decltype(&AuthenticationConfigManager::Update), //
                             Operation<bool, AuthenticationConfiguration>>);
static_assert(
    std::is_same_v<decltype(&AuthenticationConfigManager::UpdatePassword), Operation<int, QString, QString, QString>>);
static_assert(std::is_same_v<decltype(&AuthenticationConfigManager::Add), //
                             Operation<bool, AuthenticationConfiguration&>>);
static_assert(std::is_same_v<decltype(&AuthenticationConfigManager::Remove), Operation<bool, int>>);

char const* const SelectById =
    "SELECT id, domain, domainId, userName, encryptedPassword, nameValueProperties, serverId "
    "FROM AuthenticationConfiguration WHERE id = :id";
char const* const SelectByDomainAndUser =
    "SELECT id, domain, domainId, userName, encryptedPassword, nameValueProperties, serverId "
    "FROM AuthenticationConfiguration WHERE domain = :domain AND userName = :userName";
char const* const SelectAll = "SELECT id, domain, domainId, userName, encryptedPassword, nameValueProperties, serverId "
                              "FROM AuthenticationConfiguration";
char const* const SelectDistinct = "SELECT DISTINCT domain, userName FROM AuthenticationConfiguration";
char const* const UpdateRow =
    "UPDATE AuthenticationConfiguration SET domain = :domain, domainId = :domainId, userName = :userName, "
    "encryptedPassword = :encryptedPassword, nameValueProperties = :nameValueProperties, serverId = :serverId "
    "WHERE id = :id";
char const* const ClearPasswords = "UPDATE AuthenticationConfiguration SET encryptedPassword = :encryptedPassword "
                                   "WHERE domain = :domain AND userName = :userName";
char const* const InsertRow = "INSERT INTO AuthenticationConfiguration "
                              "(domain, domainId, userName, encryptedPassword, nameValueProperties, serverId) VALUES "
                              "(:domain, :domainId, :userName, :encryptedPassword, :nameValueProperties, :serverId);";
char const* const DeleteRow = "DELETE FROM AuthenticationConfiguration WHERE Id = :id;";

class AuthenticationConfigManagerConversation : public testing::Test
{
protected:
    static Row StoredRow()
    {
        return {7, "domain"_q, "domain-id"_q, "user"_q, "stored password"_q, OneProperty("k", "v"), 3};
    }

    static void ExpectStoredRow(AuthenticationConfiguration const& account)
    {
        EXPECT_EQ(account.getId(), 7);
        EXPECT_EQ(account.getDomain(), "domain"_q);
        EXPECT_EQ(account.getDomainId(), "domain-id"_q);
        EXPECT_EQ(account.getUserName(), "user"_q);
        EXPECT_TRUE(account.getPassword().isNull());
        EXPECT_EQ(account.getServerId(), 3);
    }

    static void ExpectDefault(AuthenticationConfiguration const& account)
    {
        EXPECT_EQ(account.getId(), -1);
        EXPECT_TRUE(account.getDomain().isNull());
        EXPECT_TRUE(account.getDomainId().isNull());
        EXPECT_TRUE(account.getUserName().isNull());
        EXPECT_TRUE(account.getPassword().isNull());
        EXPECT_EQ(account.getServerId(), 0);
    }

    AuthenticationConfiguration AccountWithProperties()
    {
        store->PlayRows({StoredRow()});
        return manager.GetAuthenticationConfigurationById(7);
    }

    /// The text that an Update of this record would store as its name-value properties.
    QString PropertiesOf(AuthenticationConfiguration const& account)
    {
        EXPECT_TRUE(manager.Update(account));
        return store->Executions().back().bindings.at(5).value.toString();
    }

    std::shared_ptr<RecordingStore> store = std::make_shared<RecordingStore>();
    AuthenticationConfigManager manager{store};
};

TEST_F(AuthenticationConfigManagerConversation, ConstructionAndDestructionTouchNoStore)
{
    {
        AuthenticationConfigManager const other(store);
        EXPECT_EQ(store.use_count(), 3);
    }
    EXPECT_EQ(store.use_count(), 2);
    EXPECT_EQ(store->QueriesCreated(), 0);
}

TEST_F(AuthenticationConfigManagerConversation, GetAuthenticationConfigurationByIdReadsOneRow)
{
    store->PlayRows({StoredRow(), {8}});
    ExpectStoredRow(manager.GetAuthenticationConfigurationById(7));
    ExpectConversation(*store, {Read(SelectById, {{":id", 7}})});
}

TEST_F(AuthenticationConfigManagerConversation,
       GetAuthenticationConfigurationByDomainAndUserBindsTheArgumentsAsTheyStand)
{
    store->PlayRows({StoredRow(), {8}});
    ExpectStoredRow(manager.GetAuthenticationConfigurationByDomainAndUser(" Domain "_q, "USER"_q));
    static_cast<void>(manager.GetAuthenticationConfigurationByDomainAndUser(QString(), ""_q));
    ExpectConversation(*store,
                       {Read(SelectByDomainAndUser, {{":domain", " Domain "_q}, {":userName", "USER"_q}}),
                        Read(SelectByDomainAndUser, {{":domain", QString()}, {":userName", ""_q}})});
}

TEST_F(AuthenticationConfigManagerConversation, LookupsWithoutARowAnswerWithADefaultRecord)
{
    ExpectDefault(manager.GetAuthenticationConfigurationById(7));
    ExpectDefault(manager.GetAuthenticationConfigurationByDomainAndUser("a"_q, "b"_q));
}

TEST_F(AuthenticationConfigManagerConversation, LookupsOnAFailingStoreAnswerWithADefaultRecord)
{
    store->FailAll();
    ExpectDefault(manager.GetAuthenticationConfigurationById(7));
    ExpectDefault(manager.GetAuthenticationConfigurationByDomainAndUser("a"_q, "b"_q));
    EXPECT_EQ(store->Executions().size(), 2U);
}

TEST_F(AuthenticationConfigManagerConversation, NullColumnsReadAsZeroAndEmptyTexts)
{
    store->PlayRows({Row(7)});
    AuthenticationConfiguration const account = manager.GetAuthenticationConfigurationById(7);
    EXPECT_EQ(account.getId(), 0);
    EXPECT_TRUE(account.getDomain().isEmpty());
    EXPECT_TRUE(account.getDomainId().isEmpty());
    EXPECT_TRUE(account.getUserName().isEmpty());
    EXPECT_TRUE(account.getPassword().isNull());
    EXPECT_EQ(account.getServerId(), 0);
    EXPECT_EQ(PropertiesOf(account), NoProperties());
}

TEST_F(AuthenticationConfigManagerConversation, GetAllReadsEachRowInTheStoresOrderWithoutItsPassword)
{
    store->PlayRows({StoredRow(), {3, "b"_q, "c"_q, "d"_q, "secret"_q, QVariant(), 9}});
    QVector<AuthenticationConfiguration> const accounts = manager.GetAll();
    ASSERT_EQ(accounts.size(), 2);
    ExpectStoredRow(accounts[0]);
    EXPECT_EQ(accounts[1].getId(), 3);
    EXPECT_EQ(accounts[1].getServerId(), 9);
    EXPECT_TRUE(accounts[1].getPassword().isNull());
    ExpectConversation(*store, {Read(SelectAll)});
    EXPECT_EQ(PropertiesOf(accounts[0]), OneProperty("k", "v"));
}

TEST_F(AuthenticationConfigManagerConversation, ListingsAreEmptyWithoutRowsAndOnAFailingStore)
{
    EXPECT_TRUE(manager.GetAll().isEmpty());
    EXPECT_TRUE(manager.GetDistinctAuthenticationConfigurations().isEmpty());
    store->FailAll();
    EXPECT_TRUE(manager.GetAll().isEmpty());
    EXPECT_TRUE(manager.GetDistinctAuthenticationConfigurations().isEmpty());
}

TEST_F(AuthenticationConfigManagerConversation, GetDistinctNamesAccountsThatStandForNoRow)
{
    store->PlayRows({{"domain"_q, "user"_q}, {QVariant(), "other"_q}});
    QVector<AuthenticationConfiguration> const accounts = manager.GetDistinctAuthenticationConfigurations();
    ExpectConversation(*store, {Read(SelectDistinct)});
    ASSERT_EQ(accounts.size(), 2);
    EXPECT_EQ(accounts[0].getDomain(), "domain"_q);
    EXPECT_EQ(accounts[0].getUserName(), "user"_q);
    EXPECT_TRUE(accounts[1].getDomain().isEmpty());
    EXPECT_EQ(accounts[1].getUserName(), "other"_q);
    for (AuthenticationConfiguration const& account : accounts) {
        EXPECT_EQ(account.getId(), -1);
        EXPECT_EQ(account.getServerId(), 0);
        EXPECT_TRUE(account.getDomainId().isNull());
        EXPECT_TRUE(account.getPassword().isNull());
        EXPECT_EQ(PropertiesOf(account), NoProperties());
    }
}

TEST_F(AuthenticationConfigManagerConversation, AddBindsNullForThePasswordAndLeavesItInTheRecord)
{
    AuthenticationConfiguration account;
    account.setId(99);
    account.setDomain("domain"_q);
    account.setDomainId("domain-id"_q);
    account.setUserName("user"_q);
    account.setPassword("password"_q);
    account.setServerId(3);
    store->PlayInsertId(12LL);
    EXPECT_TRUE(manager.Add(account));
    ExpectConversation(*store,
                       {Written(InsertRow,
                                {{":domain", "domain"_q},
                                 {":domainId", "domain-id"_q},
                                 {":userName", "user"_q},
                                 Bound{":encryptedPassword"},
                                 {":nameValueProperties", NoProperties()},
                                 {":serverId", 3}})});
    EXPECT_EQ(account.getId(), 12);
    EXPECT_EQ(account.getPassword(), "password"_q);
}

TEST_F(AuthenticationConfigManagerConversation, AddOfANewRecordBindsServerId0)
{
    AuthenticationConfiguration account;
    EXPECT_TRUE(manager.Add(account));
    ExpectConversation(*store,
                       {Written(InsertRow,
                                {{":domain", QString()},
                                 {":domainId", QString()},
                                 {":userName", QString()},
                                 Bound{":encryptedPassword"},
                                 {":nameValueProperties", NoProperties()},
                                 {":serverId", 0}})});
}

TEST_F(AuthenticationConfigManagerConversation, AddOnAFailingStoreAnswersFalseAndLeavesTheRecord)
{
    AuthenticationConfiguration account;
    account.setId(99);
    account.setPassword("password"_q);
    store->FailExec(1);
    EXPECT_FALSE(manager.Add(account));
    EXPECT_EQ(account.getId(), 99);
    EXPECT_EQ(account.getPassword(), "password"_q);
}

TEST_F(AuthenticationConfigManagerConversation, UpdateBindsNullForThePasswordAndTheOtherFieldsAsTheyStand)
{
    AuthenticationConfiguration account = AccountWithProperties();
    store->Forget();
    account.setPassword("password"_q);
    account.setDomainId(QString());
    EXPECT_TRUE(manager.Update(account));
    ExpectConversation(*store,
                       {Written(UpdateRow,
                                {{":id", 7},
                                 {":domain", "domain"_q},
                                 {":domainId", QString()},
                                 {":userName", "user"_q},
                                 Bound{":encryptedPassword"},
                                 {":nameValueProperties", OneProperty("k", "v")},
                                 {":serverId", 3}})});
    EXPECT_EQ(account.getPassword(), "password"_q);
}

TEST_F(AuthenticationConfigManagerConversation, UpdatePasswordNeverReadsTheNewPassword)
{
    for (QString const& password : {QString(), ""_q, "new password"_q}) {
        store->Forget();
        EXPECT_EQ(manager.UpdatePassword("domain"_q, "user"_q, password), 1);
        ExpectConversation(
            *store,
            {Written(ClearPasswords, {{":domain", "domain"_q}, {":userName", "user"_q}, Bound{":encryptedPassword"}})});
    }
}

TEST_F(AuthenticationConfigManagerConversation, UpdatePasswordAnswersHowManyRowsItClearedOrMinusOne)
{
    for (int const rows : {0, 1, 2, 1000}) {
        store->SetRowsAffected(rows);
        EXPECT_EQ(manager.UpdatePassword("domain"_q, "user"_q, "p"_q), rows);
    }
    store->FailAll();
    EXPECT_EQ(manager.UpdatePassword("domain"_q, "user"_q, "p"_q), -1);
}

TEST_F(AuthenticationConfigManagerConversation, RemoveDeletesOneRowAndNothingElse)
{
    EXPECT_TRUE(manager.Remove(7));
    EXPECT_TRUE(manager.Remove(std::numeric_limits<int>::max()));
    ExpectConversation(
        *store, {Written(DeleteRow, {{":id", 7}}), Written(DeleteRow, {{":id", std::numeric_limits<int>::max()}})});
}

TEST_F(AuthenticationConfigManagerConversation, UpdateAndRemoveOnAFailingStoreAnswerFalse)
{
    store->FailAll();
    EXPECT_FALSE(manager.Update(AuthenticationConfiguration()));
    EXPECT_FALSE(manager.Remove(7));
    EXPECT_EQ(store->Executions().size(), 2U);
}

TEST_F(AuthenticationConfigManagerConversation, WritesOfNoRowAnswerTrue)
{
    store->SetRowsAffected(0);
    EXPECT_TRUE(manager.Update(AuthenticationConfiguration()));
    EXPECT_TRUE(manager.Remove(7));
    EXPECT_EQ(store->Executions().at(0).bindings.at(0), (Bound{":id", -1}));
}

TEST_F(AuthenticationConfigManagerConversation, CopyCarriesTheProperties)
{
    AuthenticationConfiguration const account = AccountWithProperties();
    AuthenticationConfiguration const copy(account);
    AuthenticationConfiguration assigned;
    assigned = account;
    EXPECT_EQ(PropertiesOf(copy), OneProperty("k", "v"));
    EXPECT_EQ(PropertiesOf(assigned), OneProperty("k", "v"));
}

TEST_F(AuthenticationConfigManagerConversation, AssignmentReplacesThePropertiesOfTheTarget)
{
    AuthenticationConfiguration account = AccountWithProperties();
    account = AuthenticationConfiguration();
    EXPECT_EQ(PropertiesOf(account), NoProperties());
}

TEST_F(AuthenticationConfigManagerConversation, AssignmentToItselfEmptiesThePropertiesAndKeepsTheRest)
{
    AuthenticationConfiguration account = AccountWithProperties();
    AuthenticationConfiguration const& same = account;
    account = same;
    ExpectStoredRow(account);
    EXPECT_EQ(PropertiesOf(account), NoProperties());
}

} // namespace
} // namespace authentication_config_manager_test
