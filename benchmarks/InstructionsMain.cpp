// Runs seven operations under callgrind and has it count the instructions of each. Started by the script
// `instructions`.

#include "benchmarks/Failure.h"
#include "benchmarks/ManagersBackend.h"
#include "benchmarks/SampleRecords.h"
#include "benchmarks/SqlBackend.h"
#include "benchmarks/SqliteApi.h"
#include "benchmarks/SqliteSampleStore.h"
#include "database/SqliteProcess.h"

#include <QString>
#include <QTextStream>

#include <valgrind/callgrind.h>

#include <sqlite3.h>

#include <functional>
#include <memory>
#include <vector>

namespace {

using namespace sync::benchmarks;

constexpr int Files = 2000;
constexpr int Repetitions = 40; // counted, after as many that are not

using Run = std::function<void(Backend&)>;

struct Operation
{
    char const* name;
    bool inTransaction;
    /// Makes one run with its key from a unique number.
    std::function<Run(int)> prepare;
};

Operation LookUp(char const* name, SampleRecords const& records)
{
    return {name, false, [=](int number) -> Run {
                return [path = records.FilePath(Scattered(number, Files))](Backend& backend) {
                    Require(backend.FileByPath(path).id > 0, "a file was not found");
                };
            }};
}

Operation Listing(char const* name, SampleRecords const& records)
{
    return {name, false, [=](int number) -> Run {
                return [id = 1 + records.FolderWithFiles(number)](Backend& backend) {
                    Require(!backend.FilesOfFolder(id).isEmpty(), "a folder has no files");
                };
            }};
}

std::vector<Operation> OperationsOn(SampleRecords const& records)
{
    return {
        LookUp("look-up by path", records),
        Listing("listing", records),
        {"update",
         true,
         [=](int number) -> Run {
             auto file = records.File(Scattered(number, Files));
             file.id = 1 + Scattered(number, Files);
             file.size += number;
             return [file](Backend& backend) { backend.UpdateFile(file); };
         }},
        {"add",
         true,
         [=](int number) -> Run {
             return [file = records.File(Files + number)](Backend& backend) mutable { backend.AddFile(file); };
         }},
        {"path in a root",
         false,
         [=](int number) -> Run {
             return [path = records.FilePath(Scattered(number, Files))](Backend& backend) {
                 Require(backend.IsInRoot(path), "a path lies in no root");
             };
         }},
    };
}

std::vector<Run> PrepareFrom(int first, Operation const& operation)
{
    std::vector<Run> runs;
    for (int number = first; number < first + Repetitions; ++number)
        runs.push_back(operation.prepare(number));
    return runs;
}

void RunAll(std::vector<Run> const& runs, Operation const& operation, Backend& backend)
{
    if (operation.inTransaction)
        backend.Begin();
    for (Run const& run : runs)
        run(backend);
    if (operation.inTransaction)
        backend.Commit();
}

void Count(Operation const& operation, Backend& backend)
{
    backend.AllFolders(); // empties the cache of roots: the next run fills it, and it does not expire while counting
    RunAll(PrepareFrom(0, operation), operation, backend);
    std::vector<Run> const runs = PrepareFrom(Repetitions, operation);
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    RunAll(runs, operation, backend);
    CALLGRIND_DUMP_STATS_AT(operation.name);
    CALLGRIND_STOP_INSTRUMENTATION;
}

/// Counts the operations on a new store with these records.
void CountAll(QString const& directory,
              BackendKind kind,
              SampleRecords const& records,
              std::vector<Operation> const& operations)
{
    SqliteSampleStore store(directory, records);
    QString const path = store.CopyFor(kind);
    std::unique_ptr<Backend> const backend =
        kind == BackendKind::ByHand ? std::make_unique<SqlBackend<SqliteApi>>(path) : OpenManagersBackend(path);
    for (Operation const& operation : operations)
        Count(operation, *backend);
}

/// Identifies the build: the counts also depend on compiler, Qt and SQLite.
QString Environment()
{
    return QStringLiteral("%1, GCC %2, Qt %3, SQLite %4")
        .arg(QLatin1String(TANDRY_BUILD_TYPE),
             QLatin1String(__VERSION__),
             QLatin1String(qVersion()),
             QLatin1String(sqlite3_libversion()));
}

} // namespace

/// Arguments: a directory for the store, and optionally "by hand" for SQLite's C interface instead of the managers.
/// Without arguments the program prints the environment and the number of runs per operation.
int main(int argc, char** argv)
{
    if (argc < 2) {
        QTextStream(stdout) << Environment() << '\n' << Repetitions << '\n';
        return EXIT_SUCCESS;
    }
    Require(sync::database::DisableSqliteMemoryStatistics(), "SQLite keeps its memory statistics");
    QString const directory = QString::fromLocal8Bit(argv[1]);
    bool const byHand = argc > 2 && QLatin1String(argv[2]) == NameOf(BackendKind::ByHand);
    BackendKind const kind = byHand ? BackendKind::ByHand : BackendKind::Managers;
    SampleRecords const records = SampleRecords::OfFiles(Files);
    CountAll(directory, kind, records, OperationsOn(records));
    SampleRecords const withProperties = SampleRecords::OfFilesWithProperties(Files);
    CountAll(directory,
             kind,
             withProperties,
             {LookUp("look-up, 2 properties", withProperties), Listing("listing, 2 properties", withProperties)});
    return EXIT_SUCCESS;
}
