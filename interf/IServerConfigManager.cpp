#include "interf/IServerConfigManager.h"

namespace sync::interf {

IServerConfigManager::IServerConfigManager() = default;
IServerConfigManager::~IServerConfigManager() = default;

} // namespace sync::interf
