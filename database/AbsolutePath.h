#pragma once

#include "TandryDatabaseExport.h"

#include <QString>

namespace sync::database {

/// Returns the absolute path of a file or folder. A relative path starts at the working directory, whatever its
/// characters. Empty, "." and ".." parts are removed, but not behind a part that is a symbolic link.
///
/// Returns null if the path is empty; if the system would use another path than the text says (null characters, lone
/// surrogates, letters that the locale does not have); and if the path is relative and the working directory was
/// removed or has no exact text itself. `error`, unless null, then contains the reason.
[[nodiscard]] TANDRY_DATABASE_EXPORT QString AbsolutePath(QString const& path, QString* error = nullptr);

} // namespace sync::database
