#pragma once

#include <vector>

namespace tandry::findings {

class Examination;
struct FoundRow;

/// Finds paths of folders, files and generated files that differ only in case or in their Unicode form.
void FindPathsAlike(Examination& examination, std::vector<FoundRow>& rows);

/// Finds roots that have the same local path as another one, or lie in it. Ignores case, as the managers do.
void FindRootsThatOverlap(Examination& examination, std::vector<FoundRow>& rows);

/// The same for the paths on the server, within each account.
void FindServerRootsThatOverlap(Examination& examination, std::vector<FoundRow>& rows);

} // namespace tandry::findings
