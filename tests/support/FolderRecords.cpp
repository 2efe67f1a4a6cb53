#include "support/FolderRecords.h"

#include <QMetaProperty>

namespace tandry::test {

using namespace sync::config;

namespace {

bool Same(QVariant const& left, QVariant const& right)
{
    if (left.userType() == QMetaType::QString)
        return left.toString() == right.toString() && left.toString().isNull() == right.toString().isNull();
    if (left.userType() == QMetaType::QDateTime)
        return left.toDateTime() == right.toDateTime() && left.toDateTime().isValid() == right.toDateTime().isValid() &&
               left.toDateTime().timeSpec() == right.toDateTime().timeSpec();
    return left.toInt() == right.toInt();
}

} // namespace

FolderConfiguration DistinctFolder()
{
    FolderConfiguration folder;
    folder.setAuthenticationId(102);
    folder.setProductConfigurationId(103);
    folder.setRootId(104);
    folder.setName(QStringLiteral("name"));
    folder.setRemoteShortKey(QStringLiteral("short key"));
    folder.setRemoteLongKey(QStringLiteral("long key"));
    folder.setClientPath(QStringLiteral("/root/client path"));
    folder.setServerPath(QStringLiteral("/server path"));
    folder.setParentId(105);
    folder.setLastOperationTime(QDateTime(QDate(2024, 1, 2), QTime(3, 4, 5, 678), Qt::UTC));
    folder.setLastSyncTime(QDateTime(QDate(2024, 7, 8), QTime(9, 10, 11, 121), Qt::UTC));
    folder.setFolderOption(SynchronizationFolderOption(106));
    folder.setLastOperationType(FolderOperationType(107));
    folder.setSyncDriveType(DriveType(108));
    folder.setSyncOption(FolderSyncOption(109));
    folder.setOwnerId(QStringLiteral("owner id"));
    folder.setPrivileges(FolderPrivileges(9));
    folder.setServerRoot(QStringLiteral("/server root"));
    folder.setServerFolderId(QStringLiteral("server folder id"));
    folder.setFeatureName(QStringLiteral("feature"));
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
    return {
        id,
        folder.getAuthenticationId(),
        folder.getName(),
        folder.getRemoteShortKey(),
        folder.getRemoteLongKey(),
        folder.getClientPath(),
        folder.getServerPath(),
        int(folder.getSyncStatus()),
        folder.getFeatureName().isNull() ? QString() : FeatureNameDocument(folder.getFeatureName()),
        folder.getParentId(),
        folder.getLastOperationTime(),
        folder.getLastSyncTime(),
        int(folder.getFolderOption()),
        int(folder.getLastOperationType()),
        int(folder.getSyncDriveType()),
        folder.getRootId(),
        int(folder.getSyncOption()),
        folder.getOwnerId(),
        int(folder.getPrivileges()),
        folder.getServerRoot(),
        folder.getProductConfigurationId(),
        folder.getServerFolderId(),
    };
}

QString FeatureNameDocument(QString const& value)
{
    return QStringLiteral("<!DOCTYPE NameValueXml>\n<NameValueXml>\n <FeatureName><![CDATA[%1]]></FeatureName>\n"
                          "</NameValueXml>\n")
        .arg(value);
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
