#pragma once

#include "config/TandryConfigurationExport.h"

#include <QString>

namespace sync::config {

/// The cleaned path with its leading folders `oldPrefix` replaced by `newPrefix`, or just the cleaned path when it
/// doesn't lie in `oldPrefix`. Case counts. The prefixes are taken as they come; an old one that ends in a slash
/// matches only itself and what goes on with another slash.
TANDRY_CONFIGURATION_EXPORT QString ReplacePathPrefix(QString path, QString const& oldPrefix, QString const& newPrefix);

/// The position of a path relative to a folder. Compares without case, and does not clean either text.
enum class PathRelation
{
    Outside,
    Same,
    /// The folder's text ends in a slash, and the path goes on after it.
    BehindTrailingSlash,
    Below,
};

PathRelation RelateToFolder(QString const& path, QString const& folder);

/// Whether one of the two paths is the other one or lies in it.
bool PathsOverlap(QString const& left, QString const& right);

} // namespace sync::config
