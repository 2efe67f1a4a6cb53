#include "interf/IScheduleEntryManager.h"

namespace sync::interf {

IScheduleEntryManager::IScheduleEntryManager() = default;
IScheduleEntryManager::~IScheduleEntryManager() = default;

} // namespace sync::interf
