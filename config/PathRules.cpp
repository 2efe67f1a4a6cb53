#include "config/PathRules.h"

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

} // namespace sync::config
