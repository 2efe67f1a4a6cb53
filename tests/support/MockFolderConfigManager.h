#pragma once

#include "interf/IFolderConfigManager.h"
#include "support/FolderRecords.h"

#include <gmock/gmock.h>

#include <memory>

namespace tandry::test {

/// A mock of the folder manager for tests of the file manager.
class MockFolderConfigManager : public sync::interf::IFolderConfigManager
{
public:
    using FolderConfiguration = sync::config::FolderConfiguration;

    // Defined in the source: each file with a copy of them takes six seconds more to compile.
    MockFolderConfigManager();
    ~MockFolderConfigManager() override;

    MOCK_METHOD(FolderConfiguration, GetFolderConfigurationById, (int), (override));
    MOCK_METHOD(FolderConfiguration, GetFolderConfigurationByServerId, (QString), (override));
    MOCK_METHOD(FolderConfiguration, GetFolderConfigurationByClientPath, (QString), (override));
    MOCK_METHOD(FolderConfiguration, GetFolderConfigurationByClientPathAndAuthenticationId, (QString, int), (override));
    MOCK_METHOD(QVector<FolderConfiguration>, GetFolderConfigurationsByAuthenticationId, (int), (override));
    MOCK_METHOD(QVector<FolderConfiguration>, GetFolderConfigurationsByRootId, (int), (override));
    MOCK_METHOD(QVector<FolderConfiguration>, GetFolderConfigurationsOfNonExistingRootFolders, (), (override));
    MOCK_METHOD(QVector<FolderConfiguration>, GetAll, (), (override));
    MOCK_METHOD(bool, Update, (FolderConfiguration), (override));
    MOCK_METHOD(bool, Add, (FolderConfiguration&), (override));
    MOCK_METHOD(FolderConfiguration, AddFolderAndParent, (QString const&, FolderConfiguration const&), (override));
    MOCK_METHOD(bool, Remove, (int), (override));
    MOCK_METHOD(bool, RemoveFolderAndChildren, (int), (override));
    MOCK_METHOD(bool, IsInExistingClientFolder, (QString const&, int, bool), (override));
    MOCK_METHOD(bool, AncestorOrDescendantOfServerFolderExists, (QString const&, int, QString&), (override));
    MOCK_METHOD(QVector<FolderConfiguration>, GetAllRootFolders, (), (override));
    MOCK_METHOD(QVector<FolderConfiguration>, GetFolderConfigurationByParentId, (int), (override));
    MOCK_METHOD(bool, IsInExistingAuthentication, (int), (override));
    MOCK_METHOD(bool, IsAnyFolderConfigOutOfSync, (), (override));
    MOCK_METHOD(int, GetRootFolderConfigurationCount, (), (override));
    MOCK_METHOD(void, ClearCaches, (), (override));
    MOCK_METHOD(bool, CleanRootFolder, (int), (override));
    MOCK_METHOD(void, RefreshNativeFileViewer, (QString&), (override));
    MOCK_METHOD(void, RefreshNativeFileViewer, (), (override));
};

/// A mock that fails on any call that a test doesn't expect.
std::shared_ptr<testing::StrictMock<MockFolderConfigManager>> StrictFolderConfigManager();

} // namespace tandry::test
