#pragma once

#include "config/FileConfiguration.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace tandryctl {

class Session;

/// The words for `FileConfigurationType`, in the order of its values.
QStringList const& FileTypeWords();

/// The words for the sort orders of a file listing, in the order of `FileConfigOrderByEnum`: a column's name, with
/// "-desc" behind it for the largest first.
QStringList const& FileOrderWords();

/// Sorts as one of `FileOrderWords` says; files that are alike keep their order.
void SortFiles(QVector<sync::config::FileConfiguration>& files, int order);

/// Which files a listing asks for; without a condition, all files of the type.
struct FileFilter
{
    sync::config::FileConfigurationType type = sync::config::FileConfigurationTypeFile;
    std::optional<int> folder;
    std::optional<int> root;
    std::optional<int> status;
};

QVector<sync::config::FileConfiguration> FindFiles(Session& session, FileFilter const& filter);

/// The file with this id, or with this path when the text is no number; throws when there is none.
sync::config::FileConfiguration
FindFile(Session& session, QString const& idOrPath, sync::config::FileConfigurationType type);

} // namespace tandryctl
