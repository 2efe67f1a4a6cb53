#pragma once

#include <QDir>

namespace tandry::findings {

/// Returns the folder for temporary files: the one that the environment variable TMPDIR names, which need not exist, or
/// else /tmp. QDir::temp() is the working directory if the folder does not exist.
QDir TemporaryFolder();

} // namespace tandry::findings
