#include "config/folder/FolderCaches.h"

#include <utility>

namespace sync::config {

FolderCaches::FolderCaches(std::function<Listing()> getAll,
                           std::function<Listing()> getAllRootFolders,
                           int refreshRateMsec)
    : allFolders(std::move(getAll), refreshRateMsec)
    , allRootFolders(std::move(getAllRootFolders), refreshRateMsec)
{}

} // namespace sync::config
