#pragma once

#include "config/FileConfiguration.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace tandryctl {

class Session;

/// Returns the names of the `FileConfigurationType` values, by value.
QStringList const& FileTypeNames();

/// Returns the names of the `FileConfigOrderByEnum` values, by value: the column, with "-desc" appended for descending
/// order.
QStringList const& FileOrderNames();

/// Sorts by a `FileConfigOrderByEnum` value. The sort is stable.
void SortFiles(QVector<sync::config::FileConfiguration>& files, int order);

/// Selects files for a listing. Without a condition, all files of the type match.
struct FileFilter
{
    sync::config::FileConfigurationType type = sync::config::FileConfigurationTypeFile;
    std::optional<int> folder;
    std::optional<int> root;
    std::optional<int> status;
};

/// Returns the files that match the filter. Throws if the store fails.
QVector<sync::config::FileConfiguration> FindFiles(Session& session, FileFilter const& filter);

/// Returns the file with this id or, if the text is not a number, with this path. Throws if there is none.
sync::config::FileConfiguration
FindFile(Session& session, QString const& idOrPath, sync::config::FileConfigurationType type);

} // namespace tandryctl
