#include "benchmarks/SampleStore.h"

#include "benchmarks/Failure.h"
#include "benchmarks/SqlContestant.h"
#include "benchmarks/SqliteEngine.h"
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

/// Nothing has to survive here, and it would take long if it had to.
void Fill(QString const& path, SampleRecords const& records)
{
    SqlContestant<SqliteEngine> contestant(path);
    contestant.engine().Execute(QStringLiteral("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;"
                                               "PRAGMA cache_size = -1000000"));
    contestant.Begin();
    for (int number = 0; number < records.folderCount(); ++number) {
        config::FolderConfiguration folder = records.Folder(number);
        contestant.AddFolder(folder);
    }
    for (int number = 0; number < records.fileCount(); ++number) {
        config::FileConfiguration file = records.File(number);
        contestant.InsertFile(file);
    }
    contestant.Commit();
    contestant.engine().Execute(QStringLiteral("PRAGMA journal_mode = WAL"));
}

/// So that what the copies left to be written disturbs nobody's measurement.
void WaitForDisk(QString const& path)
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

QString SampleStore::CopyFor(Entrant entrant)
{
    auto const known = _copies.find(entrant);
    if (known != _copies.end())
        return known->second;
    QString const copy = _directory.filePath(NameOf(entrant) + QStringLiteral(".store"));
    Require(QFile::copy(path(), copy), "copying a sample store failed");
    WaitForDisk(copy);
    return _copies[entrant] = copy;
}

void SampleStore::Renew()
{
    for (auto const& [entrant, copy] : _copies)
        for (char const* suffix : {"", "-wal", "-shm"})
            QFile::remove(copy + QLatin1String(suffix));
    _copies.clear();
}

} // namespace sync::benchmarks
