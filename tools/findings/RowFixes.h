#pragma once

#include <vector>

namespace tandry::findings {

class Examination;
struct FixedRow;
struct FoundRow;

// Fixes for the table of kinds, whose remedies say what they do.

void RemoveRows(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);
void MoveFoldersByPath(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);
void BreakFolderRings(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);
void AssignFoldersToRoots(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);
void SetOwnRootIds(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);
void SetAccountsOfRoots(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);
void ClearProducts(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);
void MoveFilesByPath(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);
void AssignFilesToRoots(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);
void CleanPaths(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);
void AddDefaultSchedule(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);

} // namespace tandry::findings
