#include "support/FileRecords.h"

#include <algorithm>

namespace tandry::test {

using namespace sync::config;

namespace {

QDateTime Utc(int day, int millisecond)
{
    return QDateTime(QDate(2024, 1, day), QTime(10, 20, 30, millisecond), Qt::UTC);
}

bool Same(QString const& left, QString const& right)
{
    return left == right && left.isNull() == right.isNull();
}

bool Same(QDateTime const& left, QDateTime const& right)
{
    return left.isValid() == right.isValid() && (!left.isValid() || left == right) &&
           left.timeSpec() == right.timeSpec();
}

bool Same(QList<FileLink> const& left, QList<FileLink> const& right)
{
    return std::equal(
        left.begin(), left.end(), right.begin(), right.end(), [](FileLink const& one, FileLink const& other) {
            return one.fileId == other.fileId && one.path == other.path && one.refId == other.refId &&
                   one.serverFileId == other.serverFileId;
        });
}

template <class Value>
bool Same(Value const& left, Value const& right)
{
    return left == right;
}

} // namespace

FileConfiguration DistinctFile(FileConfigurationType fileType)
{
    FileConfiguration file;
    file.id = 101;
    file.folderConfigurationId = 102;
    file.productConfigurationId = 103;
    file.name = QStringLiteral("name");
    file.clientPath = QStringLiteral("/tree/folder/client path");
    file.serverPath = QStringLiteral("/server path");
    file.checkSum = QStringLiteral("check sum");
    file.checkSumMD5 = QStringLiteral("check sum MD5");
    file.createdDateTime = Utc(1, 111);
    file.lastModifiedDateTime = Utc(2, 222);
    file.size = 5'000'000'104;
    file.lastOperationType = 105;
    file.nameValueProperties = {{QStringLiteral("Key"), QStringLiteral("value")}};
    file.lastOperationTime = Utc(3, 333);
    file.rootFolderId = 106;
    file.syncOption = 65;
    file.parentFileId = 107;
    file.ownerId = QStringLiteral("owner id");
    file.privileges = 9;
    file.fileType = fileType;
    file.serverFileId = QStringLiteral("server file id");
    file.serverFileVersionId = QStringLiteral("server file version id");
    FileLink link;
    link.fileId = 108;
    link.path = QStringLiteral("link path");
    link.refId = QStringLiteral("link ref id");
    link.serverFileId = QStringLiteral("link server file id");
    file.fileLinks = {link};
    file.fileDate = Utc(4, 0);
    file.setSyncStatus(FileSynchronizationStatus(109));
    file.setSyncSubStatus(FileSynchronizationSubStatus(110));
    return file;
}

Row ToRow(FileConfiguration const& file)
{
    QString properties = QStringLiteral("<!DOCTYPE NameValueXml>\n<NameValueXml>\n");
    for (auto entry = file.nameValueProperties.cbegin(); entry != file.nameValueProperties.cend(); ++entry)
        properties += QStringLiteral(" <%1><![CDATA[%2]]></%1>\n").arg(entry.key(), entry.value());
    properties += QStringLiteral("</NameValueXml>\n");

    return {
        file.id,
        file.folderConfigurationId,
        file.name,
        file.clientPath,
        file.serverPath,
        file.checkSum,
        file.createdDateTime,
        file.lastModifiedDateTime,
        int(file.getSyncStatus()),
        file.lastOperationType,
        file.size,
        properties,
        file.lastOperationTime,
        file.rootFolderId,
        file.syncOption,
        file.parentFileId,
        int(file.fileType),
        file.ownerId,
        file.privileges,
        file.productConfigurationId,
        file.serverFileId,
        file.serverFileVersionId,
        file.checkSumMD5,
        FileLinksDocument(file),
    };
}

QString FileLinksDocument(FileConfiguration const& file)
{
    if (file.fileLinks.isEmpty() && !file.fileDate.isValid())
        return QStringLiteral("");
    QString document = QStringLiteral("<FileLinks FileDate=\"%1\">\n").arg(file.fileDate.toString(Qt::ISODate));
    for (FileLink const& link : file.fileLinks)
        document += QStringLiteral(" <FileLink FileId=\"%1\" RefId=\"%2\" ServerFileId=\"%3\" Path=\"%4\"/>\n")
                        .arg(QString::number(link.fileId), link.refId, link.serverFileId, link.path);
    return document + QStringLiteral("</FileLinks>\n");
}

std::vector<std::string> DifferingMembers(FileConfiguration const& left, FileConfiguration const& right)
{
    std::vector<std::string> different;
    auto const compare = [&](char const* name, auto const& one, auto const& other) {
        if (!Same(one, other))
            different.emplace_back(name);
    };
    compare("id", left.id, right.id);
    compare("folderConfigurationId", left.folderConfigurationId, right.folderConfigurationId);
    compare("productConfigurationId", left.productConfigurationId, right.productConfigurationId);
    compare("name", left.name, right.name);
    compare("clientPath", left.clientPath, right.clientPath);
    compare("serverPath", left.serverPath, right.serverPath);
    compare("checkSum", left.checkSum, right.checkSum);
    compare("checkSumMD5", left.checkSumMD5, right.checkSumMD5);
    compare("createdDateTime", left.createdDateTime, right.createdDateTime);
    compare("lastModifiedDateTime", left.lastModifiedDateTime, right.lastModifiedDateTime);
    compare("size", left.size, right.size);
    compare("lastOperationType", left.lastOperationType, right.lastOperationType);
    compare("nameValueProperties", left.nameValueProperties, right.nameValueProperties);
    compare("lastOperationTime", left.lastOperationTime, right.lastOperationTime);
    compare("rootFolderId", left.rootFolderId, right.rootFolderId);
    compare("syncOption", left.syncOption, right.syncOption);
    compare("parentFileId", left.parentFileId, right.parentFileId);
    compare("ownerId", left.ownerId, right.ownerId);
    compare("privileges", left.privileges, right.privileges);
    compare("fileType", left.fileType, right.fileType);
    compare("serverFileId", left.serverFileId, right.serverFileId);
    compare("serverFileVersionId", left.serverFileVersionId, right.serverFileVersionId);
    compare("fileLinks", left.fileLinks, right.fileLinks);
    compare("fileDate", left.fileDate, right.fileDate);
    compare("syncStatus", left.getSyncStatus(), right.getSyncStatus());
    compare("syncSubStatus", left.getSyncSubStatus(), right.getSyncSubStatus());
    compare("syncStatusChanged", left.getSyncStatusChanged(), right.getSyncStatusChanged());
    return different;
}

} // namespace tandry::test
