#pragma once

#include "StoreSuiteFixture.h"

#include <algorithm>
#include <vector>

namespace tandry::storesuite {

/// Queries: prepare, bind, exec, read the rows, and the results of a write.
class QuerySuite : public StoreSuite
{};

// Rows.

TEST_P(QuerySuite, CreateQueryReturnsANewObjectEachTime)
{
    auto const first = factory->CreateQuery();
    auto const second = factory->CreateQuery();
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
}

TEST_P(QuerySuite, NextIsTrueForEachRowAndFalseAfterTheLast)
{
    AddServer(QStringLiteral("a"));
    AddServer(QStringLiteral("b"));
    auto const query = Query(statements::GetServers);
    ASSERT_TRUE(query->exec());
    EXPECT_TRUE(query->next());
    EXPECT_TRUE(query->next());
    EXPECT_FALSE(query->next());
    EXPECT_FALSE(query->next());
}

TEST_P(QuerySuite, IsValidOnlyWhileOnARow)
{
    AddServer(QStringLiteral("a"));
    auto const query = Query(statements::GetServers);
    EXPECT_FALSE(query->isValid());
    ASSERT_TRUE(query->exec());
    EXPECT_FALSE(query->isValid());
    ASSERT_TRUE(query->next());
    EXPECT_TRUE(query->isValid());
    EXPECT_FALSE(query->next());
    EXPECT_FALSE(query->isValid());
}

TEST_P(QuerySuite, ExecWithoutRowsSucceeds)
{
    auto const query = Query(statements::GetServerById, {{QStringLiteral(":id"), 1}});
    EXPECT_TRUE(query->exec());
    EXPECT_FALSE(query->next());
    EXPECT_FALSE(query->isValid());
}

TEST_P(QuerySuite, ValueCountsColumnsFromZeroInTheListsOrder)
{
    int const id = AddServer(QStringLiteral("a"));
    auto const query = Query(statements::GetServers);
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    EXPECT_EQ(query->value(0).toInt(), id);
    EXPECT_EQ(query->value(1).toString(), QStringLiteral("a"));
    EXPECT_EQ(query->value(2).toString(), QStringLiteral("dav"));
    EXPECT_EQ(query->value(3).toString(), QStringLiteral("web"));
    EXPECT_EQ(query->value(4).toString(), QStringLiteral("<NameValueXml/>"));
    EXPECT_EQ(query->value(5).toString(), QStringLiteral("encoder"));
}

TEST_P(QuerySuite, ValueWithoutSuchAColumnOrWithoutARowIsNull)
{
    AddServer(QStringLiteral("a"));
    auto const query = Query(statements::GetServers);
    EXPECT_TRUE(query->value(0).isNull());
    ASSERT_TRUE(query->exec());
    EXPECT_TRUE(query->value(0).isNull());
    ASSERT_TRUE(query->next());
    EXPECT_TRUE(query->value(-1).isNull());
    EXPECT_TRUE(query->value(6).isNull());
    EXPECT_FALSE(query->next());
    EXPECT_TRUE(query->value(0).isNull());
}

TEST_P(QuerySuite, SimultaneousListingsKeepTheirPositions)
{
    AddServer(QStringLiteral("a"));
    AddServer(QStringLiteral("b"));
    auto const first = Query(statements::GetServers);
    auto const second = Query(statements::GetServers);
    ASSERT_TRUE(first->exec());
    ASSERT_TRUE(first->next());
    ASSERT_TRUE(second->exec());
    ASSERT_TRUE(second->next());
    EXPECT_EQ(first->value(0), second->value(0));
    ASSERT_TRUE(first->next());
    EXPECT_NE(first->value(0), second->value(0));
    EXPECT_FALSE(first->next());
    EXPECT_TRUE(second->next());
    EXPECT_FALSE(second->next());
}

TEST_P(QuerySuite, ExecAgainStartsAtTheFirstRow)
{
    AddServer(QStringLiteral("a"));
    AddServer(QStringLiteral("b"));
    auto const query = Query(statements::GetServers);
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    QVariant const first = query->value(0);
    ASSERT_TRUE(query->exec());
    EXPECT_FALSE(query->isValid());
    ASSERT_TRUE(query->next());
    EXPECT_EQ(query->value(0), first);
    EXPECT_TRUE(query->next());
    EXPECT_FALSE(query->next());
}

TEST_P(QuerySuite, UnfinishedListingDoesNotBlockWrites)
{
    AddServer(QStringLiteral("a"));
    AddServer(QStringLiteral("b"));
    {
        auto const listing = Query(statements::GetServers);
        ASSERT_TRUE(listing->exec());
        ASSERT_TRUE(listing->next());
    }
    AddServer(QStringLiteral("c"));
    EXPECT_EQ(DurableAliases(), QStringList({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
}

// Statements that cannot be run.

TEST_P(QuerySuite, StatementWithoutATableFailsAtExec)
{
    auto const query = Query(BadStatement());
    EXPECT_FALSE(query->exec());
    EXPECT_FALSE(query->next());
    EXPECT_FALSE(query->isValid());
}

TEST_P(QuerySuite, InsertWithoutATableFailsAtExec)
{
    EXPECT_FALSE(Exec(statements::AddFile.arg(QString())));
}

TEST_P(QuerySuite, ExecWithoutAStatementFails)
{
    EXPECT_FALSE(factory->CreateQuery()->exec());
}

TEST_P(QuerySuite, QueryWorksAfterAStatementThatFailed)
{
    AddServer(QStringLiteral("a"));
    auto const query = Query(BadStatement());
    EXPECT_FALSE(query->exec());
    static_cast<void>(query->prepare(statements::GetServers));
    ASSERT_TRUE(query->exec());
    EXPECT_TRUE(query->next());
}

TEST_P(QuerySuite, StoreWorksAfterAStatementThatFailed)
{
    EXPECT_FALSE(Exec(BadStatement()));
    AddServer(QStringLiteral("a"));
    EXPECT_EQ(DurableAliases(), QStringList({QStringLiteral("a")}));
}

// Placeholders.

TEST_P(QuerySuite, PlaceholdersAcceptTheirValuesInAnyOrder)
{
    int const id = AddServer(QStringLiteral("a"));
    Bindings bindings = Server(QStringLiteral("changed"));
    std::reverse(bindings.begin(), bindings.end());
    bindings.insert(bindings.begin(), {QStringLiteral(":id"), id}); // the last placeholder of the statement
    ASSERT_TRUE(Exec(statements::UpdateServer, bindings));
    EXPECT_EQ(Aliases(), QStringList({QStringLiteral("changed")}));
    EXPECT_EQ(Value(2, statements::GetServers).toString(), QStringLiteral("dav"));
}

TEST_P(QuerySuite, UnboundPlaceholderIsNull)
{
    Bindings product{{QStringLiteral(":name"), QStringLiteral("name")},
                     {QStringLiteral(":consumerKey"), QStringLiteral("key")},
                     {QStringLiteral(":consumerSecret"), QStringLiteral("secret")},
                     {QStringLiteral(":serverId"), 1},
                     {QStringLiteral(":nameValueProperties"), QString()}};
    int const id = Insert(statements::AddProduct, product);
    product.erase(product.begin() + 2);
    product.emplace_back(QStringLiteral(":id"), id);
    ASSERT_TRUE(Exec(statements::UpdateProduct, product));
    EXPECT_TRUE(Value(3, statements::GetProductById, {{QStringLiteral(":id"), id}}).isNull());
    EXPECT_EQ(Value(2, statements::GetProductById, {{QStringLiteral(":id"), id}}).toString(), QStringLiteral("key"));
}

TEST_P(QuerySuite, PlaceholderDoesNotKeepTheValueOfAnEarlierQuery)
{
    Insert(statements::AddProduct, {{QStringLiteral(":consumerSecret"), QStringLiteral("secret")}});
    int const id = Insert(statements::AddProduct, {});
    EXPECT_TRUE(Value(3, statements::GetProductById, {{QStringLiteral(":id"), id}}).isNull());
}

TEST_P(QuerySuite, PlaceholderLosesItsValueWhenTheQueryIsPreparedAgain)
{
    auto const query = Query(statements::AddProduct, {{QStringLiteral(":consumerSecret"), QStringLiteral("secret")}});
    ASSERT_TRUE(query->exec());
    static_cast<void>(query->prepare(statements::AddProduct));
    ASSERT_TRUE(query->exec());
    int const id = query->lastInsertId().toInt();
    EXPECT_TRUE(Value(3, statements::GetProductById, {{QStringLiteral(":id"), id}}).isNull());
}

TEST_P(QuerySuite, ConditionOnAnUnboundPlaceholderMatchesNoRow)
{
    AddServer(QStringLiteral("a"));
    EXPECT_TRUE(Column(0, statements::GetServerById).empty());
}

TEST_P(QuerySuite, InvalidValueBindsNull)
{
    int const id = Insert(statements::AddProduct,
                          {{QStringLiteral(":consumerSecret"), QVariant()}, {QStringLiteral(":serverId"), QVariant()}});
    EXPECT_TRUE(Value(3, statements::GetProductById, {{QStringLiteral(":id"), id}}).isNull());
    EXPECT_TRUE(Value(4, statements::GetProductById, {{QStringLiteral(":id"), id}}).isNull());
}

TEST_P(QuerySuite, LaterBindReplacesTheEarlierOne)
{
    auto const query = Query(statements::AddServer, Server(QStringLiteral("first")));
    query->bindValue(QStringLiteral(":alias"), QStringLiteral("second"));
    ASSERT_TRUE(query->exec());
    EXPECT_EQ(Aliases(), QStringList({QStringLiteral("second")}));
}

TEST_P(QuerySuite, ExecAgainUsesNewValuesAndKeepsTheOthers)
{
    auto const query = Query(statements::AddServer, Server(QStringLiteral("first")));
    ASSERT_TRUE(query->exec());
    query->bindValue(QStringLiteral(":alias"), QStringLiteral("second"));
    ASSERT_TRUE(query->exec());
    EXPECT_EQ(Aliases(), QStringList({QStringLiteral("first"), QStringLiteral("second")}));
    EXPECT_EQ(Column(5, statements::GetServers), std::vector<QVariant>(2, QVariant(QStringLiteral("encoder"))));
}

TEST_P(QuerySuite, PlaceholdersWithACommonPrefixAreDistinct)
{
    // ":syncStatus" is a prefix of the two others.
    QString const add = statements::AddFile.arg(statements::FileTables[0]);
    Bindings const key{{QStringLiteral(":folderConfigurationId"), 7}};
    for (int status : {1, 2, 3})
        Insert(add, {key.front(), {QStringLiteral(":syncStatus"), status}});
    ASSERT_TRUE(
        Exec(statements::EndSyncing,
             {{QStringLiteral(":syncStatusNotSynced"), 2}, key.front(), {QStringLiteral(":syncStatusSyncing"), 1}}));
    std::vector<int> statuses;
    for (QVariant const& value : Column(8, statements::GetFiles.arg(statements::FileTables[0])))
        statuses.push_back(value.toInt());
    std::sort(statuses.begin(), statuses.end());
    EXPECT_EQ(statuses, (std::vector<int>{2, 2, 3}));
}

TEST_P(QuerySuite, ValueThatLooksLikeAPlaceholderStaysAValue)
{
    for (QString const& text : {QStringLiteral(":davUrl"),
                                QStringLiteral("?"),
                                QStringLiteral("%1"),
                                QStringLiteral("'); DELETE FROM ServerConfiguration; --")}) {
        int const id = AddServer(text);
        EXPECT_EQ(Value(1, statements::GetServerById, {{QStringLiteral(":id"), id}}).toString(), text);
    }
    EXPECT_EQ(Aliases().size(), 4);
}

// Results of a write.

TEST_P(QuerySuite, WriteOfNoRowSucceeds)
{
    Bindings bindings = Server(QStringLiteral("a"));
    bindings.emplace_back(QStringLiteral(":id"), 5);
    EXPECT_TRUE(Exec(statements::UpdateServer, bindings));
    EXPECT_TRUE(Exec(statements::RemoveServer, {{QStringLiteral(":id"), 5}}));
    EXPECT_TRUE(Aliases().isEmpty());
}

TEST_P(QuerySuite, LastInsertIdIsTheIdOfTheQuerysOwnRow)
{
    auto const first = Query(statements::AddServer, Server(QStringLiteral("first")));
    ASSERT_TRUE(first->exec());
    Insert(statements::AddProduct, {});
    int const other = AddServer(QStringLiteral("other"));
    int const id = first->lastInsertId().toInt();
    EXPECT_NE(id, other);
    EXPECT_EQ(Value(1, statements::GetServerById, {{QStringLiteral(":id"), id}}).toString(), QStringLiteral("first"));
}

TEST_P(QuerySuite, IdOfARemovedRowIsNotReused)
{
    // References to removed rows stay, and must not refer to a new row.
    AddServer(QStringLiteral("a"));
    int const removed = AddServer(QStringLiteral("b"));
    ASSERT_TRUE(Exec(statements::RemoveServer, {{QStringLiteral(":id"), removed}}));
    EXPECT_NE(AddServer(QStringLiteral("c")), removed);
}

TEST_P(QuerySuite, QueryOfAnInsertDoesNotBlockOtherWrites)
{
    auto const insert = Query(statements::AddServer, Server(QStringLiteral("a")));
    ASSERT_TRUE(insert->exec());
    int const id = insert->lastInsertId().toInt();
    Bindings bindings = Server(QStringLiteral("changed"));
    bindings.emplace_back(QStringLiteral(":id"), id);
    EXPECT_TRUE(Exec(statements::UpdateServer, bindings));
    EXPECT_EQ(Aliases(), QStringList({QStringLiteral("changed")}));
    EXPECT_EQ(insert->lastInsertId().toInt(), id);
}

TEST_P(QuerySuite, RowsAffectedCountsMatchingRowsEvenIfNoneChanges)
{
    QString const domain = QStringLiteral("domain");
    Bindings const name{{QStringLiteral(":domain"), domain}, {QStringLiteral(":userName"), QStringLiteral("user")}};
    for (int server : {1, 2}) {
        Bindings account = name;
        account.emplace_back(QStringLiteral(":serverId"), server);
        Insert(statements::AddAccount, account); // its password is NULL and stays NULL
    }
    auto const query = Query(statements::ClearPassword, name);
    ASSERT_TRUE(query->exec());
    EXPECT_EQ(query->numRowsAffected(), 2);
}

TEST_P(QuerySuite, RowsAffectedIsZeroWhenNoRowMatches)
{
    Insert(statements::AddAccount, {{QStringLiteral(":domain"), QStringLiteral("domain")}});
    auto const query = Query(
        statements::ClearPassword,
        {{QStringLiteral(":domain"), QStringLiteral("other")}, {QStringLiteral(":userName"), QStringLiteral("user")}});
    ASSERT_TRUE(query->exec());
    EXPECT_EQ(query->numRowsAffected(), 0);
}

} // namespace tandry::storesuite
