#include "config/FolderConfiguration.h"

#include "config/PrivilegeWords.h"
#include "config/columns/ColumnList.h"
#include "config/folder/FolderColumns.h"

#include <utility>

namespace sync::config {

namespace {

const QString FeatureName = QStringLiteral("FeatureName");

} // namespace

FolderConfiguration::FolderConfiguration() = default;

FolderConfiguration::FolderConfiguration(FolderConfiguration const& other)
    : QObject()
{
    _CopyMembers(other);
}

FolderConfiguration& FolderConfiguration::operator=(FolderConfiguration const& other)
{
    _CopyMembers(other);
    return *this;
}

FolderConfiguration::~FolderConfiguration() = default;

void FolderConfiguration::_CopyMembers(FolderConfiguration const& other)
{
    column::CopyAll(*this, other);
    lastServerSyncRequestTime = other.lastServerSyncRequestTime;
    if (this == &other)
        nameValueProperties.clear(); // clients know it so
}

int FolderConfiguration::getId() const
{
    return id;
}

int FolderConfiguration::getAuthenticationId() const
{
    return authenticationId;
}

int FolderConfiguration::getProductConfigurationId() const
{
    return productConfigurationId;
}

QString FolderConfiguration::getName() const
{
    return name;
}

QString FolderConfiguration::getRemoteShortKey() const
{
    return remoteShortKey;
}

QString FolderConfiguration::getRemoteLongKey() const
{
    return remoteLongKey;
}

QString FolderConfiguration::getClientPath() const
{
    return clientPath;
}

QString FolderConfiguration::getServerPath() const
{
    return serverPath;
}

FolderSynchronizationStatus FolderConfiguration::getSyncStatus() const
{
    return syncStatus;
}

bool FolderConfiguration::getSyncStatusChanged() const
{
    return syncStatusChanged;
}

int FolderConfiguration::getParentId() const
{
    return parentId;
}

QDateTime FolderConfiguration::getLastOperationTime() const
{
    return lastOperationTime;
}

QDateTime FolderConfiguration::getLastSyncTime() const
{
    return lastSyncTime;
}

QDateTime FolderConfiguration::getLastServerSyncRequestTime() const
{
    return lastServerSyncRequestTime;
}

SynchronizationFolderOption FolderConfiguration::getFolderOption() const
{
    return folderOption;
}

FolderOperationType FolderConfiguration::getLastOperationType() const
{
    return lastOperationType;
}

DriveType FolderConfiguration::getSyncDriveType() const
{
    return syncDriveType;
}

int FolderConfiguration::getRootId() const
{
    return rootId;
}

FolderSyncOption FolderConfiguration::getSyncOption() const
{
    return syncOption;
}

QString FolderConfiguration::getOwnerId() const
{
    return ownerId;
}

FolderPrivileges FolderConfiguration::getPrivileges() const
{
    return privileges;
}

QString FolderConfiguration::getServerRoot() const
{
    return serverRoot;
}

QString FolderConfiguration::getServerFolderId() const
{
    return serverFolderId;
}

QString FolderConfiguration::getFeatureName() const
{
    return nameValueProperties.value(FeatureName);
}

bool FolderConfiguration::isRoot() const
{
    return parentId == 0;
}

void FolderConfiguration::setAuthenticationId(int value)
{
    authenticationId = value;
}

void FolderConfiguration::setProductConfigurationId(int value)
{
    productConfigurationId = value;
}

void FolderConfiguration::setName(QString value)
{
    name = std::move(value);
}

void FolderConfiguration::setRemoteShortKey(QString value)
{
    remoteShortKey = std::move(value);
}

void FolderConfiguration::setRemoteLongKey(QString value)
{
    remoteLongKey = std::move(value);
}

void FolderConfiguration::setClientPath(QString value)
{
    clientPath = std::move(value);
}

void FolderConfiguration::setServerPath(QString value)
{
    serverPath = std::move(value);
}

void FolderConfiguration::setSyncStatus(FolderSynchronizationStatus value)
{
    syncStatus = value;
    syncStatusChanged = true;
}

void FolderConfiguration::resetSyncStatusChanged()
{
    syncStatusChanged = false;
}

void FolderConfiguration::setParentId(int value)
{
    parentId = value;
}

void FolderConfiguration::setLastOperationTime(QDateTime value)
{
    lastOperationTime = std::move(value);
}

void FolderConfiguration::setLastSyncTime(QDateTime value)
{
    value.setTimeSpec(Qt::UTC);
    lastSyncTime = std::move(value);
}

void FolderConfiguration::setLastServerSyncRequestTime(QDateTime value)
{
    value.setTimeSpec(Qt::UTC);
    lastServerSyncRequestTime = std::move(value);
}

void FolderConfiguration::setFolderOption(SynchronizationFolderOption value)
{
    folderOption = value;
}

void FolderConfiguration::setLastOperationType(FolderOperationType value)
{
    lastOperationType = value;
}

void FolderConfiguration::setSyncDriveType(DriveType value)
{
    syncDriveType = value;
}

void FolderConfiguration::setRootId(int value)
{
    rootId = value;
}

void FolderConfiguration::setSyncOption(FolderSyncOption value)
{
    syncOption = value;
}

void FolderConfiguration::setOwnerId(QString value)
{
    ownerId = std::move(value);
}

void FolderConfiguration::setPrivileges(FolderPrivileges value)
{
    privileges = value;
}

void FolderConfiguration::setPrivileges(QString const& text)
{
    // Blank isn't "no rights", and not all five of a new record either: sharing has to be named.
    privileges = FolderPrivileges(text.trimmed().isEmpty() ? 15 : PrivilegesFromWords(text));
}

void FolderConfiguration::setServerRoot(QString value)
{
    serverRoot = std::move(value);
}

void FolderConfiguration::setServerFolderId(QString const& value)
{
    serverFolderId = value;
}

void FolderConfiguration::setFeatureName(QString const& value)
{
    nameValueProperties[FeatureName] = value;
}

} // namespace sync::config
