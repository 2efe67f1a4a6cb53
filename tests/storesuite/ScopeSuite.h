#pragma once

#include "StoreSuiteFixture.h"
#include <tandry/database/TransactionalScope.h>

#include <stdexcept>

namespace tandry::storesuite {

using sync::database::TransactionalScope;

/// The scopes that operations open around their writes. A store joins them with `TransactionalScope::Join`, or makes
/// every statement durable immediately.
class ScopeSuite : public StoreSuite
{
protected:
    ~ScopeSuite() override { EXPECT_EQ(TransactionalScope::Depth(), 0); }

    static QStringList Letters(char const* letters) { return QString::fromUtf8(letters).split(QLatin1Char(' ')); }

    void Add(char const* alias) { AddServer(QString::fromUtf8(alias)); }

    /// Another program may see no writes or all of them, but not a part.
    void ExpectNoneOrAllElsewhere(QStringList const& all)
    {
        QStringList const seen = AliasesElsewhere().value_or(QStringList());
        EXPECT_TRUE(seen.isEmpty() || seen == all) << seen.join(QLatin1Char(' ')).toStdString();
    }
};

TEST_P(ScopeSuite, WriteOutsideAnyScopeIsDurableAtOnce)
{
    Add("a");
    EXPECT_EQ(AliasesElsewhere(), Letters("a"));
    EXPECT_EQ(DurableAliases(), Letters("a"));
}

TEST_P(ScopeSuite, EndWithoutCommitKeepsTheWrites)
{
    {
        TransactionalScope const scope;
        Add("a");
        Add("b");
    }
    EXPECT_EQ(AliasesElsewhere(), Letters("a b"));
    EXPECT_EQ(DurableAliases(), Letters("a b"));
}

TEST_P(ScopeSuite, ReadsInAScopeSeeItsWrites)
{
    TransactionalScope const scope;
    EXPECT_TRUE(Aliases().isEmpty());
    Add("a");
    EXPECT_EQ(Aliases(), Letters("a"));
}

TEST_P(ScopeSuite, ScopeWithoutAWriteSucceeds)
{
    {
        TransactionalScope const scope;
    }
    {
        TransactionalScope scope;
        EXPECT_TRUE(Aliases().isEmpty());
        EXPECT_TRUE(scope.commit());
    }
    Add("a");
    EXPECT_EQ(DurableAliases(), Letters("a"));
}

TEST_P(ScopeSuite, ScopeAroundAReadDoesNotBlockWriters)
{
    Add("a");
    TransactionalScope const scope;
    EXPECT_EQ(Aliases(), Letters("a"));
    auto const other = store->Open();
    ASSERT_NE(other, nullptr);
    EXPECT_TRUE(Query(*other, statements::AddServer, Server(QStringLiteral("b")))->exec());
}

TEST_P(ScopeSuite, InnerEndDoesNotEndTheOuterTransaction)
{
    {
        TransactionalScope const outer;
        Add("a");
        {
            TransactionalScope const inner;
            Add("b");
        }
        Add("c");
        ExpectNoneOrAllElsewhere(Letters("a b c"));
    }
    EXPECT_EQ(DurableAliases(), Letters("a b c"));
}

TEST_P(ScopeSuite, InnerCommitSucceedsAndDoesNotEndTheOuterTransaction)
{
    {
        TransactionalScope const outer;
        Add("a");
        {
            TransactionalScope inner;
            Add("b");
            EXPECT_TRUE(inner.commit());
        }
        Add("c");
        ExpectNoneOrAllElsewhere(Letters("a b c"));
    }
    EXPECT_EQ(DurableAliases(), Letters("a b c"));
}

TEST_P(ScopeSuite, FailedStatementUndoesNothingBeforeIt)
{
    {
        TransactionalScope const scope;
        Add("a");
        EXPECT_FALSE(Exec(BadStatement()));
        EXPECT_FALSE(Exec(statements::AddFile.arg(QString())));
        Add("b");
    }
    EXPECT_EQ(DurableAliases(), Letters("a b"));
}

TEST_P(ScopeSuite, FailedStatementInAnInnerScopeUndoesNothingInTheOuterOne)
{
    {
        TransactionalScope const outer;
        Add("a");
        {
            TransactionalScope const inner;
            EXPECT_FALSE(Exec(BadStatement()));
        }
        Add("b");
    }
    EXPECT_EQ(DurableAliases(), Letters("a b"));
}

TEST_P(ScopeSuite, CommitMakesEarlierWritesDurableAndLaterOnesStartAgain)
{
    {
        TransactionalScope scope;
        Add("a");
        EXPECT_TRUE(scope.commit());
        EXPECT_EQ(AliasesElsewhere(), Letters("a"));
        Add("b");
    }
    EXPECT_EQ(AliasesElsewhere(), Letters("a b"));
    EXPECT_EQ(DurableAliases(), Letters("a b"));
}

TEST_P(ScopeSuite, CommitAfterAFailedStatementKeepsEarlierWrites)
{
    {
        TransactionalScope scope;
        Add("a");
        EXPECT_FALSE(Exec(BadStatement()));
        EXPECT_TRUE(scope.commit());
    }
    EXPECT_EQ(DurableAliases(), Letters("a"));
}

TEST_P(ScopeSuite, ExceptionKeepsTheWrites)
{
    try {
        TransactionalScope const scope;
        Add("a");
        throw std::runtime_error("passes");
    }
    catch (std::runtime_error const&) {
    }
    EXPECT_EQ(DurableAliases(), Letters("a"));
}

TEST_P(ScopeSuite, DeeplyNestedScopesKeepTheWrites)
{
    {
        std::vector<std::unique_ptr<TransactionalScope>> scopes;
        for (int depth = 0; depth < 50; ++depth)
            scopes.push_back(std::make_unique<TransactionalScope>());
        Add("a");
        while (!scopes.empty())
            scopes.pop_back(); // innermost first
    }
    EXPECT_EQ(DurableAliases(), Letters("a"));
}

TEST_P(ScopeSuite, ConsecutiveScopesKeepTheirWrites)
{
    for (char const* alias : {"a", "b", "c"}) {
        TransactionalScope const scope;
        Add(alias);
    }
    EXPECT_EQ(DurableAliases(), Letters("a b c"));
}

TEST_P(ScopeSuite, EveryStoreThatWroteInAScopeKeepsItsWrites)
{
    auto const otherStore = GetParam().make();
    ASSERT_NE(otherStore, nullptr);
    auto other = otherStore->Open();
    ASSERT_NE(other, nullptr);
    {
        TransactionalScope const scope;
        Add("a");
        EXPECT_TRUE(Query(*other, statements::AddServer, Server(QStringLiteral("b")))->exec());
        Add("c");
    }
    EXPECT_EQ(DurableAliases(), Letters("a c"));
    other.reset();
    other = otherStore->Open();
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(AliasesIn(*other), Letters("b"));
}

TEST_P(ScopeSuite, DestroyedStoreLeavesTheScopesOfItsThread)
{
    {
        TransactionalScope const scope;
        Add("a");
        factory.reset();
    }
    {
        TransactionalScope scope; // must not call the destroyed store
        EXPECT_TRUE(scope.commit());
    }
    EXPECT_EQ(DurableAliases(), Letters("a"));
}

} // namespace tandry::storesuite
