#include "config/folder/FolderInRemoval.h"

namespace sync::config {

namespace {

thread_local FolderInRemoval const* innermost = nullptr;

} // namespace

FolderInRemoval::FolderInRemoval(FolderConfigManager const& manager, int folderId) noexcept
    : _manager(&manager)
    , _outer(innermost)
    , _folderId(folderId)
{
    innermost = this;
}

FolderInRemoval::~FolderInRemoval()
{
    innermost = _outer;
}

bool FolderInRemoval::isItsOwnAncestor() const noexcept
{
    FolderInRemoval const* outer = _outer;
    while (outer != nullptr && (outer->_folderId != _folderId || outer->_manager != _manager))
        outer = outer->_outer;
    return outer != nullptr;
}

} // namespace sync::config
