#include "benchmarks/SqliteSampleStore.h"

#include "benchmarks/Failure.h"
#include "benchmarks/Filling.h"
#include "benchmarks/SqliteApi.h"
#include "database/SqliteDatabaseFactory.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

namespace sync::benchmarks {

namespace {

const StatementText SizesOfParts(QStringLiteral("SELECT s.name, m.tbl_name, sum(s.pgsize) FROM dbstat s "
                                                "JOIN sqlite_schema m ON m.name = s.name GROUP BY s.name "
                                                "ORDER BY s.name"));

void Make(QString const& path)
{
    QString error;
    auto const factory = sync::database::SqliteDatabaseFactory::Open(path, &error);
    if (!factory)
        Fail(error);
    AddAccounts(factory);
}

/// Fills the store without journal and flushes, which would only cost time here.
void Fill(QString const& path, SampleRecords const& records)
{
    SqlBackend<SqliteApi> backend(path);
    backend.api().Execute(QStringLiteral("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;"
                                         "PRAGMA cache_size = -1000000"));
    AddRecords(backend, records);
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

SqliteSampleStore::SqliteSampleStore(QString const& directory, SampleRecords const& records)
    : SampleStore(records)
    , _directory(directory + QStringLiteral("/benchmark-XXXXXX"))
{
    if (!_directory.isValid())
        Fail(_directory.errorString());
    Make(path());
    Fill(path(), records);
}

QString SqliteSampleStore::path() const
{
    return _directory.filePath(QStringLiteral("sample.store"));
}

qint64 SqliteSampleStore::bytes() const
{
    return QFileInfo(path()).size();
}

std::vector<SqliteSampleStore::Part> SqliteSampleStore::Parts() const
{
    std::vector<Part> parts;
    SqliteApi api(path());
    auto statement = api.Use(SizesOfParts);
    while (statement.Next())
        parts.push_back({statement.Text(0), statement.Text(1), statement.Long(2)});
    return parts;
}

qint64 SqliteSampleStore::BytesOf(QString const& table) const
{
    qint64 bytes = 0;
    for (Part const& part : Parts())
        if (part.table == table)
            bytes += part.bytes;
    return bytes;
}

QString SqliteSampleStore::CopyFor(BackendKind kind)
{
    auto const known = _copies.find(kind);
    if (known != _copies.end())
        return known->second;
    return _copies[kind] = _Copy(NameOf(kind));
}

QStringList SqliteSampleStore::Copies(int count)
{
    QStringList copies;
    for (int number = 0; number < count; ++number)
        copies.append(_Copy(QStringLiteral("copy %1").arg(number)));
    return copies;
}

QString SqliteSampleStore::_Copy(QString const& name) const
{
    QString const copy = _directory.filePath(name + QStringLiteral(".store"));
    Require(QFile::copy(path(), copy), "copying a sample store failed");
    FlushFileSystem(copy);
    return copy;
}

void SqliteSampleStore::RemoveCopies()
{
    for (auto const& [kind, copy] : _copies)
        for (char const* suffix : {"", "-wal", "-shm"})
            QFile::remove(copy + QLatin1String(suffix));
    _copies.clear();
}

} // namespace sync::benchmarks
