#include "interf/IProductConfigManager.h"

namespace sync::interf {

IProductConfigManager::IProductConfigManager() = default;
IProductConfigManager::~IProductConfigManager() = default;

} // namespace sync::interf
