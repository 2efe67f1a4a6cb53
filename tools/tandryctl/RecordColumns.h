#pragma once

#include "Output.h"

#include "config/AuthenticationConfiguration.h"
#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/ScheduleEntry.h"
#include "config/ServerConfiguration.h"

namespace tandryctl {

/// The columns of each kind of record in table order. What a record doesn't give away is left out: the name-value
/// properties of all but files, and the password column.

Columns<sync::config::FolderConfiguration> const& FolderColumns();
Columns<sync::config::FileConfiguration> const& FileColumns();
Columns<sync::config::ServerConfiguration> const& ServerColumns();
Columns<sync::config::AuthenticationConfiguration> const& AccountColumns();
Columns<sync::config::ScheduleEntry> const& ScheduleColumns();

} // namespace tandryctl
