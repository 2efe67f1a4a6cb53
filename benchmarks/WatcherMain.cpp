// Measures a StoreWatcher: how long after a commit of another process its signal comes, and how often its thread runs
// while nobody writes.
//
// Usage: tandry_watcher DIRECTORY [COMMITS [QUIET_SECONDS]]

#include "benchmarks/Failure.h"
#include "database/SqliteDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"
#include "models/StoreWatcher.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include <sys/resource.h>
#include <time.h>

namespace {

using namespace sync::benchmarks;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using sync::models::StoreWatcher;

constexpr int PauseMsec = 150; // longer than the watcher's own, so that each commit has a signal of its own

qint64 Now()
{
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
}

std::shared_ptr<SqliteDatabaseFactory> Open(QString const& path, OpenOptions const& options = {})
{
    QString error;
    std::shared_ptr<SqliteDatabaseFactory> store = SqliteDatabaseFactory::Open(path, &error, options);
    if (store == nullptr)
        Fail(error);
    return store;
}

/// The other process: commits, and prints when.
int Write(QString const& path, int commits)
{
    std::shared_ptr<SqliteDatabaseFactory> const store = Open(path);
    for (int commit = 0; commit < commits; ++commit) {
        QThread::msleep(PauseMsec + static_cast<unsigned long>(commit) % 7);
        auto const query = store->CreateQuery();
        Require(query->prepare(QStringLiteral("INSERT INTO ServerConfiguration (alias) VALUES ('a')")) && query->exec(),
                "a write failed");
        std::printf("%lld\n", static_cast<long long>(Now()));
        std::fflush(stdout);
    }
    return 0;
}

void MeasureSignals(QString const& path, sync::database::JournalMode mode, int commits)
{
    OpenOptions options;
    options.journalMode = mode;
    std::shared_ptr<SqliteDatabaseFactory> const store = Open(path, options);
    StoreWatcher const watcher(store);
    std::vector<qint64> signalled;
    QObject::connect(&watcher, &StoreWatcher::Changed, [&signalled] { signalled.push_back(Now()); });
    QProcess writer;
    QEventLoop loop;
    QObject::connect(&writer, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), &loop, &QEventLoop::quit);
    writer.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--write"), path, QString::number(commits)});
    loop.exec();
    QTimer::singleShot(PauseMsec, &loop, &QEventLoop::quit);
    loop.exec();

    std::vector<double> delays;
    std::size_t next = 0;
    for (QByteArray const& line : writer.readAllStandardOutput().split('\n')) {
        if (line.isEmpty())
            continue;
        // A signal before the writer knows that its commit has succeeded counts as one without a delay.
        qint64 const committed = line.toLongLong();
        Require(next < signalled.size(), "a commit had no signal");
        delays.push_back(std::max(0.0, double(signalled[next++] - committed) / 1e6));
    }
    Require(next == signalled.size(), "some signals belong to no commit");
    std::sort(delays.begin(), delays.end());
    std::printf("%s: %zu commits, delay of the signal: median %.2f ms, 99%% %.2f ms, longest %.2f ms\n",
                mode == sync::database::JournalMode::WriteAheadLog ? "log" : "journal",
                delays.size(),
                delays[delays.size() / 2],
                delays[delays.size() * 99 / 100],
                delays.back());
}

void MeasureQuiet(QString const& path, int seconds)
{
    std::shared_ptr<SqliteDatabaseFactory> const store = Open(path);
    StoreWatcher const watcher(store);
    QEventLoop loop;
    QTimer::singleShot(500, &loop, &QEventLoop::quit);
    loop.exec();
    rusage before{};
    rusage after{};
    ::getrusage(RUSAGE_SELF, &before);
    QTimer::singleShot(seconds * 1000, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
    ::getrusage(RUSAGE_SELF, &after);
    std::printf("quiet: the process slept and woke up %ld times in %d s, of which its own timer once\n",
                after.ru_nvcsw - before.ru_nvcsw,
                seconds);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    QStringList const arguments = application.arguments();
    if (arguments.value(1) == QStringLiteral("--write"))
        return Write(arguments.value(2), arguments.value(3).toInt());
    if (arguments.size() < 2) {
        std::fputs("Usage: tandry_watcher DIRECTORY [COMMITS [QUIET_SECONDS]]\n", stderr);
        return 2;
    }
    int const commits = arguments.value(2, QStringLiteral("200")).toInt();
    int const seconds = arguments.value(3, QStringLiteral("60")).toInt();
    QTemporaryDir const folder(arguments.at(1) + QStringLiteral("/watcher-XXXXXX"));
    MeasureSignals(folder.filePath(QStringLiteral("log.db")), sync::database::JournalMode::WriteAheadLog, commits);
    MeasureSignals(folder.filePath(QStringLiteral("journal.db")), sync::database::JournalMode::Rollback, commits);
    MeasureQuiet(folder.filePath(QStringLiteral("log.db")), seconds);
    return 0;
}
