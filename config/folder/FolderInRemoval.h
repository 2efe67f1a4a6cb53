#pragma once

#include <QtGlobal>

namespace sync::config {

class FolderConfigManager;

/// A folder whose tree a call of `RemoveFolderAndChildren` is removing.
///
/// The call keeps the object on the stack. The objects of a thread form a list, from the innermost call outwards. With
/// it a call finds out whether an outer call is already removing the same folder. The manager keeps no state.
class FolderInRemoval
{
public:
    FolderInRemoval(FolderConfigManager const& manager, int folderId) noexcept;
    ~FolderInRemoval();
    Q_DISABLE_COPY_MOVE(FolderInRemoval)

    /// Whether an outer call is removing the same folder of the same manager, so that the folder is its own ancestor.
    [[nodiscard]] bool isItsOwnAncestor() const noexcept;

private:
    FolderConfigManager const* const _manager;
    FolderInRemoval const* const _outer;
    int const _folderId;
};

} // namespace sync::config
