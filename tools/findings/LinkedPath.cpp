#include "tools/findings/LinkedPath.h"

#include "tools/findings/DiskEntry.h"
#include "tools/findings/PathText.h"

#include <QFileInfo>

namespace tandry::findings {

QString FirstLinkOf(QString const& path, int leastLength)
{
    QString first;
    for (QString place = path; place.size() > std::max(leastLength, 1); place = FolderOf(place)) {
        if (DiskEntry::At(place).kind == DiskEntry::Kind::Link)
            first = place;
    }
    return first;
}

QString ResolvedAbove(QString const& path)
{
    for (QString folder = FolderOf(path); folder.size() > 1; folder = FolderOf(folder)) {
        QString const resolved = QFileInfo(folder).canonicalFilePath();
        if (!resolved.isEmpty())
            return (resolved == QLatin1String("/") ? QString() : resolved) + path.mid(folder.size());
    }
    return path;
}

} // namespace tandry::findings
