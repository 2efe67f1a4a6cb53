#include "benchmarks/Runner.h"

#include "benchmarks/Documents.h"
#include "benchmarks/Failure.h"
#include "config/columns/ColumnList.h"
#include "config/file/FileColumns.h"
#include "config/folder/FolderColumns.h"

#include <QByteArray>
#include <QFile>
#include <QStringList>
#include <QVariant>

#include <malloc.h>

#include <algorithm>
#include <ctime>
#include <memory>

namespace sync::benchmarks {

namespace {

/// Passes are added until all backends together have run for so many seconds, up to a number of passes: a disturbance
/// weighs more in a short pass.
constexpr double SecondsToFill = 3;
constexpr int MaximumPasses = 25;

/// Takes the place of a statement and keeps a record's columns as text.
struct ColumnTexts
{
    template <class Value>
    void Bind(QString const& placeholder, Value const& value)
    {
        texts.append(placeholder + QLatin1Char('=') + QVariant(value).toString());
    }

    QStringList texts;
};

template <class Record>
QStringList ColumnsOf(Record const& record)
{
    Documents documents;
    ColumnTexts columns;
    config::column::BindAll<config::column::Writing::Insert>(columns, record, documents);
    return columns.texts;
}

QStringList ReadSamples(BackendKind kind, Engine const& engine, SampleStore& store)
{
    constexpr int samples = 20;
    auto const backend = engine.Open(kind, store.CopyFor(kind));
    QStringList texts;
    for (int choice = 0; choice < samples; ++choice) {
        texts += ColumnsOf(backend->FolderById(1 + Scattered(choice, store.records().folderCount())));
        if (store.records().fileCount() > 0)
            texts += ColumnsOf(backend->FileById(1 + Scattered(choice, store.records().fileCount())));
    }
    return texts;
}

double Seconds(Clock clock)
{
    timespec time = {};
    ::clock_gettime(clock == Clock::Elapsed ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
}

/// Returns a size in bytes from /proc/self/status.
qint64 ProcessStatus(char const* key)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (QByteArray const& line : status.readAll().split('\n'))
        if (line.startsWith(key))
            return line.simplified().split(' ').value(1).toLongLong() * 1024;
    return 0;
}

/// Resets the peak of the process's resident memory and returns the current size, or 0 where that is impossible.
/// Memory that was freed goes back to the system first, because it would hide later use.
qint64 ResetPeakMemory()
{
    ::malloc_trim(0);
    QFile references(QStringLiteral("/proc/self/clear_refs"));
    if (!references.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || references.write("5") != 1)
        return 0;
    return ProcessStatus("VmRSS:");
}

/// A backend and its stores; there is more than one where a case says so.
struct Turn
{
    BackendKind kind;
    QStringList stores;
    std::vector<std::unique_ptr<Backend>> backends = {};

    void Open(Engine const& engine)
    {
        for (QString const& store : stores)
            backends.push_back(engine.Open(kind, store));
    }
    void Reset(Case const& benchmark, Engine const& engine) const
    {
        for (QString const& store : stores)
            if (benchmark.reset)
                engine.Execute(store, *benchmark.reset);
    }
    void Run(Case const& benchmark) const
    {
        for (auto const& backend : backends)
            benchmark.run(*backend);
    }
};

/// Whether the backend takes part in the case.
bool TakesPart(BackendKind kind, Case const& benchmark)
{
    switch (kind) {
    case BackendKind::Managers:
    case BackendKind::ByHand:
        return true;
    case BackendKind::QtSqlReused:
    case BackendKind::QtSqlPerCall:
        return benchmark.includesQtSql;
    case BackendKind::ManagersOnFile:
        return benchmark.stores == 1;
    }
    return false;
}

} // namespace

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    std::size_t const middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double MedianRatio(Result const& result, BackendKind numerator, BackendKind denominator)
{
    std::vector<double> ratios = result.measurements.at(numerator).microseconds;
    std::vector<double> const& denominators = result.measurements.at(denominator).microseconds;
    for (std::size_t pass = 0; pass < ratios.size(); ++pass)
        ratios[pass] /= denominators[pass];
    return Median(std::move(ratios));
}

void RequireSameRecords(Engine const& engine, SampleStore& store)
{
    QStringList const expected = ReadSamples(BackendKind::Managers, engine, store);
    for (BackendKind const kind : engine.kinds()) {
        QStringList const texts = ReadSamples(kind, engine, store);
        for (int i = 0; i < expected.size(); ++i)
            if (texts.value(i) != expected[i])
                Fail(QStringLiteral("%1 reads \"%2\" where the managers read \"%3\"")
                         .arg(NameOf(kind), texts.value(i), expected[i]));
    }
}

Result Run(Case const& benchmark, Engine const& engine, SampleStore& store, int repetitions, Clock clock)
{
    Result result{benchmark.workload, benchmark.rows, benchmark.operations * benchmark.stores, benchmark.limit, {}};
    std::vector<Turn> turns;
    for (BackendKind const kind : engine.kinds())
        if (TakesPart(kind, benchmark))
            turns.push_back(
                {kind, benchmark.stores > 1 ? store.Copies(benchmark.stores) : QStringList{store.CopyFor(kind)}});

    benchmark.prepare(0);
    for (Turn& turn : turns) {
        turn.Reset(benchmark, engine);
        qint64 const memory = ResetPeakMemory();
        turn.Open(engine);
        turn.Run(benchmark);
        if (memory > 0)
            result.measurements[turn.kind].peakBytes = std::max<qint64>(0, ProcessStatus("VmHWM:") - memory);
    }

    double const operations = double(benchmark.operations) * benchmark.stores;
    double filled = 0;
    auto const addPass = [&](int pass) {
        return benchmark.canRepeatMore && filled < SecondsToFill && pass <= MaximumPasses;
    };
    for (int pass = 1; pass <= repetitions || addPass(pass); ++pass) {
        benchmark.prepare(pass);
        for (Turn& turn : turns) {
            turn.Reset(benchmark, engine);
            double const start = Seconds(clock);
            turn.Run(benchmark);
            double const seconds = Seconds(clock) - start;
            result.measurements[turn.kind].microseconds.push_back(seconds * 1e6 / operations);
            filled += seconds;
        }
        std::rotate(turns.begin(), turns.begin() + 1, turns.end());
    }
    return result;
}

} // namespace sync::benchmarks
