#pragma once

#include "config/FileConfigManager.h"
#include "support/Conversation.h"
#include "support/FileRecords.h"
#include "support/MockFolderConfigManager.h"
#include "support/RecordingRefresh.h"
#include "support/RecordingStore.h"
#include "support/StatementList.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>

namespace tandry::test {

/// Returns the SELECT of all columns of files with this text after FROM.
inline QString FileSelect(std::string const& from)
{
    QString select = ListedStatement("SELECT id, folderConfigurationId, ", " FROM FileConfiguration");
    select.chop(QStringLiteral("FileConfiguration").size());
    return select + QString::fromStdString(from);
}

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
