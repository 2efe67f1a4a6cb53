#pragma once

#include "config/FileConfigManager.h"
#include "support/Conversation.h"
#include "support/FileRecords.h"
#include "support/MockFolderConfigManager.h"
#include "support/RecordingRefresh.h"
#include "support/RecordingStore.h"

#include <gmock/gmock.h>

#include <memory>
#include <vector>

/// The beginning of every SELECT from the tables of files.
#define FILE_COLUMNS                                                                                                   \
    "SELECT id, folderConfigurationId, name, clientPath, serverPath, checkSum, createdDateTime, "                      \
    "lastModifiedDateTime, "                                                                                           \
    "syncStatus, lastOperationType, size, nameValueProperties, lastOperationTime, rootFolderId, syncOption, "          \
    "parentFileId, fileType, ownerId, privileges, productConfigurationId, serverFileId,  serverFileVersionId, "        \
    "checkSumMD5, fileLinks FROM "

namespace tandry::test {

/// A file manager on a recording store, with a strict mock of the folder manager.
class FileManagerFixture : public testing::Test
{
protected:
    FileManagerFixture()
        : manager(store, refresh, folders)
    {}

    /// Returns the value that was bound to a placeholder of the last statement.
    QVariant LastBound(char const* placeholder) const
    {
        for (Binding const& binding : store->Executions().back().bindings) {
            if (binding.placeholder == QString::fromUtf8(placeholder))
                return binding.value;
        }
        ADD_FAILURE() << placeholder << " was not bound";
        return {};
    }

    std::shared_ptr<RecordingStore> const store = std::make_shared<RecordingStore>();
    std::shared_ptr<RecordingRefresh> const refresh = std::make_shared<RecordingRefresh>();
    std::shared_ptr<testing::StrictMock<MockFolderConfigManager>> const folders = StrictFolderConfigManager();
    sync::config::FileConfigManager manager;
};

} // namespace tandry::test
