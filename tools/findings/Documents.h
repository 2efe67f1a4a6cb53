#pragma once

#include "tools/findings/Findings.h"

#include <QString>

#include <functional>
#include <vector>

namespace tandry::findings {

class Examination;
struct FixedRow;

/// The rows with faulty documents.
struct DocumentFindings
{
    std::vector<FoundRow> broken;
    std::vector<FoundRow> overLimits;
    /// Only whole documents are searched for links.
    std::vector<FoundRow> linksToNothing;
};

/// Reads all documents as the client does.
DocumentFindings ExamineDocuments(Examination& examination);

/// Rewrites broken documents with the part that the client can read, as its next update would.
void WriteDocumentsAnew(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);

/// Lets links to missing rows name the file at their path or, if none is recorded there, no row.
void ResolveLinks(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed);

/// Lets links name other rows: `newId` gets the id that a link names and the link's path, which may be relative to the
/// folder of the file. Nothing else in the document changes. Returns whether a link did.
bool ChangeLinks(Examination& examination,
                 FoundRow const& row,
                 std::function<int(int fileId, QString const& path)> const& newId);

} // namespace tandry::findings
