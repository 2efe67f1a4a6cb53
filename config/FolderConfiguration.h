#pragma once

#include "../interf/MetaTypeDeclaration.h"
#include "RecordText.h"
#include "TandryConfigurationExport.h"

#include <QDateTime>
#include <QMap>
#include <QMetaType>
#include <QObject>
#include <QString>

namespace sync::config {

// The enumerations are stored by number: never renumber. The client may store any other value.

/// State of a folder's synchronisation.
enum FolderSynchronizationStatus : int
{
    FolderStatusInitial = 1,
    FolderStatusOutOfSync = 2,
    /// The status of folders that `AddFolderAndParent` adds.
    FolderStatusPlaced = 3,
};

/// The part of a root that is synchronised.
enum SynchronizationFolderOption : int
{
    /// Only the files directly in the root, for operations that honour the option.
    FolderOptionTopFilesOnly = 1,
};

/// Kind of a folder's last operation; the client defines the meaning of the values.
enum FolderOperationType : int
{
};

/// Kind of the drive that contains a folder; the client defines the meaning of the values.
enum DriveType : int
{
};

/// How a folder is synchronised; the client defines the meaning of other values.
enum FolderSyncOption : int
{
    /// The option of a new record.
    FolderSyncOptionNone = 0,
};

/// The user's rights to a folder, as a set of bits.
enum FolderPrivileges : int
{
    FolderPrivilegeView = 1,
    FolderPrivilegeDownload = 2,
    FolderPrivilegeUpdate = 4,
    FolderPrivilegeDelete = 8,
    FolderPrivilegeShare = 16,
};

/// A synchronised folder, root or sub-folder: one row of the table `FolderConfiguration`.
///
/// A value: a copy has all members, but no state of the QObject. A record must not be assigned to itself, since that
/// empties its name-value properties.
class TANDRY_CONFIGURATION_EXPORT FolderConfiguration : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int Id READ getId)
    Q_PROPERTY(int AuthenticationId READ getAuthenticationId WRITE setAuthenticationId)
    Q_PROPERTY(int ProductConfigurationId READ getProductConfigurationId WRITE setProductConfigurationId)
    Q_PROPERTY(QString Name READ getName WRITE setName)
    Q_PROPERTY(QString RemoteShortKey READ getRemoteShortKey WRITE setRemoteShortKey)
    Q_PROPERTY(QString RemoteLongKey READ getRemoteLongKey WRITE setRemoteLongKey)
    Q_PROPERTY(QString ClientPath READ getClientPath WRITE setClientPath)
    Q_PROPERTY(FolderSynchronizationStatus SyncStatus READ getSyncStatus WRITE setSyncStatus)
    Q_PROPERTY(QString ServerPath READ getServerPath WRITE setServerPath)
    Q_PROPERTY(QDateTime LastOperationTime READ getLastOperationTime WRITE setLastOperationTime)
    Q_PROPERTY(int ParentId READ getParentId WRITE setParentId)
    Q_PROPERTY(QDateTime LastSyncTime READ getLastSyncTime WRITE setLastSyncTime)
    Q_PROPERTY(SynchronizationFolderOption FolderOption READ getFolderOption WRITE setFolderOption)
    Q_PROPERTY(FolderOperationType LastOperationType READ getLastOperationType WRITE setLastOperationType)
    Q_PROPERTY(DriveType SyncDriveType READ getSyncDriveType WRITE setSyncDriveType)
    Q_PROPERTY(int RootId READ getRootId WRITE setRootId)
    Q_PROPERTY(FolderSyncOption SyncOption READ getSyncOption WRITE setSyncOption)
    Q_PROPERTY(QString OwnerId READ getOwnerId WRITE setOwnerId)
    Q_PROPERTY(FolderPrivileges Privileges READ getPrivileges WRITE setPrivileges)
    Q_PROPERTY(QString ServerRoot READ getServerRoot WRITE setServerRoot)
    Q_PROPERTY(QString ServerFolderId READ getServerFolderId WRITE setServerFolderId)

public:
    FolderConfiguration();
    FolderConfiguration(FolderConfiguration const& other);
    FolderConfiguration& operator=(FolderConfiguration const& other);
    ~FolderConfiguration() override;

    /// The row's id; -1 for a record without a row. Only the manager sets it.
    int getId() const;
    /// The account that the folder is synchronised with, -1 for none.
    int getAuthenticationId() const;
    /// The consumer product that the folder belongs to, -1 for none.
    int getProductConfigurationId() const;
    /// The name to show; of a folder that `AddFolderAndParent` adds, the last part of its path.
    QString getName() const;
    /// The server's short key of the folder; folders that `AddFolderAndParent` adds get their root's.
    QString getRemoteShortKey() const;
    /// The server's long key of the folder; folders that `AddFolderAndParent` adds get their server path.
    QString getRemoteLongKey() const;
    /// Absolute, with `/` as separator.
    QString getClientPath() const;
    /// Path on the server.
    QString getServerPath() const;
    /// The state of the folder's synchronisation; `FolderStatusInitial` in a new record.
    FolderSynchronizationStatus getSyncStatus() const;
    /// Whether the status was set since the record was created, read from a store or reset, even to the same value. If
    /// so, `Add` and `Update` refresh the folder in the shell. Never stored.
    bool getSyncStatusChanged() const;
    /// The id of the parent folder; 0 marks a root, and -1 a folder that has no parent yet.
    int getParentId() const;
    /// In the zone that was set; in UTC if it comes from the store.
    QDateTime getLastOperationTime() const;
    /// In UTC.
    QDateTime getLastSyncTime() const;
    /// In UTC. Never stored.
    QDateTime getLastServerSyncRequestTime() const;
    /// The part of a root that is synchronised. `FolderOptionTopFilesOnly` in a new record: set another value for a
    /// root whose sub-folders are to count in `IsInExistingClientFolder`.
    SynchronizationFolderOption getFolderOption() const;
    /// In the client's own terms.
    FolderOperationType getLastOperationType() const;
    /// In the client's own terms.
    DriveType getSyncDriveType() const;
    /// The id of the root that contains the folder; of a root, its own id.
    int getRootId() const;
    /// In the client's own terms.
    FolderSyncOption getSyncOption() const;
    /// The server's id of the owner.
    QString getOwnerId() const;
    /// The user's rights; all of them in a new record.
    FolderPrivileges getPrivileges() const;
    /// In the client's own terms.
    QString getServerRoot() const;
    /// The server's id of the folder.
    QString getServerFolderId() const;
    /// The entry "FeatureName" of the name-value properties; null if there is none.
    QString getFeatureName() const;

    /// Whether the parent id is 0. The folder's own id and its root id do not matter.
    bool isRoot() const;

    void setAuthenticationId(int value);
    void setProductConfigurationId(int value);
    void setName(QString value);
    void setRemoteShortKey(QString value);
    void setRemoteLongKey(QString value);
    void setClientPath(QString value);
    void setServerPath(QString value);
    void setSyncStatus(FolderSynchronizationStatus value);
    /// Makes `getSyncStatusChanged` return false; the status stays.
    void resetSyncStatusChanged();
    void setParentId(int value);
    /// Does not convert the time. The store keeps the clock reading and returns it as UTC.
    void setLastOperationTime(QDateTime value);
    /// Takes the clock reading as UTC, whatever the time zone of the value.
    void setLastSyncTime(QDateTime value);
    /// Takes the clock reading as UTC, whatever the time zone of the value.
    void setLastServerSyncRequestTime(QDateTime value);
    void setFolderOption(SynchronizationFolderOption value);
    void setLastOperationType(FolderOperationType value);
    void setSyncDriveType(DriveType value);
    void setRootId(int value);
    void setSyncOption(FolderSyncOption value);
    void setOwnerId(QString value);
    void setPrivileges(FolderPrivileges value);
    /// Sets the rights that the words of the text name: "view", "download", "update", "delete" and "share", in any
    /// case, separated by spaces. Ignores unknown words; a blank text sets all rights except "share".
    void setPrivileges(QString const& text);
    void setServerRoot(QString value);
    void setServerFolderId(QString const& value);
    void setFeatureName(QString const& value);

private:
    friend class FolderConfigManager;
    template <class Record>
    friend struct TableColumns;

    void _CopyMembers(FolderConfiguration const& other);

    int id = -1;
    int authenticationId = -1;
    int productConfigurationId = -1;
    int rootId = -1;
    QString name;
    QString remoteShortKey;
    QString remoteLongKey;
    QString clientPath;
    QString serverPath;
    int parentId = -1;
    QDateTime lastOperationTime;
    SynchronizationFolderOption folderOption = FolderOptionTopFilesOnly;
    FolderOperationType lastOperationType = FolderOperationType(0);
    DriveType syncDriveType = DriveType(0);
    FolderSyncOption syncOption = FolderSyncOptionNone;
    QString ownerId;
    FolderPrivileges privileges = FolderPrivileges(31);
    QString serverRoot;
    QString serverFolderId;
    QMap<QString, QString> nameValueProperties;
    QDateTime lastServerSyncRequestTime;
    QDateTime lastSyncTime;
    FolderSynchronizationStatus syncStatus = FolderStatusInitial;
    bool syncStatusChanged = false;
};

} // namespace sync::config

TANDRY_DECLARE_METATYPE(sync::config::FolderConfiguration)
Q_DECLARE_METATYPE(sync::config::FolderSynchronizationStatus)
Q_DECLARE_METATYPE(sync::config::SynchronizationFolderOption)
Q_DECLARE_METATYPE(sync::config::FolderOperationType)
Q_DECLARE_METATYPE(sync::config::DriveType)
Q_DECLARE_METATYPE(sync::config::FolderSyncOption)
Q_DECLARE_METATYPE(sync::config::FolderPrivileges)
#ifdef Q_MOC_RUN
// The types as spelled in the properties, so that reading a property by name registers them.
Q_DECLARE_METATYPE(FolderSynchronizationStatus)
Q_DECLARE_METATYPE(SynchronizationFolderOption)
Q_DECLARE_METATYPE(FolderOperationType)
Q_DECLARE_METATYPE(DriveType)
Q_DECLARE_METATYPE(FolderSyncOption)
Q_DECLARE_METATYPE(FolderPrivileges)
#endif
