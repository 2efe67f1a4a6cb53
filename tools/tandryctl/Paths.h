#pragma once

#include "Failure.h"

#include "config/FolderConfiguration.h"

#include <QString>
#include <QVector>

#include <optional>

namespace tandryctl {

/// Returns a path from the command line as an absolute, cleaned path. Throws if it is empty.
QString AbsolutePath(QString const& given);

/// Returns the failure of a command that was given no server path.
Failure EmptyServerPath();

/// Returns the path of a folder's entry.
QString ChildPath(QString const& folder, QString const& name);

/// Returns whether the path is the folder's or lies in it. Compares text only.
bool LiesIn(QString const& path, QString const& folder, Qt::CaseSensitivity caseSensitivity);

/// Returns the server path of a path in a root; null if the path does not lie in the root, compared case-sensitively.
///
/// Follows the rule by which the managers map folders and linked files that they add: in a root whose path ends in a
/// slash, such as "/", the server path of an entry is its local path.
QString ServerPathIn(sync::config::FolderConfiguration const& root, QString const& path);

/// A root that overlaps a directory, and how.
struct RootConflict
{
    sync::config::FolderConfiguration root;
    /// "is", "lies inside" or "encloses".
    char const* relation;
};

/// Returns the first root that overlaps the directory. Compares paths case-insensitively, as the managers do, and again
/// with symbolic links resolved.
std::optional<RootConflict> FindRootConflict(QString const& directory,
                                             QVector<sync::config::FolderConfiguration> const& roots);

/// Returns the root that a path lies in: the one with the longest path among those that match case-sensitively, or else
/// among those that match case-insensitively. Without an account, searches the roots of all accounts.
std::optional<sync::config::FolderConfiguration>
FindRootOf(QString const& path, QVector<sync::config::FolderConfiguration> const& roots, std::optional<int> accountId);

} // namespace tandryctl
