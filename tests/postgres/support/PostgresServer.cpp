#include "postgres/support/PostgresServer.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <pwd.h>
#include <unistd.h>

#include <csignal>

namespace tandry::test {

namespace {

/// The server refuses to run as root.
passwd const* OtherUser()
{
    passwd const* user = getpwnam("postgres");
    return user != nullptr ? user : getpwnam("nobody");
}

} // namespace

QString PostgresServer::ProgramFolder()
{
    QDir const versions(QStringLiteral("/usr/lib/postgresql"));
    for (QString const& version : versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::Reversed)) {
        QString const folder = versions.filePath(version) + QStringLiteral("/bin");
        if (QFile::exists(folder + QStringLiteral("/initdb")))
            return folder;
    }
    QString const found = QStandardPaths::findExecutable(QStringLiteral("initdb"));
    return found.isEmpty() ? QString() : QFileInfo(found).canonicalPath();
}

PostgresServer::PostgresServer()
{
    if (ProgramFolder().isNull()) {
        _problem = QStringLiteral("PostgreSQL is not installed (Debian: apt-get install postgresql)");
        return;
    }
    if (geteuid() == 0) {
        passwd const* const user = OtherUser();
        if (user == nullptr || chown(QFile::encodeName(_folder.path()).constData(), user->pw_uid, user->pw_gid) != 0) {
            _problem = QStringLiteral("there is no user other than root to run PostgreSQL");
            return;
        }
    }
    if (Run(QStringLiteral("initdb"),
            {QStringLiteral("--pgdata=%1/data").arg(_folder.path()),
             QStringLiteral("--username=tandry"),
             QStringLiteral("--auth=trust"),
             QStringLiteral("--encoding=UTF8"),
             QStringLiteral("--locale=C.UTF-8"),
             QStringLiteral("--no-sync")}))
        Start();
}

PostgresServer::~PostgresServer()
{
    Crash();
}

PostgresServer& PostgresServer::Shared()
{
    static PostgresServer server;
    return server;
}

QString PostgresServer::Uri(QString const& profile, QString const& parameters) const
{
    QString uri =
        QStringLiteral("postgresql://tandry@/postgres?host=%1&tandry_profile=%2").arg(_folder.path(), profile);
    return parameters.isEmpty() ? uri : uri + QLatin1Char('&') + parameters;
}

QString PostgresServer::NewProfile()
{
    static int count = 0;
    return QStringLiteral("test%1").arg(++count);
}

bool PostgresServer::Run(QString const& program, QStringList const& arguments)
{
    QStringList command{QStringLiteral("--pdeathsig"), QStringLiteral("QUIT")};
    if (geteuid() == 0) {
        passwd const* const user = OtherUser();
        command << QStringLiteral("--reuid=%1").arg(user->pw_uid) << QStringLiteral("--regid=%1").arg(user->pw_gid)
                << QStringLiteral("--clear-groups");
    }
    command << ProgramFolder() + QLatin1Char('/') + program << arguments;
    _server.setWorkingDirectory(QStringLiteral("/"));
    _server.setProcessChannelMode(QProcess::MergedChannels);
    _server.start(QStringLiteral("setpriv"), command);
    if (program == QLatin1String("postgres"))
        return _server.waitForStarted();
    bool const succeeded = _server.waitForFinished(60'000) && _server.exitCode() == 0;
    if (!succeeded)
        _problem = program + QStringLiteral(" failed: ") + QString::fromUtf8(_server.readAll());
    return succeeded;
}

void PostgresServer::Start()
{
    // What the server acknowledged survives its end without flushes too; only a power cut would show them.
    QStringList arguments{
        QStringLiteral("-D"), _folder.path() + QStringLiteral("/data"), QStringLiteral("-k"), _folder.path()};
    for (char const* setting : {"listen_addresses=", "fsync=off", "shared_buffers=16MB", "max_connections=60"})
        arguments << QStringLiteral("-c") << QString::fromUtf8(setting);
    _problem = QStringLiteral("the server does not start");
    if (!Run(QStringLiteral("postgres"), arguments))
        return;
    QByteArray log;
    while (!log.contains("ready to accept connections")) {
        if (!_server.waitForReadyRead(60'000)) {
            _problem += QStringLiteral(": ") + QString::fromUtf8(log);
            return;
        }
        log += _server.readAll();
    }
    _problem = QString();
}

void PostgresServer::Crash()
{
    if (_server.state() == QProcess::NotRunning)
        return;
    ::kill(static_cast<pid_t>(_server.processId()), SIGQUIT);
    _server.waitForFinished(60'000);
}

} // namespace tandry::test
