#pragma once

#include "config/FolderConfiguration.h"
#include "tools/findings/DiskEntry.h"

#include <QDateTime>
#include <QStringList>

#include <map>
#include <memory>
#include <vector>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace tandry::findings {

/// The rows of one root, and their state.
struct RootStatus
{
    sync::config::FolderConfiguration root;
    /// The kind of entry at the root's path.
    DiskEntry::Kind onDisk = DiskEntry::Kind::Missing;
    /// The root itself included.
    qint64 folders = 0;
    qint64 files = 0;
    /// The sizes of the files, together.
    qint64 bytes = 0;
    // The number of rows by their `syncStatus`.
    std::map<int, qint64> foldersByStatus;
    std::map<int, qint64> filesByStatus;
    /// The latest of all rows; invalid if there is none.
    QDateTime lastOperation;
    QDateTime lastSync;
    /// Folders that are out of sync, and files that are not synced; and the paths of the first few.
    qint64 outOfSync = 0;
    QStringList firstOutOfSync;
};

/// The status of a store, by root.
struct StoreStatus
{
    std::vector<RootStatus> roots;
    // Rows whose root is not on record.
    qint64 foldersWithoutRoot = 0;
    qint64 filesWithoutRoot = 0;
};

/// Returns the status of the store, in one pass over its folders and one over its files. If the store fails, something
/// may be missing; its `LastError` then tells why.
StoreStatus ReadStatus(std::shared_ptr<sync::interf::factory::IDatabaseFactory> const& store);

} // namespace tandry::findings
