#include "ToolFixture.h"

#include "support/RawStore.h"

#include <QFileInfo>
#include <QJsonArray>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class StatusCommandsTest : public ToolTest
{
protected:
    void SetUp() override { Init(); }

    void Sql(QString const& statements) { RawStore(StorePath()).Run(statements); }

    /// Inserts root 1, which is on disk, with a folder out of sync and three files, and root 5, which is not.
    void AddRows()
    {
        MakeDirectory("r"_q);
        Sql("INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId, syncStatus, lastOperationTime, "
            "lastSyncTime) VALUES (1, '%1', 0, 1, 9, 1000, NULL), (2, '%1/f', 1, 1, 2, 3000, 5000), "
            "(5, '/missing', 0, 5, 1, NULL, NULL);"
            "INSERT INTO FileConfiguration (clientPath, rootFolderId, syncStatus, size, lastOperationTime) VALUES "
            "('%1/a', 1, 2, 10, 4000), ('%1/b', 1, 9, 20, NULL), ('%1/c', 1, 2, 3000000000, NULL);"_q.arg(At("r")));
    }
};

} // namespace

TEST_F(StatusCommandsTest, StatusCountsFoldersFilesAndBytesOfEachRoot)
{
    AddRows();
    QJsonArray const roots = Json({"status"_q});
    ASSERT_EQ(roots.size(), 2);
    auto const count = [](int status, int rows) { return QJsonObject{{"syncStatus"_q, status}, {"count"_q, rows}}; };
    EXPECT_EQ(roots.first().toObject(),
              (QJsonObject{{"id"_q, 1},
                           {"clientPath"_q, At("r")},
                           {"isThere"_q, true},
                           {"folders"_q, 2},
                           {"foldersByStatus"_q, QJsonArray{count(2, 1), count(9, 1)}},
                           {"files"_q, 3},
                           {"filesByStatus"_q, QJsonArray{count(2, 2), count(9, 1)}},
                           {"bytes"_q, 3000000030.0},
                           {"lastOperationTime"_q, "1970-01-01T00:00:04.000Z"_q},
                           {"lastSyncTime"_q, "1970-01-01T00:00:05.000Z"_q},
                           {"outOfSync"_q, 3},
                           {"firstOutOfSync"_q, QJsonArray{At("r/f"), At("r/a"), At("r/c")}}}));
    QJsonObject const missing = roots.last().toObject();
    EXPECT_EQ(missing.value("isThere"_q), false);
    EXPECT_EQ(missing.value("files"_q), 0);
    EXPECT_TRUE(missing.value("lastSyncTime"_q).isNull());
}

TEST_F(StatusCommandsTest, StatusInPlainTextHasWords)
{
    AddRows();
    QString const text = RunSuccessfully({"status"_q, "--utc"_q});
    for (char const* line : {"  out of sync     3\n",
                             "  on disk         there\n",
                             "  files           3 (2 not synced: 2, 9: 1)\n",
                             "  folders         2 (2 out of sync: 1, 9: 1)\n",
                             "  last sync       1970-01-01T00:00:05.000Z\n",
                             "  on disk         no folder stands at this path\n",
                             "  last sync       never\n"})
        EXPECT_TRUE(text.contains(QString::fromUtf8(line))) << line << text.toStdString();
}

TEST_F(StatusCommandsTest, StatusShowsTheFirstPathsOutOfSyncAndCountsTheRest)
{
    AddRows();
    Sql("INSERT INTO FileConfiguration (clientPath, rootFolderId, syncStatus) VALUES ('/d', 1, 2), ('/e', 1, 2), "
        "('/f', 1, 2), ('/g', 1, 2);"_q);
    EXPECT_TRUE(RunSuccessfully({"status"_q}).contains("\n  not in sync     /e\n                  and 2 more\n"_q))
        << RunSuccessfully({"status"_q}).toStdString();
}

TEST_F(StatusCommandsTest, StatusCountsRowsWhoseRootIsMissing)
{
    AddRows();
    Sql("INSERT INTO FileConfiguration (clientPath, rootFolderId) VALUES ('/x', 77);"_q);
    EXPECT_TRUE(RunSuccessfully({"status"_q})
                    .endsWith("\n0 folders and 1 file name a root that is not on record; see 'tandryctl doctor'\n"_q));
}

TEST_F(StatusCommandsTest, StatusWithoutARootFindsNothing)
{
    EXPECT_EQ(Run({"status"_q}).status, 1);
}

TEST_F(StatusCommandsTest, StatTellsRowsAndBytesOfEachTableAndIndex)
{
    AddRows();
    RawStore(StorePath())
        .Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5000) "
             "INSERT INTO FileConfiguration (clientPath) SELECT printf('%0100d', i) FROM n;"_q);
    QJsonObject const stat = JsonObject({"stat"_q});
    RawStore raw(StorePath());
    EXPECT_EQ(stat.value("version"_q).toInt(), raw.Value("PRAGMA user_version"_q).toInt());
    EXPECT_EQ(stat.value("pages"_q).toInt(), raw.Value("PRAGMA page_count"_q).toInt());
    EXPECT_EQ(stat.value("pageBytes"_q).toInt(), raw.Value("PRAGMA page_size"_q).toInt());
    EXPECT_EQ(stat.value("fileBytes"_q).toDouble(), double(QFileInfo(StorePath()).size()));
    EXPECT_EQ(stat.value("journalMode"_q), "wal"_q);

    qint64 bytes = 0;
    QMap<QString, int> rows;
    for (QJsonValue const value : stat.value("objects"_q).toArray()) {
        bytes += qint64(value.toObject().value("bytes"_q).toDouble());
        rows.insert(value.toObject().value("name"_q).toString(), value.toObject().value("rows"_q).toInt());
    }
    EXPECT_EQ(bytes,
              qint64((stat.value("pages"_q).toInt() - stat.value("freePages"_q).toInt())) *
                  stat.value("pageBytes"_q).toInt());
    EXPECT_EQ(rows.value("FileConfiguration"_q), 5003);
    EXPECT_EQ(rows.value("FileConfiguration_clientPath"_q), 5003);
    EXPECT_EQ(rows.value("FolderConfiguration"_q), 3);
    EXPECT_EQ(rows.value("FolderConfiguration_outOfSync"_q), 1);
}

TEST_F(StatusCommandsTest, StatInPlainTextHasTheLargestObjectFirst)
{
    RawStore(StorePath())
        .Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5000) "
             "INSERT INTO FileConfiguration (clientPath) SELECT printf('%0100d', i) FROM n;"_q);
    QString const text = RunSuccessfully({"stat"_q});
    EXPECT_TRUE(text.contains("\njournalMode  wal\n"_q)) << text.toStdString();
    QString const table = text.section("\n\n"_q, 1);
    EXPECT_TRUE(table.section(QLatin1Char('\n'), 1, 1).endsWith("  FileConfiguration"_q)) << table.toStdString();
}
