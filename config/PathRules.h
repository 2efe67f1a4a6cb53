#pragma once

#include "TandryConfigurationExport.h"

#include <QString>

namespace sync::config {

/// Returns the cleaned path with its leading folders `oldPrefix` replaced by `newPrefix`, or just the cleaned path if
/// it does not lie in `oldPrefix`. The managers use it to turn the path of a new folder or linked file into its server
/// path, with the root's `clientPath` and `serverPath` as prefixes.
///
/// Case matters. The prefixes are not cleaned: an `oldPrefix` that ends in a slash matches only itself and texts that
/// continue with a second slash. Does not access the disk. Any thread may call this.
TANDRY_CONFIGURATION_EXPORT QString ReplacePathPrefix(QString path, QString const& oldPrefix, QString const& newPrefix);

} // namespace sync::config
