#include "tools/viewer/OpenedStore.h"

#include "ViewerFixture.h"
#include "support/FolderContents.h"
#include "support/OtherProgram.h"
#include "support/Queries.h"
#include "support/ReleasedStores.h"
#include "tools/findings/PrivateCopy.h"

#include <QDir>
#include <QFile>

namespace {

using namespace tandry::test;
using tandry::viewer::OpenedStore;
using tandry::viewer::OpenForViewing;

class ViewedStore : public ViewerFixture
{
protected:
    void ExpectWords(OpenedStore const& opened, QString const& heading, QString const& reason, QString const& advice)
    {
        EXPECT_EQ(opened.store, nullptr);
        EXPECT_EQ(opened.heading, heading);
        EXPECT_TRUE(opened.reason.contains(reason) && opened.reason.endsWith(QLatin1Char('.')))
            << opened.reason.toStdString();
        EXPECT_TRUE(opened.advice.contains(advice) && opened.advice.endsWith(QLatin1Char('.')))
            << opened.advice.toStdString();
    }

    QString At(QString const& name) const { return folder.filePath(name); }

    /// A store whose last commits stand in its log alone.
    void LeaveOpen()
    {
        store.reset();
        RawStore(StorePath(), RawStore::KeepLog)
            .Run("INSERT INTO FolderConfiguration (clientPath, parentId) VALUES ('/r', 0)"_q);
        QFile::remove(StorePath() + "-shm"_q);
        ASSERT_TRUE(QFile::exists(StorePath() + "-wal"_q));
    }
};

TEST_F(ViewedStore, IsOpenedWithoutAChange)
{
    store.reset();
    auto const before = FolderContents(folder.path());
    OpenedStore opened = OpenForViewing(StorePath());
    ASSERT_NE(opened.store, nullptr) << opened.reason.toStdString();
    EXPECT_EQ(opened.copy, nullptr);
    EXPECT_TRUE(opened.remarks.isEmpty());
    EXPECT_EQ(Single(*opened.store, "SELECT count(*) FROM FileConfiguration"_q), 2);
    EXPECT_FALSE(Execute(*opened.store, "DELETE FROM FileConfiguration"_q));
    opened = {};
    EXPECT_EQ(FolderContents(folder.path()), before);
}

TEST_F(ViewedStore, ThatIsMissingIsNamedWithTheCommandThatMakesOne)
{
    ExpectWords(OpenForViewing(At("no.db"_q)), "There is no store"_q, At("no.db"_q), "tandryctl --store FILE init"_q);
    EXPECT_FALSE(QFile::exists(At("no.db"_q)));
}

TEST_F(ViewedStore, ThatIsAnotherFileIsRefused)
{
    QFile file(At("letter.txt"_q));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(4096, 'x'));
    file.close();
    ExpectWords(
        OpenForViewing(file.fileName()), "This is no store, or a damaged one"_q, "letter.txt"_q, "tandryctl recover"_q);
}

TEST_F(ViewedStore, OfANewerVersionIsRefused)
{
    store.reset();
    RawStore(StorePath()).Run("PRAGMA user_version = 99"_q);
    ExpectWords(OpenForViewing(StorePath()), "The store has a newer version"_q, StorePath(), "tandryctl restore"_q);
}

TEST_F(ViewedStore, ThatAnotherProgramHasLockedNamesTheProgram)
{
    store.reset();
    RawStore(StorePath()).Run("PRAGMA journal_mode = DELETE"_q);
    OtherProgram other(StorePath(), {"lock"_q});
    other.WaitForLock();
    sync::database::OpenOptions options;
    options.busyTimeoutMsec = 0;
    ExpectWords(OpenForViewing(StorePath(), options),
                "The store is locked"_q,
                ". Process %1 (tandry_other_pr) holds the lock."_q.arg(other.processId()),
                "Try again when the other program has finished"_q);
    EXPECT_EQ(other.Wait(), 0);
    EXPECT_NE(OpenForViewing(StorePath()).store, nullptr);
}

TEST_F(ViewedStore, ThatIsAFolderIsRefused)
{
    ExpectWords(OpenForViewing(folder.path()), "The store cannot be opened"_q, folder.path(), "try again"_q);
}

TEST_F(ViewedStore, WithoutAPathIsRefused)
{
    EXPECT_FALSE(OpenForViewing(QString()).reason.isEmpty());
}

TEST_F(ViewedStore, ThatWasNotClosedIsReadFromACopy)
{
    LeaveOpen();
    auto const before = FolderContents(folder.path());
    OpenedStore const opened = OpenForViewing(StorePath());
    ASSERT_NE(opened.store, nullptr) << opened.reason.toStdString();
    EXPECT_NE(opened.copy, nullptr);
    EXPECT_EQ(opened.path, StorePath());
    EXPECT_EQ(Single(*opened.store, "SELECT count(*) FROM FolderConfiguration WHERE parentId = 0"_q), 3);
    ASSERT_EQ(opened.remarks.size(), 1);
    EXPECT_TRUE(opened.remarks.front().startsWith("The store was not closed. You see a private copy"_q));
    EXPECT_EQ(FolderContents(folder.path()), before);
}

TEST_F(ViewedStore, OfAnOlderVersionIsReadFromACopy)
{
    for (ReleasedStore const& older : OlderStores()) {
        QFile::remove(At("older.db"_q));
        older.CopyTo(At("older.db"_q));
        OpenedStore const opened = OpenForViewing(At("older.db"_q));
        ASSERT_NE(opened.store, nullptr) << older.Name();
        EXPECT_NE(opened.copy, nullptr);
        ASSERT_EQ(opened.remarks.size(), 1);
        EXPECT_TRUE(opened.remarks.front().startsWith("The store has an older version."_q));
    }
}

TEST_F(ViewedStore, ThatCannotBeCopiedSaysSo)
{
    LeaveOpen();
    QByteArray const before = qgetenv("TMPDIR");
    qputenv("TMPDIR", StorePath().toUtf8()); // no folder
    OpenedStore const opened = OpenForViewing(StorePath());
    if (before.isNull())
        qunsetenv("TMPDIR");
    else
        qputenv("TMPDIR", before);
    ExpectWords(opened, "The store was not closed"_q, "cannot be copied"_q, "tandryctl init"_q);
}

} // namespace
