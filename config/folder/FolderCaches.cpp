#include "config/folder/FolderCaches.h"

#include <QDateTime>

#include <atomic>
#include <utility>

namespace sync::config {

namespace {

core::Clock const SystemClock = &QDateTime::currentMSecsSinceEpoch;

std::atomic<core::Clock> currentClock = SystemClock;

qint64 Now()
{
    return currentClock.load()();
}

} // namespace

FolderCaches::FolderCaches(std::function<Listing()> getAll,
                           std::function<Listing()> getAllRootFolders,
                           int refreshRateMsec)
    : allFolders(std::move(getAll), refreshRateMsec, &Now)
    , allRootFolders(std::move(getAllRootFolders), refreshRateMsec, &Now)
{}

void FolderCaches::UseClock(core::Clock clock)
{
    currentClock = clock ? clock : SystemClock;
}

} // namespace sync::config
