#pragma once

#include "config/FolderConfiguration.h"
#include "support/RecordingStore.h"

#include <QString>

#include <string>
#include <vector>

namespace tandry::test {

/// A folder record whose stored members all differ from their defaults and from one another; the status counts as
/// changed. Both stored times are in UTC.
sync::config::FolderConfiguration DistinctFolder();

/// A record with these members and defaults for the rest.
sync::config::FolderConfiguration Folder(QString const& clientPath, int parentId = 0, int rootId = -1);

/// The row in which a store gives a record back, its columns in the order of the SELECT list.
Row ToRow(int id, sync::config::FolderConfiguration const& folder);

/// The record as it comes back from a store that gave it this id.
sync::config::FolderConfiguration StoredFolder(int id, sync::config::FolderConfiguration const& folder);

/// The values of all columns of texts, and the feature name.
std::vector<QString> TextsOf(sync::config::FolderConfiguration const& folder);

/// The names of the members in which two records differ; null and empty texts differ, and so do times of the same
/// instant in different time specs.
std::vector<std::string> DifferingMembers(sync::config::FolderConfiguration const& left,
                                          sync::config::FolderConfiguration const& right);

} // namespace tandry::test
