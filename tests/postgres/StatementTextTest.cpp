#include "postgres/StatementText.h"
#include "support/QtPrinters.h"
#include "support/StatementList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace statement_text_test {
namespace {

using sync::database::StatementText;

/// The statement as the server gets it; the reason in brackets if the store refuses it.
std::string Rewritten(char const* text)
{
    QString words;
    auto const statement = StatementText::Make(QString::fromUtf8(text), words);
    return statement != nullptr ? statement->serverText().toStdString() : '[' + words.toStdString() + ']';
}

TEST(StatementTexts, PlaceholdersAreNumberedByTheirNames)
{
    QString words;
    auto const statement = StatementText::Make(
        QStringLiteral("UPDATE t SET a = :a, ab = :ab, note = ':a' WHERE a <> :a AND b = :b::text;"), words);
    ASSERT_NE(statement, nullptr) << words.toStdString();
    EXPECT_EQ(statement->serverText(), "UPDATE t SET a = $1, ab = $2, note = ':a' WHERE a <> $1 AND b = $3::text");
    EXPECT_EQ(statement->placeholders(),
              (std::vector<QString>{QStringLiteral(":a"), QStringLiteral(":ab"), QStringLiteral(":b")}));
}

TEST(StatementTexts, PlaceholdersInTextsNamesAndCommentsAreNone)
{
    EXPECT_EQ(Rewritten("SELECT ':a', \":b\" /* :c */ FROM t WHERE x = 'it''s :d' AND y = :e -- :f"),
              "SELECT ':a', \":b\" /* :c */ FROM t WHERE x = 'it''s :d' AND y = $1");
}

TEST(StatementTexts, EmptyListOfNotInMatchesEveryRow)
{
    EXPECT_EQ(Rewritten("SELECT id, name FROM t WHERE rootId NOT IN ()"),
              "SELECT id, name FROM t WHERE TRUE ORDER BY 1");
    EXPECT_EQ(Rewritten("SELECT count(*) FROM t WHERE t.rootId NOT IN ( ) AND b = 1"),
              "SELECT count(*) FROM t WHERE TRUE AND b = 1");
    EXPECT_EQ(Rewritten("DELETE FROM t WHERE rootId IN ()"), "DELETE FROM t WHERE FALSE");
    EXPECT_EQ(Rewritten("DELETE FROM t WHERE rootId NOT IN (3,5)"), "DELETE FROM t WHERE rootId NOT IN (3,5)");
}

TEST(StatementTexts, OrderHasNullFirstAndThenTheId)
{
    EXPECT_EQ(Rewritten("SELECT id, name FROM t ORDER BY name"), "SELECT id, name FROM t ORDER BY name NULLS FIRST, 1");
    EXPECT_EQ(Rewritten("SELECT id, name FROM t ORDER BY Name DESC;"),
              "SELECT id, name FROM t ORDER BY Name DESC NULLS LAST, 1");
    EXPECT_EQ(Rewritten("SELECT name FROM t ORDER BY lower(a, b), c DESC LIMIT 3"),
              "SELECT name FROM t ORDER BY lower(a, b) NULLS FIRST, c DESC NULLS LAST LIMIT 3");
    EXPECT_EQ(Rewritten("SELECT name FROM t ORDER BY a NULLS LAST"), "SELECT name FROM t ORDER BY a NULLS LAST");
}

TEST(StatementTexts, SelectWithoutAnOrderGoesById)
{
    EXPECT_EQ(Rewritten("SELECT id, name FROM t;"), "SELECT id, name FROM t ORDER BY 1");
    EXPECT_EQ(Rewritten("SELECT SC.id, SC.alias FROM s AS SC JOIN a ON a.b = SC.id"),
              "SELECT SC.id, SC.alias FROM s AS SC JOIN a ON a.b = SC.id ORDER BY 1");
    EXPECT_EQ(Rewritten("SELECT count(*) FROM t"), "SELECT count(*) FROM t");
    EXPECT_EQ(Rewritten("SELECT id FROM t LIMIT 1 OFFSET 2"), "SELECT id FROM t ORDER BY 1 LIMIT 1 OFFSET 2");
    EXPECT_EQ(Rewritten("SELECT identity FROM t"), "SELECT identity FROM t");
}

TEST(StatementTexts, DistinctRowsGoByTheirColumns)
{
    EXPECT_EQ(Rewritten("SELECT DISTINCT domain, userName FROM t"),
              "SELECT DISTINCT domain, userName FROM t ORDER BY 1 NULLS FIRST, 2 NULLS FIRST");
    EXPECT_EQ(Rewritten("SELECT DISTINCT domain FROM t LIMIT 1"),
              "SELECT DISTINCT domain FROM t ORDER BY 1 NULLS FIRST LIMIT 1");
}

TEST(StatementTexts, InsertReturnsTheId)
{
    EXPECT_EQ(Rewritten("INSERT INTO t (a) VALUES (:a);"), "INSERT INTO t (a) VALUES ($1) RETURNING id");
}

TEST(StatementTexts, OtherStatementsStayAsTheyAre)
{
    EXPECT_EQ(Rewritten("DELETE FROM t WHERE Id = 3;"), "DELETE FROM t WHERE Id = 3");
    EXPECT_EQ(Rewritten("UPDATE t SET a = 1  WHERE id = 2"), "UPDATE t SET a = 1  WHERE id = 2");
}

TEST(StatementTexts, OnlyOneStatementThatReadsOrWritesRowsIsAccepted)
{
    EXPECT_EQ(Rewritten(""), "[the statement is empty]");
    EXPECT_EQ(Rewritten(" ; "), "[the statement is empty]");
    EXPECT_EQ(Rewritten("SELECT 1; SELECT 2"), "[there is more than one statement in the text]");
    EXPECT_EQ(Rewritten("SELECT ';'"), "SELECT ';'");
    for (char const* other : {"COMMIT",
                              "begin",
                              "ROLLBACK",
                              "SAVEPOINT a",
                              "SET search_path TO x",
                              "DROP TABLE t",
                              "LOCK TABLE t",
                              "COPY t TO STDOUT",
                              "VACUUM"})
        EXPECT_EQ(Rewritten(other), "[only SELECT, INSERT, UPDATE and DELETE are supported]") << other;
    for (char const* both : {"INSERT INTO t (a) VALUES (1) RETURNING a",
                             "DELETE FROM t RETURNING id",
                             "WITH w AS (DELETE FROM t RETURNING id) SELECT id FROM w",
                             "SELECT id INTO u FROM t"})
        EXPECT_EQ(Rewritten(both), "[statements that write and give rows back are not supported]") << both;
}

TEST(StatementTexts, GlobBecomesARegularExpressionOfThePattern)
{
    using testing::AllOf;
    using testing::EndsWith;
    using testing::HasSubstr;
    using testing::StartsWith;
    EXPECT_THAT(
        Rewritten("SELECT a FROM t WHERE a GLOB :p LIMIT 1"),
        AllOf(StartsWith("SELECT a FROM t WHERE a ~ (SELECT "), HasSubstr("CAST( $1 AS text)"), EndsWith(") LIMIT 1")));
    EXPECT_THAT(Rewritten("SELECT a FROM t WHERE a NOT GLOB 'x*'"),
                AllOf(StartsWith("SELECT a FROM t WHERE a !~ (SELECT "), HasSubstr("CAST( 'x*' AS text)")));
    EXPECT_THAT(Rewritten("SELECT id FROM t WHERE a GLOB :p"), EndsWith(" ON TRUE) ORDER BY 1"));
    EXPECT_THAT(Rewritten("SELECT id FROM t WHERE a GLOB :p LIMIT 1"), EndsWith(" ON TRUE) ORDER BY 1 LIMIT 1"));
    EXPECT_THAT(Rewritten("SELECT a FROM t ORDER BY a GLOB 'x*'"), EndsWith(" ON TRUE) NULLS FIRST"));
}

/// Whether the statement may write; a refused one may not.
bool MayWrite(char const* text)
{
    QString words;
    auto const statement = StatementText::Make(QString::fromUtf8(text), words);
    EXPECT_NE(statement, nullptr) << words.toStdString();
    return statement != nullptr && statement->mayWrite();
}

TEST(StatementTexts, SelectThatCallsAFunctionOrLocksMayWrite)
{
    for (char const* reading : {"SELECT id FROM t WHERE a = :a",
                                "SELECT count(*), max (id) FROM t WHERE (a = 1 OR (b)) AND id NOT IN (1, 2)",
                                "SELECT id FROM t WHERE a = 'f(x)' AND b = (SELECT min(b) FROM t)"})
        EXPECT_FALSE(MayWrite(reading)) << reading;
    for (char const* writing : {"INSERT INTO t (a) VALUES (1)",
                                "UPDATE t SET a = 1",
                                "DELETE FROM t",
                                "SELECT nextval('s')",
                                "SELECT other.count(a) FROM t",
                                "SELECT \"f\" (a) FROM t",
                                "SELECT id FROM t FOR SHARE",
                                "WITH w AS (SELECT f(1)) SELECT * FROM w"})
        EXPECT_TRUE(MayWrite(writing)) << writing;
}

TEST(StatementTexts, StatementWithANullCharacterIsRefused)
{
    QString words;
    EXPECT_EQ(StatementText::Make(QStringLiteral("SELECT 1") + QChar(0), words), nullptr);
    EXPECT_FALSE(words.isEmpty());
}

TEST(StatementTexts, EveryStatementOfTheManagersIsAccepted)
{
    for (QString const& text : tandry::test::ListedStatements()) {
        QString words;
        EXPECT_NE(StatementText::Make(text, words), nullptr) << text.toStdString() << ": " << words.toStdString();
    }
}

} // namespace
} // namespace statement_text_test
