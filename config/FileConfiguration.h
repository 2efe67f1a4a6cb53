#pragma once

#include "../interf/MetaTypeDeclaration.h"
#include "FileLink.h"
#include "RecordText.h"
#include "TandryConfigurationExport.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTypeInfo>

namespace sync::config {

/// Kind of file; each has a table of its own. There is no table for other values. Never renumber.
enum FileConfigurationType : int
{
    /// A file of the client's own.
    FileConfigurationTypeFile = 0,
    /// A file made from another one, its parent file.
    FileConfigurationTypeGenerated = 1,
    FileConfigurationTypeBase = 2,
};

/// State of a file; the client defines the meaning of other values. Never renumber.
enum FileSynchronizationStatus : int
{
    FileSyncStatusSyncing = 1,
    FileSyncStatusNotSynced = 2,
    /// Added because another file links to it.
    FileSyncStatusLinkDiscovered = 3,
};

/// Further state, in memory only; the client defines the meaning of other values. Never renumber.
enum FileSynchronizationSubStatus : int
{
    /// The sub-status of a new record, and of one that comes from a store.
    FileSyncSubStatusNone = 0,
};

/// Option bits; the client defines the meaning of other bits. Never renumber.
enum FileSyncOption : int
{
    FileSyncOptionNone = 0,
    FileSyncOptionRepathRequired = 64,
};

/// The user's rights to a file, as a set of bits: those of `FolderPrivileges`. Never renumber.
enum FilePrivileges : int
{
    FilePrivilegeView = 1,
    FilePrivilegeDownload = 2,
    FilePrivilegeUpdate = 4,
    FilePrivilegeDelete = 8,
    FilePrivilegeShare = 16,
};

/// A file known to the client: one row of the table that its `fileType` names.
///
/// A value: a copy has all members.
class TANDRY_CONFIGURATION_EXPORT FileConfiguration
{
public:
    FileConfiguration();
    FileConfiguration(FileConfiguration const& other);
    FileConfiguration& operator=(FileConfiguration const& other);
    virtual ~FileConfiguration();

    /// The state of the file's synchronisation; `FileSyncStatusNotSynced` in a new record.
    FileSynchronizationStatus getSyncStatus() const;
    /// Whether the status was set since the record was created, read from a store or reset. Never stored.
    bool getSyncStatusChanged() const;
    /// Counts as a change even if the value is the same.
    void setSyncStatus(FileSynchronizationStatus value);
    /// Makes `getSyncStatusChanged` return false; the status stays.
    void resetSyncStatusChanged();

    /// Sets `privileges` to the rights that the words of the text name: "view", "download", "update", "delete" and
    /// "share", in any case, separated by spaces. Ignores unknown words; a blank text removes all rights.
    void setPrivileges(QString const& text);

    /// Returns the options that apply on all machines of the user: of all bits, only `FileSyncOptionRepathRequired`.
    FileSyncOption getSyncOptionPersistentAcrossMachines() const;
    /// Replaces the contents of the list with the same options as words.
    void getSyncOptionPersistentAcrossMachines(QStringList& words) const;
    /// Sets the bits of the value; clears none.
    void setSyncOptionPersistentAcrossMachines(FileSyncOption value);
    /// Sets the options that the words name, in any case; clears none.
    void setSyncOptionPersistentAcrossMachines(QStringList const& words);

    /// Never stored.
    FileSynchronizationSubStatus getSyncSubStatus() const;
    void setSyncSubStatus(FileSynchronizationSubStatus value);

    /// The row's id; -1 for a record without a row.
    int id = -1;
    /// The id of the folder that contains the file.
    int folderConfigurationId = -1;
    /// The consumer product that the file belongs to, -1 for none.
    int productConfigurationId = -1;
    /// The file's name, without folders.
    QString name;
    /// Absolute, with `/` as separator.
    QString clientPath;
    /// Path on the server.
    QString serverPath;
    /// In a form of the client's choice; the library computes no checksum.
    QString checkSum;
    /// In a form of the client's choice, like `checkSum`.
    QString checkSumMD5;
    /// Of all times, a store keeps the clock reading, and returns it as UTC.
    QDateTime createdDateTime;
    /// As for `createdDateTime`.
    QDateTime lastModifiedDateTime;
    /// In bytes.
    qint64 size = 0;
    /// In the client's own terms.
    int lastOperationType = 0;
    /// Keys must be XML names.
    QMap<QString, QString> nameValueProperties;
    /// As for `createdDateTime`.
    QDateTime lastOperationTime;
    /// The id of the root that contains the file.
    int rootFolderId = -1;
    /// Bits of `FileSyncOption`, and bits that the client defines.
    int syncOption = FileSyncOptionNone;
    /// For a generated file, the id of the file in the table `FileConfiguration` from which it was generated.
    int parentFileId = -1;
    /// The server's id of the owner.
    QString ownerId;
    /// The user's rights, bits of `FilePrivileges`; all of them in a new record.
    int privileges = 31;
    /// The kind, and with it the table that the record is written to.
    FileConfigurationType fileType = FileConfigurationTypeFile;
    /// The server's id of the file.
    QString serverFileId;
    /// The server's id of the file's version.
    QString serverFileVersionId;
    /// Stored as a document. One of another program is read within the limits of
    /// `DatabaseConfigurationManager::ToNameValuePropertyMap`; beyond them it gives no links and no date.
    QList<FileLink> fileLinks;
    /// The date of the links. Stored with them, in whole seconds and UTC.
    QDateTime fileDate;

protected:
    /// Copies all members of the other record.
    void _CopyMembers(FileConfiguration const& other);

private:
    template <class Record>
    friend struct TableColumns;

    FileSynchronizationStatus syncStatus = FileSyncStatusNotSynced;
    FileSynchronizationSubStatus syncSubStatus = FileSyncSubStatusNone;
    bool syncStatusChanged = false;
};

} // namespace sync::config

Q_DECLARE_TYPEINFO(sync::config::FileConfiguration, Q_MOVABLE_TYPE);
TANDRY_DECLARE_METATYPE(sync::config::FileConfiguration)
TANDRY_DECLARE_METATYPE(sync::config::FileConfigurationType)
TANDRY_DECLARE_METATYPE(sync::config::FileSynchronizationStatus)
TANDRY_DECLARE_METATYPE(sync::config::FileSynchronizationSubStatus)
TANDRY_DECLARE_METATYPE(sync::config::FileSyncOption)
TANDRY_DECLARE_METATYPE(sync::config::FilePrivileges)
