#include "support/FileRecords.h"

#include "storesuite/RecordValues.h"

#include <gtest/gtest.h>

#include <QDateTime>

namespace tandry::test {

using namespace sync::config;

FileConfiguration DistinctFile(FileConfigurationType fileType)
{
    auto file = storesuite::DistinctRecord<FileConfiguration>();
    file.id = 101; // the members that tests mention by their values
    file.folderConfigurationId = 102;
    file.clientPath = QStringLiteral("/tree/folder/client path");
    file.checkSumMD5 = QStringLiteral("check sum MD5");
    file.nameValueProperties = {{QStringLiteral("Key"), QStringLiteral("value")}};
    file.rootFolderId = 106;
    file.syncOption = 65;
    file.fileType = fileType;
    file.serverFileId = QStringLiteral("server file id");
    FileLink link;
    link.fileId = 108;
    link.path = QStringLiteral("link path");
    link.refId = QStringLiteral("link ref id");
    link.serverFileId = QStringLiteral("link server file id");
    file.fileLinks = {link};
    file.fileDate = QDateTime(QDate(2024, 1, 4), QTime(10, 20, 30), Qt::UTC);
    file.setSyncStatus(FileSynchronizationStatus(109));
    file.setSyncSubStatus(FileSynchronizationSubStatus(110));
    return file;
}

std::vector<QString> TextsOf(FileConfiguration const& file)
{
    return {file.name,
            file.clientPath,
            file.serverPath,
            file.checkSum,
            file.checkSumMD5,
            file.ownerId,
            file.serverFileId,
            file.serverFileVersionId};
}

void ExpectNullColumns(FileConfiguration const& file)
{
    for (int number : {file.folderConfigurationId,
                       int(file.getSyncStatus()),
                       file.lastOperationType,
                       file.rootFolderId,
                       file.syncOption,
                       file.parentFileId,
                       int(file.fileType),
                       file.privileges,
                       file.productConfigurationId})
        EXPECT_EQ(number, 0);
    EXPECT_EQ(file.size, 0);
    for (QString const& text : TextsOf(file))
        EXPECT_TRUE(text.isEmpty());
    for (QDateTime const& time :
         {file.createdDateTime, file.lastModifiedDateTime, file.lastOperationTime, file.fileDate}) {
        EXPECT_FALSE(time.isValid());
        EXPECT_EQ(time.timeSpec(), Qt::UTC);
    }
    EXPECT_TRUE(file.nameValueProperties.isEmpty());
    EXPECT_TRUE(file.fileLinks.isEmpty());
}

std::vector<std::string> DifferingMembers(FileConfiguration const& left, FileConfiguration const& right)
{
    std::vector<std::string> different = storesuite::DifferingColumns(left, right);
    if (left.getSyncSubStatus() != right.getSyncSubStatus())
        different.emplace_back("syncSubStatus");
    if (left.getSyncStatusChanged() != right.getSyncStatusChanged())
        different.emplace_back("syncStatusChanged");
    return different;
}

} // namespace tandry::test
