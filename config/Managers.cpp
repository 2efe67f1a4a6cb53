#include "config/Managers.h"

namespace sync::config {

Managers::Managers(std::shared_ptr<sync::interf::factory::IDatabaseFactory> const& databaseFactory,
                   std::shared_ptr<sync::interf::IRefreshNativeFileViewer> const& refreshNativeFileViewer)
    : servers(std::make_shared<ServerConfigManager>(databaseFactory))
    , accounts(std::make_shared<AuthenticationConfigManager>(databaseFactory))
    , products(std::make_shared<ProductConfigManager>(databaseFactory))
    , folders(std::make_shared<FolderConfigManager>(databaseFactory, refreshNativeFileViewer))
    , files(std::make_shared<FileConfigManager>(databaseFactory, refreshNativeFileViewer, folders))
    , schedules(std::make_shared<ScheduleEntryManager>(databaseFactory))
{}

} // namespace sync::config
