#include "benchmarks/Engine.h"
#include "benchmarks/Failure.h"
#include "benchmarks/Filling.h"
#include "benchmarks/ManagersBackend.h"
#include "benchmarks/PostgresApi.h"
#include "benchmarks/QtSqlApi.h"
#include "benchmarks/SqlBackend.h"
#include "postgres/PostgresDatabaseFactory.h"
#include "postgres/support/PostgresServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <map>
#include <memory>
#include <utility>

namespace sync::benchmarks {

namespace {

using database::PostgresDatabaseFactory;
using tandry::test::PostgresServer;

/// The managers' target.
constexpr double Limit = 1.15;
/// A process opens a profile of each of many users at once.
constexpr int Connections = 450;

/// Returns a port on which nobody listens.
int FreePort()
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    int const listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    Require(::bind(listener, generic, size) == 0 && ::getsockname(listener, generic, &size) == 0, "no free port");
    ::close(listener);
    return ntohs(address.sin_port);
}

/// Flushes as in production; no vacuum starts in the middle of a measurement.
QStringList ServerSettings(int port)
{
    return {QStringLiteral("listen_addresses=127.0.0.1"),
            QStringLiteral("unix_socket_directories="),
            QStringLiteral("port=%1").arg(port),
            QStringLiteral("max_connections=%1").arg(Connections),
            QStringLiteral("fsync=on"),
            QStringLiteral("shared_buffers=128MB"),
            QStringLiteral("autovacuum=off"),
            QStringLiteral("max_wal_size=4GB")};
}

/// A profile filled with samples, and a profile with the same rows for each backend.
class PostgresSampleStore final : public SampleStore
{
public:
    PostgresSampleStore(QString server, SampleRecords const& records, std::unique_ptr<SampleStore> onFile)
        : SampleStore(records)
        , _server(std::move(server))
        , _original(_NewProfile())
        , _onFile(std::move(onFile))
    {
        AddAccounts(PostgresDatabaseFactory::Open(_original));
        SqlBackend<PostgresApi> backend(_original);
        AddRecords(backend, records);
    }
    ~PostgresSampleStore() override
    {
        RemoveCopies();
        _Remove(_original);
        for (QString const& shared : std::as_const(_shared))
            _Remove(shared);
    }

    qint64 bytes() const override
    {
        return _Ask(QStringLiteral("SELECT sum(pg_total_relation_size(oid)) FROM pg_class WHERE relkind = 'r' AND "
                                   "relnamespace = '%1'::regnamespace")
                        .arg(PostgresApi::SchemaOf(_original)));
    }
    qint64 BytesOf(QString const& table) const override
    {
        return _Ask(QStringLiteral("SELECT pg_total_relation_size('%1')").arg(table));
    }

    QString CopyFor(BackendKind kind) override
    {
        if (kind == BackendKind::ManagersOnFile)
            return _onFile->CopyFor(kind);
        auto const known = _copies.find(kind);
        return known != _copies.end() ? known->second : (_copies[kind] = _Copy());
    }
    void RemoveCopies() override
    {
        for (auto const& [kind, copy] : _copies)
            _Remove(copy);
        _copies.clear();
        _onFile->RemoveCopies();
    }

    QStringList Copies(int count) override
    {
        while (_shared.size() < count)
            _shared.append(_Copy());
        return _shared.mid(0, count);
    }

private:
    QString _NewProfile() const
    {
        static int count = 0;
        QString const uri = _server + QStringLiteral("sample%1").arg(++count);
        QString error;
        if (!PostgresDatabaseFactory::Open(uri, &error))
            Fail(error);
        return uri;
    }

    qint64 _Ask(QString const& question) const { return PostgresApi(_original).Execute(question).toLongLong(); }

    QString _Copy() const
    {
        QString const copy = _NewProfile();
        PostgresApi(copy).Execute(
            QStringLiteral("DO $$ DECLARE name text; BEGIN FOR name IN SELECT tablename FROM pg_tables WHERE "
                           "schemaname = '%1' AND tablename <> 'tandry_version' LOOP "
                           "EXECUTE format('DELETE FROM %2.%I', name); "
                           "EXECUTE format('INSERT INTO %2.%I SELECT * FROM %1.%I', name, name); "
                           "EXECUTE format('SELECT setval(''%2.%I_id_seq'', max(id)) FROM %2.%I', name, name); "
                           "END LOOP; END $$")
                .arg(PostgresApi::SchemaOf(_original), PostgresApi::SchemaOf(copy)));
        PostgresApi(copy).Execute(QStringLiteral("VACUUM ANALYZE FileConfiguration, FolderConfiguration"));
        return copy;
    }

    static void _Remove(QString const& profile)
    {
        PostgresApi(profile).Execute(QStringLiteral("DROP SCHEMA %1 CASCADE").arg(PostgresApi::SchemaOf(profile)));
    }

    QString const _server;
    QString const _original;
    std::unique_ptr<SampleStore> const _onFile;
    std::map<BackendKind, QString> _copies;
    QStringList _shared;
};

class PostgresEngine : public Engine
{
public:
    explicit PostgresEngine(QString const& directory)
        : _onFile(MakeSqliteEngine(directory))
        , _port(FreePort())
        , _server(ServerSettings(_port), nullptr, directory)
    {
        if (!_server.problem().isNull())
            Fail(_server.problem());
        PostgresDatabaseFactory::SetConnectionLimit(Connections);
    }

    QString name() const override { return QStringLiteral("postgres"); }
    QString version() const override
    {
        return QStringLiteral("PostgreSQL ") + PostgresApi(_Uri()).Execute(QStringLiteral("SHOW server_version"));
    }
    std::vector<BackendKind> kinds() const override
    {
        std::vector<BackendKind> kinds = _onFile->kinds();
        kinds.push_back(BackendKind::ManagersOnFile);
        return kinds;
    }
    double LimitFor(double) const override { return Limit; }

    std::unique_ptr<SampleStore> MakeStore(SampleRecords const& records) override
    {
        return std::make_unique<PostgresSampleStore>(_Uri(), records, _onFile->MakeStore(records));
    }

    std::unique_ptr<Backend> Open(BackendKind kind, QString const& store) const override
    {
        switch (kind) {
        case BackendKind::Managers:
            return OpenManagersBackend([store] { return OpenExisting<PostgresDatabaseFactory>(store); });
        case BackendKind::ByHand:
            return std::make_unique<SqlBackend<PostgresApi>>(store);
        default:
            return _onFile->Open(kind, store);
        }
    }

    /// Takes away the rows that were deleted and the earlier states of those that were updated.
    void Execute(QString const& store, QStringList const& statements) const override
    {
        if (!store.startsWith(_Uri())) {
            _onFile->Execute(store, statements);
            return;
        }
        PostgresApi api(store);
        api.Begin();
        for (QString const& statement : statements)
            api.Execute(statement);
        api.Commit();
        api.Execute(QStringLiteral("VACUUM FileConfiguration, FolderConfiguration"));
    }

private:
    /// A profile's name follows.
    QString _Uri() const
    {
        return QStringLiteral("postgresql://tandry@127.0.0.1:%1/postgres?sslmode=disable&tandry_profile=").arg(_port);
    }

    std::unique_ptr<Engine> const _onFile;
    int const _port;
    PostgresServer _server;
};

} // namespace

std::unique_ptr<Engine> MakePostgresEngine(QString const& directory)
{
    return std::make_unique<PostgresEngine>(directory);
}

} // namespace sync::benchmarks
