// Measures the models in views: how long the window's thread is kept from its events while a list of many files and a
// tree of folders open, are scrolled, sorted, and refreshed while another process writes; and the memory that they
// take.
//
// Usage: tandry_models_benchmark DIRECTORY [FILES [COMMITS]]
//
// Each line has the longest and the median event that the window's thread handled, in milliseconds of the clock and in
// those for which the thread ran; a step of scrolling counts with its longest event. The offscreen platform draws into
// memory. What a view takes alone is measured with a model that has the same text in all cells.

#include "benchmarks/Failure.h"
#include "database/SqliteDatabaseFactory.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"
#include "models/FileListModel.h"
#include "models/FolderTreeModel.h"
#include "models/StoreWatcher.h"

#include <QAbstractTableModel>
#include <QApplication>
#include <QEventLoop>
#include <QFile>
#include <QHeaderView>
#include <QProcess>
#include <QScrollBar>
#include <QStringList>
#include <QTableView>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <malloc.h>
#include <time.h>
#include <unistd.h>

namespace {

using namespace sync::benchmarks;
using sync::database::SqliteDatabaseFactory;
using sync::models::FileListModel;
using sync::models::FolderTreeModel;
using sync::models::StoreWatcher;

constexpr int FilesOfFolder = 1000;
constexpr int WriterPauseMsec = 50;
constexpr int Steps = 300;
constexpr int NameColumn = 2;
/// What a list usually shows: name, path, change, status and size.
constexpr int ShownColumns[] = {NameColumn, 3, 7, 8, 10};

/// How long something took, in milliseconds, and how much of that the thread ran.
struct Time
{
    double msecs = 0;
    double ownMsecs = 0;
};

class Stopwatch
{
public:
    Time Elapsed() const
    {
        return {double(Now(CLOCK_MONOTONIC) - _begin) / 1e6, double(Now(CLOCK_THREAD_CPUTIME_ID) - _ownBegin) / 1e6};
    }

private:
    static qint64 Now(clockid_t clock)
    {
        timespec time{};
        ::clock_gettime(clock, &time);
        return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
    }

    qint64 _begin = Now(CLOCK_MONOTONIC);
    qint64 _ownBegin = Now(CLOCK_THREAD_CPUTIME_ID);
};

/// An application that records how long it takes to handle each event.
class TimedApplication : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override
    {
        if (_depth > 0)
            return QApplication::notify(receiver, event);
        ++_depth;
        Stopwatch const watch;
        bool const result = QApplication::notify(receiver, event);
        events.push_back(watch.Elapsed());
        --_depth;
        return result;
    }

    std::vector<Time> events;

private:
    int _depth = 0;
};

TimedApplication& Application()
{
    return *static_cast<TimedApplication*>(QCoreApplication::instance());
}

Time Longest()
{
    Time longest;
    for (Time const& time : Application().events) {
        longest.msecs = std::max(longest.msecs, time.msecs);
        longest.ownMsecs = std::max(longest.ownMsecs, time.ownMsecs);
    }
    return longest;
}

void Print(QString const& what, std::vector<Time> const& times)
{
    Require(!times.empty(), "nothing was measured");
    auto const print = [&](char const* kind, double Time::*part) {
        std::vector<double> msecs;
        msecs.reserve(times.size());
        for (Time const& time : times)
            msecs.push_back(time.*part);
        std::sort(msecs.begin(), msecs.end());
        std::printf(" %s: longest %7.2f, 99%% %7.2f, median %6.2f;",
                    kind,
                    msecs.back(),
                    msecs[msecs.size() * 99 / 100],
                    msecs[msecs.size() / 2]);
    };
    std::printf("%-40s", qPrintable(what));
    print("ms", &Time::msecs);
    print("ms running", &Time::ownMsecs);
    std::printf(" of %zu\n", times.size());
    static_cast<void>(std::fflush(stdout));
}

/// Handles events until the condition holds.
void WaitFor(std::function<bool()> const& holds)
{
    while (!holds())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void HandleEventsFor(int msecs)
{
    QEventLoop loop;
    QTimer::singleShot(msecs, &loop, &QEventLoop::quit);
    loop.exec();
}

std::shared_ptr<SqliteDatabaseFactory> Open(QString const& path)
{
    QString error;
    std::shared_ptr<SqliteDatabaseFactory> store = SqliteDatabaseFactory::Open(path, &error);
    if (store == nullptr)
        Fail(error);
    return store;
}

void Run(SqliteDatabaseFactory& store,
         QString const& statement,
         std::initializer_list<std::pair<char const*, int>> values)
{
    auto const query = store.CreateQuery();
    Require(query->prepare(statement), "a statement was refused");
    for (auto const& [placeholder, value] : values)
        query->bindValue(QString::fromLatin1(placeholder), value);
    if (!query->exec())
        Fail(query->lastError());
}

/// One root with folders of a thousand files each.
void Fill(QString const& path, int files)
{
    std::shared_ptr<SqliteDatabaseFactory> const store = Open(path);
    auto const transaction = store->CreateDatabase();
    Require(transaction->transaction(), "the store cannot be filled");
    Run(*store,
        QStringLiteral("INSERT INTO FolderConfiguration (name, clientPath, serverPath, parentId, rootId, syncStatus) "
                       "VALUES ('Documents', '/home/ada/Documents', '/Documents', 0, 1, 3)"),
        {});
    Run(*store,
        QStringLiteral(
            "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < :count) "
            "INSERT INTO FolderConfiguration (name, clientPath, serverPath, parentId, rootId, syncStatus) "
            "SELECT 'Project ' || i, '/home/ada/Documents/Project ' || i, '/Documents/Project ' || i, 1, 1, 3 "
            "FROM n"),
        {{":count", std::max(1, files / FilesOfFolder)}});
    Run(*store,
        QStringLiteral(
            "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < :count) "
            "INSERT INTO FileConfiguration (folderConfigurationId, name, clientPath, serverPath, checkSum, "
            "createdDateTime, "
            "lastModifiedDateTime, syncStatus, lastOperationType, size, rootFolderId, syncOption, parentFileId, "
            "fileType, "
            "privileges, productConfigurationId, serverFileId, serverFileVersionId, checkSumMD5) "
            "SELECT 2 + i / 1000, name, '/home/ada/Documents/Project ' || (i / 1000) || '/' || name, "
            "'/Documents/Project ' || (i / 1000) || '/' || name, printf('%064d', i), 1700000000000 + i, "
            "1700000000000 + i * 7919 % 1000003, 1 + i % 97 / 48, 0, i * 7919 % 1000003, 1, 0, -1, 0, 31, -1, "
            "'file-' || i, 'version-' || i, printf('%032d', i) "
            "FROM (SELECT i, 'Letter ' || (i * 7919 % 1000003) || ' to the printer.odt' AS name FROM n)"),
        {{":count", files}});
    Require(transaction->commit(), "the store cannot be filled");
}

/// The other process: adds, removes and changes a few files in each commit.
int Write(QString const& path, int commits)
{
    std::shared_ptr<SqliteDatabaseFactory> const store = Open(path);
    for (int commit = 0; commit < commits; ++commit) {
        QThread::msleep(WriterPauseMsec);
        auto const transaction = store->CreateDatabase();
        Require(transaction->transaction(), "a write failed");
        Run(*store,
            QStringLiteral("INSERT INTO FileConfiguration (folderConfigurationId, rootFolderId, name, syncStatus) "
                           "SELECT folderConfigurationId, 1, 'New ' || name, 2 FROM FileConfiguration "
                           "WHERE id % 5000 = :commit LIMIT 20"),
            {{":commit", commit + 1}});
        Run(*store, QStringLiteral("DELETE FROM FileConfiguration WHERE id % 50000 = :commit"), {{":commit", commit}});
        Run(*store,
            QStringLiteral("UPDATE FileConfiguration SET syncStatus = 3 - syncStatus, name = name || '~' "
                           "WHERE id BETWEEN :commit AND :commit + 20"),
            {{":commit", commit * 100}});
        Require(transaction->commit(), "a write failed");
    }
    return 0;
}

qint64 BytesInMemory()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    Require(file.open(QIODevice::ReadOnly), "the memory cannot be read");
    return file.readAll().split(' ').value(1).toLongLong() * ::sysconf(_SC_PAGESIZE);
}

void PrintMemory(char const* what, qint64 before)
{
    std::printf("%-40s %.1f MiB\n", what, double(BytesInMemory() - before) / (1024 * 1024));
}

/// Measures steps of scrolling, each until its rows have been painted with values.
void MeasureSteps(QString const& what, QAbstractItemView& view, std::function<void(int step)> const& scroll)
{
    std::vector<Time> times;
    for (int step = 0; step < Steps; ++step) {
        Application().events.clear();
        QTimer::singleShot(0, &view, [&] { scroll(step); });
        HandleEventsFor(0);
        WaitFor([&view] {
            QModelIndex const top = view.indexAt(QPoint(2, 2));
            return top.siblingAtColumn(0).data().isValid();
        });
        HandleEventsFor(0); // paints
        times.push_back(Longest());
    }
    Print(what, times);
}

void MeasureScrolling(QString const& kind, QAbstractItemView& view)
{
    QScrollBar& bar = *view.verticalScrollBar();
    std::mt19937 random(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same places in every run
    bar.setValue(0);
    MeasureSteps(kind + QStringLiteral(": scrolling by pages"), view, [&](int) {
        bar.triggerAction(QScrollBar::SliderPageStepAdd);
    });
    MeasureSteps(kind + QStringLiteral(": scrolling by jumps"), view, [&](int) {
        bar.setValue(std::uniform_int_distribution<int>(0, bar.maximum())(random));
    });
}

/// Measures what happens until the model has read everything.
void MeasureLoading(char const* what, FileListModel& model, std::function<void()> const& begin)
{
    Application().events.clear();
    Stopwatch const watch;
    QTimer::singleShot(0, &model, begin);
    HandleEventsFor(0);
    WaitFor([&model] { return !model.isLoading(); });
    HandleEventsFor(0);
    std::vector<Time> const times = Application().events;
    std::printf("%-40s %.0f ms until all is read\n", what, watch.Elapsed().msecs);
    Print(QString::fromLatin1(what), times);
}

void MeasureRefreshing(char const* what, QString const& path, int commits)
{
    QProcess writer;
    bool hasEnded = false;
    QObject::connect(
        &writer, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), [&hasEnded] { hasEnded = true; });
    writer.setProcessChannelMode(QProcess::ForwardedChannels);
    writer.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--write"), path, QString::number(commits)});
    Application().events.clear();
    WaitFor([&hasEnded] { return hasEnded; });
    Require(writer.exitCode() == 0, "the other process failed");
    Print(QString::fromLatin1(what), Application().events);
}

void Show(QTableView& view, QAbstractItemModel& model)
{
    view.setModel(&model);
    for (int column = 0; column < model.columnCount(); ++column) {
        bool const isShown =
            std::find(std::begin(ShownColumns), std::end(ShownColumns), column) != std::end(ShownColumns);
        view.setColumnHidden(column, !isShown);
    }
    view.resize(800, 600);
    view.show();
}

/// A table that has nothing to look for.
class PlainModel : public QAbstractTableModel
{
public:
    PlainModel(int rows, int columns)
        : _rows(rows)
        , _columns(columns)
    {}

    int rowCount(QModelIndex const& parent = {}) const override { return parent.isValid() ? 0 : _rows; }
    int columnCount(QModelIndex const& parent = {}) const override { return parent.isValid() ? 0 : _columns; }
    QVariant data(QModelIndex const&, int role) const override
    {
        return role == Qt::DisplayRole ? QVariant(_text) : QVariant();
    }

private:
    int const _rows;
    int const _columns;
    QString const _text = QStringLiteral("Letter 123456");
};

void MeasureViewAlone(int files, int columns)
{
    PlainModel model(files, columns);
    QTableView view;
    Show(view, model);
    HandleEventsFor(0);
    MeasureScrolling(QStringLiteral("a view alone"), view);
}

void MeasureFiles(QString const& path, int files, int commits)
{
    qint64 const before = BytesInMemory();
    std::shared_ptr<SqliteDatabaseFactory> const store = Open(path);
    Application().events.clear();
    Stopwatch const watch;
    FileListModel model(store);
    QTableView view;
    model.ShowRoot(1);
    Show(view, model);
    Time handled = watch.Elapsed();
    WaitFor([&model] { return model.index(0, NameColumn).data().isValid(); });
    HandleEventsFor(0);
    for (Time const& time : Application().events) {
        handled.msecs += time.msecs;
        handled.ownMsecs += time.ownMsecs;
    }
    std::printf("%-40s the window's thread: %.2f ms, running %.2f ms; the first rows after %.2f ms\n",
                "files: opening",
                handled.msecs,
                handled.ownMsecs,
                watch.Elapsed().msecs);
    MeasureLoading("files: the other rows", model, [] {});
    Require(model.rowCount() == files, "rows are missing");
    PrintMemory("files: memory, with the view", before);
    MeasureScrolling(QStringLiteral("files"), view);
    PrintMemory("files: memory after scrolling", before);
    MeasureLoading("files: sorting by name", model, [&model] { model.sort(NameColumn); });
    MeasureLoading("files: filtering by name", model, [&model] { model.SetNameFilter(QStringLiteral("99")); });
    MeasureLoading("files: no filter", model, [&model] { model.SetNameFilter({}); });
    MeasureLoading("files: sorting by id", model, [&model] { model.sort(-1); });
    StoreWatcher const watcher(store);
    model.Follow(watcher);
    MeasureRefreshing("files: refreshing while another writes", path, commits);
    MeasureLoading("files: the last refresh", model, [] {});
    PrintMemory("files: memory at the end", before);
    ::malloc_trim(0);
    PrintMemory("files: without what malloc keeps", before);
}

void MeasureFolders(QString const& path, int commits)
{
    qint64 const before = BytesInMemory();
    std::shared_ptr<SqliteDatabaseFactory> const store = Open(path);
    Application().events.clear();
    Stopwatch const watch;
    FolderTreeModel model(store);
    QTreeView view;
    view.setUniformRowHeights(true);
    view.setModel(&model);
    view.resize(300, 600);
    view.show();
    view.expandToDepth(0);
    HandleEventsFor(0);
    std::printf("%-40s %.2f ms, with the children of the root\n", "folders: opening", watch.Elapsed().msecs);
    PrintMemory("folders: memory, with the view", before);
    MeasureScrolling(QStringLiteral("folders"), view);
    StoreWatcher const watcher(store);
    model.Follow(watcher);
    MeasureRefreshing("folders: refreshing while another writes", path, commits);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    TimedApplication const application(argc, argv);
    QStringList const arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QStringLiteral("--write"))
        return Write(arguments.value(2), arguments.value(3).toInt());
    if (arguments.size() < 2) {
        static_cast<void>(std::fputs("Usage: tandry_models_benchmark DIRECTORY [FILES [COMMITS]]\n", stderr));
        return 2;
    }
    int const files = arguments.value(2, QStringLiteral("1000000")).toInt();
    int const commits = arguments.value(3, QStringLiteral("200")).toInt();
    QTemporaryDir const folder(arguments.at(1) + QStringLiteral("/models-XXXXXX"));
    QString const path = folder.filePath(QStringLiteral("store.db"));
    Fill(path, files);
    // First, so that what follows finds fonts and style loaded.
    MeasureViewAlone(files, FileListModel(Open(path)).columnCount());
    MeasureFiles(path, files, commits);
    MeasureFolders(path, commits);
    return 0;
}
