#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/FolderContents.h"
#include "support/OtherProgram.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <QFileInfo>

#include <csignal>

#include <sys/stat.h>

namespace {

using namespace tandry::test;
using sync::database::OpenMode;
using sync::database::OpenOptions;

/// Contents of the files beside the rows.
class StoreFiles : public EachJournalMode
{
protected:
    QStringList Files() const { return FolderContents(folder.path()).keys(); }

    mode_t ModeOf(QString const& file) const
    {
        struct stat status = {};
        EXPECT_EQ(::stat(folder.filePath(file).toUtf8().constData(), &status), 0);
        return status.st_mode & 07777;
    }
};

TANDRY_IN_EACH_JOURNAL_MODE(StoreFiles);

TEST_P(StoreFiles, CleanCloseLeavesOneFile)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    store.reset();
    EXPECT_EQ(Files(), QStringList{"store.db"_q});
}

TEST_P(StoreFiles, RightsOfOthersAreTakenWhenTheStoreIsOpenedForWriting)
{
    mode_t const before = ::umask(0);
    for (bool const isLeftBehind : {false, true}) {
        store.reset();
        if (isLeftBehind) {
            ASSERT_EQ(OtherProgram(StorePath(), {"add-and-crash"_q, "1"_q}).Wait(), -SIGKILL);
        }
        for (QString const& file : Files())
            ASSERT_EQ(::chmod(folder.filePath(file).toUtf8().constData(), 0666), 0);
        OpenStore();
        ASSERT_TRUE(store->CreateDatabase()->transaction());
        ASSERT_TRUE(AddServer(*store, "a"_q));
        EXPECT_GT(Files().size(), 1);
        for (QString const& file : Files())
            EXPECT_EQ(ModeOf(file), 0600u) << file.toStdString();
        ASSERT_TRUE(store->CreateDatabase()->rollback());
    }
    ::umask(before);
}

TEST_P(StoreFiles, OpeningForReadingLeavesTheRightsAsTheyAre)
{
    store.reset();
    ASSERT_EQ(::chmod(StorePath().toUtf8().constData(), 0644), 0);
    OpenOptions options;
    options.mode = OpenMode::ReadOnly;
    OpenStore(options);
    EXPECT_EQ(ModeOf("store.db"_q), 0644u);
}

TEST_P(StoreFiles, RemovedAndOverwrittenSecretsAreFoundNowhereAfterACleanClose)
{
    QString const insert = "INSERT INTO ProductConfiguration (consumerSecret) VALUES (:secret)"_q;
    for (QString const& secret : {"short secret"_q, QString(20000, QLatin1Char('x')) + "long secret"_q}) {
        ASSERT_TRUE(Execute(*store, insert, {{":secret", secret}}));
        ASSERT_TRUE(Execute(*store, insert, {{":secret", secret}}));
    }
    // The search finds what is there.
    store.reset();
    EXPECT_TRUE(ReadFile(StorePath()).contains("short secret"));
    EXPECT_TRUE(ReadFile(StorePath()).contains("long secret"));

    OpenStore();
    ASSERT_TRUE(Execute(*store, "UPDATE ProductConfiguration SET consumerSecret = 'new' WHERE id % 2 = 0"_q));
    ASSERT_TRUE(Execute(*store, "DELETE FROM ProductConfiguration WHERE id % 2 = 1"_q));
    store.reset();
    QMap<QString, QByteArray> const contents = FolderContents(folder.path());
    for (QByteArray const& file : contents)
        EXPECT_FALSE(file.contains("short secret") || file.contains("long secret"));
}

TEST_P(StoreFiles, RowsBesideARemovedSecretStayAsTheyWereAndNoIdIsGivenTwice)
{
    ASSERT_TRUE(Execute(*store,
                        "INSERT INTO ProductConfiguration (id, name, consumerKey, consumerSecret, serverId) VALUES "
                        "(2, NULL, 'a' || char(10) || '\xc3\xa9', x'00ff', 3), (5, '', '7', 7.5, 'text'), "
                        "(7, 'b', NULL, '007', 9), (9, 'last', 'k', 'secret', 1)"_q));
    ASSERT_TRUE(Execute(*store, "DELETE FROM ProductConfiguration WHERE id = 9"_q));
    QString const all =
        "SELECT group_concat(id || ':' || quote(name) || quote(consumerKey) || quote(consumerSecret) || "
        "quote(serverId) || quote(nameValueProperties), ';') FROM ProductConfiguration"_q;
    QVariant const before = Single(*store, all);
    ReopenStore();
    EXPECT_EQ(Single(*store, all), before);
    EXPECT_EQ(Single(*store, "PRAGMA integrity_check"_q), "ok"_q);
    ASSERT_TRUE(Execute(*store, "INSERT INTO ProductConfiguration (name) VALUES ('new')"_q));
    EXPECT_EQ(Single(*store, "SELECT max(id) FROM ProductConfiguration"_q), 10);
}

class StoreLogFile : public EachJournalMode
{
protected:
    qint64 LogSize() const { return QFileInfo(StorePath() + "-wal"_q).size(); }

    void Write(int rows)
    {
        sync::database::TransactionalScope const scope;
        for (int row = 0; row < rows; ++row)
            ASSERT_TRUE(AddServer(*store, QString(4000, QLatin1Char('x'))));
    }
};

TANDRY_WITH_LOG_ONLY(StoreLogFile);

TEST_P(StoreLogFile, GrownLogShrinksSoonAfterTheReaderEndsThatHeldIt)
{
    constexpr qint64 Limit = 8 * 1024 * 1024;
    {
        RawStore reader(StorePath());
        reader.Run("BEGIN; SELECT * FROM Schedules"_q);
        for (int time = 0; time < 40; ++time)
            Write(100);
        EXPECT_GT(LogSize(), Limit) << "or the test shows nothing";
        reader.Run("COMMIT"_q);
    }
    for (int time = 0; time < 3; ++time)
        Write(1);
    EXPECT_LE(LogSize(), Limit);
    store.reset();
    EXPECT_FALSE(QFileInfo::exists(StorePath() + "-wal"_q));
}

TEST_P(StoreLogFile, LogStaysSmallWithoutAReaderThatHoldsIt)
{
    for (int time = 0; time < 40; ++time) {
        Write(100);
        EXPECT_LT(LogSize(), 8 * 1024 * 1024);
    }
}

} // namespace
