#include "config/folder/PathRules.h"

#include <QDir>

namespace sync::config {

QString ReplacePathPrefix(QString path, QString const& oldPrefix, QString const& newPrefix)
{
    path = QDir::cleanPath(path);
    if (!path.startsWith(oldPrefix))
        return path;
    if (path.size() != oldPrefix.size() && path.at(oldPrefix.size()) != QLatin1Char('/'))
        return path;
    return path.replace(0, oldPrefix.size(), newPrefix);
}

PathRelation RelateToFolder(QString const& path, QString const& folder)
{
    if (!path.startsWith(folder, Qt::CaseInsensitive))
        return PathRelation::Outside;
    if (path.size() == folder.size())
        return PathRelation::Same;
    if (folder.endsWith(QLatin1Char('/')))
        return PathRelation::BehindTrailingSlash;
    return path.at(folder.size()) == QLatin1Char('/') ? PathRelation::Below : PathRelation::Outside;
}

bool PathsOverlap(QString const& left, QString const& right)
{
    return (left.size() < right.size() ? RelateToFolder(right, left) : RelateToFolder(left, right)) !=
           PathRelation::Outside;
}

} // namespace sync::config
