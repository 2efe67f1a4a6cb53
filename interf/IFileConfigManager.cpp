#include "interf/IFileConfigManager.h"

namespace sync::interf {

IFileConfigManager::IFileConfigManager() = default;
IFileConfigManager::~IFileConfigManager() = default;

} // namespace sync::interf
