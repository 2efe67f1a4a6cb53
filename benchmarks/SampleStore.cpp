#include "benchmarks/SampleStore.h"

#include "benchmarks/Failure.h"
#include "benchmarks/SqlBackend.h"
#include "benchmarks/SqliteApi.h"
#include "config/AuthenticationConfigManager.h"
#include "config/ProductConfigManager.h"
#include "config/ServerConfigManager.h"
#include "database/SqliteDatabaseFactory.h"
#include "database/TransactionalScope.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

namespace sync::benchmarks {

namespace {

const StatementText SizesOfParts(QStringLiteral("SELECT s.name, m.tbl_name, sum(s.pgsize) FROM dbstat s "
                                                "JOIN sqlite_schema m ON m.name = s.name GROUP BY s.name "
                                                "ORDER BY s.name"));

template <class Manager, class Record>
void AddAll(std::shared_ptr<sync::interf::factory::IDatabaseFactory> const& factory, Record (*sample)(int))
{
    Manager manager(factory);
    for (int number = 0; number < SampleRecords::AccountRows; ++number) {
        Record record = sample(number);
        Require(manager.Add(record), "filling a sample store failed");
    }
}

void Make(QString const& path)
{
    QString error;
    auto const factory = sync::database::SqliteDatabaseFactory::Open(path, &error);
    if (!factory)
        Fail(error);
    sync::database::TransactionalScope const scope;
    AddAll<config::ServerConfigManager>(factory, &SampleRecords::Server);
    AddAll<config::AuthenticationConfigManager>(factory, &SampleRecords::Account);
    AddAll<config::ProductConfigManager>(factory, &SampleRecords::Product);
}

/// Fills the store without journal and flushes, which would only cost time here.
void Fill(QString const& path, SampleRecords const& records)
{
    SqlBackend<SqliteApi> backend(path);
    backend.api().Execute(QStringLiteral("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;"
                                         "PRAGMA cache_size = -1000000"));
    backend.Begin();
    for (int number = 0; number < records.folderCount(); ++number) {
        config::FolderConfiguration folder = records.Folder(number);
        backend.AddFolder(folder);
    }
    for (int number = 0; number < records.fileCount(); ++number) {
        config::FileConfiguration file = records.File(number);
        backend.InsertFile(file);
    }
    backend.Commit();
    backend.api().Execute(QStringLiteral("PRAGMA journal_mode = WAL"));
}

/// Flushes what the copies have left in memory, which would otherwise be written during a measurement.
void FlushFileSystem(QString const& path)
{
    int const file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    ::syncfs(file);
    ::close(file);
}

} // namespace

SampleStore::SampleStore(QString const& directory, SampleRecords const& records)
    : _directory(directory + QStringLiteral("/benchmark-XXXXXX"))
    , _records(records)
{
    if (!_directory.isValid())
        Fail(_directory.errorString());
    Make(path());
    Fill(path(), _records);
}

QString SampleStore::path() const
{
    return _directory.filePath(QStringLiteral("sample.store"));
}

qint64 SampleStore::bytes() const
{
    return QFileInfo(path()).size();
}

std::vector<SampleStore::Part> SampleStore::Parts() const
{
    std::vector<Part> parts;
    SqliteApi api(path());
    auto statement = api.Use(SizesOfParts);
    while (statement.Next())
        parts.push_back({statement.Text(0), statement.Text(1), statement.Long(2)});
    return parts;
}

qint64 SampleStore::BytesOf(QString const& table) const
{
    qint64 bytes = 0;
    for (Part const& part : Parts())
        if (part.table == table)
            bytes += part.bytes;
    return bytes;
}

QString SampleStore::CopyFor(BackendKind kind)
{
    auto const known = _copies.find(kind);
    if (known != _copies.end())
        return known->second;
    QString const copy = _directory.filePath(NameOf(kind) + QStringLiteral(".store"));
    Require(QFile::copy(path(), copy), "copying a sample store failed");
    FlushFileSystem(copy);
    return _copies[kind] = copy;
}

void SampleStore::RemoveCopies()
{
    for (auto const& [kind, copy] : _copies)
        for (char const* suffix : {"", "-wal", "-shm"})
            QFile::remove(copy + QLatin1String(suffix));
    _copies.clear();
}

} // namespace sync::benchmarks
