#pragma once

#include "config/FolderConfiguration.h"

#include <QString>
#include <QVector>

#include <optional>

namespace tandryctl {

/// A path as given on the command line, made absolute from the working directory and cleaned. Throws on an empty one.
QString AbsolutePath(QString const& given);

/// The path of an entry of a folder.
QString ChildPath(QString const& folder, QString const& name);

/// Whether the path is the folder or lies in it, by the text alone.
bool LiesIn(QString const& path, QString const& folder, Qt::CaseSensitivity caseSensitivity);

/// The path on the server, by the rule by which the store maps the folders and linked files that it records itself: a
/// root whose path ends in a slash, such as the file system's own, maps what lies in it to the same path. Null for a
/// path that doesn't lie in the root by every letter.
QString ServerPathIn(sync::config::FolderConfiguration const& root, QString const& path);

/// The recorded root that keeps a directory from being recorded as one too, and how the two lie to each other.
struct RootConflict
{
    sync::config::FolderConfiguration root;
    /// "is", "lies inside" or "encloses".
    char const* relation;
};

/// Compares paths as the store's own rules do, without regard to case, and again with symbolic links resolved.
std::optional<RootConflict> FindRootConflict(QString const& directory,
                                             QVector<sync::config::FolderConfiguration> const& roots);

/// The root that a path lies in: the one with the longest path, and one that matches in case before one that doesn't.
/// Without an account, the roots of all accounts are looked at.
std::optional<sync::config::FolderConfiguration>
FindRootOf(QString const& path, QVector<sync::config::FolderConfiguration> const& roots, std::optional<int> accountId);

} // namespace tandryctl
