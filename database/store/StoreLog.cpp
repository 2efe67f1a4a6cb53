#include "database/store/StoreLog.h"

namespace sync::database {

Q_LOGGING_CATEGORY(StoreLog, "tandry.database")

} // namespace sync::database
