#include "benchmarks/Report.h"

#include <QDate>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSysInfo>

#include <thread>

namespace sync::benchmarks {

namespace {

QString Processor()
{
    QFile file(QStringLiteral("/proc/cpuinfo"));
    if (file.open(QIODevice::ReadOnly))
        for (QByteArray const& line : file.readAll().split('\n'))
            if (line.startsWith("model name"))
                return QString::fromUtf8(line.mid(line.indexOf(':') + 1)).simplified();
    return QSysInfo::currentCpuArchitecture();
}

QJsonObject ToObject(Measurement const& measurement)
{
    QJsonArray repetitions;
    for (double const value : measurement.microseconds)
        repetitions.append(value);
    return {{QStringLiteral("median"), Median(measurement.microseconds)},
            {QStringLiteral("repetitions"), repetitions},
            {QStringLiteral("peakBytes"), double(measurement.peakBytes)}};
}

} // namespace

QString Environment(QString const& database)
{
    return QStringLiteral("%1, %2 cores; %3; %4; GCC %5, Qt %6, %7")
        .arg(Processor())
        .arg(std::thread::hardware_concurrency())
        .arg(QDate::currentDate().toString(Qt::ISODate),
             QSysInfo::prettyProductName(),
             QLatin1String(__VERSION__),
             QLatin1String(qVersion()),
             database);
}

QByteArray
ToJson(Engine const& engine, std::vector<Result> const& results, Clock clock, QMap<int, double> const& bytesOfFileRow)
{
    QJsonArray array;
    for (Result const& result : results) {
        QJsonObject object{{QStringLiteral("workload"), result.workload},
                           {QStringLiteral("rows"), double(result.rows)},
                           {QStringLiteral("operations"), double(result.operations)},
                           {QStringLiteral("limit"), result.limit}};
        for (auto const& [kind, measurement] : result.measurements)
            object[NameOf(kind)] = ToObject(measurement);
        array.append(object);
    }
    QJsonObject bytes;
    for (auto row = bytesOfFileRow.begin(); row != bytesOfFileRow.end(); ++row)
        bytes[QString::number(row.key())] = row.value();
    QJsonObject const whole{
        {QStringLiteral("engine"), engine.name()},
        {QStringLiteral("environment"), Environment(engine.version())},
        {QStringLiteral("clock"), clock == Clock::Elapsed ? QStringLiteral("elapsed") : QStringLiteral("processor")},
        {QStringLiteral("unit"), QStringLiteral("microseconds of one operation")},
        {QStringLiteral("results"), array},
        {QStringLiteral("bytesOfFileRow"), bytes}};
    return QJsonDocument(whole).toJson();
}

} // namespace sync::benchmarks
