#include "benchmarks/Report.h"

#include <QDate>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QSysInfo>

#include <sqlite3.h>

#include <algorithm>
#include <optional>
#include <thread>

namespace sync::benchmarks {

namespace {

const QLocale English(QLocale::English, QLocale::UnitedStates); // with commas in long numbers

QString Processor()
{
    QFile file(QStringLiteral("/proc/cpuinfo"));
    if (file.open(QIODevice::ReadOnly))
        for (QByteArray const& line : file.readAll().split('\n'))
            if (line.startsWith("model name"))
                return QString::fromUtf8(line.mid(line.indexOf(':') + 1)).simplified();
    return QSysInfo::currentCpuArchitecture();
}

std::optional<double> MedianOf(Result const& result, Entrant entrant)
{
    auto const found = result.measurements.find(entrant);
    if (found == result.measurements.end())
        return std::nullopt;
    return found->second.median();
}

/// How many times as long `one` took as `other`: in the middle one of the passes, in each of which both met the same
/// machine.
std::optional<double> Ratio(Result const& result, Entrant one, Entrant other)
{
    auto const numerators = result.measurements.find(one);
    auto const denominators = result.measurements.find(other);
    if (numerators == result.measurements.end() || denominators == result.measurements.end())
        return std::nullopt;
    std::vector<double> ratios;
    for (std::size_t pass = 0; pass < numerators->second.microseconds.size(); ++pass)
        ratios.push_back(numerators->second.microseconds[pass] / denominators->second.microseconds[pass]);
    return Median(std::move(ratios));
}

/// What the managers take, compared with the same workload at 10,000 rows.
std::optional<double> Growth(Report const& report, Result const& result)
{
    constexpr int baseRows = 10000;
    for (Result const& base : report.results)
        if (base.workload == result.workload && base.rows == baseRows && result.rows > baseRows)
            return *MedianOf(result, Entrant::Managers) / *MedianOf(base, Entrant::Managers);
    return std::nullopt;
}

QString Cell(std::optional<double> value, char const* unit = "")
{
    return value ? QString::number(*value, 'f', 2) + QLatin1String(unit) : QString();
}

QString Megabytes(Result const& result, Entrant entrant)
{
    auto const found = result.measurements.find(entrant);
    if (found == result.measurements.end())
        return {};
    return QString::number(double(found->second.peakBytes) / 1048576, 'f', 1);
}

QString Limit(Result const& result)
{
    if (result.limit == 0)
        return {};
    bool const kept = *Ratio(result, Entrant::Managers, Entrant::ByHand) <= result.limit;
    return QString::number(result.limit, 'f', 1) + QLatin1String(kept ? "" : " missed");
}

QJsonObject ToObject(Measurement const& measurement)
{
    QJsonArray repetitions;
    for (double const value : measurement.microseconds)
        repetitions.append(value);
    return {{QStringLiteral("median"), measurement.median()},
            {QStringLiteral("repetitions"), repetitions},
            {QStringLiteral("peakBytes"), double(measurement.peakBytes)}};
}

} // namespace

QString Environment()
{
    return QStringLiteral("%1, %2 cores; %3; %4; GCC %5, Qt %6, SQLite %7")
        .arg(Processor())
        .arg(std::thread::hardware_concurrency())
        .arg(QDate::currentDate().toString(Qt::ISODate),
             QSysInfo::prettyProductName(),
             QLatin1String(__VERSION__),
             QLatin1String(qVersion()),
             QLatin1String(sqlite3_libversion()));
}

QString Readable(double value)
{
    return English.toString(value, 'f', value < 100 ? 2 : value < 1000 ? 1 : 0);
}

QString Table(QStringList const& head, std::vector<QStringList> const& lines)
{
    std::vector<int> widths;
    for (int column = 0; column < head.size(); ++column) {
        int width = head[column].size();
        for (QStringList const& line : lines)
            width = std::max(width, line[column].size());
        widths.push_back(width);
    }

    QString table;
    auto const append = [&](QStringList const& line) {
        for (int column = 0; column < line.size(); ++column) {
            int const width = widths[std::size_t(column)];
            table += QStringLiteral("| ") +
                     (column == 0 ? line[column].leftJustified(width) : line[column].rightJustified(width)) +
                     QLatin1Char(' ');
        }
        table += QStringLiteral("|\n");
    };
    append(head);
    for (int column = 0; column < head.size(); ++column) {
        QString const dashes(widths[std::size_t(column)], QLatin1Char('-'));
        table += QStringLiteral("|-") + dashes + QLatin1String(column == 0 ? "-" : ":");
    }
    table += QStringLiteral("|\n");
    for (QStringList const& line : lines)
        append(line);
    return table;
}

QString ToText(Report const& report)
{
    QStringList const head{QStringLiteral("workload"),
                           QStringLiteral("rows"),
                           QStringLiteral("managers µs"),
                           QStringLiteral("by hand µs"),
                           QStringLiteral("managers / by hand"),
                           QStringLiteral("at most"),
                           QStringLiteral("Qt SQL per call / managers"),
                           QStringLiteral("Qt SQL reused / managers"),
                           QStringLiteral("/ 10,000 rows"),
                           QStringLiteral("peak MiB"),
                           QStringLiteral("by hand MiB")};
    std::vector<QStringList> lines;
    for (Result const& result : report.results)
        lines.push_back({result.workload,
                         English.toString(result.rows),
                         Readable(*MedianOf(result, Entrant::Managers)),
                         Readable(*MedianOf(result, Entrant::ByHand)),
                         Cell(Ratio(result, Entrant::Managers, Entrant::ByHand)),
                         Limit(result),
                         Cell(Ratio(result, Entrant::QtSqlPerCall, Entrant::Managers)),
                         Cell(Ratio(result, Entrant::QtSqlReused, Entrant::Managers)),
                         Cell(Growth(report, result)),
                         Megabytes(result, Entrant::Managers),
                         Megabytes(result, Entrant::ByHand)});

    QString text = Table(head, lines) + QLatin1Char('\n');
    for (Note const& note : report.notes)
        text += note.text + QLatin1Char('\n');
    return text + Environment() + QLatin1Char('\n');
}

QString ToJson(Report const& report)
{
    QJsonArray results;
    for (Result const& result : report.results) {
        QJsonObject object{{QStringLiteral("workload"), result.workload},
                           {QStringLiteral("rows"), double(result.rows)},
                           {QStringLiteral("operations"), double(result.operations)},
                           {QStringLiteral("limit"), result.limit}};
        for (auto const& [entrant, measurement] : result.measurements)
            object[NameOf(entrant)] = ToObject(measurement);
        results.append(object);
    }
    QJsonObject notes;
    for (Note const& note : report.notes)
        notes[note.key] = note.value;
    QJsonObject const whole{{QStringLiteral("environment"), Environment()},
                            {QStringLiteral("unit"), QStringLiteral("microseconds of one operation")},
                            {QStringLiteral("results"), results},
                            {QStringLiteral("notes"), notes}};
    return QString::fromUtf8(QJsonDocument(whole).toJson());
}

} // namespace sync::benchmarks
