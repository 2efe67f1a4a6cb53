#pragma once

#include "tools/carry/Export.h"

#include <QVariantMap>

namespace tandryctl {

/// Returns the number of all records together.
qint64 SumOf(tandry::carry::RecordCounts const& counts);

/// Returns the counts by the words for the kinds, for JSON.
QVariantMap ToMap(tandry::carry::RecordCounts const& counts);

} // namespace tandryctl
