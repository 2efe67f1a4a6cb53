#include "config/folder/PathRelation.h"

#include <QString>

namespace sync::config {

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
