#pragma once

#include "AuthenticationConfigManager.h"
#include "FileConfigManager.h"
#include "FolderConfigManager.h"
#include "ProductConfigManager.h"
#include "ScheduleEntryManager.h"
#include "ServerConfigManager.h"
#include "TandryConfigurationExport.h"

#include <memory>

namespace sync::interf {
class IRefreshNativeFileViewer;
namespace factory {
class IDatabaseFactory;
}
} // namespace sync::interf

namespace sync::config {

/// The six managers of one store. Each may outlive the others.
struct TANDRY_CONFIGURATION_EXPORT Managers
{
    /// The managers keep a share of each argument. Does not access the store. If the refresh object is null, the shell
    /// is never refreshed; the factory must not be null.
    explicit Managers(std::shared_ptr<sync::interf::factory::IDatabaseFactory> const& databaseFactory,
                      std::shared_ptr<sync::interf::IRefreshNativeFileViewer> const& refreshNativeFileViewer = nullptr);

    std::shared_ptr<ServerConfigManager> servers;          ///< Never null.
    std::shared_ptr<AuthenticationConfigManager> accounts; ///< Never null.
    std::shared_ptr<ProductConfigManager> products;        ///< Never null.
    std::shared_ptr<FolderConfigManager> folders;          ///< Never null.
    std::shared_ptr<FileConfigManager> files;              ///< Never null; uses `folders`.
    std::shared_ptr<ScheduleEntryManager> schedules;       ///< Never null.
};

} // namespace sync::config
