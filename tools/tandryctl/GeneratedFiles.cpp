#include "GeneratedFiles.h"

#include "Session.h"
#include "Text.h"

#include <QFile>
#include <QFileInfo>

namespace tandryctl {

using sync::config::FileConfiguration;

void GeneratedFiles::AddOf(int fileId)
{
    for (FileConfiguration const& file :
         _session.Checked(_session.files().GetGeneratedFileConfigurationsByParentFileId(fileId))) {
        QFileInfo const onDisk(file.clientPath);
        bool const isFile = onDisk.isSymLink() || (onDisk.exists() && !onDisk.isDir());
        if (isFile && onDisk.isAbsolute() && !_paths.contains(file.clientPath))
            _paths.append(file.clientPath);
    }
}

void GeneratedFiles::List() const
{
    for (QString const& path : _paths)
        _session.Announce(QStringLiteral("to be deleted from the disk: ") + Quoted(path));
}

void GeneratedFiles::RemoveRecords(int fileId)
{
    AddOf(fileId);
    // The generated ones first: the operation on the file would delete from the disk what it still finds of them,
    // though the transaction may fail.
    for (FileConfiguration const& file :
         _session.Checked(_session.files().GetGeneratedFileConfigurationsByParentFileId(fileId)))
        _session.CheckWritten(_session.files().RemoveGeneratedFileConfiguration(file.id));
    _session.CheckWritten(_session.files().RemoveFileConfigurationAndLinkedConfigurations(fileId));
}

int GeneratedFiles::Delete(QVector<ScanProblem>& problems) const
{
    int deleted = 0;
    for (QString const& path : _paths) {
        QFile file(path);
        if (_session.isDryRun() || file.remove())
            ++deleted;
        else
            problems.append({path,
                             QStringLiteral("%1 cannot be deleted from the disk: %2, but its record is removed")
                                 .arg(Quoted(path), file.errorString()),
                             QStringLiteral("delete it yourself")});
    }
    return deleted;
}

} // namespace tandryctl
