#include "RecordColumns.h"

#include "config/FileLink.h"

namespace tandryctl {

using sync::config::AuthenticationConfiguration;
using sync::config::FileConfiguration;
using sync::config::FileLink;
using sync::config::FolderConfiguration;
using sync::config::ScheduleEntry;
using sync::config::ServerConfiguration;

namespace {

QVariant LinksOf(FileConfiguration const& file)
{
    QVariantList links;
    for (FileLink const& link : file.fileLinks) {
        links.append(QVariantMap{{QStringLiteral("fileId"), link.fileId},
                                 {QStringLiteral("path"), link.path},
                                 {QStringLiteral("refId"), link.refId},
                                 {QStringLiteral("serverFileId"), link.serverFileId}});
    }
    return links;
}

QVariant PropertiesOf(FileConfiguration const& file)
{
    QVariantMap properties;
    for (auto entry = file.nameValueProperties.begin(); entry != file.nameValueProperties.end(); ++entry)
        properties.insert(entry.key(), entry.value());
    return properties;
}

} // namespace

Columns<FolderConfiguration> const& FolderColumns()
{
    using Record = FolderConfiguration;
    static Columns<Record> const columns{
        {"id", Shown::Always, [](Record const& r) { return r.getId(); }},
        {"authenticationId", Shown::Always, [](Record const& r) { return r.getAuthenticationId(); }},
        {"name", Shown::InFull, [](Record const& r) { return r.getName(); }},
        {"remoteShortKey", Shown::InFull, [](Record const& r) { return r.getRemoteShortKey(); }},
        {"remoteLongKey", Shown::InFull, [](Record const& r) { return r.getRemoteLongKey(); }},
        {"clientPath", Shown::Always, [](Record const& r) { return r.getClientPath(); }},
        {"serverPath", Shown::Always, [](Record const& r) { return r.getServerPath(); }},
        {"syncStatus", Shown::Always, [](Record const& r) { return int(r.getSyncStatus()); }},
        {"parentId", Shown::Always, [](Record const& r) { return r.getParentId(); }},
        {"lastOperationTime", Shown::InFull, [](Record const& r) { return r.getLastOperationTime(); }},
        {"lastSyncTime", Shown::InFull, [](Record const& r) { return r.getLastSyncTime(); }},
        {"folderOption", Shown::InFull, [](Record const& r) { return int(r.getFolderOption()); }},
        {"lastOperationType", Shown::InFull, [](Record const& r) { return int(r.getLastOperationType()); }},
        {"syncDriveType", Shown::InFull, [](Record const& r) { return int(r.getSyncDriveType()); }},
        {"rootId", Shown::InFull, [](Record const& r) { return r.getRootId(); }},
        {"syncOption", Shown::InFull, [](Record const& r) { return int(r.getSyncOption()); }},
        {"ownerId", Shown::InFull, [](Record const& r) { return r.getOwnerId(); }},
        {"privileges", Shown::InFull, [](Record const& r) { return int(r.getPrivileges()); }},
        {"serverRoot", Shown::InFull, [](Record const& r) { return r.getServerRoot(); }},
        {"productConfigurationId", Shown::InFull, [](Record const& r) { return r.getProductConfigurationId(); }},
        {"serverFolderId", Shown::InFull, [](Record const& r) { return r.getServerFolderId(); }},
    };
    return columns;
}

Columns<FileConfiguration> const& FileColumns()
{
    using Record = FileConfiguration;
    static Columns<Record> const columns{
        {"id", Shown::Always, [](Record const& r) { return r.id; }},
        {"folderConfigurationId", Shown::Always, [](Record const& r) { return r.folderConfigurationId; }},
        {"name", Shown::InFull, [](Record const& r) { return r.name; }},
        {"clientPath", Shown::Always, [](Record const& r) { return r.clientPath; }},
        {"serverPath", Shown::InFull, [](Record const& r) { return r.serverPath; }},
        {"checkSum", Shown::InFull, [](Record const& r) { return r.checkSum; }},
        {"createdDateTime", Shown::InFull, [](Record const& r) { return r.createdDateTime; }},
        {"lastModifiedDateTime", Shown::Always, [](Record const& r) { return r.lastModifiedDateTime; }},
        {"syncStatus", Shown::Always, [](Record const& r) { return int(r.getSyncStatus()); }},
        {"lastOperationType", Shown::InFull, [](Record const& r) { return r.lastOperationType; }},
        {"size", Shown::Always, [](Record const& r) { return r.size; }},
        {"nameValueProperties", Shown::InFull, PropertiesOf},
        {"lastOperationTime", Shown::InFull, [](Record const& r) { return r.lastOperationTime; }},
        {"rootFolderId", Shown::InFull, [](Record const& r) { return r.rootFolderId; }},
        {"syncOption", Shown::InFull, [](Record const& r) { return r.syncOption; }},
        {"parentFileId", Shown::InFull, [](Record const& r) { return r.parentFileId; }},
        {"fileType", Shown::InFull, [](Record const& r) { return int(r.fileType); }},
        {"ownerId", Shown::InFull, [](Record const& r) { return r.ownerId; }},
        {"privileges", Shown::InFull, [](Record const& r) { return r.privileges; }},
        {"productConfigurationId", Shown::InFull, [](Record const& r) { return r.productConfigurationId; }},
        {"serverFileId", Shown::InFull, [](Record const& r) { return r.serverFileId; }},
        {"serverFileVersionId", Shown::InFull, [](Record const& r) { return r.serverFileVersionId; }},
        {"checkSumMD5", Shown::InFull, [](Record const& r) { return r.checkSumMD5; }},
        {"fileLinks", Shown::InFull, LinksOf},
    };
    return columns;
}

Columns<ServerConfiguration> const& ServerColumns()
{
    using Record = ServerConfiguration;
    static Columns<Record> const columns{
        {"id", Shown::Always, [](Record const& r) { return r.getId(); }},
        {"alias", Shown::Always, [](Record const& r) { return r.getAlias(); }},
        {"davUrl", Shown::Always, [](Record const& r) { return r.getDavUrl(); }},
        {"webServiceUrl", Shown::Always, [](Record const& r) { return r.getWebServiceUrl(); }},
        {"binaryDiffEncoder", Shown::InFull, [](Record const& r) { return r.getBinaryDiffEncoder(); }},
    };
    return columns;
}

Columns<AuthenticationConfiguration> const& AccountColumns()
{
    using Record = AuthenticationConfiguration;
    static Columns<Record> const columns{
        {"id", Shown::Always, [](Record const& r) { return r.getId(); }},
        {"domain", Shown::Always, [](Record const& r) { return r.getDomain(); }},
        {"domainId", Shown::InFull, [](Record const& r) { return r.getDomainId(); }},
        {"userName", Shown::Always, [](Record const& r) { return r.getUserName(); }},
        {"serverId", Shown::Always, [](Record const& r) { return r.getServerId(); }},
    };
    return columns;
}

Columns<ScheduleEntry> const& ScheduleColumns()
{
    using Record = ScheduleEntry;
    static Columns<Record> const columns{
        {"id", Shown::Always, [](Record const& r) { return r.getId(); }},
        {"folderConfigurationId", Shown::Always, [](Record const& r) { return r.getFolderConfigId(); }},
        {"startTime", Shown::Always, [](Record const& r) { return r.getStartTime(); }},
        {"expireTime", Shown::Always, [](Record const& r) { return r.getExpireTime(); }},
        {"syncScheduleType", Shown::Always, [](Record const& r) { return int(r.getSyncScheduleType()); }},
        {"syncInterval", Shown::Always, [](Record const& r) { return r.getSyncInterval(); }},
    };
    return columns;
}

} // namespace tandryctl
