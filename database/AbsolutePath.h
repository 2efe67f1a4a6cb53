#pragma once

#include "database/TandryDatabaseExport.h"

#include <QString>

namespace sync::database {

/// The path of a file or folder from the file system's root: a relative one begins at the working directory, whatever
/// its characters. Empty, "." and ".." parts go, unless a part in front is a symbolic link.
///
/// Null if the system would take the path for another one than the text says (null characters, lone surrogates, letters
/// that the locale does not know), if it is empty, or if it is relative and the working directory is gone or has no
/// exact text itself; then `error` (if given) tells which.
[[nodiscard]] TANDRY_DATABASE_EXPORT QString AbsolutePath(QString const& path, QString* error = nullptr);

} // namespace sync::database
