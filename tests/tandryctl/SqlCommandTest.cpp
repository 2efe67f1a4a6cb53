#include "Screen.h"
#include "ToolFixture.h"

#include "support/FolderContents.h"
#include "support/RawStore.h"
#include "tools/tandryctl/Text.h"

using namespace tandryctl::test;
using tandry::test::RawStore;
using tandryctl::DisplayWidth;

namespace {

class SqlCommandTest : public ToolTest
{
protected:
    void SetUp() override { Init(); }

    /// Returns the only line of the printed array: the object of one row.
    QString JsonRow(char const* statement)
    {
        QString const out = RunSuccessfully({"sql"_q, "--json"_q, QString::fromUtf8(statement)});
        EXPECT_TRUE(out.startsWith("[\n"_q) && out.endsWith("\n]\n"_q)) << out.toStdString();
        return out.mid(2, out.size() - 5);
    }

    QString Csv(char const* statement) { return RunSuccessfully({"sql"_q, "--csv"_q, QString::fromUtf8(statement)}); }

    void AddServers(char const* values)
    {
        RawStore(StorePath()).Run("INSERT INTO ServerConfiguration (alias, davUrl) VALUES "_q + QLatin1String(values));
    }
};

} // namespace

TEST_F(SqlCommandTest, RowsArePrintedAsATableWithAlignedColumns)
{
    AddServers("('a', 'https://one'), ('longer', NULL)");
    EXPECT_EQ(RunSuccessfully({"sql"_q, "SELECT id, alias, davUrl FROM ServerConfiguration ORDER BY id"_q}),
              "id  alias   davUrl\n"
              " 1  a       https://one\n"
              " 2  longer\n"_q);
    EXPECT_EQ(RunSuccessfully({"sql"_q, "SELECT 'a' || char(10, 27) AS \"t\tt\", x'00ff' AS b, 1.0 AS r"_q}),
              "t\\tt     b          r\n"
              "a\\n\\x1b  x'00ff'  1.0\n"_q);
    EXPECT_EQ(RunSuccessfully({"sql"_q, "SELECT id FROM ServerConfiguration WHERE id = 7"_q}), QString());
}

TEST_F(SqlCommandTest, TableGoesOnWhenALaterValueIsWider)
{
    QString const out = RunSuccessfully({"sql"_q,
                                         "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 999)"
                                         " SELECT CASE i WHEN 999 THEN 'a longer text' ELSE 'x' END AS t, i FROM n"_q});
    QStringList const lines = out.split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 1001);
    EXPECT_EQ(lines.at(0), "t    i"_q);
    EXPECT_EQ(lines.at(500), "x  500"_q);
    EXPECT_EQ(lines.at(999), "a longer text  999"_q);
}

TEST_F(SqlCommandTest, TableFitsTheTerminalAndShortensLaterTextsToo)
{
    QString const statement = "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 400)"
                              " SELECT '/begin/' || printf('%.*c', i, 'x') || '/end' AS path,"
                              " 1000000000000 + i AS number FROM n"_q;
    RunResult const ran = RunOnScreen({"--store"_q, StorePath(), "sql"_q, statement}, {40, {"NO_COLOR=1"_q}});
    EXPECT_EQ(ran.status, 0) << ran.out.toStdString();
    QStringList lines = ran.out.split("\r\n"_q);
    EXPECT_EQ(lines.takeLast(), QString());
    ASSERT_EQ(lines.size(), 401);
    EXPECT_EQ(lines.at(0).simplified(), "path number"_q);
    for (QString const& line : qAsConst(lines))
        EXPECT_EQ(DisplayWidth(line), 40) << line.toStdString();
    EXPECT_EQ(lines.at(1).left(25).trimmed(), "/begin/x/end"_q);
    for (int row : {200, 400}) {
        EXPECT_TRUE(lines.at(row).startsWith("/begin/xxxxx…xxxxxxxx/end"_q)) << lines.at(row).toStdString();
        EXPECT_TRUE(lines.at(row).endsWith(QString::number(1'000'000'000'000 + row))) << lines.at(row).toStdString();
    }
}

TEST_F(SqlCommandTest, WidthAndColoursAreThoseOfListings)
{
    QString const statement = "SELECT 'abcdefghijklmnopqrstuvwxyz' AS letters, 1 AS number"_q;
    EXPECT_EQ(RunSuccessfully({"sql"_q, statement, "--width"_q, "20"_q}),
              "letters       number\n"
              "abcde…uvwxyz       1\n"_q);
    EXPECT_EQ(RunSuccessfully({"sql"_q, "SELECT 'a' AS letter"_q, "--color"_q, "always"_q}),
              "\x1b[1mletter\x1b[0m\na\n"_q);
}

TEST_F(SqlCommandTest, MissingNumbersKeepTheOthersAligned)
{
    EXPECT_EQ(RunSuccessfully({"sql"_q, "SELECT column1 AS n FROM (VALUES (10), (NULL), (5))"_q}), " n\n10\n\n 5\n"_q);
}

TEST_F(SqlCommandTest, JsonKeepsEveryValueAsItIsStored)
{
    EXPECT_EQ(JsonRow("SELECT 9223372036854775807 AS a, -9223372036854775808 AS b, NULL AS c, '' AS d"),
              R"({"a":9223372036854775807,"b":-9223372036854775808,"c":null,"d":""})"_q);
    EXPECT_EQ(JsonRow("SELECT 1.0 AS a, 0.1 AS b, 1e300 AS c, -1.5e-300 AS d, 123456789.123456789 AS e"),
              R"({"a":1.0,"b":0.1,"c":1e+300,"d":-1.5e-300,"e":123456789.12345679})"_q);
    EXPECT_EQ(JsonRow("SELECT 9e999 AS a, -9e999 AS b"), R"({"a":{"real":"Infinity"},"b":{"real":"-Infinity"}})"_q);
    EXPECT_EQ(JsonRow("SELECT x'00ff' AS a, x'' AS b"), R"({"a":{"blob":"00ff"},"b":{"blob":""}})"_q);
    EXPECT_EQ(JsonRow("SELECT CAST(x'61ff' AS TEXT) AS invalid, CAST(x'eda080' AS TEXT) AS surrogate"),
              R"({"invalid":{"text":"61ff"},"surrogate":{"text":"eda080"}})"_q);
}

TEST_F(SqlCommandTest, JsonKeepsOddTexts)
{
    for (QString const& text : {QString(QChar::Null) + "a"_q,
                                "\"\\/\b\f\n\r\t\x7f"_q,
                                QString::fromUtf8("\u00e4\U0001F600\u2028\uffff\u0001")}) {
        QByteArray const hex = text.toUtf8().toHex();
        QJsonArray const rows = Json({"sql"_q, "SELECT CAST(x'%1' AS TEXT) AS t"_q.arg(QString::fromLatin1(hex))});
        ASSERT_EQ(rows.size(), 1);
        EXPECT_EQ(rows.first().toObject().value("t"_q).toString(), text) << hex.constData();
    }
    // The parser of this test drops a leading byte order mark.
    EXPECT_EQ(JsonRow("SELECT CAST(x'efbbbf61' AS TEXT) AS t"), QString::fromUtf8("{\"t\":\"\ufeffa\"}"));
}

TEST_F(SqlCommandTest, TimesAreTheStoredMilliseconds)
{
    RawStore(StorePath()).Run("UPDATE Schedules SET startTime = 1767225600123"_q);
    EXPECT_EQ(JsonRow("SELECT startTime, expireTime FROM Schedules"),
              R"({"startTime":1767225600123,"expireTime":null})"_q);
}

TEST_F(SqlCommandTest, ColumnsOfTheSameNameGetKeysOfTheirOwn)
{
    EXPECT_EQ(JsonRow("SELECT 1 AS a, 2 AS a, 3 AS \"a:2\", 4 AS a"), R"({"a":1,"a:2":2,"a:2:2":3,"a:3":4})"_q);
}

TEST_F(SqlCommandTest, NoRowsAreAnEmptyArrayOrAHeaderLine)
{
    EXPECT_EQ(Json({"sql"_q, "SELECT 1 WHERE 0"_q}), QJsonArray());
    EXPECT_EQ(Csv("SELECT 1 AS a, 2 AS b WHERE 0"), "a,b\r\n"_q);
}

TEST_F(SqlCommandTest, CsvQuotesWhatNeedsItAndTellsNullFromTheEmptyText)
{
    EXPECT_EQ(
        Csv("SELECT 'plain' AS a, 'with,comma' AS b, 'with \"quotes\"' AS \"c,d\", 'two' || char(13, 10) || 'lines'"
            " AS e"),
        "a,b,\"c,d\",e\r\nplain,\"with,comma\",\"with \"\"quotes\"\"\",\"two\r\nlines\"\r\n"_q);
    EXPECT_EQ(Csv("SELECT NULL AS a, '' AS b, x'0aff' AS c, 2.0 AS d, 9223372036854775807 AS e"),
              "a,b,c,d,e\r\n,\"\",x'0aff',2.0,9223372036854775807\r\n"_q);
}

TEST_F(SqlCommandTest, CsvKeepsTheBytesOfTextsThatAreNotUtf8)
{
    RunResult const ran = RunInShell("| od -An -tx1"_q, {"sql"_q, "--csv"_q, "SELECT CAST(x'61ff62' AS TEXT) AS t"_q});
    EXPECT_EQ(ran.out.simplified(), "74 0d 0a 61 ff 62 0d 0a"_q);
}

TEST_F(SqlCommandTest, JsonAndCsvExcludeEachOther)
{
    RunResult const ran = Run({"sql"_q, "--csv"_q, "--json"_q, "SELECT 1"_q});
    EXPECT_EQ(ran.status, 2);
    EXPECT_EQ(ran.out, QString());
}

TEST_F(SqlCommandTest, StatementThatDoesMoreThanReadIsRefusedAndChangesNothing)
{
    AddServers("('a', 'https://one')");
    QMap<QString, QByteArray> const before = tandry::test::FolderContents(folder.path());
    for (char const* statement : {"DELETE FROM ServerConfiguration",
                                  "DELETE FROM ServerConfiguration RETURNING id",
                                  "WITH one AS (SELECT 1) UPDATE ServerConfiguration SET alias = 'b'",
                                  "CREATE TABLE other (id)",
                                  "CREATE TEMP TABLE other (id)",
                                  "DROP TABLE Schedules",
                                  "REINDEX",
                                  "ANALYZE",
                                  "VACUUM",
                                  "VACUUM INTO 'vacuumed.db'",
                                  "ATTACH 'attached.db' AS other",
                                  "DETACH main",
                                  "BEGIN",
                                  "COMMIT",
                                  "SAVEPOINT a",
                                  "PRAGMA user_version = 7",
                                  "PRAGMA journal_mode = DELETE",
                                  "PRAGMA writable_schema(1)",
                                  "PRAGMA wal_checkpoint(TRUNCATE)",
                                  "SELECT 1; SELECT 2",
                                  "SELECT 1; DELETE FROM ServerConfiguration",
                                  "SELECT load_extension('other.so')",
                                  "",
                                  "-- nothing",
                                  "SELEC 1",
                                  "SELECT missing FROM ServerConfiguration"}) {
        RunResult const ran = Run({"sql"_q, "--"_q, QString::fromLatin1(statement)});
        EXPECT_EQ(ran.status, 2) << statement << ": " << ran.err.toStdString();
        EXPECT_EQ(ran.out, QString()) << statement;
        EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1) << ran.err.toStdString();
        EXPECT_FALSE(ran.err.contains("can't be opened"_q)) << ran.err.toStdString();
    }
    EXPECT_EQ(tandry::test::FolderContents(folder.path()), before);
    EXPECT_EQ(Csv("SELECT count(*) AS n FROM ServerConfiguration"), "n\r\n1\r\n"_q);
}

TEST_F(SqlCommandTest, FailureAmongTheRowsEndsTheCommand)
{
    RunResult const ran = Run({"sql"_q, "SELECT abs(column1) AS a FROM (VALUES (1), (-9223372036854775807 - 1))"_q});
    EXPECT_EQ(ran.status, 2);
    EXPECT_TRUE(ran.err.contains("the statement failed"_q)) << ran.err.toStdString();
}

TEST_F(SqlCommandTest, MemoryDoesNotGrowWithTheRows)
{
    // 200 MB of text in a process that may have 300.
    for (char const* format : {"--utc", "--json", "--csv"}) {
        RunResult const ran = RunInShell("| wc -c"_q,
                                         {"sql"_q,
                                          QLatin1String(format),
                                          "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE"
                                          " i < 200000) SELECT i, printf('%.1000c', 'x') AS t FROM n"_q},
                                         "ulimit -v 300000; "_q);
        EXPECT_EQ(ran.err, QString()) << format;
        EXPECT_GT(ran.out.trimmed().toLongLong(), 200'000'000) << format;
    }
}

TEST_F(SqlCommandTest, EndlessRowsEndWithTheirReader)
{
    QString const endless = "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT i FROM n"_q;
    EXPECT_EQ(RunInShell("| head -n 2"_q, {"sql"_q, "--csv"_q, endless}).out, "i\r\n1\r\n"_q);
    RunResult const full = RunInShell("> /dev/full"_q, {"sql"_q, endless});
    EXPECT_EQ(full.status, 3);
}
