#include "interf/IDatabaseFactory.h"

namespace sync::interf::factory {

IDatabaseFactory::IDatabaseFactory() = default;
IDatabaseFactory::~IDatabaseFactory() = default;

} // namespace sync::interf::factory
