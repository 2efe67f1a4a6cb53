#include "config/FileConfiguration.h"

#include "config/PrivilegeWords.h"

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
    id = other.id;
    folderConfigurationId = other.folderConfigurationId;
    productConfigurationId = other.productConfigurationId;
    name = other.name;
    clientPath = other.clientPath;
    serverPath = other.serverPath;
    checkSum = other.checkSum;
    checkSumMD5 = other.checkSumMD5;
    createdDateTime = other.createdDateTime;
    lastModifiedDateTime = other.lastModifiedDateTime;
    size = other.size;
    lastOperationType = other.lastOperationType;
    nameValueProperties = other.nameValueProperties;
    lastOperationTime = other.lastOperationTime;
    rootFolderId = other.rootFolderId;
    syncOption = other.syncOption;
    parentFileId = other.parentFileId;
    ownerId = other.ownerId;
    privileges = other.privileges;
    fileType = other.fileType;
    serverFileId = other.serverFileId;
    serverFileVersionId = other.serverFileVersionId;
    fileLinks = other.fileLinks;
    fileDate = other.fileDate;
    syncStatus = other.syncStatus;
    syncSubStatus = other.syncSubStatus;
    syncStatusChanged = other.syncStatusChanged;
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
