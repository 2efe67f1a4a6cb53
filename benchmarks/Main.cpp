#include "benchmarks/Agreement.h"
#include "benchmarks/Cases.h"
#include "benchmarks/Failure.h"
#include "benchmarks/Indices.h"
#include "benchmarks/Report.h"
#include "benchmarks/Runner.h"
#include "benchmarks/StoreSizes.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTextStream>

#include <algorithm>
#include <cstdio>

namespace {

using namespace sync::benchmarks;

/// Roots are removed one in each pass, and the samples have ten.
constexpr int MostRepetitions = 9;
/// Copying a store for each case is quick below this; above it, what a case adds to it counts for nothing.
constexpr qint64 BytesWorthSparing = 256 << 20;

struct Choice
{
    QVector<int> sizes;
    int repetitions = 5;
    Clock clock = Clock::Elapsed;
    QRegularExpression names;
    QString directory;

    bool Takes(Case const& benchmark) const { return names.match(benchmark.name()).hasMatch(); }
};

void RunSuite(Suite const& suite, Choice const& choice, Report& report)
{
    bool const wanted =
        std::any_of(suite.cases.begin(), suite.cases.end(), [&](Case const& each) { return choice.Takes(each); });
    if (!wanted)
        return;
    SampleStore store(choice.directory, suite.records);
    RequireAgreement(store);
    bool changed = false;
    for (Case const& each : suite.cases) {
        if (!choice.Takes(each))
            continue;
        QElapsedTimer timer;
        timer.start();
        if (changed && each.changesStore && store.bytes() < BytesWorthSparing)
            store.Renew();
        report.results.push_back(Run(each, store, choice.repetitions, choice.clock));
        changed = changed || each.changesStore;
        std::fprintf(stderr, "%s (%lld s)\n", qPrintable(each.name()), static_cast<long long>(timer.elapsed() / 1000));
    }
    if (choice.sizes.contains(suite.records.fileCount())) {
        double const bytes =
            double(BytesOf(QStringLiteral("FileConfiguration"), SizesIn(store.path()))) / suite.records.fileCount();
        report.notes.push_back({QStringLiteral("A stored file row takes %1 bytes at %2 rows, indices included.")
                                    .arg(bytes, 0, 'f', 0)
                                    .arg(suite.records.fileCount()),
                                QStringLiteral("bytesOfFileRow/%1").arg(suite.records.fileCount()),
                                bytes});
    }
}

/// How much more four threads read than one, from the two results that tell.
void NoteThreads(Report& report)
{
    std::vector<Note> notes;
    for (Result const& one : report.results) {
        if (!one.workload.endsWith(QStringLiteral("threads: 1")))
            continue;
        QString const fourThreads = one.workload.chopped(1) + QLatin1Char('4');
        for (Result const& four : report.results) {
            if (four.workload != fourThreads || four.rows != one.rows)
                continue;
            double const factor =
                one.measurements.at(Entrant::Managers).median() / four.measurements.at(Entrant::Managers).median();
            notes.push_back({QStringLiteral("At %1 rows, 4 reading threads read %2 times as much as one.")
                                 .arg(one.rows)
                                 .arg(factor, 0, 'f', 2),
                             QStringLiteral("readersOfFour/%1").arg(one.rows),
                             factor});
        }
    }
    report.notes.insert(report.notes.end(), notes.begin(), notes.end());
}

QVector<int> Sizes(QString const& text)
{
    QVector<int> sizes;
    for (QString const& size : text.split(QLatin1Char(','))) {
        bool isNumber = false;
        sizes.append(size.toInt(&isNumber));
        if (!isNumber || sizes.last() < 1000)
            Fail(QStringLiteral("--rows takes numbers from 1000 on, with commas between them"));
    }
    return sizes;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Compares the managers with SQLite's C interface by hand and with Qt SQL."));
    parser.addHelpOption();
    QCommandLineOption const json(QStringLiteral("json"), QStringLiteral("Print JSON."));
    QCommandLineOption const quick(QStringLiteral("quick"), QStringLiteral("Take 1,000 and 10,000 rows only."));
    QCommandLineOption const list(QStringLiteral("list"), QStringLiteral("Print the cases' names, run nothing."));
    QCommandLineOption const indices(QStringLiteral("indices"), QStringLiteral("Print what each index costs instead."));
    QCommandLineOption const cases(QStringLiteral("cases"),
                                   QStringLiteral("Run the cases whose names match this expression."),
                                   QStringLiteral("EXPRESSION"));
    QCommandLineOption const rows(QStringLiteral("rows"),
                                  QStringLiteral("Take these numbers of rows."),
                                  QStringLiteral("NUMBER,..."),
                                  QStringLiteral("1000,10000,100000,1000000"));
    QCommandLineOption const repetitions(QStringLiteral("repetitions"),
                                         QStringLiteral("Repeat so often at least, 5 to 9 times."),
                                         QStringLiteral("NUMBER"),
                                         QStringLiteral("5"));
    QCommandLineOption const processorTime(
        QStringLiteral("processor-time"),
        QStringLiteral("Compare processor time instead of elapsed time: on a busy machine. Leaves the disk out."));
    QCommandLineOption const directory(
        QStringLiteral("directory"),
        QStringLiteral("Make the stores below this directory, on a real disk. Without it "
                       "they are made beside the program, and not among the sources."),
        QStringLiteral("DIRECTORY"),
        QCoreApplication::applicationDirPath());
    parser.addOptions({json, quick, list, indices, cases, rows, repetitions, processorTime, directory});
    parser.process(application);

    Choice choice;
    choice.sizes = Sizes(parser.isSet(quick) ? QStringLiteral("1000,10000") : parser.value(rows));
    choice.repetitions = parser.value(repetitions).toInt();
    choice.clock = parser.isSet(processorTime) ? Clock::Processor : Clock::Elapsed;
    choice.names = QRegularExpression(parser.value(cases));
    choice.directory = parser.value(directory);
    if (choice.repetitions < 5 || choice.repetitions > MostRepetitions)
        Fail(QStringLiteral("--repetitions takes 5 to 9"));
    if (!choice.names.isValid())
        Fail(QStringLiteral("--cases: %1").arg(choice.names.errorString()));

    QTextStream out(stdout);
    out.setCodec("UTF-8");
    if (parser.isSet(indices)) {
        out << CostOfIndices(choice.directory, parser.isSet(quick) ? 10000 : 100000, choice.repetitions);
        return EXIT_SUCCESS;
    }

    auto const suites = AllSuites(choice.sizes, choice.repetitions + 1);
    if (parser.isSet(list)) {
        for (Suite const& suite : suites)
            for (Case const& each : suite.cases)
                if (choice.Takes(each))
                    out << each.name() << '\n';
        return EXIT_SUCCESS;
    }
    Report report;
    for (Suite const& suite : suites)
        RunSuite(suite, choice, report);
    if (report.results.empty())
        Fail(QStringLiteral("no case has such a name; --list tells which there are"));
    if (choice.clock == Clock::Elapsed)
        NoteThreads(report);
    else
        report.notes.push_back({QStringLiteral("Times are processor time."), QStringLiteral("processorTime"), 1});
    out << (parser.isSet(json) ? ToJson(report) : ToText(report));
    return EXIT_SUCCESS;
}
