#pragma once

#include "tools/findings/Findings.h"

#include <vector>

namespace tandry::findings {

class Examination;

/// What is wrong with the documents that rows hold.
struct DocumentFindings
{
    std::vector<FoundRow> broken;
    std::vector<FoundRow> overLimits;
    /// Only whole documents are searched for links.
    std::vector<FoundRow> linksToNothing;
};

/// Reads all documents as the client does.
DocumentFindings ExamineDocuments(Examination& examination);

} // namespace tandry::findings
