#pragma once

#include "config/FileConfigManager.h"
#include "config/FolderConfigManager.h"
#include "support/QtPrinters.h"
#include "support/RecordingRefresh.h"
#include "support/StoreFixture.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <memory>

namespace tandry::test {

/// A file manager and a folder manager on a new store, and a directory `rootPath` for files.
class FileStoreFixture : public StoreFixture
{
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        MakeManagers();
        rootPath = folder.filePath("root"_q);
        QDir().mkpath(rootPath);
    }

    void MakeManagers()
    {
        folders = std::make_shared<sync::config::FolderConfigManager>(store, nullptr);
        files = std::make_unique<sync::config::FileConfigManager>(store, refresh, folders);
    }

    /// Closes the store and opens it again, so that the test reads what was written to the disk.
    void Reopen()
    {
        files.reset();
        folders.reset();
        ReopenStore();
        MakeManagers();
    }

    /// Adds a root with the server path /server.
    sync::config::FolderConfiguration AddRoot(QString const& clientPath, int authenticationId = 4)
    {
        sync::config::FolderConfiguration root;
        root.setAuthenticationId(authenticationId);
        root.setParentId(0);
        root.setClientPath(clientPath);
        root.setServerPath("/server"_q);
        EXPECT_TRUE(folders->Add(root));
        return root;
    }

    /// Adds a file with these members and otherwise defaults.
    sync::config::FileConfiguration
    AddFile(QString const& clientPath,
            int folderId,
            int rootId,
            sync::config::FileConfigurationType fileType = sync::config::FileConfigurationTypeFile)
    {
        sync::config::FileConfiguration file;
        file.clientPath = clientPath;
        file.name = QFileInfo(clientPath).fileName();
        file.folderConfigurationId = folderId;
        file.rootFolderId = rootId;
        file.fileType = fileType;
        EXPECT_TRUE(files->Add(file));
        EXPECT_GT(file.id, 0);
        return file;
    }

    /// Creates an empty file with its directories and returns its absolute path.
    QString MakeFile(QString const& path)
    {
        QString absolute = folder.filePath(path);
        QDir().mkpath(QFileInfo(absolute).path());
        EXPECT_TRUE(QFile(absolute).open(QIODevice::WriteOnly));
        return absolute;
    }

    std::shared_ptr<RecordingRefresh> const refresh = std::make_shared<RecordingRefresh>();
    std::shared_ptr<sync::config::FolderConfigManager> folders;
    std::unique_ptr<sync::config::FileConfigManager> files;
    QString rootPath;
};

} // namespace tandry::test
