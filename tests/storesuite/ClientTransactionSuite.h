#pragma once

#include "StoreSuiteFixture.h"
#include <tandry/database/TransactionalScope.h>

namespace tandry::storesuite {

/// The client transaction. Each object from `CreateDatabase` is used for one call, as in the managers: the transaction
/// belongs to the connection.
class ClientTransactionSuite : public StoreSuite
{
protected:
    bool Begin() { return factory->CreateDatabase()->transaction(); }
    bool Commit() { return factory->CreateDatabase()->commit(); }
    bool Rollback() { return factory->CreateDatabase()->rollback(); }

    static QStringList Letters(char const* letters) { return QString::fromUtf8(letters).split(QLatin1Char(' ')); }

    void Add(char const* alias) { AddServer(QString::fromUtf8(alias)); }
};

TEST_P(ClientTransactionSuite, CreateDatabaseNeverReturnsNull)
{
    ASSERT_NE(factory->CreateDatabase(), nullptr);
    EXPECT_TRUE(factory->CreateDatabase()->isOpen());
}

TEST_P(ClientTransactionSuite, CommitMakesTheWritesDurable)
{
    ASSERT_TRUE(Begin());
    Add("a");
    Add("b");
    EXPECT_TRUE(Commit());
    EXPECT_EQ(AliasesElsewhere(), Letters("a b"));
    EXPECT_EQ(DurableAliases(), Letters("a b"));
}

TEST_P(ClientTransactionSuite, RollbackUndoesTheWrites)
{
    Add("a");
    ASSERT_TRUE(Begin());
    Add("b");
    EXPECT_TRUE(Rollback());
    EXPECT_EQ(Aliases(), Letters("a"));
    EXPECT_EQ(DurableAliases(), Letters("a"));
}

TEST_P(ClientTransactionSuite, WritesAreNotVisibleElsewhereBeforeTheCommit)
{
    ASSERT_TRUE(Begin());
    Add("a");
    EXPECT_EQ(Aliases(), Letters("a"));
    EXPECT_TRUE(AliasesElsewhere().value_or(QStringList()).isEmpty());
    EXPECT_TRUE(Commit());
}

TEST_P(ClientTransactionSuite, OneObjectSupportsAllThreeOperations)
{
    auto const database = factory->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    Add("a");
    EXPECT_TRUE(database->rollback());
    ASSERT_TRUE(database->transaction());
    Add("b");
    EXPECT_TRUE(database->commit());
    EXPECT_EQ(DurableAliases(), Letters("b"));
}

TEST_P(ClientTransactionSuite, SecondTransactionIsRefusedAndTheFirstContinues)
{
    ASSERT_TRUE(Begin());
    Add("a");
    EXPECT_FALSE(Begin());
    Add("b");
    EXPECT_TRUE(Commit());
    EXPECT_EQ(DurableAliases(), Letters("a b"));
}

TEST_P(ClientTransactionSuite, CommitAndRollbackWithoutATransactionAreRefused)
{
    EXPECT_FALSE(Commit());
    EXPECT_FALSE(Rollback());
    ASSERT_TRUE(Begin());
    EXPECT_TRUE(Commit());
    EXPECT_FALSE(Commit());
    EXPECT_FALSE(Rollback());
}

TEST_P(ClientTransactionSuite, TransactionInsideAnOpenScopeIsRefused)
{
    {
        sync::database::TransactionalScope const scope;
        EXPECT_FALSE(Begin());
        Add("a");
        EXPECT_FALSE(Begin());
        EXPECT_FALSE(Rollback());
    }
    EXPECT_EQ(DurableAliases(), Letters("a"));
}

TEST_P(ClientTransactionSuite, ScopeInsideATransactionCommitsNothing)
{
    ASSERT_TRUE(Begin());
    {
        sync::database::TransactionalScope const scope;
        Add("a");
    }
    EXPECT_TRUE(AliasesElsewhere().value_or(QStringList()).isEmpty());
    EXPECT_TRUE(Rollback());
    EXPECT_TRUE(DurableAliases().isEmpty());
}

TEST_P(ClientTransactionSuite, CommittedScopeInsideATransactionSucceedsAndCommitsNothing)
{
    ASSERT_TRUE(Begin());
    {
        sync::database::TransactionalScope scope;
        Add("a");
        EXPECT_TRUE(scope.commit());
        Add("b");
    }
    EXPECT_TRUE(Rollback());
    EXPECT_TRUE(DurableAliases().isEmpty());
}

TEST_P(ClientTransactionSuite, FailedStatementUndoesNothingElseInTheTransaction)
{
    ASSERT_TRUE(Begin());
    Add("a");
    EXPECT_FALSE(Exec(BadStatement()));
    Add("b");
    EXPECT_TRUE(Commit());
    EXPECT_EQ(DurableAliases(), Letters("a b"));
}

TEST_P(ClientTransactionSuite, TransactionsFollowOneAnotherIndependently)
{
    ASSERT_TRUE(Begin());
    Add("a");
    EXPECT_TRUE(Commit());
    ASSERT_TRUE(Begin());
    Add("b");
    EXPECT_TRUE(Rollback());
    ASSERT_TRUE(Begin());
    Add("c");
    EXPECT_TRUE(Commit());
    EXPECT_EQ(DurableAliases(), Letters("a c"));
}

TEST_P(ClientTransactionSuite, ScopeAfterATransactionIsIndependent)
{
    ASSERT_TRUE(Begin());
    Add("a");
    EXPECT_TRUE(Rollback());
    {
        sync::database::TransactionalScope const scope;
        Add("b");
    }
    EXPECT_EQ(AliasesElsewhere(), Letters("b"));
}

TEST_P(ClientTransactionSuite, OpenTransactionIsRolledBackWhenTheFactoryIsDestroyed)
{
    Add("a");
    ASSERT_TRUE(Begin());
    Add("b");
    EXPECT_EQ(DurableAliases(), Letters("a"));
}

TEST_P(ClientTransactionSuite, ReadsInATransactionSeeItsWrites)
{
    Add("a");
    ASSERT_TRUE(Begin());
    EXPECT_TRUE(Exec(statements::RemoveServer, {{QStringLiteral(":id"), Value(0, statements::GetServers)}}));
    Add("b");
    EXPECT_EQ(Aliases(), Letters("b"));
    EXPECT_TRUE(Rollback());
    EXPECT_EQ(Aliases(), Letters("a"));
}

} // namespace tandry::storesuite
