#include "support/FolderRecords.h"

#include "config/FolderConfigManager.h"
#include "support/RecordRows.h"

#include <QMetaProperty>

#include <memory>

namespace tandry::test {

using namespace sync::config;

namespace {

bool Same(QVariant const& left, QVariant const& right)
{
    if (left.userType() == QMetaType::QString)
        return left.toString() == right.toString() && left.toString().isNull() == right.toString().isNull();
    if (left.userType() == QMetaType::QDateTime) {
        QDateTime const one = left.toDateTime();
        QDateTime const other = right.toDateTime();
        return one.isValid() == other.isValid() &&
               (!one.isValid() || (one == other && one.timeSpec() == other.timeSpec()));
    }
    return left.toInt() == right.toInt();
}

} // namespace

FolderConfiguration DistinctFolder()
{
    FolderConfiguration folder;
    folder.setAuthenticationId(102);
    folder.setProductConfigurationId(103);
    folder.setRootId(104);
    folder.setName("name"_q);
    folder.setRemoteShortKey("short key"_q);
    folder.setRemoteLongKey("long key"_q);
    folder.setClientPath("/tree/client path"_q);
    folder.setServerPath("/server path"_q);
    folder.setParentId(105);
    folder.setLastOperationTime(QDateTime(QDate(2024, 1, 2), QTime(3, 4, 5, 678), Qt::UTC));
    folder.setLastSyncTime(QDateTime(QDate(2024, 7, 8), QTime(9, 10, 11, 121), Qt::UTC));
    folder.setFolderOption(SynchronizationFolderOption(106));
    folder.setLastOperationType(FolderOperationType(107));
    folder.setSyncDriveType(DriveType(108));
    folder.setSyncOption(FolderSyncOption(109));
    folder.setOwnerId("owner id"_q);
    folder.setPrivileges(FolderPrivileges(9));
    folder.setServerRoot("/server root"_q);
    folder.setServerFolderId("server folder id"_q);
    folder.setFeatureName("feature"_q);
    folder.setSyncStatus(FolderSynchronizationStatus(110));
    return folder;
}

FolderConfiguration Folder(QString const& clientPath, int parentId, int rootId)
{
    FolderConfiguration folder;
    folder.setClientPath(clientPath);
    folder.setParentId(parentId);
    folder.setRootId(rootId);
    return folder;
}

Row ToRow(int id, FolderConfiguration const& folder)
{
    Row row = ToRow(folder);
    row[0] = id;
    return row;
}

FolderConfiguration StoredFolder(int id, FolderConfiguration const& folder)
{
    auto const store = std::make_shared<RecordingStore>();
    store->PlayRows({ToRow(id, folder)});
    return FolderConfigManager(store, nullptr).GetFolderConfigurationById(id);
}

std::vector<QString> TextsOf(FolderConfiguration const& folder)
{
    return {folder.getName(),
            folder.getRemoteShortKey(),
            folder.getRemoteLongKey(),
            folder.getClientPath(),
            folder.getServerPath(),
            folder.getOwnerId(),
            folder.getServerRoot(),
            folder.getServerFolderId(),
            folder.getFeatureName()};
}

std::vector<std::string> DifferingMembers(FolderConfiguration const& left, FolderConfiguration const& right)
{
    std::vector<std::string> different;
    auto const compare = [&](char const* name, QVariant const& one, QVariant const& other) {
        if (!Same(one, other))
            different.emplace_back(name);
    };
    QMetaObject const& meta = FolderConfiguration::staticMetaObject;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i)
        compare(meta.property(i).name(), meta.property(i).read(&left), meta.property(i).read(&right));
    compare("FeatureName", left.getFeatureName(), right.getFeatureName());
    compare("LastServerSyncRequestTime", left.getLastServerSyncRequestTime(), right.getLastServerSyncRequestTime());
    compare("SyncStatusChanged", left.getSyncStatusChanged(), right.getSyncStatusChanged());
    return different;
}

} // namespace tandry::test
