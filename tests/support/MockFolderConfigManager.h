#pragma once

#include "interf/IFolderConfigManager.h"
#include "support/FolderRecords.h"

#include <gmock/gmock.h>

namespace tandry::test {

/// The folder side as the file side sees it.
class MockFolderConfigManager : public sync::interf::IFolderConfigManager
{
public:
    using FolderConfiguration = sync::config::FolderConfiguration;

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

} // namespace tandry::test
