#include "config/FileConfiguration.h"

#include "config/PrivilegeWords.h"
#include "config/columns/ColumnList.h"
#include "config/file/FileColumns.h"

namespace sync::config {

namespace {

const QString RepathRequired = QStringLiteral("RepathRequired");

} // namespace

FileConfiguration::FileConfiguration()
{
    fileDate.setTimeSpec(Qt::UTC);
}

FileConfiguration::FileConfiguration(FileConfiguration const& other)
{
    _CopyMembers(other);
}

FileConfiguration& FileConfiguration::operator=(FileConfiguration const& other)
{
    if (this != &other)
        _CopyMembers(other);
    return *this;
}

FileConfiguration::~FileConfiguration() = default;

void FileConfiguration::_CopyMembers(FileConfiguration const& other)
{
    column::CopyAll(*this, other);
    syncSubStatus = other.syncSubStatus;
}

FileSynchronizationStatus FileConfiguration::getSyncStatus() const
{
    return syncStatus;
}

bool FileConfiguration::getSyncStatusChanged() const
{
    return syncStatusChanged;
}

void FileConfiguration::setSyncStatus(FileSynchronizationStatus value)
{
    syncStatusChanged = true;
    syncStatus = value;
}

void FileConfiguration::resetSyncStatusChanged()
{
    syncStatusChanged = false;
}

void FileConfiguration::setPrivileges(QString const& text)
{
    privileges = PrivilegesFromWords(text);
}

FileSyncOption FileConfiguration::getSyncOptionPersistentAcrossMachines() const
{
    return static_cast<FileSyncOption>(syncOption & FileSyncOptionRepathRequired);
}

void FileConfiguration::getSyncOptionPersistentAcrossMachines(QStringList& words) const
{
    words.clear();
    if (getSyncOptionPersistentAcrossMachines() == FileSyncOptionRepathRequired)
        words.append(RepathRequired);
}

void FileConfiguration::setSyncOptionPersistentAcrossMachines(FileSyncOption value)
{
    syncOption |= value;
}

void FileConfiguration::setSyncOptionPersistentAcrossMachines(QStringList const& words)
{
    if (words.contains(RepathRequired, Qt::CaseInsensitive))
        syncOption |= FileSyncOptionRepathRequired;
}

FileSynchronizationSubStatus FileConfiguration::getSyncSubStatus() const
{
    return syncSubStatus;
}

void FileConfiguration::setSyncSubStatus(FileSynchronizationSubStatus value)
{
    syncSubStatus = value;
}

} // namespace sync::config
