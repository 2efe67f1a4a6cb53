// Adds a root and folders below it in one client transaction, and lists them. Shows how a client handles failures.
// Usage: example_folders [STORE]

#include "config/FolderConfigManager.h"
#include "database/SqliteDatabaseFactory.h"
#include "database/SqliteProcess.h"
#include "database/StoreFactory.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IRefreshNativeFileViewer.h"

#include <QTextStream>

#include <memory>

using sync::config::FolderConfigManager;
using sync::config::FolderConfiguration;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreFactory;

namespace {

/// A real client would make the file manager redraw the folder here.
class Shell : public sync::interf::IRefreshNativeFileViewer
{
public:
    void Refresh(QString path) override { QTextStream(stdout) << "redraw " << path << '\n'; }
};

/// The managers answer only whether it worked; the store tells why it did not.
int Fail(StoreFactory& store, char const* what)
{
    QTextStream err(stderr);
    err << what;
    if (auto const error = store.LastError())
        err << ": " << error->text;
    err << '\n';
    return 1;
}

void PrintTree(FolderConfigManager& folders, FolderConfiguration const& folder, int depth)
{
    QTextStream(stdout) << QString(2 * depth, QLatin1Char(' ')) << folder.getName() << '\n';
    for (FolderConfiguration const& child : folders.GetFolderConfigurationByParentId(folder.getId()))
        PrintTree(folders, child, depth + 1);
}

} // namespace

int main(int argc, char** argv)
{
    // SQLite is this program's own, and nothing in it asks how much memory SQLite uses.
    sync::database::DisableSqliteMemoryStatistics();

    QString const path = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("folders.db");
    QString error;
    std::shared_ptr<SqliteDatabaseFactory> const store = SqliteDatabaseFactory::Open(path, &error);
    if (!store) {
        QTextStream(stderr) << error << '\n';
        return 1;
    }
    FolderConfigManager folders(store, std::make_shared<Shell>());

    // Without this client transaction, each Add would be durable on its own. If the program returns before the commit,
    // closing the store rolls the transaction back.
    auto const transaction = store->CreateDatabase();
    if (!transaction->transaction())
        return Fail(*store, "cannot begin");

    FolderConfiguration root;
    root.setParentId(0);
    root.setName(QStringLiteral("Documents"));
    root.setClientPath(QStringLiteral("/home/ada/Documents"));
    root.setServerPath(QStringLiteral("/Documents"));
    if (!folders.Add(root))
        return Fail(*store, "cannot add the root");

    // Adds "Letters" first, which is missing between the two.
    FolderConfiguration const year =
        folders.AddFolderAndParent(QStringLiteral("/home/ada/Documents/Letters/2024"), root);
    if (year.getId() == -1)
        return Fail(*store, "cannot add the folder");

    if (!transaction->commit())
        return Fail(*store, "cannot commit");

    // A listing is also empty or incomplete if the store could not be read: only LastError tells.
    store->ClearError();
    PrintTree(folders, root, 0);
    return store->LastError() ? Fail(*store, "cannot read all of it") : 0;
}
