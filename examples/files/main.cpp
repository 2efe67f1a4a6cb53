// Records a server, an account on it, a root of this account and a file with links, and shows what becomes of the
// links. Usage: example_files [STORE]

#include "config/Managers.h"
#include "database/SqliteDatabaseFactory.h"

#include <QDir>
#include <QFile>
#include <QTextStream>

using namespace sync::config;
using sync::database::SqliteDatabaseFactory;

namespace {

int Fail(SqliteDatabaseFactory const& store)
{
    auto const error = store.LastError();
    QTextStream(stderr) << (error ? error->text : QStringLiteral("not on record")) << '\n';
    return 1;
}

void WriteFile(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(path));
}

FileLink LinkTo(QString const& path)
{
    FileLink link;
    link.path = path; // relative to the folder of the linking file, or absolute
    return link;
}

} // namespace

int main(int argc, char** argv)
{
    QString const path = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("files.db");
    QString error;
    auto const store = SqliteDatabaseFactory::Open(path, &error);
    if (!store) {
        QTextStream(stderr) << error << '\n';
        return 1;
    }
    Managers const managers(store);
    QTextStream out(stdout);

    ServerConfiguration server;
    server.setDavUrl(QStringLiteral("https://files.example.org/dav/"));
    server.setWebServiceUrl(QStringLiteral("https://files.example.org/api"));
    if (!managers.servers->Add(server))
        return Fail(*store);

    AuthenticationConfiguration account;
    account.setDomain(QStringLiteral("example"));
    account.setUserName(QStringLiteral("ada"));
    account.setPassword(QStringLiteral("a secret")); // stays in memory: no store ever has a password
    account.setServerId(server.getId());
    if (!managers.accounts->Add(account))
        return Fail(*store);

    QString const folder = QDir::current().absoluteFilePath(QStringLiteral("Documents"));
    FolderConfiguration root;
    root.setParentId(0);
    root.setAuthenticationId(account.getId());
    root.setClientPath(folder);
    root.setServerPath(QStringLiteral("/Documents"));
    if (!managers.folders->Add(root))
        return Fail(*store);

    // Links lead to what is on disk below the root. One to a file that is not on record records it, with its folders.
    QDir().mkpath(folder + QStringLiteral("/figures"));
    WriteFile(folder + QStringLiteral("/report.md"));
    WriteFile(folder + QStringLiteral("/figures/plan.svg"));

    FileConfiguration report;
    report.name = QStringLiteral("report.md");
    report.clientPath = folder + QStringLiteral("/report.md");
    report.serverPath = QStringLiteral("/Documents/report.md");
    report.rootFolderId = root.getId();
    report.folderConfigurationId = root.getId();
    report.privileges = FilePrivilegeView | FilePrivilegeDownload;
    report.fileLinks = {LinkTo(QStringLiteral("figures/plan.svg")), LinkTo(QStringLiteral("../letter.txt"))};
    if (!managers.files->Add(report))
        return Fail(*store);

    for (FileLink const& link : report.fileLinks) {
        if (link.fileId == -1) {
            out << link.path << ": leads to no file in the root\n";
            continue;
        }
        FileConfiguration const target = managers.files->GetFileConfigurationById(link.fileId);
        if (target.id == -1)
            return Fail(*store);
        out << link.path << ": file " << target.id << ", on the server " << target.serverPath << '\n';
    }

    // From a file to its server: by its folder and the folder's account.
    ServerConfiguration const found = managers.servers->GetServerConfigByFileId(report.id);
    if (found.getId() == -1)
        return Fail(*store);
    out << report.name << " is kept by " << found.getAlias() << " at " << found.getDavUrl() << '\n';

    AuthenticationConfiguration const stored = managers.accounts->GetAuthenticationConfigurationById(account.getId());
    out << stored.getUserName() << "'s password is " << (stored.getPassword().isNull() ? "not " : "") << "on record\n";
    return store->LastError() ? Fail(*store) : 0;
}
