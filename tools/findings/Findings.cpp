#include "tools/findings/Findings.h"

#include "tools/findings/Examination.h"
#include "tools/findings/FindingTable.h"

namespace tandry::findings {

std::vector<FindingKind> const& FindingKinds()
{
    static std::vector<FindingKind> const kinds = [] {
        std::vector<FindingKind> all;
        for (FindingEntry const& entry : FindingTable()) {
            all.push_back(entry.kind);
            all.back().isFixable = entry.fix != nullptr;
        }
        return all;
    }();
    return kinds;
}

std::optional<std::vector<Finding>> FindAll(std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store,
                                            FindingProgress const& progress)
{
    std::vector<Finding> findings;
    Examination examination(store);
    for (std::size_t number = 0; number < FindingTable().size(); ++number) {
        std::vector<FoundRow> rows = examination.Find(FindingTable()[number]);
        if (!examination.works())
            return std::nullopt;
        if (!rows.empty())
            findings.push_back({&FindingKinds()[number], std::move(rows)});
        if (progress)
            progress();
        if (number == 0 && !findings.empty())
            break; // the file is damaged: queries can return anything
    }
    return findings;
}

std::optional<std::vector<Finding>>
FindInRow(std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store, char const* table, int id)
{
    std::vector<Finding> findings;
    Examination examination(store);
    for (std::size_t number = 0; number < FindingTable().size(); ++number) {
        std::vector<FoundRow> rows = examination.FindRow(FindingTable()[number], table, id);
        if (!rows.empty())
            findings.push_back({&FindingKinds()[number], std::move(rows)});
    }
    if (!examination.works())
        return std::nullopt;
    return findings;
}

} // namespace tandry::findings
