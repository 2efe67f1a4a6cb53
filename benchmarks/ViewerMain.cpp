// Measures tandry-viewer on a store of many files while 'tandryctl scan' adds others to it: the time to the first
// paint, how long the window's thread is kept from its events, memory, and what the window costs when nothing happens.
//
// Usage: tandry_viewer_benchmark TANDRYCTL DIRECTORY [FILES [SCANNED]]
//
// FILES are in the store before the window opens, 1,000,000 unless told otherwise; SCANNED are made on disk, 100,000.
// As in tandry_models_benchmark, each line has the longest and the median event of the window's thread, in milliseconds
// of the clock and in those for which the thread ran, and the offscreen platform draws into memory. Takes an idle
// minute.

#include "benchmarks/Failure.h"
#include "benchmarks/FileTree.h"
#include "benchmarks/WindowTimes.h"
#include "models/FileListModel.h"
#include "tools/viewer/MainWindow.h"
#include "tools/viewer/StoreView.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QProcess>
#include <QScrollBar>
#include <QStringList>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <utility>

#include <sys/resource.h>

namespace {

using namespace sync::benchmarks;
using sync::models::FileListModel;
using tandry::viewer::MainWindow;

constexpr int FilesOfFolder = 1000;
constexpr int IdleMsec = 60000;
/// A person who scrolls while the store is filled.
constexpr int ScrollMsec = 100;
/// In all names of the store and of the tree, so that a search for it shows all files of a root.
QString const PartOfAllNames = QStringLiteral("e");

void MakeTree(QString const& root, int files)
{
    for (int file = 0; file < files; ++file) {
        QString const folder = root + QStringLiteral("/Folder %1").arg(file / FilesOfFolder);
        if (file % FilesOfFolder == 0)
            Require(QDir().mkpath(folder), "the tree cannot be made");
        QFile made(folder + QStringLiteral("/Letter %1.odt").arg(file));
        Require(made.open(QIODevice::WriteOnly), "the tree cannot be made");
    }
}

/// Notes when something is painted first.
class PaintNotice : public QObject
{
public:
    bool isPainted = false;

    bool eventFilter(QObject*, QEvent* event) override
    {
        isPainted = isPainted || event->type() == QEvent::Paint;
        return false;
    }
};

/// The window on the store, as tandry-viewer opens it.
class Viewer
{
public:
    explicit Viewer(QString const& path)
    {
        Stopwatch const watch;
        Application().installEventFilter(&_notice);
        _window.Open(path);
        _window.show();
        WaitFor([this] { return _notice.isPainted; });
        double const painted = watch.Elapsed().msecs;
        WaitFor([this] { return _window.storeView() != nullptr; });
        _notice.isPainted = false;
        WaitFor([this] { return _notice.isPainted; });
        std::printf("opening: first paint after %.1f ms, the store's folders painted after %.1f ms\n",
                    painted,
                    watch.Elapsed().msecs);
        Application().removeEventFilter(&_notice);
        files = qobject_cast<QTableView*>(_window.storeView()->files());
        search = qobject_cast<QLineEdit*>(_window.storeView()->search());
        model = _window.storeView()->findChild<FileListModel*>();
        Require(files != nullptr && search != nullptr && model != nullptr, "the window lacks a part");
        WaitFor([this] { return !model->isLoading(); });
    }

    void SearchAll(int expected)
    {
        Application().events.clear();
        Stopwatch const watch;
        search->setText(PartOfAllNames);
        WaitFor([&] { return model->rowCount() == expected && !model->isLoading(); });
        std::printf("searching: %d rows after %.0f ms\n", expected, watch.Elapsed().msecs);
        Print(QStringLiteral("searching"), std::exchange(Application().events, {}));
    }

    QTableView* files = nullptr;
    QLineEdit* search = nullptr;
    FileListModel* model = nullptr;

private:
    PaintNotice _notice;
    MainWindow _window;
};

void MeasureScan(Viewer& viewer, QString const& tool, QStringList const& arguments)
{
    QProcess scan;
    bool hasEnded = false;
    QObject::connect(
        &scan, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), [&hasEnded] { hasEnded = true; });
    scan.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QTimer scrolling;
    QObject::connect(&scrolling, &QTimer::timeout, [&viewer] {
        viewer.files->verticalScrollBar()->triggerAction(QAbstractSlider::SliderPageStepAdd);
    });
    Application().events.clear();
    Stopwatch const watch;
    scan.start(tool, arguments);
    scrolling.start(ScrollMsec);
    WaitFor([&hasEnded] { return hasEnded; });
    scrolling.stop();
    Require(scan.exitStatus() == QProcess::NormalExit && scan.exitCode() == 0, "the scan failed");
    std::printf("the scan took %.0f ms\n", watch.Elapsed().msecs);
    Print(QStringLiteral("scrolling during the scan"), std::exchange(Application().events, {}));
}

rusage Usage()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage;
}

double ProcessorMsecs(rusage const& usage)
{
    auto const msecs = [](timeval const& time) { return double(time.tv_sec) * 1000 + double(time.tv_usec) / 1000; };
    return msecs(usage.ru_utime) + msecs(usage.ru_stime);
}

void MeasureIdleness()
{
    rusage const before = Usage();
    HandleEventsFor(IdleMsec);
    rusage const after = Usage();
    std::printf("an idle minute: %.0f ms of processor time, %ld context switches\n",
                ProcessorMsecs(after) - ProcessorMsecs(before),
                after.ru_nvcsw + after.ru_nivcsw - before.ru_nvcsw - before.ru_nivcsw);
}

/// Records the tree as a root, and returns the root's id.
QString AddRoot(QString const& tool, QStringList const& store, QString const& tree)
{
    QProcess add;
    add.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    add.start(tool,
              store + QStringList{QStringLiteral("--json"),
                                  QStringLiteral("root"),
                                  QStringLiteral("add"),
                                  tree,
                                  QStringLiteral("--server-path"),
                                  QStringLiteral("/tree")});
    Require(add.waitForFinished(-1) && add.exitCode() == 0, "tandryctl could not add the root");
    QJsonObject const root = QJsonDocument::fromJson(add.readAllStandardOutput()).array().at(0).toObject();
    return QString::number(root.value(QStringLiteral("id")).toInt());
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    TimedApplication const application(argc, argv);
    QStringList const arguments = QCoreApplication::arguments();
    if (arguments.size() < 3) {
        static_cast<void>(std::fputs("Usage: tandry_viewer_benchmark TANDRYCTL DIRECTORY [FILES [SCANNED]]\n", stderr));
        return 2;
    }
    QString const tool = arguments.at(1);
    int const files = arguments.value(3, QStringLiteral("1000000")).toInt();
    int const scanned = arguments.value(4, QStringLiteral("100000")).toInt();
    QTemporaryDir const folder(arguments.at(2) + QStringLiteral("/viewer-XXXXXX"));
    QString const path = folder.filePath(QStringLiteral("store.db"));
    QString const tree = folder.filePath(QStringLiteral("tree"));
    Fill(path, files);
    MakeTree(tree, scanned);
    QStringList const store{QStringLiteral("--store"), path};
    QString const root = AddRoot(tool, store, tree);

    Viewer viewer(path);
    viewer.SearchAll(files);
    MeasureScrolling(QStringLiteral("scrolling"), *viewer.files);
    MeasureScan(viewer, tool, store + QStringList{QStringLiteral("scan"), root});
    WaitFor([&viewer] { return !viewer.model->isLoading(); });
    std::printf("memory: %.1f MiB, at most %.1f MiB\n",
                double(BytesInMemory()) / (1024 * 1024),
                double(Usage().ru_maxrss) / 1024);
    HandleEventsFor(IdleMsec / 4); // the bars are counted for the last time
    MeasureIdleness();
    return 0;
}
