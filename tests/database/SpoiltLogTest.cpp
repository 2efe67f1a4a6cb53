#include "database/TransactionalScope.h"
#include "interf/IQSqlQueryWrapper.h"
#include "support/ChildProcess.h"
#include "support/FaultyFiles.h"
#include "support/FolderContents.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <QtEndian>

#include <functional>

namespace {

using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;
using sync::database::TransactionalScope;

constexpr int LogHeaderSize = 32;
constexpr int FrameHeaderSize = 24;

/// A log that a program left behind when it was killed, whole or spoilt, and what the next opening tells of it.
class SpoiltLog : public StoreFixture
{
protected:
    void SetUp() override {}

    QString LogPath() const { return StorePath() + "-wal"_q; }

    /// Has a program write and then be killed.
    void LeaveLog(std::function<void(SqliteDatabaseFactory&)> const& write)
    {
        ASSERT_EQ(InChildProcess([&] {
                      auto const factory = SqliteDatabaseFactory::Open(StorePath());
                      if (factory == nullptr)
                          return 1;
                      write(*factory);
                      Crash();
                  }),
                  -SIGKILL);
        ASSERT_GT(QFileInfo(LogPath()).size(), LogHeaderSize);
    }

    static void AddRows(SqliteDatabaseFactory& factory, int count)
    {
        for (int row = 0; row < count; ++row) {
            TransactionalScope const scope;
            if (!AddServer(factory, QString(2000, QLatin1Char('a')) + QString::number(row)))
                std::abort();
        }
    }

    void LeaveRows()
    {
        LeaveLog([](SqliteDatabaseFactory& factory) { AddRows(factory, Rows); });
    }

    int PageSize() const { return qFromBigEndian<qint16>(ReadFile(StorePath()).constData() + 16); }
    int FrameSize() const { return FrameHeaderSize + PageSize(); }
    int FrameCount() const { return int(QFileInfo(LogPath()).size() - LogHeaderSize) / FrameSize(); }
    int Frame(int number) const { return LogHeaderSize + number * FrameSize(); }

    void Spoil(int offset, int size)
    {
        QByteArray log = ReadFile(LogPath());
        ASSERT_LE(offset + size, log.size());
        for (int position = offset; position < offset + size; ++position)
            log[position] = char(~log.at(position));
        WriteFile(LogPath(), log);
    }

    void CutTo(qint64 size) { WriteFile(LogPath(), ReadFile(LogPath()).left(static_cast<int>(size))); }

    /// Opens the store, which must tell of the loss of each row that is missing.
    void ExpectLossIsTold(bool isThereOne = true)
    {
        OpenStore();
        ASSERT_NE(store, nullptr);
        int const lost = Rows - CountServers(*store);
        EXPECT_EQ(lost > 0, isThereOne) << lost << " rows";
        ASSERT_EQ(store->openingWarnings().size(), isThereOne ? 1 : 0);
        if (isThereOne) {
            QString const warning = store->openingWarnings().front();
            EXPECT_TRUE(warning.contains(LogPath())) << warning.toStdString();
            EXPECT_TRUE(warning.contains(QStringLiteral(" %1 commit").arg(lost))) << warning.toStdString();
        }
        store.reset();
    }

    void ExpectNoWarning()
    {
        OpenStore();
        ASSERT_NE(store, nullptr);
        EXPECT_EQ(store->openingWarnings(), QStringList());
        store.reset();
    }

    static constexpr int Rows = 40;

    FaultyFiles files; // flushes nothing, so that the tests take no time
};

TEST_F(SpoiltLog, WholeOneIsNothingToWarnOf)
{
    LeaveRows();
    ExpectLossIsTold(false);
    ExpectNoWarning(); // nor is a store that was closed
}

TEST_F(SpoiltLog, SpoiltDataOfAnyFrameAreTold)
{
    LeaveRows();
    QByteArray const log = ReadFile(LogPath());
    QByteArray const file = ReadFile(StorePath());
    int const frames = FrameCount();
    ASSERT_GT(frames, Rows);
    for (int frame = 0; frame < frames; ++frame) {
        SCOPED_TRACE(frame);
        WriteFile(LogPath(), log);
        WriteFile(StorePath(), file);
        QFile::remove(StorePath() + "-shm"_q);
        Spoil(Frame(frame) + FrameHeaderSize + 100, 1);
        ExpectLossIsTold();
    }
}

TEST_F(SpoiltLog, SpoiltSaltsOfAFrameInTheMiddleAreTold)
{
    LeaveRows();
    Spoil(Frame(FrameCount() / 2) + 8, 8);
    ExpectLossIsTold();
}

TEST_F(SpoiltLog, SpoiltChecksumOfAFrameInTheMiddleIsTold)
{
    LeaveRows();
    Spoil(Frame(FrameCount() / 2) + 20, 1);
    ExpectLossIsTold();
}

TEST_F(SpoiltLog, OverwrittenFramesAreTold)
{
    LeaveRows();
    Spoil(Frame(10), 5 * FrameSize());
    OpenStore();
    ASSERT_NE(store, nullptr);
    EXPECT_EQ(store->openingWarnings().size(), 1);
}

TEST_F(SpoiltLog, AnySpoiltPartOfItsHeaderIsTold)
{
    LeaveRows();
    QByteArray const log = ReadFile(LogPath());
    QByteArray const file = ReadFile(StorePath());
    for (int offset = 0; offset < LogHeaderSize; offset += 4) {
        if (offset == 4)
            continue; // SQLite refuses another version of the format
        SCOPED_TRACE(offset);
        WriteFile(LogPath(), log);
        WriteFile(StorePath(), file);
        QFile::remove(StorePath() + "-shm"_q);
        Spoil(offset, 4);
        ExpectLossIsTold();
    }
}

TEST_F(SpoiltLog, TornTailIsNothingToWarnOf)
{
    LeaveRows();
    QByteArray const log = ReadFile(LogPath());
    QByteArray const file = ReadFile(StorePath());
    for (int cut = 1; cut < 3 * FrameSize(); cut += FrameSize() / 3) {
        SCOPED_TRACE(cut);
        WriteFile(LogPath(), log);
        WriteFile(StorePath(), file);
        QFile::remove(StorePath() + "-shm"_q);
        CutTo(log.size() - cut);
        ExpectNoWarning();
    }
}

TEST_F(SpoiltLog, TransactionThatWasUnderWayIsNothingToWarnOf)
{
    LeaveLog([](SqliteDatabaseFactory& factory) {
        AddRows(factory, 5);
        auto* const scope = new TransactionalScope; // killed inside it
        static_cast<void>(scope);
        for (int row = 0; row < 20; ++row)
            static_cast<void>(AddServer(factory, QString(5000, QLatin1Char('b'))));
    });
    ExpectNoWarning();
}

TEST_F(SpoiltLog, FramesFromBeforeTheLogBeganAnewAreNothingToWarnOf)
{
    LeaveLog([](SqliteDatabaseFactory& factory) {
        AddRows(factory, 1000);
        AddRows(factory, 3);
    });
    OpenStore();
    ASSERT_NE(store, nullptr);
    EXPECT_EQ(CountServers(*store), 1003);
    EXPECT_EQ(store->openingWarnings(), QStringList());
}

TEST_F(SpoiltLog, CommitThatFailedIsNothingToWarnOf)
{
    LeaveLog([this](SqliteDatabaseFactory& factory) {
        AddRows(factory, 5);
        {
            TransactionalScope const scope;
            for (int row = 0; row < 10; ++row)
                static_cast<void>(AddServer(factory, QString(5000, QLatin1Char('b'))));
            files.Fail(1, SQLITE_IOERR, {FileOperation::Sync});
        }
        if (!files.Recover())
            std::abort();
        AddRows(factory, 1);
    });
    ExpectNoWarning();
}

TEST_F(SpoiltLog, LogThatAnotherConnectionWritesIsNothingToWarnOf)
{
    OpenStore();
    for (int row = 0; row < 30; ++row) {
        AddRows(*store, 10);
        EXPECT_EQ(SqliteDatabaseFactory::Open(StorePath())->openingWarnings(), QStringList());
    }
}

} // namespace
