#include "RecordedPlaces.h"

#include "Text.h"

#include <QDir>

namespace tandryctl {

QString RecordedPlaces::DifferenceFromRecord(QString const& path, FolderOrigin const& now) const
{
    QString const place = Printable(now.fileSystem);
    if (auto const known = origins.constFind(path); known != origins.cend()) {
        if (*known == now)
            return {};
        return known->fileSystem == now.fileSystem
                   ? QStringLiteral("is not the folder that was recorded, but another one on ") + place
                   : QStringLiteral("was recorded on %1 and is now on %2").arg(Printable(known->fileSystem), place);
    }
    if (path != rootPath && origins.contains(rootPath) && hasRecordsBelow(path))
        return QStringLiteral("was recorded without a mount and is now on ") + place;
    // From a version that remembered no file systems.
    bool const isEmptyRoot = path == rootPath && QDir(rootPath).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System |
                                                                        QDir::NoDotAndDotDot);
    qint64 const records = isEmptyRoot ? countRecords() : 0;
    return records == 0 ? QString()
                        : QStringLiteral("is empty, though it has ") + Counted(records, "record", "records");
}

QString RecordedPlaces::MissingMountPoint(QString const& path) const
{
    return QStringLiteral("the mount point %1 is missing, and was recorded on %2")
        .arg(Quoted(path), Printable(origins.value(path).fileSystem));
}

} // namespace tandryctl
