#include "tools/findings/FolderRings.h"

#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/Examination.h"
#include "tools/findings/TableNames.h"

#include <algorithm>
#include <unordered_map>

namespace tandry::findings {

namespace {

struct Folder
{
    int parentId;
    /// The number of the walk that came here; 0 for none.
    std::size_t walk = 0;
};

} // namespace

std::vector<std::vector<int>> FindFolderRings(Examination& examination)
{
    std::unordered_map<int, Folder> folders;
    examination.statements().Read(
        QStringLiteral("SELECT id, parentId FROM FolderConfiguration WHERE parentId <> 0"),
        {},
        [&](sync::interf::IQSqlQueryWrapper& row) { folders[row.value(0).toInt()] = {row.value(1).toInt()}; });

    // A walk up that meets itself has entered a ring; one that meets another walk finds nothing new.
    std::vector<std::vector<int>> rings;
    std::size_t walk = 0;
    for (auto& [start, unused] : folders) {
        ++walk;
        auto at = folders.find(start);
        for (; at != folders.end() && at->second.walk == 0; at = folders.find(at->second.parentId))
            at->second.walk = walk;
        if (at == folders.end() || at->second.walk != walk)
            continue;
        std::vector<int> ring{at->first};
        for (int id = at->second.parentId; id != at->first; id = folders.at(id).parentId)
            ring.push_back(id);
        std::rotate(ring.begin(), std::min_element(ring.begin(), ring.end()), ring.end());
        rings.push_back(std::move(ring));
    }
    std::sort(rings.begin(), rings.end());
    return rings;
}

void FindFolderRingRows(Examination& examination, std::vector<FoundRow>& rows)
{
    for (std::vector<int> const& ring : FindFolderRings(examination)) {
        for (int const id : ring)
            examination.FindRows(Folders,
                                 QStringLiteral("bad.id = :id"),
                                 QStringLiteral("'parentId ' || bad.parentId"),
                                 {{":id", id}},
                                 rows);
    }
}

} // namespace tandry::findings
