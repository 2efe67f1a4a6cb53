#pragma once

#include <cstddef>
#include <vector>

namespace tandry::findings {

class Examination;
class StoreStatements;
struct FoundRow;

/// The result of one pass over the paths of folders, files and generated files.
struct PathSurvey
{
    /// Sorted hashes of the paths that differ from another one only in case or in their Unicode form. Hashes instead of
    /// paths: a store may have millions.
    std::vector<std::size_t> alike;
    /// Whether a table has a path more than once.
    bool hasRepeated = false;
};

PathSurvey SurveyPaths(StoreStatements& statements);

/// Finds paths of folders, files and generated files that differ only in case or in their Unicode form.
void FindPathsAlike(Examination& examination, std::vector<FoundRow>& rows);

/// Finds roots that have the same local path as another one, or lie in it. Ignores case, as the managers do.
void FindRootsThatOverlap(Examination& examination, std::vector<FoundRow>& rows);

/// The same for the paths on the server, within each account.
void FindServerRootsThatOverlap(Examination& examination, std::vector<FoundRow>& rows);

} // namespace tandry::findings
