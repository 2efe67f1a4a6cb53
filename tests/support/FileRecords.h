#pragma once

#include "config/FileConfiguration.h"
#include "support/RecordRows.h"

#include <string>
#include <vector>

namespace tandry::test {

/// A file record whose members all differ from their defaults and from one another, with one link. All times are UTC,
/// `fileDate` in whole seconds; the status counts as changed.
sync::config::FileConfiguration
DistinctFile(sync::config::FileConfigurationType fileType = sync::config::FileConfigurationTypeFile);

/// Returns the names of the columns and other members in which two records differ; null and empty texts differ, and so
/// do times of the same instant in different time specs.
std::vector<std::string> DifferingMembers(sync::config::FileConfiguration const& left,
                                          sync::config::FileConfiguration const& right);

} // namespace tandry::test
