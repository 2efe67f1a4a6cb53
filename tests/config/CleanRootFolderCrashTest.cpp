#include "config/FolderConfigManager.h"
#include "support/QtPrinters.h"
#include "support/StoreFixture.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <csignal>
#include <poll.h>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace tandry::test;
using sync::config::FolderConfigManager;
using sync::database::SqliteDatabaseFactory;

constexpr int SubFolders = 20'000;
constexpr int Rounds = 50;

/// A process of its own that cleans the root 1 of a store. It must be started while this one has no store open.
class CleaningProcess
{
public:
    /// Returns once the process is about to begin.
    explicit CleaningProcess(QString const& path)
    {
        std::array<int, 2> ends{};
        EXPECT_EQ(pipe(ends.data()), 0);
        _pid = fork();
        EXPECT_NE(_pid, -1);
        if (_pid == 0)
            Clean(path, ends[1]);
        close(ends[1]);
        _news = ends[0];
        Wait(-1);
    }

    ~CleaningProcess() { close(_news); }

    /// Waits for the process to be ready and then to be done; false when it isn't within so many milliseconds.
    bool Wait(int milliseconds)
    {
        pollfd descriptor{_news, POLLIN, 0};
        if (poll(&descriptor, 1, milliseconds) != 1)
            return false;
        char news = 0;
        return read(_news, &news, 1) == 1;
    }

    /// Kills the process, unless it has ended before.
    void Kill()
    {
        kill(_pid, SIGKILL);
        int status = 0;
        EXPECT_EQ(waitpid(_pid, &status, 0), _pid);
        EXPECT_TRUE(WIFSIGNALED(status) || (WIFEXITED(status) && WEXITSTATUS(status) == 0))
            << "the process failed by itself";
    }

    Q_DISABLE_COPY_MOVE(CleaningProcess)

private:
    [[noreturn]] static void Clean(QString const& path, int news)
    {
        auto const store = SqliteDatabaseFactory::Open(path);
        if (store == nullptr)
            _exit(1);
        FolderConfigManager manager(store, nullptr);
        bool done = write(news, "r", 1) == 1 && manager.CleanRootFolder(1);
        done = done && write(news, "d", 1) == 1;
        _exit(done ? 0 : 1); // nothing of the test program is to run here
    }

    pid_t _pid = -1;
    int _news = -1;
};

class CleanRootFolderCrashTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_NE(SqliteDatabaseFactory::Open(_whole), nullptr);
        RawStore raw(_whole);
        raw.Run("BEGIN;"
                "INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId) VALUES (1, '/r', 0, 1);"
                "WITH RECURSIVE n(i) AS (SELECT 2 UNION ALL SELECT i + 1 FROM n WHERE i <= %1) "
                "INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId) SELECT i, '/r/' || i, 1, 1 FROM n;"
                "INSERT INTO FileConfiguration (folderConfigurationId, rootFolderId) "
                "SELECT id, 1 FROM FolderConfiguration;"
                "COMMIT;"
                "PRAGMA wal_checkpoint(TRUNCATE)"_q.arg(SubFolders));
    }

    /// The path of a whole store, ready to be cleaned.
    QString MakeStore(int round)
    {
        QString path = _folder.filePath("%1.db"_q.arg(round));
        EXPECT_TRUE(QFile::copy(_whole, path));
        return path;
    }

    enum class State
    {
        Whole,
        Gone,
        Between
    };

    /// Returns the state that another process finds after the crash.
    static State Examine(QString const& path)
    {
        EXPECT_NE(SqliteDatabaseFactory::Open(path), nullptr);
        RawStore raw(path);
        qlonglong const roots = raw.Value("SELECT count(*) FROM FolderConfiguration WHERE id = 1"_q).toLongLong();
        qlonglong const folders = raw.Count("FolderConfiguration"_q);
        qlonglong const files = raw.Count("FileConfiguration"_q);
        if (roots == 1 && folders == SubFolders + 1 && files == SubFolders + 1)
            return State::Whole;
        return roots == 0 && folders == 0 && files == 0 ? State::Gone : State::Between;
    }

    QTemporaryDir _folder;
    QString const _whole = _folder.filePath("whole.db"_q);
};

TEST_F(CleanRootFolderCrashTest, LeavesTheRootWholeOrGoneWhenTheProcessIsKilled)
{
    // Undisturbed first, to know how long it takes.
    QString const undisturbed = MakeStore(0);
    QElapsedTimer timer;
    {
        CleaningProcess process(undisturbed);
        timer.start();
        ASSERT_TRUE(process.Wait(-1));
        process.Kill();
    }
    int const duration = int(timer.elapsed()) + 1;
    EXPECT_EQ(Examine(undisturbed), State::Gone);

    // Then killed once in each fiftieth of a little more than that time.
    unsigned const seed = std::random_device()();
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> within(0, 1);
    int whole = 0;
    for (int round = 1; round <= Rounds; ++round) {
        int const moment = int(1.1 * duration * (round - 1 + within(random)) / Rounds);
        SCOPED_TRACE("killed after %1 of %2 ms, seed %3"_q.arg(moment).arg(duration).arg(seed).toStdString());
        QString const path = MakeStore(round);
        {
            CleaningProcess process(path);
            static_cast<void>(process.Wait(moment)); // it may be done before
            process.Kill();
        }
        State const state = Examine(path);
        ASSERT_NE(state, State::Between);
        whole += state == State::Whole ? 1 : 0;
        QFile::remove(path);
    }
    RecordProperty("whole", whole);
    RecordProperty("gone", Rounds - whole);
    EXPECT_GT(whole, 0);
}

} // namespace
