#include "interf/IAuthenticationConfigManager.h"

namespace sync::interf {

IAuthenticationConfigManager::IAuthenticationConfigManager() = default;
IAuthenticationConfigManager::~IAuthenticationConfigManager() = default;

} // namespace sync::interf
