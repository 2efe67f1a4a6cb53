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
#include "benchmarks/FileTree.h"
#include "benchmarks/WindowTimes.h"
#include "database/SqliteDatabaseFactory.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "models/FileListModel.h"
#include "models/FolderTreeModel.h"
#include "models/StoreWatcher.h"

#include <QAbstractTableModel>
#include <QHeaderView>
#include <QProcess>
#include <QStringList>
#include <QTableView>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>
#include <memory>
#include <vector>

#include <malloc.h>

namespace {

using namespace sync::benchmarks;
using sync::database::SqliteDatabaseFactory;
using sync::models::FileListModel;
using sync::models::FolderTreeModel;
using sync::models::StoreWatcher;

constexpr int WriterPauseMsec = 50;
constexpr int NameColumn = 2;
/// What a list usually shows: name, path, change, status and size.
constexpr int ShownColumns[] = {NameColumn, 3, 7, 8, 10};

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

void PrintMemory(char const* what, qint64 before)
{
    std::printf("%-40s %.1f MiB\n", what, double(BytesInMemory() - before) / (1024 * 1024));
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
