// Opens a store, adds a root folder and reads it back. README shows the body of main.

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
    if (folders.Add(root))
        QTextStream(stdout) << folders.GetFolderConfigurationById(root.getId()).getClientPath() << '\n';
}
