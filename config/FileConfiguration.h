#pragma once

#include "config/FileLink.h"
#include "config/TandryConfigurationExport.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTypeInfo>

namespace sync::config {

/// Kind of file; each has a table of its own. Any other value is stored nowhere. Never renumber.
enum FileConfigurationType : int
{
    /// A file of the client's own.
    FileConfigurationTypeFile = 0,
    /// A file made from another one, its parent file.
    FileConfigurationTypeGenerated = 1,
    FileConfigurationTypeBase = 2,
};

/// State of a file; the client gives the values that aren't listed a meaning. Never renumber.
enum FileSynchronizationStatus : int
{
    FileSyncStatusSyncing = 1,
    FileSyncStatusNotSynced = 2,
    /// Found through a link to it.
    FileSyncStatusLinkDiscovered = 3,
};

/// Further state, in memory only; the client gives the values a meaning.
enum FileSynchronizationSubStatus : int
{
};

/// Option bits; the client gives those that aren't listed a meaning. Never renumber.
enum FileSyncOption : int
{
    FileSyncOptionNone = 0,
    FileSyncOptionRepathRequired = 64,
};

/// A file known to the client: one row of the table that its `fileType` names.
///
/// A plain value: copies carry all members.
class TANDRY_CONFIGURATION_EXPORT FileConfiguration
{
public:
    FileConfiguration();
    FileConfiguration(FileConfiguration const& other);
    FileConfiguration& operator=(FileConfiguration const& other);
    virtual ~FileConfiguration();

    FileSynchronizationStatus getSyncStatus() const;
    /// Whether the status was set since the record was made, read or reset. Never stored.
    bool getSyncStatusChanged() const;
    /// Counts as a change even if the value is the same.
    void setSyncStatus(FileSynchronizationStatus value);
    void resetSyncStatusChanged();

    /// Replaces `privileges` by the words of the text, in any case, with blanks between them: view, download, update,
    /// delete, share. Unknown words count for nothing, and a blank text leaves no rights at all.
    void setPrivileges(QString const& text);

    /// Returns the options that the user's other machines get: of all bits, only `FileSyncOptionRepathRequired`.
    FileSyncOption getSyncOptionPersistentAcrossMachines() const;
    /// The same as words, which replace the content of the list.
    void getSyncOptionPersistentAcrossMachines(QStringList& words) const;
    /// Sets the bits of the value, and clears none.
    void setSyncOptionPersistentAcrossMachines(FileSyncOption value);
    /// Sets the options that the words name, in any case, and clears none.
    void setSyncOptionPersistentAcrossMachines(QStringList const& words);

    /// Never stored.
    FileSynchronizationSubStatus getSyncSubStatus() const;
    void setSyncSubStatus(FileSynchronizationSubStatus value);

    /// Row id, -1 for a record without a row.
    int id = -1;
    /// The folder that holds the file.
    int folderConfigurationId = -1;
    int productConfigurationId = -1;
    QString name;
    /// Absolute, with `/` as separator.
    QString clientPath;
    QString serverPath;
    /// In a form of the client's choice, like `checkSumMD5`.
    QString checkSum;
    QString checkSumMD5;
    /// The clock reading of a time is stored, and is read as UTC.
    QDateTime createdDateTime;
    QDateTime lastModifiedDateTime;
    /// In bytes.
    qint64 size = 0;
    int lastOperationType = 0;
    /// Keys must be XML names.
    QMap<QString, QString> nameValueProperties;
    QDateTime lastOperationTime;
    /// The root of the tree that the file lies in.
    int rootFolderId = -1;
    /// Bits of `FileSyncOption`, and others of the client's.
    int syncOption = FileSyncOptionNone;
    /// For a generated file, the id of the file in `FileConfiguration` from which it was made.
    int parentFileId = -1;
    QString ownerId;
    /// The user's rights: 1 view, 2 download, 4 update, 8 delete, 16 share.
    int privileges = 31;
    FileConfigurationType fileType = FileConfigurationTypeFile;
    QString serverFileId;
    QString serverFileVersionId;
    QList<FileLink> fileLinks;
    /// Stored together with the links, in whole seconds and UTC.
    QDateTime fileDate;

protected:
    void _CopyMembers(FileConfiguration const& other);

private:
    template <class Record>
    friend struct TableColumns;

    FileSynchronizationStatus syncStatus = FileSyncStatusNotSynced;
    FileSynchronizationSubStatus syncSubStatus = FileSynchronizationSubStatus(0);
    bool syncStatusChanged = false;
};

} // namespace sync::config

Q_DECLARE_TYPEINFO(sync::config::FileConfiguration, Q_MOVABLE_TYPE);
