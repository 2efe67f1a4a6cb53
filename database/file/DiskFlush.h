#pragma once

#include <QByteArray>

namespace sync::database {

// The functions return 0 or the operating system's error number.

/// Flushes a file's contents to the disk. The file must not be open as a database: closing the descriptor would release
/// SQLite's locks.
[[nodiscard]] int FlushFile(char const* name);

/// Flushes a folder: until then a power cut may undo what happened to the names in it.
[[nodiscard]] int FlushFolder(QByteArray const& name);

} // namespace sync::database
