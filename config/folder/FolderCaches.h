#pragma once

#include "config/FolderConfiguration.h"
#include "core/TimedCache.h"

#include <QVector>

#include <functional>

namespace sync::config {

/// The two listings that a folder manager caches. Their locks are never held together. What was cached before any
/// transaction of the process was rolled back or lost is read anew.
class FolderCaches
{
public:
    using Listing = QVector<FolderConfiguration>;

    /// The rate is in milliseconds.
    FolderCaches(std::function<Listing()> getAll, std::function<Listing()> getAllRootFolders, int refreshRateMsec);

    core::TimedCache<Listing> allFolders;
    core::TimedCache<Listing> allRootFolders;
};

} // namespace sync::config
