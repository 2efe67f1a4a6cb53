#include "benchmarks/Engine.h"
#include "benchmarks/Failure.h"
#include "benchmarks/IndexCosts.h"
#include "benchmarks/Report.h"
#include "benchmarks/Runner.h"
#include "benchmarks/Workloads.h"
#include "database/SqliteProcess.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QMap>
#include <QRegularExpression>
#include <QTextStream>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>

namespace {

using namespace sync::benchmarks;

/// Each pass removes a root, and the samples have ten.
constexpr int MaximumRepetitions = 9;
/// Below this size, a case that changes the store gets fresh copies. Copying a larger store takes too long, and the
/// rows that a case adds to it do not matter.
constexpr qint64 MaximumBytesToCopyAgain = 256 << 20;

struct Options
{
    QVector<int> sizes;
    bool quick = false;
    int repetitions = 5;
    Clock clock = Clock::Elapsed;
    QRegularExpression names;
    QString directory;

    bool Select(Case const& benchmark) const { return names.match(benchmark.name()).hasMatch(); }
};

QVector<int> Sizes(QString const& text)
{
    QVector<int> sizes;
    for (QString const& size : text.split(QLatin1Char(','))) {
        bool isNumber = false;
        sizes.append(size.toInt(&isNumber));
        if (!isNumber || sizes.last() < 1000)
            Fail(QStringLiteral("--rows takes numbers from 1000 on, separated by commas"));
    }
    return sizes;
}

/// An engine by its name, with the suites that only it has.
struct EngineChoice
{
    QString rows;
    std::function<std::unique_ptr<Engine>(QString const& directory)> make;
    std::function<std::vector<Suite>(bool quick)> ownSuites;
};

std::map<QString, EngineChoice> const& Engines()
{
    static std::map<QString, EngineChoice> const engines{
        {QStringLiteral("sqlite"),
         {QStringLiteral("1000,10000,100000,1000000"), MakeSqliteEngine, [](bool) { return std::vector<Suite>(); }}},
#ifdef TANDRY_BENCHMARK_POSTGRES
        {QStringLiteral("postgres"),
         {QStringLiteral("1000,10000,100000"),
          MakePostgresEngine,
          [](bool quick) {
              return std::vector<Suite>{quick ? ManyStoresSuite({2, 20}, 1000) : ManyStoresSuite({10, 200}, 10000)};
          }}},
#endif
    };
    return engines;
}

EngineChoice const& Choice(QString const& name)
{
    auto const found = Engines().find(name);
    if (found != Engines().end())
        return found->second;
    if (name == QLatin1String("postgres"))
        Fail(QStringLiteral("this build has no store on PostgreSQL; configure with -DTANDRY_BUILD_POSTGRES=ON"));
    Fail(QStringLiteral("--engine takes sqlite or postgres, not '%1'").arg(name));
}

std::vector<Suite> SelectedSuites(Options const& options, EngineChoice const& choice)
{
    std::vector<Suite> suites = AllSuites(options.sizes, options.repetitions + 1);
    for (Suite const& own : choice.ownSuites(options.quick))
        suites.push_back(own);
    for (Suite& suite : suites)
        suite.cases.erase(std::remove_if(suite.cases.begin(),
                                         suite.cases.end(),
                                         [&](Case const& each) { return !options.Select(each); }),
                          suite.cases.end());
    suites.erase(std::remove_if(suites.begin(), suites.end(), [](Suite const& suite) { return suite.cases.empty(); }),
                 suites.end());
    if (suites.empty())
        Fail(QStringLiteral("no case has such a name; --list prints the names"));
    return suites;
}

QString Line(Result const& result)
{
    auto const microseconds = [&](BackendKind kind) {
        return QString::number(Median(result.measurements.at(kind).microseconds), 'f', 2);
    };
    return QStringLiteral("%1/%2: managers %3 µs, by hand %4 µs, ratio %5")
        .arg(result.workload)
        .arg(result.rows)
        .arg(microseconds(BackendKind::Managers), microseconds(BackendKind::ByHand))
        .arg(MedianRatio(result, BackendKind::Managers, BackendKind::ByHand), 0, 'f', 2);
}

} // namespace

int main(int argc, char** argv)
{
    Require(sync::database::DisableSqliteMemoryStatistics(), "SQLite keeps its memory statistics");
    QCoreApplication const application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Measures the managers, the database's C interface by hand and Qt SQL on the same workloads."));
    parser.addHelpOption();
    QCommandLineOption const engineName(
        QStringLiteral("engine"),
        QStringLiteral("Measure the store on this database: sqlite or postgres, with a server of its own."),
        QStringLiteral("ENGINE"),
        QStringLiteral("sqlite"));
    QCommandLineOption const json(
        QStringLiteral("json"),
        QStringLiteral("Print all results as JSON at the end, and a line per case on standard error."));
    QCommandLineOption const quick(QStringLiteral("quick"), QStringLiteral("The same as --rows 1000,10000."));
    QCommandLineOption const list(QStringLiteral("list"), QStringLiteral("Print the names of the cases and run none."));
    QCommandLineOption const indices(QStringLiteral("indices"),
                                     QStringLiteral("Measure what each index costs, and nothing else."));
    QCommandLineOption const cases(QStringLiteral("cases"),
                                   QStringLiteral("Run the cases whose names match this expression."),
                                   QStringLiteral("EXPRESSION"));
    QCommandLineOption const rows(
        QStringLiteral("rows"),
        QStringLiteral(
            "Use stores with these numbers of rows. The default is 1000,10000,100000, and 1000000 for sqlite."),
        QStringLiteral("NUMBER,..."));
    QCommandLineOption const repetitions(QStringLiteral("repetitions"),
                                         QStringLiteral("Run at least this number of passes per case, 5 to 9."),
                                         QStringLiteral("NUMBER"),
                                         QStringLiteral("5"));
    QCommandLineOption const processorTime(
        QStringLiteral("processor-time"),
        QStringLiteral("Measure processor time instead of elapsed time, for a busy machine. Excludes the disk."));
    QCommandLineOption const directory(
        QStringLiteral("directory"),
        QStringLiteral("Make the stores below this directory, which should be on a disk. The default is "
                       "the program's own directory."),
        QStringLiteral("DIRECTORY"),
        QCoreApplication::applicationDirPath());
    parser.addOptions({engineName, json, quick, list, indices, cases, rows, repetitions, processorTime, directory});
    parser.process(application);

    Options options;
    bool const isSqlite = parser.value(engineName) == QLatin1String("sqlite");
    EngineChoice const& choice = Choice(parser.value(engineName));
    options.quick = parser.isSet(quick);
    if (options.quick)
        options.sizes = {1000, 10000};
    else
        options.sizes = Sizes(parser.isSet(rows) ? parser.value(rows) : choice.rows);
    options.repetitions = parser.value(repetitions).toInt();
    options.clock = parser.isSet(processorTime) ? Clock::Processor : Clock::Elapsed;
    options.names = QRegularExpression(parser.value(cases));
    options.directory = parser.value(directory);
    if (options.repetitions < 5 || options.repetitions > MaximumRepetitions)
        Fail(QStringLiteral("--repetitions takes 5 to 9"));
    if (!isSqlite && (parser.isSet(indices) || parser.isSet(processorTime)))
        Fail(QStringLiteral("--indices and --processor-time measure SQLite only"));
    if (!options.names.isValid())
        Fail(QStringLiteral("--cases: %1").arg(options.names.errorString()));

    QTextStream out(stdout);
    out.setCodec("UTF-8");
    if (parser.isSet(indices)) {
        out << IndexCosts(options.directory, options.quick ? 10000 : 100000, options.repetitions);
        return EXIT_SUCCESS;
    }
    std::vector<Suite> suites = SelectedSuites(options, choice);
    if (parser.isSet(list)) {
        for (Suite const& suite : suites)
            for (Case const& each : suite.cases)
                out << each.name() << '\n';
        return EXIT_SUCCESS;
    }

    QTextStream lines(parser.isSet(json) ? stderr : stdout);
    lines.setCodec("UTF-8");
    std::vector<Result> results;
    QMap<int, double> bytesOfFileRow;
    std::unique_ptr<Engine> const engine = choice.make(options.directory);
    for (Suite& suite : suites) {
        std::unique_ptr<SampleStore> const store = engine->MakeStore(suite.records);
        RequireSameRecords(*engine, *store);
        bool changed = false;
        for (Case& each : suite.cases) {
            if (changed && each.changesStore && store->bytes() < MaximumBytesToCopyAgain)
                store->RemoveCopies();
            if (each.limit > 0)
                each.limit = engine->LimitFor(each.limit);
            results.push_back(Run(each, *engine, *store, options.repetitions, options.clock));
            changed = changed || each.changesStore;
            lines << Line(results.back()) << '\n' << Qt::flush;
        }
        int const files = suite.records.fileCount();
        if (options.sizes.contains(files) && !bytesOfFileRow.contains(files)) // a later suite has longer rows
            bytesOfFileRow[files] = double(store->BytesOf(QStringLiteral("FileConfiguration"))) / files;
    }
    if (parser.isSet(json))
        out << ToJson(*engine, results, options.clock, bytesOfFileRow);
    return EXIT_SUCCESS;
}
