#pragma once

#include "config/FolderConfiguration.h"
#include "config/TandryConfigurationExport.h"
#include "core/TimedCache.h"

#include <QVector>

#include <functional>

namespace sync::config {

/// The two listings that a folder manager keeps for a while. Their locks are never held together.
class FolderCaches
{
public:
    using Listing = QVector<FolderConfiguration>;

    /// The rate is in milliseconds.
    FolderCaches(std::function<Listing()> getAll, std::function<Listing()> getAllRootFolders, int refreshRateMsec);

    /// By which clock listings age from now on, in all managers of the process; null for the system's. For tests.
    TANDRY_CONFIGURATION_EXPORT static void UseClock(core::Clock clock);

    core::TimedCache<Listing> allFolders;
    core::TimedCache<Listing> allRootFolders;
};

} // namespace sync::config
