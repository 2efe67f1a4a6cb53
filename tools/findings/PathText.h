#pragma once

#include <QString>

#include <algorithm>

namespace tandry::findings {

/// Returns the folder of a clean path, by its text alone; empty for a path without one.
inline QString FolderOf(QString const& path)
{
    int const slash = path.lastIndexOf(QLatin1Char('/'));
    if (slash == 0 && path.size() > 1)
        return QStringLiteral("/");
    return path.left(std::max(slash, 0));
}

/// Returns a folder's path with a slash behind it.
inline QString EndingInSlash(QString const& folder)
{
    return folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
}

/// Returns the same text for paths that a file system may take for the same: those that differ only in case or in their
/// Unicode form.
inline QString Folded(QString const& path)
{
    return path.toCaseFolded().normalized(QString::NormalizationForm_C);
}

} // namespace tandry::findings
