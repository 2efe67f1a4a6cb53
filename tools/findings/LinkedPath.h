#pragma once

#include <QString>

namespace tandry::findings {

/// Returns the first symbolic link on disk on the way to a clean path, the path itself included; empty if there is
/// none. Folders that are not longer than `leastLength` are not looked at.
QString FirstLinkOf(QString const& path, int leastLength = 0);

/// Returns a clean path with the symbolic links in the folders above it resolved. What does not exist keeps its name.
QString ResolvedAbove(QString const& path);

} // namespace tandry::findings
