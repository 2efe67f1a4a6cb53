#pragma once

#include "config/TandryConfigurationExport.h"

#include <QString>

namespace sync::config {

/// Returns the cleaned path with its leading folders `oldPrefix` replaced by `newPrefix`, or just the cleaned path if
/// it does not lie in `oldPrefix`. Case matters. The prefixes are not cleaned: an `oldPrefix` that ends in a slash
/// matches only itself and texts that continue with a second slash.
TANDRY_CONFIGURATION_EXPORT QString ReplacePathPrefix(QString path, QString const& oldPrefix, QString const& newPrefix);

/// The position of a path relative to a folder. Compares without case, and does not clean either text.
enum class PathRelation
{
    Outside,
    Same,
    /// The folder's text ends in a slash, and the path continues after it.
    BehindTrailingSlash,
    Below,
};

PathRelation RelateToFolder(QString const& path, QString const& folder);

/// Returns whether the two paths are the same or one lies in the other.
bool PathsOverlap(QString const& left, QString const& right);

} // namespace sync::config
