#include "config/AuthenticationConfigManager.h"

#include "support/Conversation.h"
#include "support/StoreFixture.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace tandry::test;
using sync::config::AuthenticationConfigManager;
using sync::config::AuthenticationConfiguration;

class AccountsInAStore : public StoreFixture
{
protected:
    static AuthenticationConfiguration Account(QString const& domain, QString const& userName, int serverId = 3)
    {
        AuthenticationConfiguration account;
        account.setDomain(domain);
        account.setDomainId("id of "_q + domain);
        account.setUserName(userName);
        account.setPassword("password"_q);
        account.setServerId(serverId);
        return account;
    }

    AuthenticationConfiguration Added(QString const& domain, QString const& userName, int serverId = 3)
    {
        AuthenticationConfiguration account = Account(domain, userName, serverId);
        EXPECT_TRUE(Manager().Add(account));
        return account;
    }

    QVariant PasswordColumn(int id) const
    {
        return Raw().Value(
            QStringLiteral("SELECT encryptedPassword FROM AuthenticationConfiguration WHERE id = %1").arg(id));
    }

    AuthenticationConfigManager Manager() { return AuthenticationConfigManager(store); }
    RawStore Raw() const { return RawStore(StorePath()); }
};

TEST_F(AccountsInAStore, AddStoresAllButThePasswordAndLeavesItInTheRecord)
{
    AuthenticationConfiguration const account = Added("domain"_q, "user"_q, 7);
    EXPECT_EQ(account.getPassword(), "password"_q);
    EXPECT_GT(account.getId(), 0);
    ReopenStore();
    AuthenticationConfiguration const read = Manager().GetAuthenticationConfigurationById(account.getId());
    EXPECT_EQ(read.getId(), account.getId());
    EXPECT_EQ(read.getDomain(), "domain"_q);
    EXPECT_EQ(read.getDomainId(), "id of domain"_q);
    EXPECT_EQ(read.getUserName(), "user"_q);
    EXPECT_EQ(read.getServerId(), 7);
    EXPECT_TRUE(read.getPassword().isNull());
    EXPECT_FALSE(PasswordColumn(account.getId()).isValid());
}

TEST_F(AccountsInAStore, StoredPasswordIsNeverRead)
{
    int const id = Added("domain"_q, "user"_q).getId();
    Raw().Run("UPDATE AuthenticationConfiguration SET encryptedPassword = 'stored'"_q);
    EXPECT_TRUE(Manager().GetAuthenticationConfigurationById(id).getPassword().isNull());
    EXPECT_TRUE(Manager().GetAuthenticationConfigurationByDomainAndUser("domain"_q, "user"_q).getPassword().isNull());
    EXPECT_TRUE(Manager().GetAll().at(0).getPassword().isNull());
    EXPECT_TRUE(Manager().GetDistinctAuthenticationConfigurations().at(0).getPassword().isNull());
}

TEST_F(AccountsInAStore, UpdateClearsAStoredPasswordEvenIfTheRecordHasOne)
{
    AuthenticationConfiguration account = Added("domain"_q, "user"_q);
    Raw().Run("UPDATE AuthenticationConfiguration SET encryptedPassword = 'stored'"_q);
    account.setPassword("new"_q);
    account.setDomainId("new id"_q);
    EXPECT_TRUE(Manager().Update(account));
    EXPECT_FALSE(PasswordColumn(account.getId()).isValid());
    EXPECT_EQ(Manager().GetAuthenticationConfigurationById(account.getId()).getDomainId(), "new id"_q);
}

TEST_F(AccountsInAStore, UpdatePasswordClearsTheSameRowsWhateverTheNewPassword)
{
    Added("domain"_q, "user"_q);
    Added("domain"_q, "other"_q);
    for (QString const& password : {QString(), ""_q, "new"_q}) {
        Raw().Run("UPDATE AuthenticationConfiguration SET encryptedPassword = 'stored'"_q);
        EXPECT_EQ(Manager().UpdatePassword("domain"_q, "user"_q, password), 1);
        auto const rows = Raw().Rows("SELECT encryptedPassword FROM AuthenticationConfiguration ORDER BY id"_q);
        EXPECT_FALSE(rows.at(0).at(0).isValid());
        EXPECT_EQ(rows.at(1).at(0), QVariant("stored"_q));
    }
}

TEST_F(AccountsInAStore, UpdatePasswordOfAPairOnTwoServersClearsBothAndAnswers2)
{
    int const first = Added("domain"_q, "user"_q, 1).getId();
    int const second = Added("domain"_q, "user"_q, 2).getId();
    Raw().Run("UPDATE AuthenticationConfiguration SET encryptedPassword = 'stored'"_q);
    EXPECT_EQ(Manager().UpdatePassword("domain"_q, "user"_q, "new"_q), 2);
    EXPECT_FALSE(PasswordColumn(first).isValid());
    EXPECT_FALSE(PasswordColumn(second).isValid());
}

TEST_F(AccountsInAStore, UpdatePasswordOfAnUnknownPairAnswers0)
{
    Added("domain"_q, "user"_q);
    EXPECT_EQ(Manager().UpdatePassword("domain"_q, "nobody"_q, "new"_q), 0);
    EXPECT_EQ(Manager().UpdatePassword("nowhere"_q, "user"_q, "new"_q), 0);
}

TEST_F(AccountsInAStore, UpdatePasswordOnAFailingStoreAnswersMinusOne)
{
    Raw().Run("ALTER TABLE AuthenticationConfiguration RENAME TO Elsewhere"_q);
    EXPECT_EQ(Manager().UpdatePassword("domain"_q, "user"_q, "new"_q), -1);
    EXPECT_TRUE(store->LastError());
    store->ClearError();
}

TEST_F(AccountsInAStore, GetDistinctNamesAPairInSeveralRowsOnce)
{
    Added("domain"_q, "user"_q, 1);
    Added("domain"_q, "user"_q, 2);
    Added("domain"_q, "other"_q, 1);
    QVector<AuthenticationConfiguration> const accounts = Manager().GetDistinctAuthenticationConfigurations();
    ASSERT_EQ(accounts.size(), 2);
    QStringList names;
    for (AuthenticationConfiguration const& account : accounts) {
        EXPECT_EQ(account.getId(), -1);
        EXPECT_EQ(account.getServerId(), 0);
        EXPECT_TRUE(account.getDomainId().isNull());
        names.append(account.getDomain() + "/"_q + account.getUserName());
    }
    names.sort();
    EXPECT_EQ(names, (QStringList{"domain/other"_q, "domain/user"_q}));
}

TEST_F(AccountsInAStore, DomainAndUserFindTheFirstRowWhicheverItsServer)
{
    int const first = Added("domain"_q, "user"_q, 1).getId();
    Added("domain"_q, "user"_q, 2);
    EXPECT_EQ(Manager().GetAuthenticationConfigurationByDomainAndUser("domain"_q, "user"_q).getId(), first);
}

TEST_F(AccountsInAStore, DomainAndUserInAnotherCaseOrWithBlanksFindNothing)
{
    Added("domain"_q, "user"_q);
    EXPECT_EQ(Manager().GetAuthenticationConfigurationByDomainAndUser("domain"_q, "User"_q).getId(), -1);
    EXPECT_EQ(Manager().GetAuthenticationConfigurationByDomainAndUser("Domain"_q, "user"_q).getId(), -1);
    EXPECT_EQ(Manager().GetAuthenticationConfigurationByDomainAndUser("domain"_q, "user "_q).getId(), -1);
}

TEST_F(AccountsInAStore, WritesOfAMissingRowAnswerTrueAndChangeNothing)
{
    Added("domain"_q, "user"_q);
    auto const before = Raw().Rows("SELECT * FROM AuthenticationConfiguration"_q);
    for (int const id : {-1, 0, 999, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        AuthenticationConfiguration account = Account("x"_q, "y"_q);
        account.setId(id);
        EXPECT_TRUE(Manager().Update(account));
        EXPECT_TRUE(Manager().Remove(id));
    }
    EXPECT_EQ(Raw().Rows("SELECT * FROM AuthenticationConfiguration"_q), before);
}

TEST_F(AccountsInAStore, UpdateOfANewRecordWithTheIdOfARowReplacesItsProperties)
{
    int const id = Added("domain"_q, "user"_q).getId();
    Raw().Run("UPDATE AuthenticationConfiguration SET nameValueProperties = '"_q + OneProperty("k", "v") + "'"_q);
    QString const stored = "SELECT nameValueProperties FROM AuthenticationConfiguration"_q;
    EXPECT_TRUE(Manager().Update(Manager().GetAuthenticationConfigurationById(id)));
    EXPECT_EQ(Raw().Value(stored), QVariant(OneProperty("k", "v")));

    AuthenticationConfiguration account;
    account.setId(id);
    EXPECT_TRUE(Manager().Update(account));
    EXPECT_EQ(Raw().Value(stored), QVariant(NoProperties()));
}

TEST_F(AccountsInAStore, RemoveLeavesFoldersThatNameTheAccount)
{
    int const id = Added("domain"_q, "user"_q).getId();
    Raw().Run(QStringLiteral("INSERT INTO FolderConfiguration (id, authenticationId) VALUES (40, %1)").arg(id));
    EXPECT_TRUE(Manager().Remove(id));
    EXPECT_EQ(Manager().GetAuthenticationConfigurationById(id).getId(), -1);
    EXPECT_EQ(Raw().Value("SELECT authenticationId FROM FolderConfiguration"_q).toInt(), id);
}

TEST_F(AccountsInAStore, IdOfARemovedAccountIsNotGivenAgain)
{
    int const id = Added("domain"_q, "user"_q).getId();
    EXPECT_TRUE(Manager().Remove(id));
    EXPECT_GT(Added("domain"_q, "user"_q).getId(), id);
}

TEST_F(AccountsInAStore, NullColumnsReadAsZeroAndEmptyTexts)
{
    Raw().Run("INSERT INTO AuthenticationConfiguration (id) VALUES (7)"_q);
    AuthenticationConfiguration const account = Manager().GetAuthenticationConfigurationById(7);
    EXPECT_EQ(account.getId(), 7);
    EXPECT_EQ(account.getServerId(), 0);
    EXPECT_TRUE(account.getDomain().isEmpty());
    EXPECT_TRUE(account.getDomainId().isEmpty());
    EXPECT_TRUE(account.getUserName().isEmpty());
}

TEST_F(AccountsInAStore, ExtremeServerIdsComeBack)
{
    for (int const serverId : {-1, 0, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        int const id = Added("domain"_q, "user"_q, serverId).getId();
        EXPECT_EQ(Manager().GetAuthenticationConfigurationById(id).getServerId(), serverId);
    }
}

} // namespace
