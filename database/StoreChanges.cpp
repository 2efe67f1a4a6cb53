#include "database/StoreChanges.h"

namespace sync::database {

StoreChanges::StoreChanges() = default;
StoreChanges::~StoreChanges() = default;

} // namespace sync::database
