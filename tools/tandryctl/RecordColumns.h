#pragma once

#include "Output.h"

#include "config/AuthenticationConfiguration.h"
#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfiguration.h"
#include "config/ScheduleEntry.h"
#include "config/ServerConfiguration.h"
#include "tools/findings/FileRows.h"

namespace tandryctl {

// The columns of each kind of record, in table order, without those that its records do not carry. Of the name-value
// properties, only those of files are printed.

Columns<sync::config::FolderConfiguration> const& FolderColumns();
/// The status is the first column.
Columns<sync::config::FileConfiguration> const& FileColumns();
/// The same columns of the rows that a query for all of `columns`, which are some of `FileColumns`, returns.
Columns<tandry::findings::FileRows::Row> FileRowColumns(Columns<sync::config::FileConfiguration> const& columns);
/// "alias" is the name that is shown for the server, derived from its URL if none was set.
Columns<sync::config::ServerConfiguration> const& ServerColumns();
Columns<sync::config::AuthenticationConfiguration> const& AccountColumns();
/// "consumerSecret" only tells whether there is one, unless the secret is to be shown.
Columns<sync::config::ProductConfiguration> ProductColumns(bool showSecret = false);
Columns<sync::config::ScheduleEntry> const& ScheduleColumns();

/// Returns the server of a product; `getServerId` returns the product's own id.
int ServerIdOf(sync::config::ProductConfiguration const& product);

} // namespace tandryctl
