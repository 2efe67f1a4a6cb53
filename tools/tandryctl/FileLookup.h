#pragma once

#include "config/FileConfiguration.h"

#include <QString>
#include <QStringList>

namespace tandryctl {

class Session;

/// Returns the names of the `FileConfigurationType` values, by value.
QStringList const& FileTypeNames();

/// Returns the names of the `FileConfigOrderByEnum` values, by value: the column, with "-desc" appended for descending
/// order.
QStringList const& FileOrderNames();

/// Returns the file with this id or, if the text is not a number, with this path. Throws if there is none.
sync::config::FileConfiguration
FindFile(Session& session, QString const& idOrPath, sync::config::FileConfigurationType type);

} // namespace tandryctl
