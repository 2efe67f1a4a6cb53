#pragma once

#include <QtGlobal>

namespace sync::config {

class FolderConfigManager;

/// A folder whose tree a call of `RemoveFolderAndChildren` is removing.
///
/// The object lies in the frame of that call. Those of a thread form a list, from the innermost call outwards, by which
/// a call finds that an outer one is at the same folder already; the manager itself keeps nothing between its calls.
class FolderInRemoval
{
public:
    FolderInRemoval(FolderConfigManager const& manager, int folderId) noexcept;
    ~FolderInRemoval();
    Q_DISABLE_COPY_MOVE(FolderInRemoval)

    /// Whether an outer call is removing the same folder of the same manager: the folder is its own ancestor.
    [[nodiscard]] bool isItsOwnAncestor() const noexcept;

private:
    FolderConfigManager const* const _manager;
    FolderInRemoval const* const _outer;
    int const _folderId;
};

} // namespace sync::config
