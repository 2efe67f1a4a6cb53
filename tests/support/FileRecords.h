#pragma once

#include "config/FileConfiguration.h"
#include "support/RecordRows.h"

#include <QString>

#include <string>
#include <vector>

namespace tandry::test {

/// A file record whose members all differ from their defaults and from one another, with one link. All times are UTC,
/// `fileDate` in whole seconds; the status counts as changed.
sync::config::FileConfiguration
DistinctFile(sync::config::FileConfigurationType fileType = sync::config::FileConfigurationTypeFile);

/// Returns the values of all columns of texts.
std::vector<QString> TextsOf(sync::config::FileConfiguration const& file);

/// Expects a file as it is read from a row whose columns are all NULL, apart from the id.
void ExpectNullColumns(sync::config::FileConfiguration const& file);

/// Returns the names of the columns and other members in which two records differ; null and empty texts differ, and so
/// do times of the same instant in different time specs.
std::vector<std::string> DifferingMembers(sync::config::FileConfiguration const& left,
                                          sync::config::FileConfiguration const& right);

} // namespace tandry::test
