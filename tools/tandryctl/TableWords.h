#pragma once

#include <QString>

namespace tandryctl {

/// Returns the word for a record of a table, such as "file" for FileConfiguration.
QString WordForRecordOf(QString const& table);

} // namespace tandryctl
