#pragma once

#include "config/FolderConfiguration.h"
#include "config/Managers.h"
#include "tools/findings/Findings.h"

#include <QString>

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace tandry::findings {

class Examination;

/// Where rows belong whose folder or root is gone, by their paths. Reads the roots on record once, at the start.
class FolderPlaces
{
public:
    explicit FolderPlaces(Examination& examination);

    bool IsRoot(int id) const { return _roots.count(id) != 0; }

    /// Returns the folder that holds the path in this root. Folders that are missing in between are added as the client
    /// adds them. Returns the root itself if the path lies elsewhere, and if its folder lies in `moved`, the folder
    /// that is to be placed; nothing if the root is not on record.
    std::optional<int> FolderFor(QString const& path, int rootId, int moved = 0);

    /// Returns the root that the folder's parents lead to.
    std::optional<int> RootAbove(int folderId);

    /// Returns the innermost root whose path contains the path; with an account, among its roots. Returns nothing if
    /// there is none, or more than one with this path.
    std::optional<int> RootContaining(QString const& path, std::optional<int> accountId) const;

private:
    /// Returns the folder's parents, from the folder itself up. Ends at a root, at a gap and at a ring.
    std::vector<int> _Up(int folderId);

    Examination& _examination;
    sync::config::Managers _managers;
    std::map<int, sync::config::FolderConfiguration> _roots;
};

} // namespace tandry::findings
