#include "config/FolderConfigManager.h"
#include "database/SqliteDatabaseFactory.h"

#include <QTextStream>

int main()
{
    QString error;
    auto const store = sync::database::SqliteDatabaseFactory::Open(QStringLiteral("folders.db"), &error);
    if (!store)
        qFatal("%s", qPrintable(error));

    sync::config::FolderConfigManager folders(store, nullptr);
    sync::config::FolderConfiguration root;
    root.setParentId(0); // marks a root
    root.setClientPath(QStringLiteral("/home/ada/Documents"));
    if (!folders.Add(root))
        return 1;
    for (sync::config::FolderConfiguration const& folder : folders.GetAllRootFolders())
        QTextStream(stdout) << folder.getId() << ' ' << folder.getClientPath() << '\n';
}
