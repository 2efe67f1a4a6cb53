#pragma once

#include "Output.h"

#include "tools/findings/StoreSize.h"

#include <memory>

namespace tandryctl {

/// What 'stat' shows of a store.
struct StoreFacts
{
    QString path;
    QString journalMode;
    tandry::findings::StoreSize size;
};

/// Reads the whole store. If it fails, something may be missing; its `LastError` then tells why.
StoreFacts FactsOf(std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store);

/// Returns the columns of the facts; in JSON with the tables and indices.
Columns<StoreFacts> const& StatColumns(bool withObjects);

} // namespace tandryctl
