// Records a folder on a thread of the managers' own while the event loop of this one goes on.

#include "database/SqliteDatabaseFactory.h"
#include "models/AsyncManagers.h"

#include <QCoreApplication>
#include <QFutureWatcher>
#include <QTextStream>

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using sync::config::Managers;
using sync::database::SqliteDatabaseFactory;
using sync::models::Answer;
using sync::models::AsyncManagers;

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QString error;
    auto const store = SqliteDatabaseFactory::Open(QStringLiteral("folders.db"), &error);
    if (!store)
        qFatal("%s", qPrintable(error));
    AsyncManagers managers(store);

    // All or nothing. The listing below runs after it, in the order of the calls.
    auto const recorded = managers.RunInTransaction([](Managers const& own) {
        FolderConfiguration root;
        root.setParentId(0);
        root.setClientPath(QStringLiteral("/home/ada/Documents"));
        if (!own.folders->Add(root))
            return false;
        FileConfiguration file;
        file.clientPath = QStringLiteral("/home/ada/Documents/letter.txt");
        file.folderConfigurationId = root.getId();
        file.rootFolderId = root.getId();
        return own.files->Add(file);
    });

    QFutureWatcher<Answer<QVector<FileConfiguration>>> watcher;
    QObject::connect(&watcher, &QFutureWatcherBase::finished, &application, [&] {
        auto const files = watcher.result();
        for (FileConfiguration const& file : files.value)
            QTextStream(stdout) << file.clientPath << '\n';
        for (auto const& failure : {recorded.result().error, files.error}) {
            if (failure)
                QTextStream(stderr) << failure->text << '\n';
        }
        application.exit(recorded.result().value && !files.error ? 0 : 1);
    });
    watcher.setFuture(managers.files.GetAll());
    return application.exec();
}
