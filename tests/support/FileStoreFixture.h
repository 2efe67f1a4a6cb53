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

/// The file manager and the folder manager on a store of their own, and a folder `root` on disk for the files.
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

    /// Closes the store and opens it anew: what a test then reads was on the disk.
    void Reopen()
    {
        files.reset();
        folders.reset();
        ReopenStore();
        MakeManagers();
    }

    /// A root on record with the server path /server.
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

    /// A file on record, with nothing but what is given.
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

    /// An empty file on disk, with its folders; the absolute path.
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
