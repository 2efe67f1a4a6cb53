#pragma once

#include "benchmarks/Runner.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <vector>

namespace sync::benchmarks {

/// Returns machine, date and versions in one line; `database` is the engine's version.
QString Environment(QString const& database);

/// Returns a JSON object with all results, every pass of each, and the size of a stored file row by number of rows.
QByteArray
ToJson(Engine const& engine, std::vector<Result> const& results, Clock clock, QMap<int, double> const& bytesOfFileRow);

} // namespace sync::benchmarks
