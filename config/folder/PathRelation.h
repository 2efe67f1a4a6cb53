#pragma once

#include <QString>

namespace sync::config {

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
