#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <QStringList>

namespace {

using namespace tandry::test;

/// SQLite lists the prepared statements of a connection in a table of its own.
class StatementCache : public StoreFixture
{
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        if (!Execute(*store, "SELECT sql FROM sqlite_stmt"_q)) {
            store->ClearError();
            GTEST_SKIP() << "this SQLite does not list its statements";
        }
    }

    int Statements() { return Single(*store, "SELECT count(*) FROM sqlite_stmt"_q).toInt(); }
    int Statements(QString const& text)
    {
        return Single(*store, "SELECT count(*) FROM sqlite_stmt WHERE sql = :sql"_q, {{":sql", text}}).toInt();
    }
    /// Without the one that asks.
    int Running() { return Single(*store, "SELECT count(*) FROM sqlite_stmt WHERE busy"_q).toInt() - 1; }

    QString const select = "SELECT alias FROM ServerConfiguration ORDER BY id"_q;
};

TEST_F(StatementCache, StatementStaysPreparedWhenItsQueryGoes)
{
    EXPECT_EQ(Statements(select), 0);
    for (int time = 0; time < 3; ++time) {
        Execute(*store, select);
        EXPECT_EQ(Statements(select), 1);
    }
    QString const equal = select.left(10) + select.mid(10);
    Execute(*store, equal);
    EXPECT_EQ(Statements(select), 1) << "another text with the same characters";
}

TEST_F(StatementCache, SecondUserOfATextGetsAStatementThatGoesWithIt)
{
    auto first = Prepared(*store, select);
    auto second = Prepared(*store, select);
    EXPECT_EQ(Statements(select), 2);
    first.reset();
    EXPECT_EQ(Statements(select), 2);
    second.reset();
    EXPECT_EQ(Statements(select), 1);
}

TEST_F(StatementCache, TextsWithoutEndDontFillTheMemory)
{
    for (int number = 0; number < 2000; ++number)
        ASSERT_TRUE(Execute(*store, "SELECT id FROM FolderConfiguration WHERE rootId NOT IN (%1)"_q.arg(number)));
    EXPECT_LT(Statements(), 250);

    Execute(*store, select);
    for (int number = 0; number < 100; ++number)
        Execute(*store, "SELECT %1"_q.arg(number));
    EXPECT_EQ(Statements(select), 1) << "what was used lately stays";
}

TEST_F(StatementCache, LongListsOfIdsAreNotKept)
{
    QStringList ids;
    for (int id = 0; id < 5000; ++id)
        ids.append(QString::number(id));
    QString const statement =
        "SELECT id FROM FolderConfiguration WHERE rootId NOT IN (%1)"_q.arg(ids.join(QLatin1Char(',')));
    ASSERT_TRUE(Execute(*store, statement));
    EXPECT_EQ(Statements(statement), 0);
}

TEST_F(StatementCache, TextInSomebodyElsesMemoryMayChangeAfterwards)
{
    QString memory = "SELECT 1"_q;
    QString const text = QString::fromRawData(memory.constData(), memory.size());
    EXPECT_EQ(Single(*store, text).toInt(), 1);
    memory.data()[7] = QLatin1Char('2');
    QString const changed = QString::fromRawData(memory.constData(), memory.size());
    EXPECT_EQ(Single(*store, changed).toInt(), 2);
    EXPECT_EQ(Single(*store, "SELECT 1"_q).toInt(), 1);
}

TEST_F(StatementCache, BeginningOfAKeptTextIsAnotherText)
{
    QString const text = "SELECT 12"_q;
    EXPECT_EQ(Single(*store, text).toInt(), 12);
    EXPECT_EQ(Single(*store, QString::fromRawData(text.constData(), text.size() - 1)).toInt(), 1);
    EXPECT_EQ(Single(*store, text).toInt(), 12);
}

TEST_F(StatementCache, NoStatementRunsAfterItsLastRowItsFailureOrItsQuery)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ASSERT_TRUE(AddServer(*store, "b"_q));
    auto query = Prepared(*store, select);
    ASSERT_TRUE(query->exec());
    EXPECT_EQ(Running(), 1);
    while (query->next())
        EXPECT_EQ(Running(), 1);
    EXPECT_EQ(Running(), 0);

    ASSERT_TRUE(query->exec());
    query->finish();
    EXPECT_EQ(Running(), 0);

    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    query.reset();
    EXPECT_EQ(Running(), 0);

    EXPECT_FALSE(Execute(*store, "INSERT INTO ServerConfiguration (id) VALUES (1)"_q));
    EXPECT_FALSE(Execute(*store, "SELECT abs(-9223372036854775807 - 1)"_q));
    EXPECT_EQ(Running(), 0);
    store->ClearError();

    ASSERT_TRUE(Execute(*store, "SELECT 1 WHERE 0"_q));
    EXPECT_EQ(Running(), 0);
}

} // namespace
