#pragma once

#include "tools/findings/Findings.h"
#include "tools/findings/StoreStatements.h"

#include <QString>

#include <memory>
#include <vector>

namespace tandry::findings {

struct FindingEntry;

/// A store that is looked at, with what several kinds of findings share.
class Examination
{
public:
    explicit Examination(std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store);

    sync::database::SqliteDatabaseFactory& store() { return *_store; }
    StoreStatements& statements() { return _statements; }

    /// Returns the rows of one kind. If the store fails, some may be missing.
    std::vector<FoundRow> Find(FindingEntry const& entry);

    /// Returns whether everything worked until now; the store's `LastError` tells what did not.
    bool works() const;

private:
    std::shared_ptr<sync::database::SqliteDatabaseFactory> const _store;
    StoreStatements _statements;
};

} // namespace tandry::findings
