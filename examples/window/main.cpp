// A window that shows the roots and folders of a store as a tree, and follows what any program writes to it.
// Usage: example_window [--demo] [STORE]
//
// With --demo a second thread adds folders, as another program might; when they are shown, the window prints what it
// shows and closes.

#include "config/FolderConfigManager.h"
#include "database/SqliteDatabaseFactory.h"
#include "models/FolderTreeModel.h"
#include "models/StoreWatcher.h"

#include <QApplication>
#include <QMainWindow>
#include <QStatusBar>
#include <QTextStream>
#include <QTreeView>

#include <thread>

using sync::config::FolderConfigManager;
using sync::config::FolderConfiguration;
using sync::database::SqliteDatabaseFactory;
using sync::models::FolderTreeModel;
using sync::models::StoreWatcher;

namespace {

class Window : public QMainWindow
{
public:
    explicit Window(std::shared_ptr<SqliteDatabaseFactory> const& store)
        : _model(store)
        , _watcher(store)
    {
        _view.setHeaderHidden(true);
        setCentralWidget(&_view);
        setWindowTitle(tr("Folders"));

        _model.Follow(_watcher); // what comes, goes or changes is shown, and the view keeps its place
        _view.setModel(&_model);
        connect(&_model, &FolderTreeModel::Failed, statusBar(), [this](QString const& reason) {
            statusBar()->showMessage(reason); // the rows stay, and the next change is another attempt
        });
        connect(&_watcher, &StoreWatcher::Stopped, statusBar(), [this](sync::database::StoreError const& error) {
            statusBar()->showMessage(error.text); // a client opens the store again, and makes new models
        });
        connect(&_watcher, &StoreWatcher::Changed, statusBar(), [this](QStringList const& tables) {
            statusBar()->showMessage(tr("Changed: %1").arg(tables.join(QStringLiteral(", "))));
        });
    }

    QTreeView& view() { return _view; }
    FolderTreeModel& model() { return _model; }

private:
    FolderTreeModel _model;
    StoreWatcher _watcher;
    QTreeView _view;
};

/// Adds a root with a folder, as another program might. Each thread has its own connection to the store.
void AddFolders(std::shared_ptr<SqliteDatabaseFactory> const& store)
{
    FolderConfigManager folders(store, nullptr);
    FolderConfiguration root;
    root.setParentId(0);
    root.setName(QStringLiteral("Documents"));
    root.setClientPath(QStringLiteral("/home/ada/Documents"));
    root.setServerPath(QStringLiteral("/Documents"));
    if (folders.Add(root))
        folders.AddFolderAndParent(QStringLiteral("/home/ada/Documents/Letters"), root);
}

void Print(FolderTreeModel const& model, QModelIndex const& parent = {}, int depth = 0)
{
    for (int row = 0; row < model.rowCount(parent); ++row) {
        QModelIndex const index = model.index(row, 0, parent);
        QTextStream(stdout) << QString(2 * depth, QLatin1Char(' ')) << index.data().toString() << '\n';
        Print(model, index, depth + 1);
    }
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QStringList arguments = application.arguments().mid(1);
    bool const isDemo = arguments.removeAll(QStringLiteral("--demo")) > 0;

    QString error;
    auto const store = SqliteDatabaseFactory::Open(arguments.value(0, QStringLiteral("window.db")), &error);
    if (!store) {
        QTextStream(stderr) << error << '\n';
        return 1;
    }
    Window window(store);
    window.show();
    if (!isDemo)
        return QApplication::exec();

    auto const showAndClose = [&window] {
        window.view().expandAll(); // reads the branches that it opens
        if (window.model().rowCount(window.model().index(0, 0)) == 0)
            return;
        Print(window.model());
        QApplication::quit();
    };
    // Queued: a slot should not ask a model for more while it is being read.
    QObject::connect(&window.model(), &FolderTreeModel::Loaded, &window, showAndClose, Qt::QueuedConnection);
    std::thread other(AddFolders, store);
    int const status = QApplication::exec();
    other.join();
    return status;
}
