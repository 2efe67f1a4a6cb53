#include "config/folder/FolderCaches.h"

#include "database/TransactionalScope.h"

#include <QDateTime>

#include <utility>

namespace sync::config {

using sync::database::TransactionalScope;

// A rollback takes back rows that a listing may show, and the other way round. It does not clear the listings itself:
// it may happen in the middle of a refill, which holds the lock, and on any thread.

FolderCaches::FolderCaches(std::function<Listing()> getAll,
                           std::function<Listing()> getAllRootFolders,
                           int refreshRateMsec)
    : allFolders(std::move(getAll), refreshRateMsec, &QDateTime::currentMSecsSinceEpoch, &TransactionalScope::Rollbacks)
    , allRootFolders(std::move(getAllRootFolders),
                     refreshRateMsec,
                     &QDateTime::currentMSecsSinceEpoch,
                     &TransactionalScope::Rollbacks)
{}

} // namespace sync::config
