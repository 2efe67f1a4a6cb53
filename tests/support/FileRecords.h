#pragma once

#include "config/FileConfiguration.h"
#include "support/RecordingStore.h"

#include <string>
#include <vector>

namespace tandry::test {

/// A file record whose members all differ from their defaults and from one another, with one link. All times are UTC,
/// `fileDate` in whole seconds; the status counts as changed.
sync::config::FileConfiguration
DistinctFile(sync::config::FileConfigurationType fileType = sync::config::FileConfigurationTypeFile);

/// The row in which a store gives a record back, its columns in the order of the SELECT list.
Row ToRow(sync::config::FileConfiguration const& file);

/// The "FileLinks" document of a record; texts must hold nothing that XML escapes.
QString FileLinksDocument(sync::config::FileConfiguration const& file);

/// The names of the members in which two records differ; null and empty texts differ, and so do times of the same
/// instant in different kinds of time.
std::vector<std::string> DifferingMembers(sync::config::FileConfiguration const& left,
                                          sync::config::FileConfiguration const& right);

} // namespace tandry::test
