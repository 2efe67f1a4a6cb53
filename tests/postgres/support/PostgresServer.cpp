#include "postgres/support/PostgresServer.h"

#include <QFile>
#include <QStandardPaths>

#include <poll.h>
#include <pwd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <csignal>
#include <utility>

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

PostgresServer::PostgresServer(QStringList settings, PostgresServer const* primary, QString const& parentFolder)
    : _folder(parentFolder + QStringLiteral("/server-XXXXXX"))
    , _settings(std::move(settings))
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
    QString const dataFolder = QStringLiteral("--pgdata=") + DataFolder();
    bool const hasData = primary == nullptr ? Run(QStringLiteral("initdb"),
                                                  {dataFolder,
                                                   QStringLiteral("--username=tandry"),
                                                   QStringLiteral("--auth=trust"),
                                                   QStringLiteral("--encoding=UTF8"),
                                                   QStringLiteral("--locale=C.UTF-8"),
                                                   QStringLiteral("--no-sync")})
                                            : Run(QStringLiteral("pg_basebackup"),
                                                  {dataFolder,
                                                   QStringLiteral("--host=") + primary->host(),
                                                   QStringLiteral("--username=tandry"),
                                                   QStringLiteral("--checkpoint=fast"),
                                                   QStringLiteral("--write-recovery-conf"),
                                                   QStringLiteral("--no-sync")});
    if (hasData)
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
    QString uri = QStringLiteral("postgresql://tandry@/postgres?host=%1&tandry_profile=%2").arg(host(), profile);
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
    // What the server acknowledged survives its end without flushes too; only a power cut would show them. A standby
    // asks for its primary at once rather than after 5 seconds.
    QStringList settings{QStringLiteral("listen_addresses="),
                         QStringLiteral("fsync=off"),
                         QStringLiteral("shared_buffers=16MB"),
                         QStringLiteral("max_connections=60"),
                         QStringLiteral("wal_retrieve_retry_interval=20ms")};
    QStringList arguments{QStringLiteral("-D"), DataFolder(), QStringLiteral("-k"), host()};
    for (QString const& setting : settings + _settings)
        arguments << QStringLiteral("-c") << setting;
    // Nobody reads a pipe while the tests run, and a server whose log does not flow off stops.
    _server.setStandardOutputFile(LogFile());
    _problem = QString();
    if (!Run(QStringLiteral("postgres"), arguments) || !WaitUntilReady())
        _problem = QStringLiteral("the server does not start: ") + QString::fromUtf8(Log());
}

QByteArray PostgresServer::Log() const
{
    QFile file(LogFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Also true for a standby, which is ready for reading only.
bool PostgresServer::WaitUntilReady() const
{
    constexpr int TimeoutMsec = 60'000;
    auto const isReady = [this] { return Log().contains("is ready to accept"); };
    pollfd changes{::inotify_init1(IN_CLOEXEC), POLLIN, 0};
    ::inotify_add_watch(changes.fd, QFile::encodeName(LogFile()).constData(), IN_MODIFY);
    char events[4096];
    while (!isReady() && ::poll(&changes, 1, TimeoutMsec) > 0 && ::read(changes.fd, events, sizeof events) > 0) {
    }
    ::close(changes.fd);
    return isReady();
}

void PostgresServer::Crash()
{
    if (_server.state() == QProcess::NotRunning)
        return;
    ::kill(static_cast<pid_t>(_server.processId()), SIGQUIT);
    _server.waitForFinished(60'000);
}

} // namespace tandry::test
