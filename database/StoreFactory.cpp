#include "database/StoreFactory.h"

namespace sync::database {

StoreFactory::StoreFactory()
{
    // Queued connections to CommitFailed find the type by name.
    [[maybe_unused]] static int const registered = qRegisterMetaType<StoreError>();
}

StoreFactory::~StoreFactory() = default;

std::unique_ptr<StoreChanges> StoreFactory::WatchChanges()
{
    return nullptr;
}

} // namespace sync::database
