// Runs key operations, each in a stretch of its own, for callgrind to count. The script beside this starts it.

#include "benchmarks/Failure.h"
#include "benchmarks/ManagersContestant.h"
#include "benchmarks/SampleRecords.h"
#include "benchmarks/SampleStore.h"
#include "benchmarks/SqlContestant.h"
#include "benchmarks/SqliteEngine.h"
#include "config/FolderCaches.h"

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
constexpr int Repetitions = 40; // and as many before, which aren't counted

using Run = std::function<void(Contestant&)>;

struct Operation
{
    char const* name;
    bool inBracket;
    /// Makes a run with what it is called with; given a number that comes once.
    std::function<Run(int)> prepare;
};

std::vector<Operation> OperationsOn(SampleRecords const& records)
{
    return {
        {"look-up by path",
         false,
         [=](int number) -> Run {
             return [path = records.FilePath(Scattered(number, Files))](Contestant& store) {
                 Require(store.FileByPath(path).id > 0, "a file was not found");
             };
         }},
        {"listing",
         false,
         [=](int number) -> Run {
             return [id = 1 + records.FolderWithFiles(number)](Contestant& store) {
                 Require(store.FilesOfFolder(id).size() > 0, "a folder has no files");
             };
         }},
        {"update",
         true,
         [=](int number) -> Run {
             auto file = records.File(Scattered(number, Files));
             file.id = 1 + Scattered(number, Files);
             file.size += number;
             return [file](Contestant& store) { store.UpdateFile(file); };
         }},
        {"add",
         true,
         [=](int number) -> Run {
             return [file = records.File(Files + number)](Contestant& store) mutable { store.AddFile(file); };
         }},
        {"path in a root",
         false,
         [=](int number) -> Run {
             return [path = records.FilePath(Scattered(number, Files))](Contestant& store) {
                 Require(store.IsInRoot(path), "a path lies in no root");
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

void RunAll(std::vector<Run> const& runs, Operation const& operation, Contestant& store)
{
    if (operation.inBracket)
        store.Begin();
    for (Run const& run : runs)
        run(store);
    if (operation.inBracket)
        store.Commit();
}

void Count(Operation const& operation, Contestant& store)
{
    RunAll(PrepareFrom(0, operation), operation, store);
    std::vector<Run> const runs = PrepareFrom(Repetitions, operation);
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    RunAll(runs, operation, store);
    CALLGRIND_DUMP_STATS_AT(operation.name);
    CALLGRIND_STOP_INSTRUMENTATION;
}

/// What the counts depend on beside our own code.
QString Environment()
{
    return QStringLiteral("%1, GCC %2, Qt %3, SQLite %4")
        .arg(QLatin1String(TANDRY_BUILD_TYPE),
             QLatin1String(__VERSION__),
             QLatin1String(qVersion()),
             QLatin1String(sqlite3_libversion()));
}

} // namespace

/// Arguments: a directory for the store, and "by hand" for SQLite's C interface instead of the managers. Without
/// arguments it prints the environment, and how often each operation runs.
int main(int argc, char** argv)
{
    if (argc < 2) {
        QTextStream(stdout) << Environment() << '\n' << Repetitions << '\n';
        return EXIT_SUCCESS;
    }
    sync::config::FolderCaches::UseClock([]() -> qint64 { return 1600000000000; }); // no listing ages while it counts

    SampleStore store(QString::fromLocal8Bit(argv[1]), SampleRecords::OfFiles(Files));
    bool const byHand = argc > 2 && QLatin1String(argv[2]) == NameOf(Entrant::ByHand);
    std::unique_ptr<Contestant> const contestant =
        byHand ? std::make_unique<SqlContestant<SqliteEngine>>(store.CopyFor(Entrant::ByHand))
               : EnterManagers(store.CopyFor(Entrant::Managers));
    for (Operation const& operation : OperationsOn(store.records()))
        Count(operation, *contestant);
    return EXIT_SUCCESS;
}
