#include "interf/IFolderConfigManager.h"

namespace sync::interf {

IFolderConfigManager::IFolderConfigManager() = default;
IFolderConfigManager::~IFolderConfigManager() = default;

} // namespace sync::interf
