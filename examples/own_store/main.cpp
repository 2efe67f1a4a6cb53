// Runs managers on a store of the program's own, which keeps the records by Qt SQL.
// Usage: example_own_store [FILE]

#include "QtSqlDatabaseFactory.h"
#include "config/Managers.h"
#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"

#include <QCoreApplication>
#include <QTextStream>

using namespace sync::config;
using own_store::QtSqlDatabaseFactory;
using sync::database::TransactionalScope;

namespace {

FileConfiguration FileIn(FolderConfiguration const& root, QString const& name)
{
    FileConfiguration file;
    file.name = name;
    file.clientPath = root.getClientPath() + QLatin1Char('/') + name;
    file.rootFolderId = root.getId();
    file.folderConfigurationId = root.getId();
    return file;
}

int Fail(char const* what)
{
    QTextStream(stderr) << what << '\n';
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv); // Qt SQL finds its drivers by it
    QString const path = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("own.db");
    QTextStream out(stdout);
    int rootId = -1;
    {
        auto const store = QtSqlDatabaseFactory::Open(path);
        if (!store)
            return Fail("cannot open the store");
        Managers const managers(store);

        FolderConfiguration root;
        root.setParentId(0);
        root.setClientPath(QStringLiteral("/home/ada/Documents"));
        if (!managers.folders->Add(root))
            return Fail("cannot add the root");
        rootId = root.getId();

        {
            TransactionalScope scope; // both files become durable together
            FileConfiguration letter = FileIn(root, QStringLiteral("letter.txt"));
            FileConfiguration list = FileIn(root, QStringLiteral("list.txt"));
            if (!managers.files->Add(letter) || !managers.files->Add(list) || !scope.commit())
                return Fail("cannot add the files");
        }

        // All or nothing: the rollback takes the file back.
        auto const transaction = store->CreateDatabase();
        FileConfiguration draft = FileIn(root, QStringLiteral("draft.txt"));
        if (!transaction->transaction() || !managers.files->Add(draft) || !transaction->rollback())
            return Fail("cannot roll back");
    }

    auto const store = QtSqlDatabaseFactory::Open(path);
    if (!store)
        return Fail("cannot open the store again");
    auto const files =
        Managers(store).files->GetFileConfigurationsByRootFolderId(rootId, sync::interf::FileConfigOrderByName);
    for (FileConfiguration const& file : files)
        out << file.clientPath << '\n';
}
