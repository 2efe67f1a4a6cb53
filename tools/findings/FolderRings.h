#pragma once

#include <vector>

namespace tandry::findings {

class Examination;
struct FoundRow;

/// Returns the ids of folders that lie in each other, ring by ring, each beginning with its lowest id and going on with
/// that folder's parent.
std::vector<std::vector<int>> FindFolderRings(Examination& examination);

/// The same as found rows.
void FindFolderRingRows(Examination& examination, std::vector<FoundRow>& rows);

} // namespace tandry::findings
