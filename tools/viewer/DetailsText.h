#pragma once

#include "tools/findings/Explanation.h"
#include "tools/findings/Findings.h"

#include <QString>

#include <optional>
#include <vector>

namespace tandry::viewer {

/// Returns what is known about a record as rich text: the conclusion, the findings about its row, and the facts. Names
/// no colour, so that it fits any palette. Nothing in the texts of a store is taken for markup. Without findings they
/// could not be looked for.
QString DetailsText(findings::Explanation const& explanation,
                    std::optional<std::vector<findings::Finding>> const& findings);

} // namespace tandry::viewer
