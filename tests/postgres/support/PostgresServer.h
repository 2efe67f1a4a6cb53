#pragma once

#include <QDir>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace tandry::test {

/// A PostgreSQL server of the test's own, in a temporary folder and reachable through a socket there. It ends with the
/// process.
class PostgresServer
{
public:
    /// Starts a server with these settings, such as "max_connections=300". With a primary, it is a standby with a copy
    /// of its data, and gets what the primary writes from now on. The server's folder lies in `parentFolder`.
    explicit PostgresServer(QStringList settings = {},
                            PostgresServer const* primary = nullptr,
                            QString const& parentFolder = QDir::tempPath());
    ~PostgresServer();
    PostgresServer(PostgresServer const&) = delete;
    PostgresServer& operator=(PostgresServer const&) = delete;

    /// Returns the server that the cases of a program share, which is started with the first call.
    static PostgresServer& Shared();

    /// Returns the folder with the server's programs, which Debian keeps off the path; null if there is none.
    static QString ProgramFolder();

    /// Returns why there is no server; null if it runs.
    QString const& problem() const { return _problem; }

    /// Returns the folder with the socket, which stands for a host in a URI.
    QString host() const { return _folder.path(); }
    /// Returns the URI of a profile; parameters such as "sslmode=disable" may follow.
    QString Uri(QString const& profile, QString const& parameters = {}) const;
    /// Returns a profile's name that no other call of the process returns.
    static QString NewProfile();

    void Start();
    /// Ends the server as a crash would, like `pg_ctl stop -m immediate`: it writes nothing any more.
    void Crash();

private:
    bool Run(QString const& program, QStringList const& arguments);
    bool WaitUntilReady() const;
    QByteArray Log() const;
    QString DataFolder() const { return _folder.filePath(QStringLiteral("data")); }
    QString LogFile() const { return _folder.filePath(QStringLiteral("log")); }

    QTemporaryDir _folder;
    QStringList const _settings;
    QString _problem;
    QProcess _server;
};

} // namespace tandry::test
